// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/servers/changepolltexts.h"
#include "platform/servers/librarysnapshot.h"
#include "support/fakesparqldriver.h"

#include <QRegularExpression>

#include <functional>
#include <map>
#include <utility>

namespace polling {

using namespace Qt::Literals::StringLiterals;

// What the own store numbers class and properties with.
inline constexpr int VideoClass = 101;
inline constexpr int TitleId = 102;
inline constexpr int PositionId = 103;
inline constexpr int FileNameId = 104;
inline constexpr int TypeId = 105;

struct Video
{
    QString title;
    QString position;
    QString fileName;
    int stamp = 0; // 0: none
};

// A library by number, as a server would tell of it: video n stands in group n % 256.
class PolledServer
{
public:
    PolledServer()
    {
        m_ownStore.answerWith({{VideoClass, TitleId, PositionId, FileNameId, TypeId}});
        m_store.answerBy([this](const SparqlQuery &query) { return answer(query.text()); });
    }

    std::map<int, Video> videos;
    bool away = false;
    bool countsStamps = true;
    bool answersRowsLater = false; // when finishRows() is called
    qsizetype mostRows = 1000000; // more are cut off without a word
    std::function<void()> beforeRows; // happens between a poll's look at the groups and its reading them

    [[nodiscard]] FakeSparqlStore &store() { return m_store; }
    [[nodiscard]] FakeSparqlStore &ownStore() { return m_ownStore; }

    // What was asked since the last call: "stamps", "groups", or "rows" with the number of groups.
    QStringList takeQuestions()
    {
        QStringList words;
        for (const QString &text : m_store.texts()) {
            if (text == ChangePollTexts::Stamps)
                words.append(u"stamps"_s);
            else if (text == ChangePollTexts::Groups)
                words.append(u"groups"_s);
            else
                words.append(u"rows %1"_s.arg(groupsOf(text).size()));
        }
        m_store.clear();
        return words;
    }

    void finishRows(int statement)
    {
        m_store.finish(statement, rows(groupsOf(m_store.statements().at(statement).text)));
    }

    // What a list holds that is loaded now.
    [[nodiscard]] LibrarySnapshot list() const
    {
        LibrarySnapshot snapshot;
        for (const auto &[id, video] : videos)
            snapshot.add({id, video.title, video.position, video.fileName});
        return snapshot;
    }

private:
    static QSet<int> groupsOf(const QString &text)
    {
        static const QRegularExpression name(u"\"([0-9a-f]{2})\""_s);
        QSet<int> groups;
        const QString list = text.mid(text.lastIndexOf(u" IN ("_s));
        for (const auto &match : name.globalMatch(list))
            groups.insert(match.captured(1).toInt(nullptr, 16));
        return groups;
    }
    static QString groupName(int id) { return u"%1"_s.arg(id % 256, 2, 16, QChar(u'0')); }

    FakeSparqlAnswer answer(const QString &text)
    {
        if (away)
            return FakeSparqlAnswer::error(u"connection refused"_s);
        if (text == ChangePollTexts::Stamps)
            return countsStamps ? FakeSparqlAnswer::rows(stamps())
                                : FakeSparqlAnswer::error(u"no such function"_s);
        if (text == ChangePollTexts::Groups)
            return FakeSparqlAnswer::rows(groups());
        if (answersRowsLater)
            return FakeSparqlAnswer::later();
        if (const auto change = std::exchange(beforeRows, {}))
            change();
        return FakeSparqlAnswer::rows(rows(groupsOf(text)));
    }
    [[nodiscard]] QList<QVariantList> stamps() const
    {
        int stamped = 0;
        int newest = 0;
        for (const auto &[id, video] : videos) {
            stamped += video.stamp > 0 ? 1 : 0;
            newest = qMax(newest, video.stamp);
        }
        return {{int(videos.size()), stamped, newest}};
    }
    [[nodiscard]] QList<QVariantList> groups() const
    {
        std::map<QString, std::pair<int, QString>> groups;
        for (const auto &[id, video] : videos) {
            auto &[count, content] = groups[groupName(id)];
            ++count;
            content
                += u"%1/%2/%3/%4;"_s.arg(QString::number(id), video.title, video.position, video.fileName);
        }
        QList<QVariantList> rows;
        for (const auto &[name, group] : groups)
            rows.append({name, group.first, group.second});
        return rows;
    }
    [[nodiscard]] QList<QVariantList> rows(const QSet<int> &groups) const
    {
        QList<QVariantList> rows;
        for (const auto &[id, video] : videos) {
            if (groups.contains(id % 256) && rows.size() < mostRows)
                rows.append({id, video.title, video.position, video.fileName, groupName(id)});
        }
        return rows;
    }

    FakeSparqlStore m_ownStore;
    FakeSparqlStore m_store{u"QSPARQL_ENDPOINT"_s};
};

} // namespace polling

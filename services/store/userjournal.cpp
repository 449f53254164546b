// SPDX-License-Identifier: GPL-3.0-or-later
#include "userjournal.h"

#include "storelog.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>
#include <QSaveFile>

#include <unistd.h>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int s_outdatedLinesKept = 200;

QJsonObject toJson(const UserData &data)
{
    QJsonObject object{
        {u"video"_s, data.urn},        {u"url"_s, data.url},         {u"file"_s, data.identity.toText()},
        {u"position"_s, data.runTime}, {u"plays"_s, data.playCount}, {u"played"_s, data.lastPlayed},
    };
    if (data.title)
        object.insert(u"title"_s, *data.title);
    return object;
}

UserData fromJson(const QJsonObject &object)
{
    UserData data;
    data.urn = object.value(u"video"_s).toString();
    data.url = object.value(u"url"_s).toString();
    data.identity = FileIdentity::fromText(object.value(u"file"_s).toString()).value_or(FileIdentity());
    if (object.contains(u"title"_s))
        data.title = object.value(u"title"_s).toString();
    data.runTime = object.value(u"position"_s).toInteger();
    data.playCount = object.value(u"plays"_s).toInt();
    data.lastPlayed = object.value(u"played"_s).toString();
    return data;
}

QJsonObject brokenToJson(const QString &path, const BrokenFile &file)
{
    return {{u"broken"_s, path},
            {u"size"_s, file.size},
            {u"modified"_s, file.modifiedMs},
            {u"reason"_s, file.reason}};
}

QByteArray toLine(const QJsonObject &object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n';
}

} // namespace

UserJournal::UserJournal(const QString &path) : m_file(path) { }

bool UserJournal::open()
{
    m_file.close();
    if (m_file.open(QIODevice::ReadOnly)) {
        while (!m_file.atEnd())
            applyLine(m_file.readLine());
        m_file.close();
    }
    const qsizetype live = m_entries.size() + m_broken.size();
    if (m_lines > 2 * live + s_outdatedLinesKept)
        compact();
    // Unbuffered: what append() wrote has left the process.
    if (!m_file.open(QIODevice::ReadWrite | QIODevice::Append | QIODevice::Unbuffered)) {
        qCWarning(lcStore, "cannot write %s: %s", qUtf8Printable(m_file.fileName()),
                  qUtf8Printable(m_file.errorString()));
        return false;
    }
    // A line that was cut off by a crash must not take the next one with it.
    if (m_file.size() > 0 && m_file.seek(m_file.size() - 1) && m_file.read(1) != "\n")
        m_file.write("\n");
    return true;
}

void UserJournal::applyLine(const QByteArray &line)
{
    ++m_lines;
    const QJsonObject object = QJsonDocument::fromJson(line).object();
    if (object.contains(u"video"_s)) {
        put(fromJson(object));
    } else if (object.contains(u"forgotten"_s)) {
        drop(object.value(u"forgotten"_s).toString());
    } else if (object.contains(u"broken"_s)) {
        m_broken.insert(object.value(u"broken"_s).toString(),
                        {object.value(u"size"_s).toInteger(), object.value(u"modified"_s).toInteger(),
                         object.value(u"reason"_s).toString()});
    } else if (object.contains(u"mended"_s)) {
        m_broken.remove(object.value(u"mended"_s).toString());
    }
}

void UserJournal::put(const UserData &data)
{
    drop(data.urn);
    m_entries.insert(data.urn, data);
    m_urnByUrl.insert(data.url, data.urn);
    ++m_sizes[data.identity.size];
}

void UserJournal::drop(const QString &urn)
{
    const auto found = m_entries.constFind(urn);
    if (found == m_entries.cend())
        return;
    if (m_urnByUrl.value(found->url) == urn)
        m_urnByUrl.remove(found->url);
    if (--m_sizes[found->identity.size] == 0)
        m_sizes.remove(found->identity.size);
    m_entries.erase(found);
}

bool UserJournal::compact()
{
    QSaveFile file(m_file.fileName());
    if (!file.open(QIODevice::WriteOnly))
        return false;
    for (const UserData &data : std::as_const(m_entries))
        file.write(toLine(toJson(data)));
    for (auto it = m_broken.cbegin(); it != m_broken.cend(); ++it)
        file.write(toLine(brokenToJson(it.key(), it.value())));
    m_lines = int(m_entries.size() + m_broken.size());
    // commit() makes the content reach the disk before the rename.
    return file.commit();
}

bool UserJournal::append(const QJsonObject &object, bool toDisk)
{
    const QByteArray line = toLine(object);
    if (!m_file.isOpen() || m_file.write(line) != line.size()
        || (toDisk && ::fdatasync(m_file.handle()) != 0)) {
        qCWarning(lcStore, "cannot write %s: %s", qUtf8Printable(m_file.fileName()),
                  qUtf8Printable(m_file.errorString()));
        return false;
    }
    ++m_lines;
    return true;
}

const UserData *UserJournal::find(const QString &urn) const
{
    const auto found = m_entries.constFind(urn);
    return found == m_entries.cend() ? nullptr : &*found;
}

const UserData *UserJournal::findForFile(const QString &url, const FileIdentity &identity) const
{
    if (const UserData *known = find(m_urnByUrl.value(url)))
        return known;
    const UserData *moved = nullptr;
    for (const UserData &data : m_entries) {
        if (data.identity.sameContent(identity)
            || (data.identity.sameInode(identity) && data.identity.sameState(identity)))
            moved = &data;
    }
    return moved;
}

bool UserJournal::record(const UserData &data)
{
    if (const UserData *known = find(data.urn); known && *known == data)
        return true;
    if (!append(toJson(data), true))
        return false;
    put(data);
    return true;
}

bool UserJournal::forget(const QString &urn)
{
    if (!find(urn))
        return true;
    drop(urn);
    return append({{u"forgotten"_s, urn}}, false);
}

bool UserJournal::isBroken(const QString &path, const FileIdentity &identity) const
{
    const auto found = m_broken.constFind(path);
    return found != m_broken.cend() && found->size == identity.size
        && found->modifiedMs == identity.modifiedMs;
}

void UserJournal::recordBroken(const QString &path, const FileIdentity &identity, const QString &reason)
{
    const BrokenFile file{identity.size, identity.modifiedMs, reason};
    m_broken.insert(path, file);
    append(brokenToJson(path, file), false);
}

void UserJournal::forgetBroken(const QString &path)
{
    if (m_broken.remove(path))
        append({{u"mended"_s, path}}, false);
}

// SPDX-License-Identifier: MIT
#pragma once

#include <QDebug>
#include <QMap>
#include <QString>
#include <QStringList>

// What a host tells of the video that it shows: texts by key. The keys "uri", "title", "series" and "episode"
// are always there, with an empty text where nothing is known; ignore keys that you do not know.
class ContentRecord
{
public:
    ContentRecord() : ContentRecord(QString(), QString(), QString(), QString()) { }
    ContentRecord(const QString &uri, const QString &title, const QString &series, const QString &episode)
    {
        m_values.insert(QStringLiteral("uri"), uri);
        m_values.insert(QStringLiteral("title"), title);
        m_values.insert(QStringLiteral("series"), series);
        m_values.insert(QStringLiteral("episode"), episode);
    }

    // The percent-encoded address ("file:///home/user/Videos/a%20b.mp4", "http://...").
    [[nodiscard]] QString uri() const { return value(QStringLiteral("uri")); }
    [[nodiscard]] QString title() const { return value(QStringLiteral("title")); }
    [[nodiscard]] QString series() const { return value(QStringLiteral("series")); }
    // The number of the episode, in digits.
    [[nodiscard]] QString episode() const { return value(QStringLiteral("episode")); }

    // Empty for a key that is not there.
    [[nodiscard]] QString value(const QString &key) const { return m_values.value(key); }
    [[nodiscard]] QStringList keys() const { return m_values.keys(); }

    friend bool operator==(const ContentRecord &, const ContentRecord &) = default;
    friend QDebug operator<<(QDebug debug, const ContentRecord &record) { return debug << record.m_values; }

private:
    QMap<QString, QString> m_values;
};

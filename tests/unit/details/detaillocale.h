// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "data/videodetails.h"
#include "platform/toolkit/label.h"
#include "platform/toolkit/locale.h"

#include <QStringList>
#include <QTimeZone>

#include <memory>

// The locale of a device, with its texts, while it lives: "de_DE". They may be in a language of their own.
class DeviceLocale
{
public:
    explicit DeviceLocale(const QString &name, const QString &texts = QString())
    {
        const QString language = texts.isEmpty() ? name.section(u'_', 0, 0) : texts;
        qputenv("LANGUAGE", language.toUtf8());
        qputenv("LC_ALL", name.toUtf8() + ".UTF-8");
        qputenv("LANG", name.toUtf8() + ".UTF-8");
        m_locale = std::make_unique<toolkit::Locale>();
        m_locale->installTrCatalog(QStringLiteral("video"));
        m_locale->installTrCatalog(QStringLiteral("music"));
        install();
    }
    // Again, after another was.
    void install() { toolkit::Locale::setDefault(m_locale.get()); }
    ~DeviceLocale() { toolkit::Locale::setDefault(nullptr); }
    Q_DISABLE_COPY_MOVE(DeviceLocale)

private:
    std::unique_ptr<toolkit::Locale> m_locale;
};

// Of a video that was played, on 2 November 2026 at 21:05.
[[nodiscard]] inline VideoDetails playedVideo()
{
    VideoDetails details;
    details.urn = QStringLiteral("urn:uuid:1");
    details.url = QStringLiteral("file:///videos/clip.mp4");
    details.fileName = QStringLiteral("clip.mp4");
    details.title = QStringLiteral("Birthday");
    details.mimeType = QStringLiteral("video/mp4");
    details.fileSize = 432747315; // 412.7 MB
    details.added = QDateTime(QDate(2026, 3, 14), QTime(18, 22));
    details.lastAccessed = QDateTime(QDate(2026, 11, 2), QTime(21, 5));
    details.duration = 760;
    details.playPosition = details.playCount = 3;
    return details;
}

// Their texts, as they were given.
[[nodiscard]] inline QStringList textsOf(const QList<toolkit::Label *> &labels)
{
    QStringList texts;
    for (const toolkit::Label *label : labels)
        texts.append(label->text());
    return texts;
}

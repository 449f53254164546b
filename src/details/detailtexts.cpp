// SPDX-License-Identifier: GPL-3.0-or-later
#include "detailtexts.h"

#include <data/videoconstants.h>
#include <data/videodetails.h>
#include <platform/toolkit/locale.h>

#include <QFileInfo>
#include <QUrl>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr double megabyte = 1048576;
constexpr double gigabyte = 1073741824;

// Of the file as a person names it: the address may have its signs encoded.
QFileInfo fileOf(const QString &url)
{
    return QFileInfo(QUrl::fromPercentEncoding(url.toUtf8()));
}

QString inUnits(double number, const QString &unit)
{
    QLocale locale = toolkit::Locale::current();
    locale.setNumberOptions(locale.numberOptions() | QLocale::OmitGroupSeparator);
    return unit.arg(locale.toString(number, 'f', 1));
}

} // namespace

QString DetailTexts::heading(const VideoDetails &details)
{
    return details.title.isEmpty() ? fileOf(details.url).completeBaseName() : details.title;
}

QString DetailTexts::format(const VideoDetails &details)
{
    const QString suffix = fileOf(details.url).suffix();
    if (!suffix.isEmpty())
        return suffix.toUpper();
    QString type = details.mimeType;
    if (type.startsWith(VIDEO_MIME_PREFIX))
        type.remove(0, VIDEO_MIME_PREFIX.size());
    return type;
}

QString DetailTexts::size(qint64 bytes)
{
    const auto size = double(bytes);
    if (size > gigabyte)
        return inUnits(size / gigabyte, qtTrId("qtn_comm_gigabytes"));
    if (size > megabyte)
        return inUnits(size / megabyte, qtTrId("qtn_comm_megabytes"));
    return inUnits(size / 1024, qtTrId("qtn_comm_kilobytes"));
}

QString DetailTexts::date(const QDateTime &moment)
{
    return toolkit::Locale::ofDates().toString(moment.toLocalTime().date(), QLocale::ShortFormat);
}

QString DetailTexts::time(const QDateTime &moment)
{
    if (!moment.isValid())
        return {};
    const QLocale locale = toolkit::Locale::ofDates();
    const QTime time = moment.toLocalTime().time();
    // The plain C locale tells seconds.
    return locale.language() == QLocale::C ? locale.toString(time, u"HH:mm"_s)
                                           : locale.toString(time, QLocale::ShortFormat);
}

QString DetailTexts::count(int number)
{
    return toolkit::Locale::current().toString(number);
}

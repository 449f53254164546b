// SPDX-License-Identifier: GPL-3.0-or-later
#include "librarylog.h"

#include <glib.h>

#include <QRegularExpression>

#include <cstring>

using namespace Qt::Literals::StringLiterals;

namespace {

const char *fieldOf(const GLogField *fields, gsize count, const char *key)
{
    for (gsize i = 0; i < count; ++i) {
        if (std::strcmp(fields[i].key, key) == 0 && fields[i].length < 0)
            return static_cast<const char *>(fields[i].value);
    }
    return "";
}

bool tellsIo(const QString &message)
{
    static const QRegularExpression pattern(
        u"disk|I/O|no space|enough space|read-?only|unable to open|malformed|corrupt|not a database"_s,
        QRegularExpression::CaseInsensitiveOption);
    return message.contains(pattern);
}

GLogWriterOutput writeLog(GLogLevelFlags level, const GLogField *fields, gsize count, gpointer)
{
    if ((level & (G_LOG_LEVEL_CRITICAL | G_LOG_LEVEL_WARNING))
        && std::strcmp(fieldOf(fields, count, "GLIB_DOMAIN"), "Tracker") == 0) {
        const QString message = QString::fromUtf8(fieldOf(fields, count, "MESSAGE"));
        if ((level & G_LOG_LEVEL_CRITICAL) || tellsIo(message))
            QMetaObject::invokeMethod(
                LibraryLog::instance(), [message] { Q_EMIT LibraryLog::instance()->trouble(message); },
                Qt::QueuedConnection);
    }
    return g_log_writer_default(level, fields, count, nullptr);
}

} // namespace

LibraryLog::LibraryLog()
{
    g_log_set_writer_func(&writeLog, nullptr, nullptr);
}

LibraryLog *LibraryLog::instance()
{
    static LibraryLog *const log = new LibraryLog;
    return log;
}

bool LibraryLog::tellsDamage(const QString &message)
{
    static const QRegularExpression pattern(u"malformed|corrupt|not a database"_s,
                                            QRegularExpression::CaseInsensitiveOption);
    return message.contains(pattern);
}

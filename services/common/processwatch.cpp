// SPDX-License-Identifier: GPL-3.0-or-later
#include "processwatch.h"

#include <QByteArray>
#include <QFile>

#include <unistd.h>

std::optional<ProcessUsage> readUsage(pid_t process)
{
    QFile file(QStringLiteral("/proc/%1/stat").arg(process));
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QByteArray line = file.readAll();
    // The second field is the program's name in parentheses and may hold blanks and parentheses itself.
    const QList<QByteArray> fields = line.mid(line.lastIndexOf(')') + 2).split(' ');
    constexpr int UserTicks = 11;
    constexpr int SystemTicks = 12;
    constexpr int ResidentPages = 21;
    if (fields.size() <= ResidentPages)
        return std::nullopt;
    const qint64 ticks = fields.at(UserTicks).toLongLong() + fields.at(SystemTicks).toLongLong();
    return ProcessUsage{ticks * 1000 / sysconf(_SC_CLK_TCK),
                        fields.at(ResidentPages).toLongLong() * sysconf(_SC_PAGESIZE)};
}

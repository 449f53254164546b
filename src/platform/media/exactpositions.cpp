// SPDX-License-Identifier: GPL-3.0-or-later
#include "exactpositions.h"

#include <QFile>
#include <QStandardPaths>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr qint64 NanosecondsInSecond = 1'000'000'000;
constexpr qint64 MaximumFileSize = 4 * 1024 * 1024;

} // namespace

ExactPositions &ExactPositions::shared()
{
    static ExactPositions positions(QStandardPaths::writableLocation(QStandardPaths::CacheLocation)
                                    + u"/paused-frames"_s);
    return positions;
}

ExactPositions::ExactPositions(const QString &fileName) : m_fileName(fileName)
{
    load();
}

void ExactPositions::remember(const QString &uri, MediaTime position)
{
    m_order.removeOne(uri);
    m_order.append(uri);
    m_positions.insert(uri, position.count());
    while (m_order.size() > Capacity)
        m_positions.remove(m_order.takeFirst());
}

MediaTime ExactPositions::at(const QString &uri, uint second) const
{
    const auto it = m_positions.constFind(uri);
    if (it != m_positions.constEnd() && it.value() / NanosecondsInSecond == qint64(second))
        return MediaTime(it.value());
    return std::chrono::seconds(second);
}

QByteArray ExactPositions::serialized() const
{
    QByteArray text;
    for (const QString &uri : m_order)
        text += QByteArray::number(m_positions.value(uri)) + ' ' + uri.toUtf8().toPercentEncoding() + '\n';
    return text;
}

void ExactPositions::load()
{
    QFile file(m_fileName);
    if (file.size() > MaximumFileSize || !file.open(QIODevice::ReadOnly))
        return;
    const QList<QByteArray> lines = file.readAll().split('\n');
    for (const QByteArray &line : lines) {
        const qsizetype blank = line.indexOf(' ');
        bool ok = false;
        const qint64 position = line.left(qMax<qsizetype>(blank, 0)).toLongLong(&ok);
        if (ok && position >= 0)
            remember(QString::fromUtf8(QByteArray::fromPercentEncoding(line.mid(blank + 1))),
                     MediaTime(position));
    }
}

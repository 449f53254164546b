// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFile>
#include <QHash>
#include <QObject>
#include <QString>
#include <QTime>

// A stopwatch for named measurements. Each result is written to a text file, with what was measured and the
// time that it had to stay below. For performance tests of a device: nothing depends on it.
class PerformanceMeasurement : public QObject
{
    Q_OBJECT

public:
    // Created on the first call, never deleted.
    [[nodiscard]] static PerformanceMeasurement *instance();

    // A repeated id begins anew.
    void start(const QString &id, int requiredMs, const QString &description);
    // Writes the result. An id that was never started writes nothing.
    void stop(const QString &id);

    [[nodiscard]] QString resultsFile() const { return m_resultsFile.fileName(); }
    // Time of day in ms; -1: never.
    [[nodiscard]] int lastStart() const { return m_lastStart; }
    [[nodiscard]] int lastStop() const { return m_lastStop; }

protected:
    // Another file, and another clock, for tests only.
    explicit PerformanceMeasurement(const QString &resultsFile
                                    = QStringLiteral("/home/user/performance_results.txt"));
    [[nodiscard]] virtual QTime now() const { return QTime::currentTime(); }

private:
    void writeHeader();
    void writeEntry(const QString &id, int elapsed);

    int m_lastStart = -1;
    int m_lastStop = -1;
    QHash<QString, QTime> m_startTimes;
    QHash<QString, QString> m_descriptions;
    QHash<QString, int> m_limits;
    QFile m_resultsFile;
};

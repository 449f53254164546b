// SPDX-License-Identifier: GPL-3.0-or-later
#include "performancemeasurement.h"

#include "applog.h"

#include <QDateTime>
#include <QTextStream>

using namespace Qt::Literals::StringLiterals;

namespace {
constexpr int RuleLength = 60; // hyphens
}

PerformanceMeasurement *PerformanceMeasurement::instance()
{
    static auto *const instance = new PerformanceMeasurement;
    return instance;
}

PerformanceMeasurement::PerformanceMeasurement(const QString &resultsFile) : m_resultsFile(resultsFile)
{
    if (m_resultsFile.exists())
        writeHeader();
}

void PerformanceMeasurement::writeHeader()
{
    if (!m_resultsFile.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
        qCWarning(appLog) << "PerformanceMeasurement::PerformanceMeasurement(const QString&)"
                          << m_resultsFile.errorString();
        return;
    }
    {
        QTextStream stream(&m_resultsFile);
        stream << "\n\nMeasures performed: " << QDateTime::currentDateTime().toString(Qt::TextDate) << "\n\n";
    }
    m_resultsFile.close();
}

void PerformanceMeasurement::start(const QString &id, int requiredMs, const QString &description)
{
    const QTime time = now();
    m_lastStart = time.msecsSinceStartOfDay();
    m_startTimes.insert(id, time);
    m_descriptions.insert(id, description);
    m_limits.insert(id, requiredMs);
}

void PerformanceMeasurement::stop(const QString &id)
{
    const auto started = m_startTimes.constFind(id);
    if (started == m_startTimes.constEnd())
        return;
    const QTime time = now();
    m_lastStop = time.msecsSinceStartOfDay();
    writeEntry(id, started->msecsTo(time));
}

// No blank before "ms" after the result, one after the limit: what reads the file expects it so.
void PerformanceMeasurement::writeEntry(const QString &id, int elapsed)
{
    if (!m_resultsFile.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Text)) {
        qCWarning(appLog) << "void PerformanceMeasurement::stop(const QString&)"
                          << m_resultsFile.errorString();
        return;
    }
    {
        QTextStream stream(&m_resultsFile);
        stream << QString(RuleLength, u'-') << "\nMeasure id: " << id << "\n"
               << "Description: " << m_descriptions.value(id) << "\n"
               << "Result: " << elapsed << "ms\n"
               << "Required: <" << m_limits.value(id) << " ms\n\n";
    }
    m_resultsFile.close();
}

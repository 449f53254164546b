// SPDX-License-Identifier: GPL-3.0-or-later
#include "scanprogress.h"

namespace {
constexpr int s_intervalMs = 100;
}

ScanProgress::ScanProgress(QObject *parent) : QObject(parent)
{
    m_timer.setSingleShot(true);
    m_timer.setInterval(s_intervalMs);
    connect(&m_timer, &QTimer::timeout, this, [this] {
        if (m_dirty)
            report();
    });
}

void ScanProgress::scanStarted()
{
    ++m_scans;
    update();
}

void ScanProgress::scanEnded()
{
    if (m_scans > 0)
        --m_scans;
    update();
}

void ScanProgress::fileSeen()
{
    ++m_seen;
    update();
}

void ScanProgress::fileDone()
{
    ++m_done;
    update();
}

void ScanProgress::update()
{
    const bool scanning = m_scans > 0 || m_done < m_seen;
    if (scanning && !m_scanning) {
        // What was counted before belongs to the last scan, but for the file that begins this one.
        m_seen -= m_done;
        m_done = 0;
    }
    m_dirty = true;
    m_scanning = scanning;
    if (!m_timer.isActive())
        report();
}

void ScanProgress::report()
{
    m_dirty = false;
    m_timer.start();
    Q_EMIT changed(m_scanning, m_seen, m_done);
}

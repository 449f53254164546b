// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QTimer>

// Files seen and done since the indexer was last idle, told at most ten times a second; the last report of a
// scan says that it is over.
class ScanProgress : public QObject
{
    Q_OBJECT

public:
    explicit ScanProgress(QObject *parent = nullptr);

    [[nodiscard]] bool isScanning() const { return m_scanning; }
    [[nodiscard]] uint seen() const { return m_seen; }
    [[nodiscard]] uint done() const { return m_done; }

    void scanStarted();
    void scanEnded();
    void fileSeen();
    void fileDone();

Q_SIGNALS:
    void changed(bool scanning, uint seen, uint done);

private:
    void update();
    void report();

    QTimer m_timer;
    int m_scans = 0;
    uint m_seen = 0;
    uint m_done = 0;
    bool m_scanning = false;
    bool m_dirty = false;
};

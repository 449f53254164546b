// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

class QDBusPendingCallWatcher;

// How far the store has come with reading the video folders. Asks and listens without ever waiting; without a
// store nothing is scanning.
class StoreProgress : public QObject
{
    Q_OBJECT

public:
    explicit StoreProgress(QObject *parent = nullptr);
    ~StoreProgress() override;

    [[nodiscard]] bool isScanning() const { return m_scanning; }
    [[nodiscard]] uint seen() const { return m_seen; } // files seen
    [[nodiscard]] uint done() const { return m_done; } // files done

Q_SIGNALS:
    // Only when one of the three is another than before.
    void changed(bool scanning, uint seen, uint done);

private Q_SLOTS:
    void progressChanged(bool scanning, uint seen, uint done);
    void progressRead(QDBusPendingCallWatcher *call);
    void ownerChanged(const QString &name, const QString &oldOwner, const QString &newOwner);

private:
    void ask();

    bool m_scanning = false;
    uint m_seen = 0;
    uint m_done = 0;
    bool m_heard = false; // the store told by itself: an older answer to a question is dropped
};

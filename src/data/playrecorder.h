// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusServiceWatcher>
#include <QObject>
#include <QString>
#include <QStringList>

// Tells the store that a playback of a stored video began; the store counts it and notes the time.
class PlayRecorder : public QObject
{
    Q_OBJECT

public:
    explicit PlayRecorder(QObject *parent = nullptr);

    // Does not wait for an answer. Nothing for an empty URN. A store that is just being started or started
    // again is told when it is there; what it may have heard is not told again.
    void record(const QString &urn);

private:
    void tell(const QString &urn);
    void storeCame();

    QDBusServiceWatcher m_watcher;
    QStringList m_untold;
};

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QString>
#include <QStringList>

// What other programs ask of this one, as signals for the controller. The adaptor calls the slots by name.
class KestrelService : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    // A play request reached the player.
    void notifyPlaybackStarted() { Q_EMIT playbackStarted(); }

Q_SIGNALS:
    // Position in seconds; 0: where the store says.
    void startPlayFromPosition(QString url, uint position);
    void playbackStarted();
    void launched();
    void raise();
    void cancelled();

public Q_SLOTS:
    // Of a list only the first address is played. A call with an empty list is ignored, and not announced.
    void play(const QStringList &urlList);
    void play(const QStringList &urlList, uint position);
    void launch();
    void launch(const QStringList &urlList);
    void cancel();
};

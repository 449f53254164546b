// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QObject>
#include <QString>
#include <QVariant>

// An error of a renderer. Codes are those of the player's message table (300 not found, 301 connection, 302
// address, 308 format, 314 audio device, 317 codec missing, ...).
struct AvloError
{
    int code = 0;
    QString message; // a technical line
};

// The media renderer behind a video widget: asynchronous, a state machine with commands in and notifications
// out.
class AvloRenderer : public QObject
{
    Q_OBJECT

public:
    enum State : int { Stopped = 0, Playing = 1, Paused = 2, Transitioning = 3 };
    Q_ENUM(State)

    using QObject::QObject;

    // Answers by calling `slot` (as SLOT() writes it, one unsigned argument) of `receiver` with the position
    // in whole seconds, through the event loop.
    virtual void getPosition(QObject *receiver, const char *slot) = 0;
    // "current-frame-on-pause" (bool): on pause the shown frame is written as an image and announced as
    // metadata "paused-thumbnail-uri" with the address as given to play and a plain path. "render-rectangle"
    // ("x,y,w,h"), "xid".
    virtual void setRendererProperty(const QString &name, const QVariant &value) = 0;
    bool setProperty(const char *name, const QVariant &value) { return QObject::setProperty(name, value); }
    void setProperty(const QString &name, const QVariant &value) { setRendererProperty(name, value); }

Q_SIGNALS:
    void stateChanged(AvloRenderer::State state);
    void metadataChanged(QString metadata, QList<QVariant> values);
    void error(AvloError error);
    // Per cent, 0 to 100.
    void bufferingInfo(float percent);
};

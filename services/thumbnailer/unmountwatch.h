// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

class Thumbnailer;

// Lets go of the user partition's files when the USB mode daemon is about to hand it to a computer: an open
// file would keep it from being unmounted.
class UnmountWatch : public QObject
{
    Q_OBJECT

public:
    explicit UnmountWatch(Thumbnailer &thumbnailer);

private Q_SLOTS:
    void usbState(const QString &state);

private:
    Thumbnailer &m_thumbnailer;
};

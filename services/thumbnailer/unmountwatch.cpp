// SPDX-License-Identifier: GPL-3.0-or-later
#include "unmountwatch.h"

#include "thumbnailer.h"

#include <QDBusConnection>

using namespace Qt::Literals::StringLiterals;

UnmountWatch::UnmountWatch(Thumbnailer &thumbnailer) : m_thumbnailer(thumbnailer)
{
    QDBusConnection::systemBus().connect(u"com.sorel.usb_moded"_s, u"/com/sorel/usb_moded"_s,
                                         u"com.sorel.usb_moded"_s, u"sig_usb_state_ind"_s, this,
                                         SLOT(usbState(QString)));
}

void UnmountWatch::usbState(const QString &state)
{
    if (state == u"pre-unmount"_s)
        m_thumbnailer.releaseFilesUnder(u"/home/user/MyDocs"_s);
}

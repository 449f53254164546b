// SPDX-License-Identifier: GPL-3.0-or-later
#include "kestrelinterfaceadaptor.h"

#include <QMetaObject>

KestrelInterfaceAdaptor::KestrelInterfaceAdaptor(QObject *parent) : QDBusAbstractAdaptor(parent)
{
    setAutoRelaySignals(true);
}

void KestrelInterfaceAdaptor::cancel()
{
    QMetaObject::invokeMethod(parent(), "cancel", Qt::DirectConnection);
}

void KestrelInterfaceAdaptor::launch(uint, const QString &)
{
    QMetaObject::invokeMethod(parent(), "launch", Qt::DirectConnection);
}

void KestrelInterfaceAdaptor::launch(uint, const QString &, const QStringList &uriList)
{
    QMetaObject::invokeMethod(parent(), "launch", Qt::DirectConnection, Q_ARG(QStringList, uriList));
}

void KestrelInterfaceAdaptor::play(uint, const QString &, uint index, const QString &playlistName)
{
    // The service has no such slot. Looked for first: a call that finds none writes four lines to the log.
    if (parent()->metaObject()->indexOfSlot("play(uint,QString)") >= 0)
        QMetaObject::invokeMethod(parent(), "play", Qt::DirectConnection, Q_ARG(uint, index),
                                  Q_ARG(QString, playlistName));
}

void KestrelInterfaceAdaptor::play(uint, const QString &, const QStringList &uriList)
{
    QMetaObject::invokeMethod(parent(), "play", Qt::DirectConnection, Q_ARG(QStringList, uriList));
}

void KestrelInterfaceAdaptor::play(const QStringList &uriList)
{
    QMetaObject::invokeMethod(parent(), "play", Qt::DirectConnection, Q_ARG(QStringList, uriList));
}

void KestrelInterfaceAdaptor::play(const QStringList &uriList, uint position)
{
    QMetaObject::invokeMethod(parent(), "play", Qt::DirectConnection, Q_ARG(QStringList, uriList),
                              Q_ARG(uint, position));
}

// SPDX-License-Identifier: GPL-3.0-or-later
#include "mprisserver.h"

#include "busname.h"
#include "mprisobject.h"
#include "mprisplayeradaptor.h"
#include "mprisrootadaptor.h"
#include "remotelog.h"

#include <QDBusMessage>

using namespace Qt::Literals::StringLiterals;

namespace {

const QString ObjectPath = u"/org/mpris/MediaPlayer2"_s;
const QString NamePrefix = u"org.mpris.MediaPlayer2."_s;

} // namespace

MprisServer::MprisServer(const QDBusConnection &bus, const RemoteIdentity &identity, RemotePlayer *player,
                         QObject *parent)
    : QObject(parent),
      m_bus(bus),
      m_object(new MprisObject(identity, player, this))
{
    new MprisRootAdaptor(m_object);
    new MprisPlayerAdaptor(m_object);
    m_told = m_object->announcedValues();
    // The object first: whoever waits for the name calls at once.
    if (!m_bus.registerObject(ObjectPath, m_object, QDBusConnection::ExportAdaptors)) {
        qCWarning(remoteLog, "%s: no remote control: %s", qUtf8Printable(ObjectPath),
                  qUtf8Printable(m_bus.lastError().message()));
        return;
    }
    m_name = new BusName(m_bus, NamePrefix + identity.name, this);
}

MprisServer::~MprisServer()
{
    delete m_name;
    m_bus.unregisterObject(ObjectPath);
}

QString MprisServer::serviceName() const
{
    return m_name ? m_name->owned() : QString();
}

void MprisServer::setState(const RemoteState &state)
{
    if (state == m_state)
        return;
    m_state = state;
    m_object->setState(state);
    if (m_tellQueued)
        return;
    m_tellQueued = true;
    QMetaObject::invokeMethod(this, &MprisServer::tellChanges, Qt::QueuedConnection);
}

// The jump belongs to the video that the listeners know: what changed goes first.
void MprisServer::announceJump(RemoteTime position)
{
    tellChanges();
    Q_EMIT m_object->Seeked(qMax<qlonglong>(0, position.count()));
}

void MprisServer::tellChanges()
{
    m_tellQueued = false;
    const QVariantMap values = m_object->announcedValues();
    QVariantMap changed;
    for (auto value = values.cbegin(); value != values.cend(); ++value) {
        if (m_told.value(value.key()) != value.value())
            changed.insert(value.key(), value.value());
    }
    if (changed.isEmpty())
        return;
    m_told = values;
    QDBusMessage signal = QDBusMessage::createSignal(ObjectPath, u"org.freedesktop.DBus.Properties"_s,
                                                     u"PropertiesChanged"_s);
    signal << u"org.mpris.MediaPlayer2.Player"_s << changed << QStringList();
    m_bus.send(signal);
}

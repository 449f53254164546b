// SPDX-License-Identifier: GPL-3.0-or-later
#include "fakeportal.h"

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QDBusUnixFileDescriptor>
#include <QFile>
#include <QUuid>

using namespace Qt::Literals::StringLiterals;

namespace {

const QString portalName = u"org.freedesktop.portal.Desktop"_s;

QByteArray contentOf(const QDBusUnixFileDescriptor &descriptor)
{
    QFile file;
    if (!file.open(descriptor.fileDescriptor(), QIODevice::ReadOnly))
        return {};
    return file.readAll();
}

} // namespace

FakePortal::FakePortal(const QString &busAddress)
    : m_name(QUuid::createUuid().toString()),
      m_bus(QDBusConnection::connectToBus(busAddress, m_name))
{
    qDBusRegisterMetaType<QList<QDBusUnixFileDescriptor>>();
    m_bus.registerVirtualObject(u"/org/freedesktop/portal/desktop"_s, this);
}

FakePortal::~FakePortal()
{
    m_bus.unregisterObject(u"/org/freedesktop/portal/desktop"_s);
    QDBusConnection::disconnectFromBus(m_name);
}

bool FakePortal::appear()
{
    return m_bus.registerService(portalName);
}

void FakePortal::disappear()
{
    m_bus.unregisterService(portalName);
}

void FakePortal::respond(uint answer)
{
    const Call call = calls.value(calls.size() - 1);
    QDBusMessage signal = QDBusMessage::createTargetedSignal(
        call.caller, call.handle, u"org.freedesktop.portal.Request"_s, u"Response"_s);
    signal << answer << QVariantMap();
    m_bus.send(signal);
}

QString FakePortal::introspect(const QString &path) const
{
    Q_UNUSED(path)
    return {};
}

void FakePortal::property(const QDBusMessage &message)
{
    if (interfaces.contains(message.arguments().value(0).toString()))
        m_bus.send(message.createReply(QVariant::fromValue(QDBusVariant(3U))));
    else
        m_bus.send(message.createErrorReply(QDBusError::InvalidArgs, u"No such interface"_s));
}

void FakePortal::request(const QDBusMessage &message)
{
    const QVariantList arguments = message.arguments();
    Call call;
    call.method = message.member();
    call.window = arguments.value(0).toString();
    call.caller = message.service();
    if (call.method == "OpenURI"_L1)
        call.address = arguments.value(1).toString();
    if (call.method == "OpenFile"_L1)
        call.files.append(contentOf(qvariant_cast<QDBusUnixFileDescriptor>(arguments.value(1))));
    call.options = qdbus_cast<QVariantMap>(arguments.last());
    const QVariant attachments = call.options.value(u"attachment_fds"_s);
    for (const QDBusUnixFileDescriptor &file : qdbus_cast<QList<QDBusUnixFileDescriptor>>(attachments))
        call.files.append(contentOf(file));
    const QString sender = call.caller.mid(1).replace(u'.', u'_');
    const QString token
        = manner == Manner::OwnHandle ? u"t1"_s : call.options.value(u"handle_token"_s).toString();
    call.handle = u"/org/freedesktop/portal/desktop/request/%1/%2"_s.arg(sender, token);
    calls.append(call);
    if (manner == Manner::Silent)
        return;
    const QString subject = call.options.value(u"subject"_s).toString();
    if (subject.contains(u'\n') || subject.size() > 200) {
        m_bus.send(message.createErrorReply(u"org.freedesktop.portal.Error.InvalidArgument"_s,
                                            u"Not accepting such a subject"_s));
        return;
    }
    if (manner == Manner::Refuses) {
        m_bus.send(message.createErrorReply(u"org.freedesktop.portal.Error.NotAllowed"_s, u"Not here"_s));
        return;
    }
    if (manner == Manner::ResponseFirst)
        respond(code);
    m_bus.send(message.createReply(QVariant::fromValue(QDBusObjectPath(call.handle))));
    if (manner == Manner::Answers)
        respond(code);
}

bool FakePortal::handleMessage(const QDBusMessage &message, const QDBusConnection &)
{
    if (message.interface() == "org.freedesktop.DBus.Properties"_L1 && message.member() == "Get"_L1) {
        property(message);
        return true;
    }
    if (!interfaces.contains(message.interface())) {
        m_bus.send(message.createErrorReply(QDBusError::UnknownInterface, u"No such interface"_s));
        return true;
    }
    request(message);
    return true;
}

// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/mockservice.h"

#include "support/ownwait.h"

#include <QDBusArgument>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusReply>
#include <QDBusVariant>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcessEnvironment>
#include <QTest>

#include <csignal>

using namespace Qt::Literals::StringLiterals;

// A method as the mock takes it: name, types of arguments and of the answer, code.
struct MockMethod
{
    QString texts[4];
};
Q_DECLARE_METATYPE(MockMethod)

QDBusArgument &operator<<(QDBusArgument &argument, const MockMethod &method)
{
    argument.beginStructure();
    for (const QString &text : method.texts)
        argument << text;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, MockMethod &method)
{
    argument.beginStructure();
    for (QString &text : method.texts)
        argument >> text;
    argument.endStructure();
    return argument;
}

namespace {
const QString MockInterface = u"org.freedesktop.DBus.Mock"_s;
constexpr int StartTimeout = 20000; // ms
constexpr int CallTimeout = 10000; // ms
} // namespace

MockService::MockService(const QString &busAddress, const QDBusConnection &bus, const QString &mockTemplate,
                         const QString &name, const QString &path)
    : m_busAddress(busAddress),
      m_bus(bus),
      m_template(mockTemplate),
      m_name(name),
      m_path(path)
{
    qDBusRegisterMetaType<MockMethod>();
    const QString own = QStringLiteral(KESTREL_MOCKS_DIR "/") + mockTemplate + u".py"_s;
    if (QFileInfo::exists(own))
        m_template = own;
}

MockService::~MockService()
{
    stop();
}

bool MockService::isOnBus()
{
    const OwnWait own;
    return m_bus.interface()->isServiceRegistered(m_name);
}

bool MockService::start(const QVariantMap &parameters)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"DBUS_SYSTEM_BUS_ADDRESS"_s, m_busAddress);
    environment.insert(u"DBUS_SESSION_BUS_ADDRESS"_s, m_busAddress);
    environment.insert(u"PYTHONDONTWRITEBYTECODE"_s, u"1"_s);
    m_process.setProcessEnvironment(environment);
    m_process.setStandardOutputFile(QProcess::nullDevice());
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    const QByteArray json
        = QJsonDocument(QJsonObject::fromVariantMap(parameters)).toJson(QJsonDocument::Compact);
    {
        const OwnWait own;
        // The system's own: the mock is a package of the distribution.
        m_process.start(u"/usr/bin/python3"_s,
                        {u"-m"_s, u"dbusmock"_s, u"-t"_s, m_template, u"-p"_s, QString::fromUtf8(json)});
    }
    return QTest::qWaitFor([this] { return isOnBus(); }, StartTimeout);
}

void MockService::stop()
{
    if (m_process.state() == QProcess::NotRunning)
        return;
    const OwnWait own;
    thaw();
    m_process.kill();
    m_process.waitForFinished();
}

void MockService::freeze()
{
    kill(pid_t(m_process.processId()), SIGSTOP);
}

void MockService::thaw()
{
    kill(pid_t(m_process.processId()), SIGCONT);
}

std::optional<QVariantList> MockService::call(const QString &path, const QString &interface,
                                              const QString &method, const QVariantList &arguments)
{
    QDBusMessage message = QDBusMessage::createMethodCall(m_name, path, interface, method);
    message.setArguments(arguments);
    const OwnWait own;
    const QDBusMessage reply = m_bus.call(message, QDBus::Block, CallTimeout);
    if (reply.type() == QDBusMessage::ReplyMessage)
        return reply.arguments();
    qWarning("%ls of %ls: %ls", qUtf16Printable(method), qUtf16Printable(m_name),
             qUtf16Printable(reply.errorMessage()));
    return std::nullopt;
}

std::optional<QVariantList> MockService::tell(const QString &method, const QVariantList &arguments)
{
    return call(m_path, MockInterface, method, arguments);
}

std::optional<QVariantList> MockService::callMethod(const QString &interface, const QString &method,
                                                    const QVariantList &arguments)
{
    return call(m_path, interface, method, arguments);
}

QVariant MockService::value(const QString &method)
{
    const auto values = tell(method);
    return values && !values->isEmpty() ? values->constFirst() : QVariant();
}

int MockService::calls(const QString &method, const QString &path)
{
    const auto values = call(path.isEmpty() ? m_path : path, MockInterface, u"GetMethodCalls"_s, {method});
    if (!values || values->isEmpty())
        return -1;
    int count = 0;
    const auto list = values->constFirst().value<QDBusArgument>();
    for (list.beginArray(); !list.atEnd(); ++count) {
        qulonglong time = 0;
        QVariantList arguments;
        list.beginStructure();
        list >> time >> arguments;
        list.endStructure();
    }
    list.endArray();
    return count;
}

void MockService::addObject(const QString &path, const QString &interface)
{
    QDBusArgument methods;
    methods.beginArray(QMetaType::fromType<MockMethod>());
    methods.endArray();
    tell(u"AddObject"_s, {path, interface, QVariantMap(), QVariant::fromValue(methods)});
}

void MockService::emitSignal(const QString &path, const QString &interface, const QString &name,
                             const QString &signature, const QVariantList &arguments)
{
    QDBusArgument values;
    values.beginArray(QMetaType::fromType<QDBusVariant>());
    for (const QVariant &argument : arguments)
        values << QDBusVariant(argument);
    values.endArray();
    call(path, MockInterface, u"EmitSignal"_s, {interface, name, signature, QVariant::fromValue(values)});
}

void MockService::setProperty(const QString &path, const QString &interface, const QString &name,
                              const QVariant &value)
{
    call(path, MockInterface, u"UpdateProperties"_s, {interface, QVariantMap{{name, value}}});
}

void MockService::answerWith(const QString &interface, const QString &method, const QString &inSignature,
                             const QString &outSignature, const QString &python, const QString &path)
{
    call(path.isEmpty() ? m_path : path, MockInterface, u"AddMethod"_s,
         {interface, method, inSignature, outSignature, python});
}

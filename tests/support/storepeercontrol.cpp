// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/storepeercontrol.h"

#include "support/ownwait.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QProcess>
#include <QTimer>

#include <csignal>
#include <functional>

using namespace Qt::Literals::StringLiterals;

namespace {

const QString name = u"com.harrow.Kestrel.Store"_s;
constexpr char programVariable[] = "KESTREL_STORE_PROGRAM";
constexpr char delayVariable[] = "KESTREL_PEER_DELAY_MS";

bool waitFor(const std::function<bool()> &condition)
{
    const QDeadlineTimer deadline(10000);
    while (!condition()) {
        if (deadline.hasExpired())
            return false;
        QEventLoop turn;
        QTimer::singleShot(10, &turn, &QEventLoop::quit);
        turn.exec();
    }
    return true;
}

} // namespace

StorePeerControl::StorePeerControl()
{
    qputenv("XDG_DATA_HOME", m_home.path().toLocal8Bit());
    qunsetenv(delayVariable);
    allowStart();
}

StorePeerControl::~StorePeerControl()
{
    forbidStart();
    kill();
}

void StorePeerControl::setDelay(int ms)
{
    qputenv(delayVariable, QByteArray::number(ms));
}

void StorePeerControl::forbidStart()
{
    qputenv(programVariable, "/nonexistent/kestrel-store");
}

void StorePeerControl::allowStart()
{
    qputenv(programVariable, KESTREL_STORE_PEER);
}

bool StorePeerControl::start()
{
    return QProcess::startDetached(QString::fromLocal8Bit(KESTREL_STORE_PEER), {})
        && waitFor([this] { return isRunning(); });
}

bool StorePeerControl::isRunning() const
{
    const OwnWait own;
    return QDBusConnection::sessionBus().interface()->isServiceRegistered(name);
}

qint64 StorePeerControl::pid() const
{
    const OwnWait own;
    return QDBusConnection::sessionBus().interface()->servicePid(name).value();
}

void StorePeerControl::kill()
{
    if (!isRunning())
        return;
    const qint64 before = pid();
    ::kill(pid_t(before), SIGKILL);
    waitFor([this, before] { return !isRunning() || pid() != before; });
}

void StorePeerControl::stall()
{
    ::kill(pid_t(pid()), SIGSTOP);
}

void StorePeerControl::goOn()
{
    ::kill(pid_t(pid()), SIGCONT);
}

void StorePeerControl::call(const QString &method, const QVariantList &arguments)
{
    QDBusMessage message = QDBusMessage::createMethodCall(name, u"/com/harrow/Kestrel/Store"_s,
                                                          u"com.harrow.Kestrel.StorePeer"_s, method);
    message.setArguments(arguments);
    constexpr int timeoutMs = 120000;
    const OwnWait own;
    const QDBusMessage reply = QDBusConnection::sessionBus().call(message, QDBus::Block, timeoutMs);
    if (reply.type() == QDBusMessage::ErrorMessage)
        qFatal("%s: %s", qPrintable(method), qPrintable(reply.errorMessage()));
}

void StorePeerControl::fill(int videos)
{
    call(u"Fill"_s, {uint(videos)});
}

void StorePeerControl::serve(bool on)
{
    call(u"Serve"_s, {on});
}

void StorePeerControl::emitReset()
{
    call(u"EmitReset"_s, {});
}

namespace {

struct Quad
{
    int graph, subject, predicate, object;
};

} // namespace

Q_DECLARE_METATYPE(Quad)

namespace {

QDBusArgument &operator<<(QDBusArgument &argument, const Quad &quad)
{
    argument.beginStructure();
    argument << quad.graph << quad.subject << quad.predicate << quad.object;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, Quad &quad)
{
    argument.beginStructure();
    argument >> quad.graph >> quad.subject >> quad.predicate >> quad.object;
    argument.endStructure();
    return argument;
}

} // namespace

void StorePeerControl::emitChanged(const Quads &deletes, const Quads &inserts)
{
    qDBusRegisterMetaType<Quad>();
    qDBusRegisterMetaType<QList<Quad>>();
    const auto typed = [](const Quads &quads) {
        QList<Quad> list;
        for (const QList<int> &quad : quads)
            list.append({quad.at(0), quad.at(1), quad.at(2), quad.at(3)});
        return QVariant::fromValue(list);
    };
    call(u"EmitChanged"_s, {typed(deletes), typed(inserts)});
}

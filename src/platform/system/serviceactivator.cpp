// SPDX-License-Identifier: GPL-3.0-or-later
#include "serviceactivator.h"

#include "ownprograms.h"

#include <QDBusConnection>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QLoggingCategory>
#include <QProcess>
#include <QTimer>

#include <unistd.h>

using namespace Qt::Literals::StringLiterals;

namespace {

Q_LOGGING_CATEGORY(lcActivator, "kestrel.system.activator", QtInfoMsg)

constexpr int startTimeoutMs = 10000;
// The bus gives a service 25 s to come up before it reports a failure itself.
constexpr int activationTimeoutMs = 30000;

QDBusMessage busCall(const QString &method)
{
    return QDBusMessage::createMethodCall(u"org.freedesktop.DBus"_s, u"/org/freedesktop/DBus"_s,
                                          u"org.freedesktop.DBus"_s, method);
}

} // namespace

class ServiceActivator::Private
{
public:
    Private(ServiceActivator *owner, const QString &busName, const QString &program)
        : q(owner),
          name(busName),
          program(program),
          bus(QDBusConnection::sessionBus()),
          watcher(busName, bus, QDBusServiceWatcher::WatchForOwnerChange)
    {
        startTimer.setSingleShot(true);
        startTimer.setInterval(startTimeoutMs);
        QObject::connect(&startTimer, &QTimer::timeout, q,
                         [this] { fail(u"%1 did not appear on the bus"_s.arg(name)); });
        QObject::connect(&watcher, &QDBusServiceWatcher::serviceOwnerChanged, q,
                         [this](const QString &, const QString &, const QString &newOwner) {
                             setOwned(!newOwner.isEmpty(), true);
                         });
        if (bus.isConnected())
            askOwner(false);
    }

    void askOwner(bool thenStart);
    void activate();
    void startProgram(const QString &activationError);
    void setOwned(bool nowOwned, bool announce);
    void succeed();
    void fail(const QString &reason);

    ServiceActivator *const q;
    const QString name;
    const QString program;
    QDBusConnection bus;
    QDBusServiceWatcher watcher;
    QTimer startTimer;
    bool owned = false;
    bool busy = false;
};

void ServiceActivator::Private::askOwner(bool thenStart)
{
    QDBusMessage call = busCall(u"NameHasOwner"_s);
    call << name;
    auto *reply = new QDBusPendingCallWatcher(bus.asyncCall(call), q);
    QObject::connect(reply, &QDBusPendingCallWatcher::finished, q,
                     [this, thenStart](QDBusPendingCallWatcher *done) {
                         done->deleteLater();
                         const QDBusPendingReply<bool> hasOwner = *done;
                         if (!hasOwner.isError())
                             setOwned(hasOwner.value(), false);
                         if (!thenStart || !busy)
                             return;
                         if (owned)
                             succeed();
                         else if (overridingProgram(program).isEmpty())
                             activate();
                         else
                             startProgram(QString());
                     });
}

void ServiceActivator::Private::activate()
{
    QDBusMessage call = busCall(u"StartServiceByName"_s);
    call << name << 0U;
    auto *reply = new QDBusPendingCallWatcher(bus.asyncCall(call, activationTimeoutMs), q);
    QObject::connect(reply, &QDBusPendingCallWatcher::finished, q, [this](QDBusPendingCallWatcher *done) {
        done->deleteLater();
        if (!busy)
            return;
        if (done->isError() && !owned) {
            startProgram(done->error().message());
        } else {
            setOwned(true, false);
            succeed();
        }
    });
}

void ServiceActivator::Private::startProgram(const QString &activationError)
{
    const QString path = q->programPath();
    if (path.isEmpty()) {
        fail(activationError.isEmpty() ? u"%1 is not installed"_s.arg(program) : activationError);
        return;
    }
    QProcess process;
    process.setProgram(path);
    process.setWorkingDirectory(u"/"_s);
    process.setStandardInputFile(QProcess::nullDevice());
    // The service outlives this program: it must not hold a pipe that somebody waits on, but a developer who
    // names the program or starts from a terminal wants to read it.
    if (overridingProgram(program).isEmpty() && isatty(STDERR_FILENO) == 0) {
        process.setStandardOutputFile(QProcess::nullDevice());
        process.setStandardErrorFile(QProcess::nullDevice());
    }
    if (!process.startDetached()) {
        fail(u"%1 cannot be started: %2"_s.arg(path, process.errorString()));
        return;
    }
    qCInfo(lcActivator).noquote() << name << "started as" << path;
    startTimer.start();
}

void ServiceActivator::Private::setOwned(bool nowOwned, bool announce)
{
    const bool changed = owned != nowOwned;
    owned = nowOwned;
    // A hand-over from one owner to the next is told too: what was behind the name is another than before.
    if (announce || changed)
        Q_EMIT q->ownerChanged(owned);
    if (owned && busy && startTimer.isActive())
        succeed();
}

void ServiceActivator::Private::succeed()
{
    startTimer.stop();
    busy = false;
    Q_EMIT q->ready();
}

void ServiceActivator::Private::fail(const QString &reason)
{
    startTimer.stop();
    busy = false;
    qCDebug(lcActivator).noquote() << name
                                   << "is not available:" << reason; // whoever asked says what that means
    Q_EMIT q->failed(reason);
}

ServiceActivator::ServiceActivator(const QString &busName, const QString &program, QObject *parent)
    : QObject(parent),
      d(std::make_unique<Private>(this, busName, program))
{
}

ServiceActivator::~ServiceActivator() = default;

void ServiceActivator::ensure()
{
    if (d->busy)
        return;
    d->busy = true;
    if (!d->bus.isConnected()) {
        QTimer::singleShot(0, this, [this] { d->fail(u"there is no session bus"_s); });
    } else {
        // The owner first: for a name that no service file gives, the bus refuses activation also when it is
        // owned.
        d->askOwner(true);
    }
}

bool ServiceActivator::isOwned() const
{
    return d->owned;
}

void ServiceActivator::setStartTimeout(int ms)
{
    d->startTimer.setInterval(ms);
}

QString ServiceActivator::programPath() const
{
    const QString named = overridingProgram(d->program);
    return named.isEmpty() ? installedProgram(d->program) : named;
}

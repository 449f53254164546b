// SPDX-License-Identifier: GPL-3.0-or-later
#include "applicationservice.h"

#include "applicationserviceadaptor.h"
#include "applicationwindow.h"
#include "toolkitlog.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QEventLoop>
#include <QTimer>

#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace toolkit {

namespace {

constexpr int ownerMilliseconds = 2000; // for the running instance to answer

QString objectPath(const QString &serviceName)
{
    QString path = u'/' + serviceName;
    return path.replace(u'.', u'/').replace(u'-', u'_');
}

enum class Told { Yes, NoAnswer, NoOwner };

// Waits in an event loop: a running instance that hangs costs two seconds and no more.
Told tellOwner(const QDBusConnection &bus, const QString &serviceName, const ActivationToken &token)
{
    QDBusMessage activate = QDBusMessage::createMethodCall(serviceName, objectPath(serviceName),
                                                           u"org.freedesktop.Application"_s, u"Activate"_s);
    activate << token.platformData();
    activate.setAutoStartService(false);
    const QDBusPendingReply<> reply = bus.asyncCall(activate, ownerMilliseconds);
    QDBusPendingCallWatcher watcher(reply);
    QEventLoop loop;
    QObject::connect(&watcher, &QDBusPendingCallWatcher::finished, &loop, &QEventLoop::quit);
    QTimer::singleShot(ownerMilliseconds, &loop, &QEventLoop::quit);
    if (!watcher.isFinished())
        loop.exec(QEventLoop::ExcludeUserInputEvents);
    if (!watcher.isFinished())
        return Told::NoAnswer;
    if (!watcher.isError())
        return Told::Yes;
    return watcher.error().type() == QDBusError::ServiceUnknown ? Told::NoOwner : Told::NoAnswer;
}

} // namespace

ApplicationService::ApplicationService(const QString &serviceName, QObject *parent)
    : QObject(parent),
      m_serviceName(serviceName),
      m_ownToken(ActivationToken::ofEnvironment())
{
    new ApplicationServiceAdaptor(this);
}

ApplicationService::~ApplicationService()
{
    if (!m_registered)
        return;
    QDBusConnection bus = QDBusConnection::sessionBus();
    bus.unregisterObject(objectPath(m_serviceName));
    bus.unregisterService(m_serviceName);
}

bool ApplicationService::registerOrRedirect()
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        qCInfo(lcToolkit) << "no session bus: a second start will not find this one";
        return true;
    }
    // The object first: whoever sees the name may call at once.
    const QString path = objectPath(m_serviceName);
    if (!bus.registerObject(path, this, QDBusConnection::ExportAdaptors))
        qCWarning(lcToolkit) << "cannot serve" << path;
    // Twice: an owner may end between the two steps.
    for (int attempt = 0; attempt < 2; ++attempt) {
        if (bus.registerService(m_serviceName)) {
            m_registered = true;
            return true;
        }
        switch (tellOwner(bus, m_serviceName, m_ownToken)) {
        case Told::Yes:
            bus.unregisterObject(path);
            return false;
        case Told::NoAnswer:
            qCWarning(lcToolkit) << "the running instance does not answer";
            bus.unregisterObject(path);
            return false;
        case Told::NoOwner:
            break;
        }
    }
    qCWarning(lcToolkit) << "the name" << m_serviceName << "cannot be had";
    return true;
}

void ApplicationService::holdCalls()
{
    m_held = true;
}

void ApplicationService::releaseCalls()
{
    m_held = false;
    if (m_waiting)
        deliver();
}

void ApplicationService::take(const QStringList &uris, const ActivationToken &token)
{
    if (!uris.isEmpty())
        m_uris = uris;
    if (!token.isEmpty())
        m_token = token;
    if (m_waiting)
        return;
    m_waiting = true;
    QMetaObject::invokeMethod(this, &ApplicationService::deliver, Qt::QueuedConnection);
}

void ApplicationService::deliver()
{
    if (m_held || !m_waiting)
        return;
    m_waiting = false;
    const QStringList uris = std::exchange(m_uris, {});
    ApplicationWindow *const window = ApplicationWindow::current();
    if (window != nullptr)
        window->setActivation(m_token);
    m_token = {};
    if (uris.isEmpty())
        launch();
    else
        open(uris);
    if (window != nullptr && window == ApplicationWindow::current())
        window->setActivation({});
}

void ApplicationService::launch() { }

void ApplicationService::open(const QStringList &)
{
    launch();
}

} // namespace toolkit

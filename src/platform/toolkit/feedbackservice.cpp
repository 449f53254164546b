// SPDX-License-Identifier: GPL-3.0-or-later
#include "feedbackservice.h"

#include "toolkitlog.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QGuiApplication>

using namespace Qt::Literals::StringLiterals;

namespace toolkit {

namespace {

constexpr int OneRound = -1; // the length of a feedback: what its sound or pattern has

QString service()
{
    return u"org.sigxcpu.Feedback"_s;
}

} // namespace

FeedbackService *FeedbackService::instance()
{
    static FeedbackService *service = nullptr;
    if (service == nullptr) {
        service = new FeedbackService;
        connect(service, &QObject::destroyed, [] { service = nullptr; });
        service->setParent(QCoreApplication::instance());
    }
    return service;
}

FeedbackService::FeedbackService()
{
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return;
    auto *owner = new QDBusServiceWatcher(service(), bus, QDBusServiceWatcher::WatchForOwnerChange, this);
    connect(owner, &QDBusServiceWatcher::serviceRegistered, this, [this] { m_present = true; });
    connect(owner, &QDBusServiceWatcher::serviceUnregistered, this, [this] {
        m_present = false;
        qCInfo(lcWidgets) << "the feedback service went away: touches are seen only";
    });
    ask();
}

void FeedbackService::ask()
{
    QDBusMessage call = QDBusMessage::createMethodCall(u"org.freedesktop.DBus"_s, u"/org/freedesktop/DBus"_s,
                                                       u"org.freedesktop.DBus"_s, u"NameHasOwner"_s);
    call << service();
    auto *watcher = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        watcher->deleteLater();
        const QDBusPendingReply<bool> reply = *watcher;
        if (!reply.isError() && reply.value())
            m_present = true;
    });
}

void FeedbackService::trigger(const QString &event)
{
    if (!m_present)
        return;
    QDBusMessage call = QDBusMessage::createMethodCall(service(), u"/org/sigxcpu/Feedback"_s, service(),
                                                       u"TriggerFeedback"_s);
    call.setAutoStartService(false);
    call << QGuiApplication::desktopFileName() << event << QVariantMap() << OneRound;
    QDBusConnection::sessionBus().send(call); // nobody waits for the answer
}

} // namespace toolkit

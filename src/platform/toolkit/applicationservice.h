// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "activationtoken.h"

#include <QObject>
#include <QString>
#include <QStringList>

namespace toolkit {

// Single instance on the session bus: the first start owns `serviceName`; a second start's request reaches
// launch() of the running one. Served as org.freedesktop.Application on the path of the same name; the
// object stands before the name is taken, so that a call which starts the program is answered.
class ApplicationService : public QObject
{
    Q_OBJECT

public:
    explicit ApplicationService(const QString &serviceName, QObject *parent = nullptr);
    ~ApplicationService() override;

    [[nodiscard]] QString serviceName() const { return m_serviceName; }
    // Called by Application when it is made. True: this process is the one (also without a bus). False:
    // another owns the name and was told; this process is to end.
    bool registerOrRedirect();

    // Between the two, calls are answered and kept: the program is not ready. Then one comes, the latest
    // open() if there was one.
    void holdCalls();
    void releaseCalls();

    // A second start of the program. While this and open() run, raising the window uses the caller's right to
    // the focus.
    virtual void launch();
    // Another program asks to open files through the desktop's own interface; launches. The list holds
    // something, in whatever spelling the caller chose.
    virtual void open(const QStringList &uris);

    // A call from the bus; without `uris` a launch. Calls of one turn of the event loop come as one.
    void take(const QStringList &uris, const ActivationToken &token);

private:
    void deliver();

    QString m_serviceName;
    ActivationToken m_ownToken; // of this process's start
    bool m_registered = false;
    bool m_held = false;
    bool m_waiting = false; // a call is to be delivered
    QStringList m_uris;
    ActivationToken m_token;
};

} // namespace toolkit

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QString>

#include <memory>

// Brings one of the program's own services to the session bus, without blocking: D-Bus activation first; when
// the bus does not know the name, the program of that name beside this executable (or in libexec), detached.
// For a program "kestrel-store" the environment variable KESTREL_STORE_PROGRAM names another program, which
// is then started instead of an activation.
class ServiceActivator : public QObject
{
    Q_OBJECT

public:
    ServiceActivator(const QString &busName, const QString &program, QObject *parent = nullptr);
    ~ServiceActivator() override;

    // Starts (or finds) the service. Ends in ready() or failed(), never from within this call. May be called
    // again after either; a call while one is under way changes nothing.
    void ensure();
    [[nodiscard]] bool isOwned() const;

    // How long a program that was started may take until it owns the name; 10 s unless set.
    void setStartTimeout(int ms);

    // The program that is started when the bus cannot activate the name; empty when there is none.
    [[nodiscard]] QString programPath() const;

Q_SIGNALS:
    void ready();
    void failed(QString reason);
    // The owner of the name changed: a service that went away (false), or came, also restarted (true).
    void ownerChanged(bool owned);

private:
    class Private;
    std::unique_ptr<Private> d;
};

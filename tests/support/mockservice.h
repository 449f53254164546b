// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusConnection>
#include <QProcess>
#include <QString>
#include <QVariantList>
#include <QVariantMap>

#include <optional>

// A service that python-dbusmock plays on a bus: a process of its own, which can be stopped, started again
// and told what to answer.
class MockService
{
public:
    // `busAddress` is that of the bus, `bus` a connection to it of the test's own. `mockTemplate` is one of
    // python-dbusmock's or the name of a file in the folder mocks.
    MockService(const QString &busAddress, const QDBusConnection &bus, const QString &mockTemplate,
                const QString &name, const QString &path);
    ~MockService();
    Q_DISABLE_COPY_MOVE(MockService)

    // False when its name did not appear on the bus.
    [[nodiscard]] bool start(const QVariantMap &parameters = {});
    void stop();
    // Stopped as a process and running again: it neither answers nor goes away meanwhile.
    void freeze();
    void thaw();

    // Of the mock's own interface; nothing on failure.
    std::optional<QVariantList> tell(const QString &method, const QVariantList &arguments = {});
    [[nodiscard]] QStringList texts(const QString &method) { return value(method).toStringList(); }
    [[nodiscard]] QVariant value(const QString &method);
    // Of the service's own interface at its main object; nothing on failure.
    std::optional<QVariantList> callMethod(const QString &interface, const QString &method,
                                           const QVariantList &arguments = {});
    // How often `method` was called so far, at the main object or another.
    [[nodiscard]] int calls(const QString &method, const QString &path = {});
    void addObject(const QString &path, const QString &interface);
    void emitSignal(const QString &path, const QString &interface, const QString &name,
                    const QString &signature, const QVariantList &arguments);
    void setProperty(const QString &path, const QString &interface, const QString &name,
                     const QVariant &value);
    // From now on `method` runs `python`, which sets `ret`.
    void answerWith(const QString &interface, const QString &method, const QString &inSignature,
                    const QString &outSignature, const QString &python, const QString &path = {});

private:
    std::optional<QVariantList> call(const QString &path, const QString &interface, const QString &method,
                                     const QVariantList &arguments);
    [[nodiscard]] bool isOnBus();

    QString m_busAddress;
    QDBusConnection m_bus;
    QString m_template;
    QString m_name;
    QString m_path;
    QProcess m_process;
};

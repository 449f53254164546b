// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

// A secret service on a bus, over a connection of its own: has the items and answers in the manner that it is
// told.
class FakeSecrets : public QDBusVirtualObject
{
    Q_OBJECT

public:
    enum class Fault {
        None,
        Silent, // no answer
        Error,
        Garbage, // an answer of another signature
        Gone // its process ends instead of answering
    };
    enum class Person { Unlocks, Declines, Waits };
    struct Item
    {
        QMap<QString, QString> attributes;
        QString secret;
        bool isLocked = false;
    };

    explicit FakeSecrets(const QString &busAddress);
    ~FakeSecrets() override;

    bool appear();
    void vanish(); // as a process that ends

    QList<Item> items;
    Person person = Person::Unlocks;
    QString faultAt; // a method
    Fault fault = Fault::None;
    QStringList calls; // methods, in order

    QString introspect(const QString &path) const override;
    bool handleMessage(const QDBusMessage &message, const QDBusConnection &connection) override;

private:
    [[nodiscard]] bool fails(const QDBusMessage &message);
    [[nodiscard]] QVariantList answer(const QDBusMessage &message);
    [[nodiscard]] QVariantList search(const QDBusMessage &message) const;
    [[nodiscard]] QVariantList unlock(const QDBusMessage &message);
    [[nodiscard]] QVariantList secrets(const QDBusMessage &message) const;
    void complete(const QString &caller, bool isDismissed);

    QString m_name;
    QDBusConnection m_bus;
    QString m_toUnlock;
};

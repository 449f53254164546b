// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <platform/system/devicestate.h>
#include <platform/system/usernotice.h>

#include <QList>
#include <QString>
#include <QStringList>
#include <QVariant>

// A device as a test wants it. What a test sets is what every back end of the kind says from then on, those
// made later, too; setLate() lets it follow through the event loop, as a peer's truth does; fail() is the
// loss of the peer: back to the start values. install() puts a fake in the machine's place, remove() takes it
// away and forgets what was set.
namespace fakes {

class Calls : public CallMonitor
{
    Q_OBJECT

public:
    explicit Calls(QObject *parent);
    ~Calls() override;
    [[nodiscard]] int getState() const override;

    static void set(int state);
    static void setLate(int state);
    static void fail();
    static void install();
    static void remove();
};

class Usb : public QObject, public UsbMode
{
    Q_OBJECT

public:
    [[nodiscard]] bool isMassStorage() const override { return m_massStorage; }
    void onChange(QObject *context, const Listener &listener) override;

    // As an announcement, as which it reaches everybody who hears the daemon; setLate(): when it was asked
    // for.
    static void set(bool massStorage, Source source = Source::Announcement);
    static void setLate(bool massStorage);
    static void fail();
    static void install();
    static void remove();

Q_SIGNALS:
    void changed(UsbMode::Source source);

private:
    static Usb &shared();

    bool m_massStorage = false;
};

// Keys of the key-value store.
class Context : public ContextProperty
{
    Q_OBJECT

public:
    Context(const QString &key, QObject *parent);
    ~Context() override;
    void subscribe() override { m_subscribed = true; }
    void unsubscribe() override { m_subscribed = false; }
    [[nodiscard]] QVariant value() const override;

    static void set(const QString &key, const QVariant &value);
    static void setLate(const QString &key, const QVariant &value);
    static void fail();
    static void install();
    static void remove();

private:
    QString m_key;
    bool m_subscribed = false;
};

// Keeps the modes that arrive; while it fails, none does.
class Backlight : public BacklightControl
{
public:
    void set(int mode) override;

    [[nodiscard]] static QList<int> modes();
    static void setFailing(bool failing);
    static void install();
    static void remove();
};

// Keeps the messages: those that were shown, at once or late, and those that nobody saw.
class Notices : public NotificationService
{
public:
    enum class Manner { AtOnce, Late, Failing };

    ~Notices() override;
    void install();
    void publishDeviceError(const QString &message) override;

    Manner manner = Manner::AtOnce;
    QStringList shown;
    QStringList unseen;

private:
    QObject m_context;
};

} // namespace fakes

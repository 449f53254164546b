// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/hangms.h"
#include "support/pythonpeer.h"

#include <platform/system/desktopnotifications.h>

#include <QDBusConnectionInterface>
#include <QElapsedTimer>
#include <QFile>
#include <QGuiApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

// Messages as a notification server gets them.
class NotificationsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QCoreApplication::setApplicationName(u"video"_s);
        QGuiApplication::setApplicationDisplayName(u"Videos"_s);
        QGuiApplication::setDesktopFileName(u"com.harrow.Kestrel"_s);
    }

    void cleanup()
    {
        m_server.stop();
        QFile::remove(record());
        QTRY_VERIFY(!isServed());
    }

    void aMessageIsADeviceError()
    {
        QVERIFY(startServer({u"body"_s, u"body-markup"_s}));
        DesktopNotifications notifications(QDBusConnection::sessionBus());
        notifications.publishDeviceError(u"No video during a call"_s);
        QTRY_COMPARE(received().size(), 1);
        const QJsonObject hints{{u"category"_s, u"device.error"_s},
                                {u"desktop-entry"_s, u"com.harrow.Kestrel"_s}};
        QCOMPARE(received().first(),
                 (QJsonObject{{u"application"_s, u"Videos"_s},
                              {u"replaces"_s, 0},
                              {u"icon"_s, u"com.harrow.Kestrel"_s},
                              {u"summary"_s, u"Videos"_s},
                              {u"body"_s, u"No video during a call"_s},
                              {u"actions"_s, QJsonArray()},
                              {u"hints"_s, hints},
                              {u"timeout"_s, -1}}));
    }

    void markupIsEscapedWhereTheServerTakesMarkup_data()
    {
        QTest::addColumn<QStringList>("capabilities");
        QTest::addColumn<QString>("summary");
        QTest::addColumn<QString>("body");
        const QString message = u"<b>A & \"B\"</b>"_s;
        QTest::newRow("markup") << QStringList{u"body"_s, u"body-markup"_s} << u"Videos"_s
                                << u"&lt;b&gt;A &amp; &quot;B&quot;&lt;/b&gt;"_s;
        QTest::newRow("plain") << QStringList{u"body"_s} << u"Videos"_s << message;
        QTest::newRow("no body") << QStringList{u"actions"_s} << message << QString();
        QTest::newRow("nothing at all") << QStringList() << message << QString();
    }

    void markupIsEscapedWhereTheServerTakesMarkup()
    {
        QFETCH(QStringList, capabilities);
        QFETCH(QString, summary);
        QFETCH(QString, body);
        QVERIFY(startServer(capabilities));
        DesktopNotifications notifications(QDBusConnection::sessionBus());
        notifications.publishDeviceError(u"<b>A & \"B\"</b>"_s);
        QTRY_COMPARE(received().size(), 1);
        QCOMPARE(received().first().value("summary"_L1).toString(), summary);
        QCOMPARE(received().first().value("body"_L1).toString(), body);
    }

    void anotherServerHasOtherCapabilities()
    {
        QVERIFY(startServer({u"body"_s}));
        DesktopNotifications notifications(QDBusConnection::sessionBus());
        // Asks after the one under test: what it knows, that one knows, too.
        BusPeer server(QDBusConnection::sessionBus(), u"org.freedesktop.Notifications"_s);
        QSignalSpy appearances(&server, &BusPeer::appeared);
        notifications.publishDeviceError(u"<1>"_s);
        QTRY_COMPARE(received().size(), 1);
        QTRY_COMPARE(appearances.size(), 1);
        m_server.stop();
        QVERIFY(startServer({u"body"_s, u"body-markup"_s}));
        QTRY_COMPARE(appearances.size(), 2);
        notifications.publishDeviceError(u"<2>"_s);
        QTRY_COMPARE(received().size(), 2);
        QCOMPARE(received().at(0).value("body"_L1).toString(), u"<1>"_s);
        QCOMPARE(received().at(1).value("body"_L1).toString(), u"&lt;2&gt;"_s);
    }

    void severalMessagesKeepTheirOrder()
    {
        QVERIFY(startServer({u"body"_s}));
        DesktopNotifications notifications(QDBusConnection::sessionBus());
        for (int i = 0; i < 5; ++i)
            notifications.publishDeviceError(QString::number(i));
        QTRY_COMPARE(received().size(), 5);
        for (int i = 0; i < 5; ++i)
            QCOMPARE(received().at(i).value("body"_L1).toString(), QString::number(i));
    }

    void withoutAServerTheLogHasIt()
    {
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"unseen message: Nobody listens"_s));
        DesktopNotifications notifications(QDBusConnection::sessionBus());
        notifications.publishDeviceError(u"Nobody listens"_s);
        notifications.flush();
        QVERIFY(startServer({u"body"_s}));
        notifications.publishDeviceError(u"Now somebody does"_s);
        QTRY_COMPARE(received().size(), 1);
    }

    void aServerThatRefuses()
    {
        QVERIFY(startServer({u"refuse"_s}));
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"unseen message: Refused"_s));
        DesktopNotifications notifications(QDBusConnection::sessionBus());
        notifications.publishDeviceError(u"Refused"_s);
        notifications.flush();
        QCOMPARE(received().size(), 1);
    }

    void aServerThatTalksNonsense()
    {
        QVERIFY(startServer({u"nonsense"_s}));
        DesktopNotifications notifications(QDBusConnection::sessionBus());
        notifications.publishDeviceError(u"<b>Anyway</b>"_s);
        QTRY_COMPARE(received().size(), 1);
        QCOMPARE(received().first().value("summary"_L1).toString(), u"<b>Anyway</b>"_s);
    }

    // Neither publishing nor quitting waits for ever.
    void aServerThatHangs()
    {
        QVERIFY(startServer({u"hang"_s}));
        DesktopNotifications notifications(QDBusConnection::sessionBus());
        QElapsedTimer timer;
        timer.start();
        notifications.publishDeviceError(u"Hello?"_s);
        QVERIFY(timer.elapsed() < HangMs);
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"unseen message: Hello"_s));
        notifications.flush();
        QVERIFY(timer.elapsed() < HangMs);
    }

    // A call refuses a play request with no page shown: the program says so and is gone.
    void aMessageOutlivesAProgramThatQuitsAtOnce()
    {
        QVERIFY(startServer({u"body"_s, u"body-markup"_s}));
        for (int run = 0; run < 5; ++run)
            QCOMPARE(QProcess::execute(notifier(), {u"Run <%1>"_s.arg(run)}), 0);
        QTRY_COMPARE(received().size(), 5);
        QCOMPARE(received().at(4).value("summary"_L1).toString(), u"Run <4>"_s);
    }

    // The server is started for the message, as desktops do that have none running.
    void aServerThatIsStartedForTheMessage()
    {
        QTemporaryDir services;
        QFile service(services.filePath(u"org.freedesktop.Notifications.service"_s));
        QVERIFY(service.open(QIODevice::WriteOnly));
        service.write(
            u"[D-BUS Service]\nName=org.freedesktop.Notifications\nExec=%1 %2 %3 body\n"_s
                .arg(QStringLiteral(KESTREL_PYTHON),
                     QStringLiteral(KESTREL_SOURCE_DIR "/tests/support/peers/notification_server.py"),
                     record())
                .toUtf8());
        service.close();
        QFile config(services.filePath(u"bus.conf"_s));
        QVERIFY(config.open(QIODevice::WriteOnly));
        config.write(
            u"<busconfig><type>session</type><listen>unix:tmpdir=%1</listen><servicedir>%1</servicedir>"
            "<policy context=\"default\"><allow send_destination=\"*\" eavesdrop=\"true\"/>"
            "<allow eavesdrop=\"true\"/><allow own=\"*\"/></policy></busconfig>"_s.arg(services.path())
                .toUtf8());
        config.close();
        QProcess bus;
        bus.start(u"dbus-daemon"_s,
                  {u"--config-file="_s + config.fileName(), u"--nofork"_s, u"--print-address"_s});
        QVERIFY(bus.waitForReadyRead(10000));
        QProcess program;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"DBUS_SESSION_BUS_ADDRESS"_s, QString::fromUtf8(bus.readLine().trimmed()));
        program.setProcessEnvironment(environment);
        program.start(notifier(), {u"Started for this"_s});
        QVERIFY(program.waitForFinished(20000));
        QTRY_COMPARE(received().size(), 1);
        bus.terminate();
        QVERIFY(bus.waitForFinished());
    }

private:
    [[nodiscard]] QString record() const { return m_home.filePath(u"record"_s); }
    static QString notifier() { return QCoreApplication::applicationDirPath() + u"/quitting_notifier"_s; }
    static bool isServed()
    {
        return QDBusConnection::sessionBus().interface()->isServiceRegistered(
            u"org.freedesktop.Notifications"_s);
    }
    bool startServer(const QStringList &capabilities)
    {
        return m_server.start(u"notification_server.py"_s, QStringList{record()} + capabilities);
    }
    [[nodiscard]] QList<QJsonObject> received() const
    {
        QList<QJsonObject> objects;
        QFile file(record());
        if (!file.open(QIODevice::ReadOnly))
            return objects;
        for (const QByteArray &line : file.readAll().split('\n')) {
            if (const QJsonDocument document = QJsonDocument::fromJson(line); document.isObject())
                objects.append(document.object());
        }
        return objects;
    }

    QTemporaryDir m_home;
    PythonPeer m_server;
};

QTEST_GUILESS_MAIN(NotificationsTest)
#include "notifications_test.moc"

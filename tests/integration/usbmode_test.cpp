// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/hangms.h"
#include "support/privatebus.h"
#include "support/pythonpeer.h"

#include <platform/system/usbmodeddaemon.h>

#include <QDBusConnectionInterface>
#include <QElapsedTimer>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

// What the USB mode daemon says about the user's partition.
class UsbModeTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        const QString address = m_bus.start();
        QVERIFY(!address.isEmpty());
        qputenv("DBUS_SYSTEM_BUS_ADDRESS", address.toUtf8());
        QVERIFY(QDBusConnection::systemBus().isConnected());
    }

    void cleanup()
    {
        m_mode.reset();
        m_daemon.stop();
        QTRY_VERIFY(!QDBusConnection::systemBus().interface()->isServiceRegistered(u"com.sorel.usb_moded"_s));
    }

    // The cable is plugged in and pulled, the person gets the files back.
    void exportedAndBack()
    {
        QVERIFY(startDaemon());
        follow();
        QTRY_VERIFY(m_settled);
        QVERIFY(m_daemon.command(u"state pre-unmount"_s));
        QVERIFY(m_daemon.command(u"mode mass_storage"_s));
        QVERIFY(m_daemon.command(u"state mass_storage"_s));
        QTRY_COMPARE(m_answers, QList<bool>{true});
        QVERIFY(m_daemon.command(u"mode charging_only"_s));
        QVERIFY(m_daemon.command(u"state USB disconnected"_s));
        QTRY_COMPARE(m_answers, (QList<bool>{true, false}));
        QVERIFY(!m_mode->isMassStorage());
    }

    void exportedBeforeTheProgramStarted()
    {
        QVERIFY(startDaemon(u"mass_storage"_s));
        follow();
        QVERIFY(!m_mode->isMassStorage()); // the cache, before the daemon has answered
        QTRY_COMPARE(m_answers, QList<bool>{true});
    }

    // An event within the export does not end it.
    void otherStatesAreNotTheMode()
    {
        QVERIFY(startDaemon(u"mass_storage"_s));
        follow();
        QTRY_VERIFY(m_mode->isMassStorage());
        QVERIFY(m_daemon.command(u"state data_in_use"_s));
        QVERIFY(m_daemon.command(u"state pre-unmount"_s));
        QVERIFY(m_daemon.command(u"mode charging_only"_s));
        QVERIFY(m_daemon.command(u"state charging_only"_s));
        QTRY_VERIFY(!m_mode->isMassStorage());
        QCOMPARE(m_answers, (QList<bool>{true, false}));
    }

    void lettersInCapitalsAreAnotherMode()
    {
        QVERIFY(startDaemon(u"MASS_STORAGE"_s));
        follow();
        QTRY_VERIFY(m_settled);
        QVERIFY(m_daemon.command(u"state MASS_STORAGE"_s));
        QVERIFY(m_daemon.command(u"state mass_storage"_s)); // later: once it is here, the others have passed
        QTRY_COMPARE(m_answers, QList<bool>{true});
    }

    void withoutTheDaemonNothingIsExported()
    {
        QTest::ignoreMessage(QtInfoMsg, QRegularExpression(u"no USB mode daemon"_s));
        follow();
        QTRY_VERIFY(m_settled);
        QVERIFY(!m_mode->isMassStorage());
        QVERIFY(startDaemon(u"mass_storage"_s));
        QTRY_VERIFY(m_mode->isMassStorage());
    }

    void theDaemonDiesAndComesBack()
    {
        QVERIFY(startDaemon(u"mass_storage"_s));
        follow();
        QTRY_VERIFY(m_mode->isMassStorage());
        QTest::ignoreMessage(QtInfoMsg, QRegularExpression(u"no USB mode daemon"_s));
        m_daemon.stop();
        QTRY_VERIFY(!m_mode->isMassStorage());
        QVERIFY(startDaemon(u"mass_storage"_s));
        QTRY_COMPARE(m_answers, (QList<bool>{true, false, true}));
        QVERIFY(m_daemon.command(u"mode charging_only"_s));
        QVERIFY(m_daemon.command(u"state charging_only"_s));
        QTRY_VERIFY(!m_mode->isMassStorage());
    }

    void theDaemonAnswersLate()
    {
        QVERIFY(startDaemon(u"mass_storage"_s));
        m_daemon.freeze();
        QElapsedTimer timer;
        timer.start();
        follow();
        QVERIFY(!m_mode->isMassStorage());
        QVERIFY(timer.elapsed() < HangMs);
        m_daemon.thaw();
        QTRY_VERIFY(m_mode->isMassStorage());
    }

    void theDaemonNeverAnswersButItsSignalsCount()
    {
        QVERIFY(startDaemon());
        QVERIFY(m_daemon.command(u"answer never"_s));
        follow();
        QTRY_VERIFY(m_settled);
        QVERIFY(m_daemon.command(u"state mass_storage"_s));
        QTRY_VERIFY(m_mode->isMassStorage());
    }

    void anAnswerThatIsNoneIsNoExport_data()
    {
        QTest::addColumn<QString>("answer");
        QTest::newRow("an error") << u"answer error"_s;
        QTest::newRow("a number") << u"answer number"_s;
    }

    void anAnswerThatIsNoneIsNoExport()
    {
        QFETCH(QString, answer);
        QVERIFY(startDaemon(u"mass_storage"_s));
        follow();
        QTRY_VERIFY(m_mode->isMassStorage());
        QVERIFY(m_daemon.command(answer));
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"does not tell its mode"_s));
        QVERIFY(m_daemon.command(u"state something"_s));
        QTRY_VERIFY(!m_mode->isMassStorage());
    }

    void signalsOfOtherTypesSayNothing()
    {
        QVERIFY(startDaemon());
        follow();
        QTRY_VERIFY(m_settled);
        QVERIFY(m_daemon.command(u"nonsense"_s));
        QVERIFY(m_daemon.command(u"mode mass_storage"_s));
        QVERIFY(m_daemon.command(u"state mass_storage"_s)); // after them on the same road
        QTRY_COMPARE(m_answers, QList<bool>{true});
        QVERIFY(m_daemon.command(u"nonsense"_s));
        QVERIFY(m_daemon.command(u"mode charging_only"_s));
        QVERIFY(m_daemon.command(u"state charging_only"_s));
        QTRY_COMPARE(m_answers, (QList<bool>{true, false}));
    }

    void theMachinesOwnIsTheDaemon()
    {
        QVERIFY(startDaemon(u"mass_storage"_s));
        UsbMode *mode = UsbMode::instance();
        QVERIFY(dynamic_cast<UsbModedDaemon *>(mode));
        QTRY_VERIFY(mode->isMassStorage());
        QTest::ignoreMessage(QtInfoMsg, QRegularExpression(u"no USB mode daemon"_s));
        m_daemon.stop();
        QTRY_VERIFY(!mode->isMassStorage());
    }

private:
    bool startDaemon(const QString &mode = u"charging_only"_s)
    {
        return m_daemon.start(u"usb_mode_daemon.py"_s, {mode});
    }
    void follow()
    {
        m_answers.clear();
        m_settled = false;
        m_mode = std::make_unique<UsbModedDaemon>(QDBusConnection::systemBus());
        m_mode->onChange(this, [this](UsbMode::Source) { m_answers.append(m_mode->isMassStorage()); });
        m_peer = std::make_unique<BusPeer>(QDBusConnection::systemBus(), u"com.sorel.usb_moded"_s);
        connect(m_peer.get(), &BusPeer::appeared, this, [this] { m_settled = true; });
        connect(m_peer.get(), &BusPeer::vanished, this, [this] { m_settled = true; });
    }

    PrivateBus m_bus;
    PythonPeer m_daemon;
    std::unique_ptr<UsbModedDaemon> m_mode;
    std::unique_ptr<BusPeer> m_peer; // asks after the one under test: what it knows, that one knows, too
    QList<bool> m_answers;
    bool m_settled = false;
};

QTEST_GUILESS_MAIN(UsbModeTest)
#include "usbmode_test.moc"

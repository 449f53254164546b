// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/toolkit/activationtoken.h"
#include "platform/toolkit/x11activation.h"

#include <QAbstractNativeEventFilter>
#include <QApplication>
#include <QProcess>
#include <QTest>
#include <QWidget>

#include <xcb/xproto.h>

using namespace Qt::Literals::StringLiterals;
using toolkit::ActivationToken;

namespace {

// Puts together what launchers hear: texts in pieces of twenty bytes, broadcast to the root window.
class LauncherEar : public QAbstractNativeEventFilter
{
public:
    LauncherEar() { qApp->installNativeEventFilter(this); }
    bool nativeEventFilter(const QByteArray &, void *message, qintptr *) override
    {
        const auto *event = static_cast<const xcb_generic_event_t *>(message);
        if ((event->response_type & 0x7f) != XCB_CLIENT_MESSAGE)
            return false;
        const auto *piece = reinterpret_cast<const xcb_client_message_event_t *>(event);
        if (piece->format == 8)
            heard.append(reinterpret_cast<const char *>(piece->data.data8), sizeof piece->data.data8);
        return false;
    }
    QByteArray heard;
};

} // namespace

class ActivationTokenTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void whatACallerHandsOn_data();
    void whatACallerHandsOn();
    void handedOnAsItCame();
    void ofTheEnvironment();
    void timeOfTheStart_data();
    void timeOfTheStart();
    void launcherHearsTheEndOfTheStart();
    void windowOfATokenGetsTheFocus();
};

void ActivationTokenTest::whatACallerHandsOn_data()
{
    QTest::addColumn<QVariant>("token");
    QTest::addColumn<QString>("taken");
    QTest::newRow("a token") << QVariant(u"gnome-shell-1_TIME7"_s) << u"gnome-shell-1_TIME7"_s;
    QTest::newRow("longest") << QVariant(QString(1024, u'a')) << QString(1024, u'a');
    QTest::newRow("longer than any") << QVariant(QString(1025, u'a')) << QString();
    QTest::newRow("line break") << QVariant(u"a\nPATH=/tmp"_s) << QString();
    QTest::newRow("blank") << QVariant(u"a b"_s) << QString();
    QTest::newRow("a list") << QVariant(QVariantList{1, 2}) << QString();
    QTest::newRow("nothing") << QVariant() << QString();
}

void ActivationTokenTest::whatACallerHandsOn()
{
    QFETCH(const QVariant, token);
    QFETCH(const QString, taken);
    const ActivationToken wayland = ActivationToken::ofPlatformData({{u"activation-token"_s, token}});
    QCOMPARE(wayland.token, taken);
    const ActivationToken x11 = ActivationToken::ofPlatformData({{u"desktop-startup-id"_s, token}});
    QCOMPARE(x11.startupId, taken);
    QCOMPARE(x11.isEmpty(), taken.isEmpty());
}

void ActivationTokenTest::handedOnAsItCame()
{
    const ActivationToken token{u"one"_s, u"two_TIME3"_s};
    QVERIFY(ActivationToken::ofPlatformData(token.platformData()) == token);
    QCOMPARE(ActivationToken().platformData(), QVariantMap());
}

void ActivationTokenTest::ofTheEnvironment()
{
    qputenv("XDG_ACTIVATION_TOKEN", "one");
    qputenv("DESKTOP_STARTUP_ID", "two");
    QVERIFY(ActivationToken::ofEnvironment() == (ActivationToken{u"one"_s, u"two"_s}));
    qunsetenv("XDG_ACTIVATION_TOKEN");
    qunsetenv("DESKTOP_STARTUP_ID");
    QVERIFY(ActivationToken::ofEnvironment().isEmpty());
}

void ActivationTokenTest::timeOfTheStart_data()
{
    QTest::addColumn<QString>("token");
    QTest::addColumn<QString>("startupId");
    QTest::addColumn<uint>("time"); // 0: none
    QTest::newRow("startup id") << QString() << u"dolphin-7_TIME123456"_s << 123456U;
    QTest::newRow("token of X11") << u"gnome-shell_TIME42"_s << QString() << 42U;
    QTest::newRow("the last mark counts") << QString() << u"a_TIME1_TIME2"_s << 2U;
    QTest::newRow("no mark") << u"0123abcd"_s << u"id"_s << 0U;
    QTest::newRow("no number") << QString() << u"id_TIMEx"_s << 0U;
    QTest::newRow("too great a number") << QString() << u"id_TIME99999999999"_s << 0U;
    QTest::newRow("time nought") << QString() << u"id_TIME0"_s << 0U;
}

void ActivationTokenTest::timeOfTheStart()
{
    QFETCH(const QString, token);
    QFETCH(const QString, startupId);
    const ActivationToken activation{token, startupId};
    QTEST(activation.startupTime().value_or(0), "time");
}

// The person taps the icon of the running program: the pointer must not stay an hourglass.
void ActivationTokenTest::launcherHearsTheEndOfTheStart()
{
    LauncherEar ear;
    toolkit::x11EndStartup("launcher/\"kestrel\"/1-0-host_TIME123");
    const QByteArray text = "remove: ID=\"launcher/\\\"kestrel\\\"/1-0-host_TIME123\"";
    QTRY_VERIFY2(ear.heard.startsWith(text + '\0'), ear.heard.constData());
}

void ActivationTokenTest::windowOfATokenGetsTheFocus()
{
    QWidget behind;
    behind.show();
    QVERIFY(QTest::qWaitForWindowActive(&behind));
    QWidget front;
    front.show();
    front.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&front));
    toolkit::activate(&behind, {{}, u"launcher_TIME1"_s});
    QTRY_VERIFY(behind.isActiveWindow());
    toolkit::activate(&front, {});
    QTRY_VERIFY(front.isActiveWindow());
}

QTEST_MAIN(ActivationTokenTest)
#include "core_activationtokentest.moc"

// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/kestrelinterfaceadaptor.h"
#include "app/kestrelservice.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QProcess>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

// A caller of its own on the session bus talks to the registered service.
class KestrelServiceTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void callsBecomeSignals_data();
    void callsBecomeSignals();
    void playOfAPlaylistIsAcceptedAndDoesNothing();
    void announcementsGoOutOnTheBus();
    void introspectionNamesEveryMember();
    void gdbusSeesTheInterfaceAsItIsLaidDown();

public Q_SLOTS:
    void heard(const QDBusMessage &signal) { m_heard.append(signal.member()); }

private:
    void record(const QString &happened) { m_happened.append(happened); }

    std::unique_ptr<KestrelService> m_service;
    QStringList m_happened;
    QStringList m_heard;
};

namespace {

const QString ServiceName = u"com.harrow.orlan.sorelkit.KestrelService"_s;
const QString InterfaceName = u"com.harrow.orlan.sorelkit.KestrelInterface"_s;

QDBusConnection caller()
{
    return QDBusConnection(u"caller"_s);
}

} // namespace

void KestrelServiceTest::initTestCase()
{
    QVERIFY(QDBusConnection::connectToBus(QDBusConnection::SessionBus, u"caller"_s).isConnected());
}

void KestrelServiceTest::init()
{
    m_happened.clear();
    m_service = std::make_unique<KestrelService>();
    new KestrelInterfaceAdaptor(m_service.get());
    QVERIFY(QDBusConnection::sessionBus().registerService(ServiceName));
    QVERIFY(QDBusConnection::sessionBus().registerObject(u"/"_s, m_service.get(),
                                                         QDBusConnection::ExportAdaptors));
    connect(m_service.get(), &KestrelService::startPlayFromPosition, this,
            [this](const QString &url, uint position) { record(u"play %1 %2"_s.arg(url).arg(position)); });
    connect(m_service.get(), &KestrelService::raise, this, [this] { record(u"raise"_s); });
    connect(m_service.get(), &KestrelService::launched, this, [this] { record(u"launched"_s); });
    connect(m_service.get(), &KestrelService::cancelled, this, [this] { record(u"cancelled"_s); });
}

void KestrelServiceTest::cleanup()
{
    QDBusConnection::sessionBus().unregisterObject(u"/"_s);
    QDBusConnection::sessionBus().unregisterService(ServiceName);
    m_service.reset();
}

void KestrelServiceTest::callsBecomeSignals_data()
{
    QTest::addColumn<QString>("method");
    QTest::addColumn<QVariantList>("arguments");
    QTest::addColumn<QString>("happened");
    const QStringList two = {u"file:///a.mp4"_s, u"file:///b.mp4"_s};
    QTest::newRow("play, two addresses: the first")
        << u"play"_s << QVariantList{two} << u"play file:///a.mp4 0"_s;
    QTest::newRow("play from 30") << u"play"_s << QVariantList{two, 30u} << u"play file:///a.mp4 30"_s;
    QTest::newRow("play from 0") << u"play"_s << QVariantList{two, 0u} << u"play file:///a.mp4 0"_s;
    QTest::newRow("play with a window")
        << u"play"_s << QVariantList{1u, u"t"_s, two} << u"play file:///a.mp4 0"_s;
    QTest::newRow("launch") << u"launch"_s << QVariantList{1u, u"t"_s} << u"raise, launched"_s;
    QTest::newRow("launch with a list")
        << u"launch"_s << QVariantList{1u, u"t"_s, two} << u"play file:///a.mp4 0, launched"_s;
    QTest::newRow("cancel") << u"cancel"_s << QVariantList{} << u"cancelled"_s;
    QTest::newRow("empty list") << u"play"_s << QVariantList{QStringList()} << QString();
    QTest::newRow("empty list from 3") << u"play"_s << QVariantList{QStringList(), 3u} << QString();
    QTest::newRow("launch, empty list")
        << u"launch"_s << QVariantList{1u, u"t"_s, QStringList()} << QString();
    QTest::newRow("play with a window, empty list")
        << u"play"_s << QVariantList{1u, u"t"_s, QStringList()} << QString();
}

void KestrelServiceTest::callsBecomeSignals()
{
    QFETCH(QString, method);
    QFETCH(QVariantList, arguments);
    QFETCH(QString, happened);
    QDBusMessage call = QDBusMessage::createMethodCall(ServiceName, u"/"_s, InterfaceName, method);
    call.setArguments(arguments);
    QDBusPendingCall reply = caller().asyncCall(call);
    QTRY_VERIFY(reply.isFinished());
    QVERIFY2(!reply.isError(), qPrintable(reply.error().message()));
    QCOMPARE(m_happened.join(u", "_s), happened);
}

void KestrelServiceTest::playOfAPlaylistIsAcceptedAndDoesNothing()
{
    QDBusMessage call = QDBusMessage::createMethodCall(ServiceName, u"/"_s, InterfaceName, u"play"_s);
    call.setArguments({1u, u"t"_s, 0u, u"list"_s});
    QDBusPendingCall reply = caller().asyncCall(call);
    QTRY_VERIFY(reply.isFinished());
    QVERIFY2(!reply.isError(), qPrintable(reply.error().message()));
    QCOMPARE(m_happened, QStringList());
}

void KestrelServiceTest::announcementsGoOutOnTheBus()
{
    for (const QString &signal : {u"playbackStarted"_s, u"launched"_s})
        QVERIFY(
            caller().connect(ServiceName, u"/"_s, InterfaceName, signal, this, SLOT(heard(QDBusMessage))));
    m_service->notifyPlaybackStarted();
    m_service->launch();
    QTRY_COMPARE(m_heard.join(u", "_s), u"playbackStarted, launched"_s);
}

void KestrelServiceTest::introspectionNamesEveryMember()
{
    QDBusMessage call = QDBusMessage::createMethodCall(
        ServiceName, u"/"_s, u"org.freedesktop.DBus.Introspectable"_s, u"Introspect"_s);
    QDBusPendingCall reply = caller().asyncCall(call);
    QTRY_VERIFY(reply.isFinished());
    const QString text = reply.reply().arguments().value(0).toString();
    QStringList members;
    static const QRegularExpression member(u"<(method|signal) name=\"(\\w+)\""_s);
    const qsizetype from = text.indexOf(InterfaceName);
    for (auto it = member.globalMatch(text.mid(from, text.indexOf(u"</interface>"_s, from) - from));
         it.hasNext();) {
        const QRegularExpressionMatch match = it.next();
        members.append(match.captured(1) + u' ' + match.captured(2));
    }
    QCOMPARE(
        members.join(u", "_s),
        u"method launch, method launch, method play, method play, method play, method play, method cancel, "
        "signal playbackStarted, signal launched"_s);
}

void KestrelServiceTest::gdbusSeesTheInterfaceAsItIsLaidDown()
{
    QProcess gdbus;
    QSignalSpy ended(&gdbus, &QProcess::finished);
    gdbus.start(u"gdbus"_s,
                {u"introspect"_s, u"--session"_s, u"--dest"_s, ServiceName, u"--object-path"_s, u"/"_s});
    QVERIFY(ended.wait(TestPatience));
    const QString text = QString::fromUtf8(gdbus.readAllStandardOutput());
    const QString begin = u"  interface "_s + InterfaceName + u" {\n"_s;
    const qsizetype from = text.indexOf(begin);
    QVERIFY2(from >= 0, qPrintable(text));
    const qsizetype to = text.indexOf(u"  };\n"_s, from);
    QCOMPARE(text.mid(from + begin.size(), to - from - begin.size()),
             u"    methods:\n"
             "      launch(in  u _windowId,\n"
             "             in  s _taskTitle);\n"
             "      launch(in  u _windowId,\n"
             "             in  s _taskTitle,\n"
             "             in  as uriList);\n"
             "      play(in  u _windowId,\n"
             "           in  s _taskTitle,\n"
             "           in  u index,\n"
             "           in  s playlistName);\n"
             "      play(in  u _windowId,\n"
             "           in  s _taskTitle,\n"
             "           in  as uriList);\n"
             "      play(in  as uriList);\n"
             "      play(in  as uriList,\n"
             "           in  u position);\n"
             "      cancel();\n"
             "    signals:\n"
             "      playbackStarted();\n"
             "      launched();\n"
             "    properties:\n"_s);
}

QTEST_GUILESS_MAIN(KestrelServiceTest)
#include "tst_kestrelservice.moc"

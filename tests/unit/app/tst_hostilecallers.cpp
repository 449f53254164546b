// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/kestrelservice.h"
#include "controllerfixture.h"
#include "player/playercontroller.h"
#include "support/heartbeat.h"

#include <QFile>
#include <QProcess>
#include <QSignalSpy>
#include <QTest>

#if defined(__SANITIZE_ADDRESS__)
extern "C" std::size_t __sanitizer_get_current_allocated_bytes(); // the compiler comes without its header
#endif
#include <unistd.h>

using namespace Qt::Literals::StringLiterals;

namespace {

// Megabytes that this process keeps. The address sanitizer holds freed memory back, up to 256 MB of it, so
// that there only what is in use tells something; elsewhere it is all of the process in memory.
double keptMegabytes()
{
#if defined(__SANITIZE_ADDRESS__)
    return double(__sanitizer_get_current_allocated_bytes()) / (1 << 20);
#else
    QFile statm(u"/proc/self/statm"_s);
    if (!statm.open(QIODevice::ReadOnly))
        return 0;
    return statm.readAll().split(' ').value(1).toDouble() * double(sysconf(_SC_PAGESIZE)) / (1 << 20);
#endif
}

} // namespace

// Programs that call too often, too much or wrongly: the window goes on answering, nothing grows, and the
// next caller is served.
class HostileCallersTest : public ControllerFixture
{
    Q_OBJECT

public:
    using ControllerFixture::ControllerFixture;

private Q_SLOTS:
    void initTestCase() { prepare(); }
    void cleanup() { clean(); }
    void nobodyBlocksTheWindow_data();
    void nobodyBlocksTheWindow();
    void nothingGrows_data();
    void nothingGrows();

private:
    void call(const QString &kind, int count, const QString &manner, int exitCode);
    void aDecentCallerIsServed();
};

void HostileCallersTest::call(const QString &kind, int count, const QString &manner, int exitCode)
{
    QProcess caller;
    caller.setProcessChannelMode(QProcess::ForwardedChannels);
    QSignalSpy ended(&caller, &QProcess::finished);
    QStringList arguments{QStringLiteral(KESTREL_SOURCE_DIR) + u"/tests/support/hostilecaller.py"_s,
                          qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS"), kind, QString::number(count)};
    if (!manner.isEmpty())
        arguments.append(manner);
    caller.start(u"python3"_s, arguments);
    QVERIFY(ended.wait(60000));
    QCOMPARE(caller.exitStatus(), QProcess::NormalExit);
    QCOMPARE(caller.exitCode(), exitCode);
}

void HostileCallersTest::aDecentCallerIsServed()
{
    m_store.answerWith(
        {{u"urn:uuid:5"_s, u"video 5"_s, u"5.mp4"_s, 60, 0, u"video/mp4"_s, u"file:///videos/5.mp4"_s, 5}});
    const auto isServed = [this] {
        return stack() == u"player"_s && played() == u"file:///videos/5.mp4"_s
            && m_controller->playerController()->currentVideo().playPosition == 12;
    };
    // Of a caller that is gone the bus may still hold calls, which it then brings after this one.
    for (int tries = 0; tries < 5; ++tries) {
        QProcess caller;
        QSignalSpy ended(&caller, &QProcess::finished);
        caller.start(u"busctl"_s,
                     {u"--address="_s + qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS"), u"call"_s,
                      u"com.harrow.orlan.sorelkit.KestrelService"_s, u"/"_s,
                      u"com.harrow.orlan.sorelkit.KestrelInterface"_s, u"play"_s, u"asu"_s, u"1"_s,
                      u"file:///videos/5.mp4"_s, u"12"_s});
        QVERIFY(ended.wait(TestPatience));
        QVERIFY2(caller.exitCode() == 0, caller.readAllStandardError());
        if (QTest::qWaitFor(isServed, 2000))
            return;
    }
    QFAIL(qPrintable(u"%1: %2"_s.arg(stack(), played())));
}

void HostileCallersTest::nobodyBlocksTheWindow_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<int>("count");
    QTest::addColumn<QString>("manner");
    QTest::addColumn<int>("exitCode"); // 3: thrown out by the bus
    const auto row = [](const char *name, const char *kind, int count, const char *manner = "",
                        int exitCode = 0) {
        QTest::newRow(name) << QString::fromLatin1(kind) << count << QString::fromLatin1(manner) << exitCode;
    };
    row("5,000 plays", "play", 5000);
    row("5,000 launches", "launch", 5000);
    row("5,000 launches with a list", "launch-list", 5000);
    row("5,000 plays of a playlist", "playlist", 5000);
    row("5,000 calls with a wrong signature", "wrong-signature", 5000);
    row("5,000 calls of what is not there", "no-member", 5000);
    row("5,000 empty lists", "empty", 5000);
    row("5,000 empty addresses", "empty-address", 5000);
    row("5,000 of all kinds", "mixed", 5000);
    row("100,000 addresses", "many", 1);
    row("100,000 addresses, ten times", "many", 10);
    row("an address of a megabyte", "megabyte", 1);
    row("an address of a megabyte, 50 times", "megabyte", 50);
    row("a title of a megabyte", "megabyte-title", 20);
    row("invalid UTF-8", "invalid-utf8", 1, "", 3);
    row("a length that lies", "lying-length", 1, "", 3);
    row("a caller that vanishes", "play", 1, "vanish");
    row("5,000 calls of a caller that vanishes", "mixed", 5000, "vanish");
    row("a call every millisecond for 10 s", "mixed", 10000, "paced");
}

void HostileCallersTest::nobodyBlocksTheWindow()
{
    QFETCH(QString, kind);
    QFETCH(int, count);
    QFETCH(QString, manner);
    QFETCH(int, exitCode);
    start();
    tap(video(1)); // in the middle of a video, as it happens
    QTRY_COMPARE(m_controller->playerController()->state(), AvloRenderer::Playing);
    Heartbeat heart;
    for (int attempt = 0; attempt == 0 || (attempt < 3 && !heart.isSteady());
         ++attempt) { // of a busy machine the best
        heart.restart();
        call(kind, count, manner, exitCode);
        aDecentCallerIsServed();
    }
    QVERIFY2(heart.isSteady(), heart.report());
    qInfo("%s", heart.report().constData());
}

void HostileCallersTest::nothingGrows_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<int>("count");
    QTest::newRow("5,000 of all kinds") << u"mixed"_s << 5000;
    QTest::newRow("100,000 addresses, five times") << u"many"_s << 5;
    QTest::newRow("an address of a megabyte, 20 times") << u"megabyte"_s << 20;
}

void HostileCallersTest::nothingGrows()
{
    QFETCH(QString, kind);
    QFETCH(int, count);
    start();
    // The first rounds fill what is kept for good.
    for (int round = 0; round < 2; ++round) {
        call(kind, count, QString(), 0);
        m_store.clear(); // the test's own record
    }
    const double before = keptMegabytes();
    for (int round = 0; round < 4; ++round) {
        call(kind, count, QString(), 0);
        m_store.clear();
    }
    const double grown = keptMegabytes() - before;
    constexpr double Allowed = 8; // of 20,000 calls: 400 bytes a call
    QVERIFY2(grown < Allowed, qPrintable(u"%1 MB more than %2"_s.arg(grown).arg(before)));
    qInfo("%.2f MB more than %.2f after four rounds", grown, before);
}

int main(int argc, char **argv)
{
    return runControllerTest<HostileCallersTest>(argc, argv);
}
#include "tst_hostilecallers.moc"

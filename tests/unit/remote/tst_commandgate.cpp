// SPDX-License-Identifier: GPL-3.0-or-later
#include "fakeremoteplayer.h"

#include "platform/remote/commandgate.h"

#include <QTest>

using namespace std::chrono_literals;
using Transport = CommandGate::Transport;
using namespace Qt::Literals::StringLiterals;

class CommandGateTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void firstWishIsHandedOnAtOnce();
    void wishesThatComeThickAreMerged();
    void seekGoesBeforeTheTransport();
    void openDropsWhatWasWishedForTheVideoBefore();
    void aSeekThatWaitsCountsAsTheHeading();
    void tenThousandWishesLeaveOneBehind();
};

void CommandGateTest::firstWishIsHandedOnAtOnce()
{
    FakeRemotePlayer player;
    CommandGate gate(&player);
    gate.transport(Transport::Pause);
    QCOMPARE(player.take(), QStringList(u"pause"_s));
    QTRY_VERIFY(!gate.recentTransport());
    gate.seekTo(3s);
    QCOMPARE(player.take(), QStringList(u"seek 3000000"_s));
}

void CommandGateTest::wishesThatComeThickAreMerged()
{
    FakeRemotePlayer player;
    CommandGate gate(&player);
    gate.transport(Transport::Play);
    gate.transport(Transport::Pause);
    gate.transport(Transport::Play);
    gate.transport(Transport::Pause);
    gate.setVolume(0.1);
    gate.setVolume(0.2);
    QCOMPARE(gate.recentTransport(), Transport::Pause);
    QTRY_COMPARE(player.asked.size(), 3);
    QCOMPARE(player.take(), QStringList({u"play"_s, u"volume 0.2"_s, u"pause"_s}));
}

void CommandGateTest::seekGoesBeforeTheTransport()
{
    FakeRemotePlayer player;
    CommandGate gate(&player);
    gate.raise();
    gate.transport(Transport::Play);
    gate.seekTo(1s);
    gate.raise();
    QTRY_COMPARE(player.asked, QStringList({u"raise"_s, u"raise"_s, u"seek 1000000"_s, u"play"_s}));
}

void CommandGateTest::openDropsWhatWasWishedForTheVideoBefore()
{
    FakeRemotePlayer player;
    CommandGate gate(&player);
    gate.raise();
    gate.seekTo(9s);
    gate.transport(Transport::Stop);
    gate.open(u"file:///a"_s);
    gate.open(u"file:///b"_s);
    QTRY_COMPARE(player.asked, QStringList({u"raise"_s, u"open file:///b"_s}));
}

void CommandGateTest::aSeekThatWaitsCountsAsTheHeading()
{
    FakeRemotePlayer player;
    player.at = 7s;
    CommandGate gate(&player);
    QCOMPARE(gate.heading(), RemoteTime(7s));
    gate.raise();
    gate.seekTo(20s);
    QCOMPARE(gate.heading(), RemoteTime(20s));
    gate.forgetSeek();
    QCOMPARE(gate.heading(), RemoteTime(7s));
}

void CommandGateTest::tenThousandWishesLeaveOneBehind()
{
    FakeRemotePlayer player;
    CommandGate gate(&player);
    for (int i = 0; i < 10000; ++i) {
        gate.transport(i % 2 ? Transport::Play : Transport::Pause);
        gate.seekTo(RemoteTime(i));
        gate.setVolume(double(i) / 10000);
        gate.open(u"file:///%1"_s.arg(i));
    }
    QTRY_VERIFY(player.asked.contains(u"open file:///9999"_s));
    QVERIFY2(player.asked.size() <= 8, qPrintable(player.asked.join(u'\n')));
}

QTEST_GUILESS_MAIN(CommandGateTest)
#include "tst_commandgate.moc"

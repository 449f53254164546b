// SPDX-License-Identifier: GPL-3.0-or-later
#include "streamclips.h"
#include "support/mediaserver.h"
#include "support/playback.h"

#include <algorithm>
#include <memory>

using namespace std::chrono_literals;
using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int Patience = 90000; // ms; a loaded machine

} // namespace

// What is broadcast while it is watched: a playlist that grows by a segment a second. All of it side by side.
class LiveTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void aBroadcastIsFollowed();
    void aBroadcastComesToItsEnd();
    void aBroadcastThatStopsIsLost_data();
    void aBroadcastThatStopsIsLost();

private:
    QTemporaryDir m_folder;
    MediaServer m_web;
    QString m_film;
    std::unique_ptr<Playback> m_grows;
    std::unique_ptr<Playback> m_ends;
    std::unique_ptr<Playback> m_stops;
    std::unique_ptr<Playback> m_stopsAtOnce;
};

void LiveTest::initTestCase()
{
    QString brief;
    QCOMPARE(streamclips::makeAdaptive(m_folder.path(), u"hls"_s, &m_film, {}, 60), QString());
    QCOMPARE(streamclips::makeAdaptive(m_folder.path(), u"hls-brief"_s, &brief, {}, 8), QString());
    QVERIFY(m_web.startWeb(m_folder.path()));
    m_stopsAtOnce = std::make_unique<Playback>(m_web.address(u"live=1:1/"_s + m_film));
    m_stops = std::make_unique<Playback>(m_web.address(u"live=4:7/"_s + m_film));
    m_grows = std::make_unique<Playback>(m_web.address(u"live=4/"_s + m_film));
    m_ends = std::make_unique<Playback>(m_web.address(u"live=3/"_s + brief));
}

// Further than what there was at first, with the list asked for again and again.
void LiveTest::aBroadcastIsFollowed()
{
    QTRY_VERIFY2_WITH_TIMEOUT(m_grows->frames > 9 * 25 || m_grows->isOver(), qPrintable(m_grows->story()),
                              Patience);
    QVERIFY2(!m_grows->isOver() && m_grows->code == 0, qPrintable(m_grows->story()));
    QVERIFY(m_web.requests().filter(u"GET /live=4/"_s + m_film).size() >= 4);
}

void LiveTest::aBroadcastComesToItsEnd()
{
    QVERIFY2(m_ends->waitUntilOver(Patience), qPrintable(m_ends->story()));
    QVERIFY2(m_ends->events == QStringList({u"playing"_s, u"end"_s}), qPrintable(m_ends->story()));
    QVERIFY2(m_ends->frames > 60, qPrintable(m_ends->story()));
}

void LiveTest::aBroadcastThatStopsIsLost_data()
{
    QTest::addColumn<bool>("atOnce");
    QTest::newRow("after a while") << false;
    QTest::newRow("after one segment") << true;
}

void LiveTest::aBroadcastThatStopsIsLost()
{
    QFETCH(bool, atOnce);
    const Playback &playback = atOnce ? *m_stopsAtOnce : *m_stops;
    QTRY_VERIFY2_WITH_TIMEOUT(playback.isOver(), qPrintable(playback.story()), Patience);
    // Whether the first picture had been shown by then is the machine's affair.
    QVERIFY2(playback.code == 304 || (atOnce && playback.code == 301), qPrintable(playback.story()));
}

QTEST_MAIN(LiveTest)
#include "media_live.moc"

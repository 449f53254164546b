// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/serverlibrary.h"

#include "data/storenews.h"
#include "data/trackerinterface.h"
#include "platform/servers/changepoll.h"
#include "platform/servers/resourceids.h"
#include "support/driventimer.h"
#include "support/fakesparqldriver.h"

#include <QSignalSpy>
#include <QTest>

#include <memory>

using namespace Qt::Literals::StringLiterals;
using Answer = FakeSparqlAnswer;

namespace {

constexpr int Wait = 20000; // ms

class Store : public TrackerInterface
{
};

} // namespace

// A library on a server: its store layer and what looks for changes, on drivers whose answers the test gives.
class TestServerLibrary : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void aChangeOnTheServerBringsFreshRows();
    void anOwnTitleBringsItsRowAtOnce();
    void nothingIsLookedForWhileNobodyLooks();
    void reachableWhenBothConnectionsAre();
    void aFirstListThatFailedIsAskedForAgain();
    void aLaterListThatFailedIsAskedForAgain();

private:
    [[nodiscard]] QTimer *pollTimer() const { return m_library->poll()->findChild<QTimer *>(u"pollTimer"_s); }
    // The list holds these two, as the server does.
    void load();
    Answer answer(const QString &text) const;
    [[nodiscard]] int textsWith(const QString &words) const
    {
        return int(m_server->texts().filter(words).size());
    }

    QString m_title;
    bool m_fails = false;
    int m_first = 0;
    int m_second = 0;
    std::unique_ptr<FakeSparqlStore> m_ownStore;
    std::unique_ptr<FakeSparqlStore> m_server;
    std::unique_ptr<ServerLibrary> m_library;
    std::unique_ptr<Store> m_store;
};

void TestServerLibrary::init()
{
    m_title = u"Lake"_s;
    m_fails = false;
    m_first = ResourceIds::shared().idOf(u"urn:video:1"_s);
    m_second = ResourceIds::shared().idOf(u"urn:video:2"_s);
    m_ownStore = std::make_unique<FakeSparqlStore>();
    m_ownStore->answerWith({{101, 102, 103, 104, 105}});
    m_server = std::make_unique<FakeSparqlStore>(u"QSPARQL_ENDPOINT"_s);
    m_server->answerBy([this](const SparqlQuery &query) { return answer(query.text()); });
    TrackerInterface::setTrackerMode(u"QSPARQL_ENDPOINT"_s);
    m_library = std::make_unique<ServerLibrary>(TrackerInterface::trackerMode());
    m_store = std::make_unique<Store>();
    m_library->follow(m_store.get());
    QTRY_COMPARE_WITH_TIMEOUT(m_ownStore->open(), 0, Wait); // the numbers are read
}

void TestServerLibrary::cleanup()
{
    m_store.reset();
    m_library.reset();
    m_server.reset();
    m_ownStore.reset();
    TrackerInterface::setTrackerMode(u"QTRACKER"_s);
}

Answer TestServerLibrary::answer(const QString &text) const
{
    if (m_fails)
        return Answer::error(u"no"_s);
    if (text.contains(u"?stamped"_s))
        return Answer::rows({{2, 0, {}}});
    if (text.contains(u"GROUP BY"_s))
        return Answer::rows({{u"01"_s, 1, m_title}, {u"02"_s, 1, u"same"_s}});
    if (text.contains(u"MD5"_s)) {
        QList<QVariantList> rows;
        if (text.contains(u"\"01\""_s))
            rows.append({m_first, m_title, {}, u"1.mp4"_s, u"01"_s});
        if (text.contains(u"\"02\""_s))
            rows.append({m_second, u"Sea"_s, {}, u"2.mp4"_s, u"02"_s});
        return Answer::rows(rows);
    }
    const QVariantList first{u"urn:video:1"_s, m_title,         u"1.mp4"_s, 9, {},
                             u"video/mp4"_s,   u"http://x/1"_s, m_first};
    const QVariantList second{u"urn:video:2"_s, u"Sea"_s,        u"2.mp4"_s, 9, {},
                              u"video/mp4"_s,   u"http://x/2"_s, m_second};
    if (text.contains(u"IN (%1)"_s.arg(m_first)))
        return Answer::rows({first});
    return Answer::rows({first, second});
}

void TestServerLibrary::load()
{
    QSignalSpy loaded(m_store.get(), &TrackerInterface::allVideosFinished);
    QVERIFY(m_store->allVideos(0) != 0);
    QTRY_COMPARE_WITH_TIMEOUT(loaded.size(), 1, Wait);
}

void TestServerLibrary::aChangeOnTheServerBringsFreshRows()
{
    load();
    m_library->poll()->setVisible(true);
    QCOMPARE(pollTimer()->interval() / 1000, 29 + pollTimer()->interval() / 30000); // the settings' default
    QSignalSpy changed(m_store.get(), qOverload<QList<QStringList>>(&TrackerInterface::videosChanged));
    m_title = u"Ocean"_s;
    QVERIFY(runOut(pollTimer()));
    QTRY_COMPARE_WITH_TIMEOUT(changed.size(), 1, Wait);
    const auto rows = changed.first().first().value<QList<QStringList>>();
    QCOMPARE(rows.size(), 1);
    QCOMPARE(rows.first().at(1), u"Ocean"_s);
    QTRY_VERIFY_WITH_TIMEOUT(pollTimer()->isActive(), Wait);
    QCOMPARE(changed.size(), 1);
}

void TestServerLibrary::anOwnTitleBringsItsRowAtOnce()
{
    load();
    QSignalSpy changed(m_store.get(), qOverload<QList<QStringList>>(&TrackerInterface::videosChanged));
    m_title = u"Pond"_s;
    QVERIFY(m_store->setTitle(u"urn:video:1"_s, m_title));
    QTRY_COMPARE_WITH_TIMEOUT(changed.size(), 1, Wait);
    QCOMPARE(changed.first().first().value<QList<QStringList>>().first().at(1), u"Pond"_s);
    QCOMPARE(textsWith(u"GROUP BY"_s), 0);
}

void TestServerLibrary::nothingIsLookedForWhileNobodyLooks()
{
    load();
    QVERIFY(!pollTimer()->isActive()); // there is no window yet
    m_library->poll()->setVisible(true);
    QVERIFY(pollTimer()->isActive());
    m_library->setDisplayOn(false);
    QVERIFY(!pollTimer()->isActive());
}

void TestServerLibrary::reachableWhenBothConnectionsAre()
{
    QSignalSpy reachable(m_library.get(), &ServerLibrary::reachableChanged);
    m_store->news()->setReachable(false);
    m_server->setReachable(false); // of the poll's connection, too
    QCOMPARE(reachable.size(), 1);
    QVERIFY(!m_library->isReachable());
    m_store->news()->setReachable(true);
    QCOMPARE(reachable.size(), 1);
    m_server->setReachable(true);
    QCOMPARE(reachable.size(), 2);
    QVERIFY(m_library->isReachable());
}

// The server is there and still starting, or does not let everybody in yet.
void TestServerLibrary::aFirstListThatFailedIsAskedForAgain()
{
    m_fails = true;
    QSignalSpy reachable(m_library.get(), &ServerLibrary::reachableChanged);
    QTest::ignoreMessage(QtWarningMsg, "void TrackerInterface::allVideosReady() Error in query: \"no\"");
    QVERIFY(m_store->allVideos(0) != 0);
    QTRY_COMPARE_WITH_TIMEOUT(reachable.size(), 1, Wait);
    m_fails = false;
    QSignalSpy loaded(m_store.get(), &TrackerInterface::allVideosFinished);
    auto *retry = m_library->findChild<QTimer *>(u"listRetry"_s);
    QVERIFY(runOut(retry));
    QTRY_COMPARE_WITH_TIMEOUT(loaded.size(), 1, Wait);
    QVERIFY(m_library->isReachable());
    QVERIFY(!retry->isActive());
}

// Somebody asked for it because what is shown is not what the server has. It stays, and so does the page.
void TestServerLibrary::aLaterListThatFailedIsAskedForAgain()
{
    load();
    m_fails = true;
    QSignalSpy failed(m_store->news(), &StoreNews::listFailed);
    QTest::ignoreMessage(QtWarningMsg, "void TrackerInterface::allVideosReady() Error in query: \"no\"");
    QVERIFY(m_store->allVideos(0) != 0);
    QTRY_COMPARE_WITH_TIMEOUT(failed.size(), 1, Wait);
    QVERIFY(m_library->isReachable());
    m_fails = false;
    QSignalSpy loaded(m_store.get(), &TrackerInterface::allVideosFinished);
    auto *retry = m_library->findChild<QTimer *>(u"listRetry"_s);
    QVERIFY(runOut(retry));
    QTRY_COMPARE_WITH_TIMEOUT(loaded.size(), 1, Wait);
    QVERIFY(!retry->isActive());
}

QTEST_GUILESS_MAIN(TestServerLibrary)
#include "tst_serverlibrary.moc"

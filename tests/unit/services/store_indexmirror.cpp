// SPDX-License-Identifier: GPL-3.0-or-later
#include "indexmirror.h"
#include "indexquery.h"
#include "objectwalk.h"
#include "support/indexpeer.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QTimeZone>

using namespace Qt::Literals::StringLiterals;

namespace {
constexpr char s_card[] = "/org/freedesktop/Tracker3/Endpoint/card";
constexpr int s_shortPatienceMs = 300;
constexpr int s_waitMs = 30000;
} // namespace

// The names that came on the bus.
class OwnerLog : public QObject
{
    Q_OBJECT

public:
    OwnerLog()
    {
        QDBusConnection::sessionBus().connect(u"org.freedesktop.DBus"_s, u"/org/freedesktop/DBus"_s,
                                              u"org.freedesktop.DBus"_s, u"NameOwnerChanged"_s, this,
                                              SLOT(onChange(QString, QString, QString)));
    }
    QStringList names;

private Q_SLOTS:
    void onChange(const QString &name, const QString &, const QString &owner)
    {
        if (!owner.isEmpty())
            names.append(name);
    }
};

// What the mirror hears of a peer that stands where the desktop's index stands.
class StoreIndexMirror : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void introspectionIsRead();
    void rowsThatAreNoLocalFilesAreLeftOut();
    void columnsThatNobodyAskedForAreLeftOut();
    void namesThatCannotStandInAQuestionAreLeftOut();
    void withoutAnIndexThereIsNothingToWaitFor();
    void nobodyIsStarted();
    void allThatTheIndexKnowsIsTold();
    void aFileThatWasNotReadIsToldAsOne();
    void anIndexThatIsBusyIsNotWaitedForAndToldLater();
    void changesAreTold();
    void aFileThatIsDroppedIsToldAsThat();
    void anEndpointThatComesIsTold();
    void oneOwnerOfBothNamesIsAskedOnce();
    void theNewerNameGoesFirst();
    void anOwnerThatGoesIsSilence();
    void anOwnerThatComesIsAsked();
    void anEndpointThatDoesNotAnswer();
    void anEndpointWhoseRowsDoNotCome();
    void aLargeIndexMayTakeLonger();
    void askedAgainItTellsAgain();

private:
    QString file(const QString &name);
    void start(int patienceMs = IndexMirror::defaultPatienceMs);
    [[nodiscard]] const ToldFile *told(const QString &path) const;

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<IndexPeer> m_peer;
    std::unique_ptr<IndexMirror> m_mirror;
    QList<ToldFile> m_told;
    QStringList m_dropped;
    QList<QSet<QString>> m_all;
    int m_settled = 0;
    int m_silent = 0;
};

void StoreIndexMirror::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_peer = std::make_unique<IndexPeer>();
    m_told.clear();
    m_dropped.clear();
    m_all.clear();
    m_settled = 0;
    m_silent = 0;
}

void StoreIndexMirror::cleanup()
{
    m_mirror.reset();
    m_peer.reset();
    const auto isOwned = [](const char *name) {
        return QDBusConnection::sessionBus()
            .interface()
            ->isServiceRegistered(QString::fromLatin1(name))
            .value();
    };
    QTRY_VERIFY_WITH_TIMEOUT(!isOwned(IndexPeer::legacyName) && !isOwned(IndexPeer::newName), s_waitMs);
}

QString StoreIndexMirror::file(const QString &name)
{
    const QString path = m_folder->filePath(name);
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write("content") == 7 ? path : QString();
}

void StoreIndexMirror::start(int patienceMs)
{
    m_mirror = std::make_unique<IndexMirror>(QDBusConnection::sessionBus(), patienceMs);
    connect(m_mirror.get(), &IndexMirror::told, this,
            [this](const QList<ToldFile> &files) { m_told += files; });
    connect(m_mirror.get(), &IndexMirror::dropped, this,
            [this](const QStringList &paths) { m_dropped += paths; });
    connect(m_mirror.get(), &IndexMirror::toldAll, this,
            [this](const QSet<QString> &paths) { m_all.append(paths); });
    connect(m_mirror.get(), &IndexMirror::settled, this, [this] { ++m_settled; });
    connect(m_mirror.get(), &IndexMirror::silent, this, [this] { ++m_silent; });
    m_mirror->tellAll();
}

const ToldFile *StoreIndexMirror::told(const QString &path) const
{
    const auto found = std::find_if(m_told.cbegin(), m_told.cend(),
                                    [&](const ToldFile &file) { return file.path == path; });
    return found == m_told.cend() ? nullptr : &*found;
}

void StoreIndexMirror::introspectionIsRead()
{
    const auto object = parseIntrospection(
        u"<!DOCTYPE node PUBLIC \"-//x//\" \"http://x\"><node><interface name='a.B'><method "
        u"name='C'/></interface>"
        "<interface name='d.E'/><node name='f'/><node name='g'><node name='h'/></node></node>"_s);
    QVERIFY(object);
    QCOMPARE(object->interfaces, QStringList({u"a.B"_s, u"d.E"_s}));
    QCOMPARE(object->children, QStringList({u"f"_s, u"g"_s}));
    QVERIFY(!parseIntrospection(u"<node><interface"_s));
    QVERIFY(!parseIntrospection(u"<node>"_s + QString(1000000, u' ') + u"</node>"_s));
}

void StoreIndexMirror::rowsThatAreNoLocalFilesAreLeftOut()
{
    QStringList cells(11);
    QVERIFY(!toldFileOf({}, {}));
    cells[0] = u"http://example.org/a.mp4"_s;
    QVERIFY(!toldFileOf(cells, {}));
    cells[0] = u"file:///a%20b.mp4"_s;
    QCOMPARE(toldFileOf(cells, {})->path, u"/a b.mp4"_s);
    QVERIFY(!toldFileOf(cells, {})->facts);
    cells[1] = u"urn:content"_s;
    cells[3] = u"7"_s;
    cells[4] = u"2026-01-02T03:04:05Z"_s;
    cells[5] = u"0"_s;
    // Without a duration a worker has to look.
    QVERIFY(toldFileOf(cells, {})->isRead && !toldFileOf(cells, {})->facts);
    cells[5] = u"61"_s;
    const ToldFile file = *toldFileOf(cells, {});
    QCOMPARE(file.facts->durationMs, 61000);
    QCOMPARE(file.facts->season, -1);
    FileIdentity identity;
    identity.size = 7;
    identity.modifiedMs
        = QDateTime(QDate(2026, 1, 2), QTime(3, 4, 5), QTimeZone::utc()).toMSecsSinceEpoch() + 999;
    QVERIFY(file.agreesWith(identity));
    identity.modifiedMs += 1;
    QVERIFY(!file.agreesWith(identity));
}

void StoreIndexMirror::columnsThatNobodyAskedForAreLeftOut()
{
    const QString name = u"file:///a.mp4"_s;
    QHash<QString, QStringList> details;
    const QList<IndexQuestion> questions = allVideosQuestions();
    for (const IndexQuestion &question : questions)
        takeDetails(question, QStringList{name} + QStringList(100, u"5"_s), &details);
    QCOMPARE(details.value(name).size(), 17);
    QStringList cells(100);
    cells[0] = name;
    QCOMPARE(toldFileOf(cells, details)->path, u"/a.mp4"_s);
}

void StoreIndexMirror::namesThatCannotStandInAQuestionAreLeftOut()
{
    QVERIFY(videosQuestions({u"a> . <b"_s}).isEmpty());
    for (const IndexQuestion &question : videosQuestions({u"a> . <b"_s, u"urn:x"_s}))
        QVERIFY(question.text.contains(u"<urn:x>"_s) && !question.text.contains(u"<b"_s));
    QCOMPARE(indexedFoldersQuery({}), QString());
}

void StoreIndexMirror::withoutAnIndexThereIsNothingToWaitFor()
{
    start();
    QTRY_COMPARE_WITH_TIMEOUT(m_settled, 1, s_waitMs);
    QCOMPARE(m_silent, 1);
    QVERIFY(m_all.isEmpty() && m_told.isEmpty());
}

// The index belongs to the session, which may have been told not to run it. Where it is installed the bus
// could start it; where it is not, this shows nothing.
void StoreIndexMirror::nobodyIsStarted()
{
    OwnerLog owners;
    start();
    QTRY_COMPARE_WITH_TIMEOUT(m_settled, 1, s_waitMs);
    m_mirror->onMountsChanged();
    m_mirror->tellAll();
    QTRY_COMPARE_WITH_TIMEOUT(m_settled, 2, s_waitMs);
    // Whoever had been started would be on the bus before a name that is asked for now.
    QVERIFY(m_peer->own("org.example.Later"));
    QTRY_VERIFY_WITH_TIMEOUT(owners.names.contains(u"org.example.Later"_s), s_waitMs);
    QCOMPARE(owners.names.filter(u"org.freedesktop."_s), QStringList());
}

void StoreIndexMirror::allThatTheIndexKnowsIsTold()
{
    const QString path = file(u"a b.mp4"_s);
    QVERIFY(m_peer->addEndpoint(IndexPeer::endpointPath));
    QVERIFY(m_peer->put(
        IndexPeer::endpointPath, path,
        u"a nmm:TVShow ; nfo:duration 61 ; nie:title \"Of \\\"fog\\\"\" ; nie:mimeType \"video/mp4\" ; "
        u"nfo:width 640 ; nfo:height 360 ; "
        "nie:contentCreated \"2020-01-02T03:04:05Z\" ; nmm:synopsis \"Rain.\" ; nmm:episodeNumber 5 ; "
        "nmm:isPartOfSeason [ a nmm:TVSeason ; nmm:seasonNumber 2 ; nmm:seasonOf [ a nmm:TVSeries ; "
        "nie:title \"The Lighthouse\" ] ] ; "
        "nfo:equipment [ a nfo:Equipment ; nfo:manufacturer \"Good Cameras\" ; nfo:model \"X\" ]"_s));
    QVERIFY(m_peer->own(IndexPeer::legacyName));
    start();
    QTRY_COMPARE_WITH_TIMEOUT(m_settled, 1, s_waitMs);
    QCOMPARE(m_all, QList<QSet<QString>>{{path}});
    QCOMPARE(m_told.size(), 1);
    const ToldFile &file = m_told.first();
    QVERIFY(file.isRead && !file.fresh && file.facts);
    QVERIFY(file.agreesWith(*FileIdentity::ofFile(path)));
    const MediaReply &facts = *file.facts;
    QCOMPARE(facts.durationMs, 61000);
    QCOMPARE(QStringList({facts.title, facts.mimeType, facts.synopsis, facts.showName, facts.cameraMake,
                          facts.cameraModel}),
             QStringList({u"Of \"fog\""_s, u"video/mp4"_s, u"Rain."_s, u"The Lighthouse"_s, u"Good Cameras"_s,
                          u"X"_s}));
    QCOMPARE(QList<int>({facts.width, facts.height, facts.season, facts.episode}),
             QList<int>({640, 360, 2, 5}));
    QCOMPARE(facts.created, QDateTime(QDate(2020, 1, 2), QTime(3, 4, 5), QTimeZone::utc()));
}

void StoreIndexMirror::aFileThatWasNotReadIsToldAsOne()
{
    const QString path = file(u"a.mp4"_s);
    QVERIFY(m_peer->addEndpoint(IndexPeer::endpointPath));
    QVERIFY(m_peer->put(IndexPeer::endpointPath, path));
    QVERIFY(m_peer->own(IndexPeer::legacyName));
    start();
    QTRY_COMPARE_WITH_TIMEOUT(m_settled, 1, s_waitMs);
    QCOMPARE(m_told.size(), 1);
    QVERIFY(!m_told.first().isRead && !m_told.first().facts);
}

void StoreIndexMirror::anIndexThatIsBusyIsNotWaitedForAndToldLater()
{
    const QString path = file(u"a.mp4"_s);
    QVERIFY(m_peer->addEndpoint(IndexPeer::endpointPath));
    QVERIFY(m_peer->put(IndexPeer::endpointPath, path, u"nfo:duration 2"_s));
    m_peer->setStatus(u"Crawling recursively directory"_s);
    QVERIFY(m_peer->own(IndexPeer::legacyName));
    start();
    QTRY_COMPARE_WITH_TIMEOUT(m_settled, 1, s_waitMs);
    QVERIFY(m_told.isEmpty());
    m_peer->setStatus(u"Idle"_s);
    QTRY_COMPARE_WITH_TIMEOUT(m_all.size(), 1, s_waitMs);
    QVERIFY(told(path));
    QCOMPARE(m_settled, 1);
}

void StoreIndexMirror::changesAreTold()
{
    QVERIFY(m_peer->addEndpoint(IndexPeer::endpointPath));
    QVERIFY(m_peer->own(IndexPeer::legacyName));
    start();
    QTRY_COMPARE_WITH_TIMEOUT(m_settled, 1, s_waitMs);
    const QString path = file(u"a.mp4"_s);
    QVERIFY(m_peer->put(IndexPeer::endpointPath, path, u"nfo:duration 2"_s));
    QTRY_VERIFY_WITH_TIMEOUT(told(path), s_waitMs);
    QVERIFY(told(path)->fresh && told(path)->facts);
    QCOMPARE(m_all.size(), 1);
}

void StoreIndexMirror::aFileThatIsDroppedIsToldAsThat()
{
    const QString path = file(u"a.mp4"_s);
    QVERIFY(m_peer->addEndpoint(IndexPeer::endpointPath));
    QVERIFY(m_peer->put(IndexPeer::endpointPath, path, u"nfo:duration 2"_s));
    QVERIFY(m_peer->own(IndexPeer::legacyName));
    start();
    QTRY_COMPARE_WITH_TIMEOUT(m_settled, 1, s_waitMs);
    QVERIFY(m_peer->drop(IndexPeer::endpointPath, path));
    QTRY_COMPARE_WITH_TIMEOUT(m_dropped, QStringList{path}, s_waitMs);
}

void StoreIndexMirror::anEndpointThatComesIsTold()
{
    QVERIFY(m_peer->addEndpoint(IndexPeer::endpointPath));
    QVERIFY(m_peer->own(IndexPeer::newName));
    start();
    QTRY_COMPARE_WITH_TIMEOUT(m_settled, 1, s_waitMs);
    QVERIFY(m_peer->addEndpoint(s_card));
    QTRY_COMPARE_WITH_TIMEOUT(m_all.size(), 2, s_waitMs);
    const QString path = file(u"on card.mp4"_s);
    QVERIFY(m_peer->put(s_card, path, u"nfo:duration 2"_s));
    QTRY_VERIFY_WITH_TIMEOUT(told(path), s_waitMs);
    // It goes, and its files are not said to be lost.
    m_peer->removeEndpoint(s_card);
    const QString other = file(u"b.mp4"_s);
    QVERIFY(m_peer->put(IndexPeer::endpointPath, other, u"nfo:duration 2"_s));
    QTRY_VERIFY_WITH_TIMEOUT(told(other), s_waitMs);
    QVERIFY(m_dropped.isEmpty());
}

void StoreIndexMirror::oneOwnerOfBothNamesIsAskedOnce()
{
    const QString path = file(u"a.mp4"_s);
    QVERIFY(m_peer->addEndpoint(IndexPeer::endpointPath));
    QVERIFY(m_peer->put(IndexPeer::endpointPath, path, u"nfo:duration 2"_s));
    QVERIFY(m_peer->own(IndexPeer::legacyName) && m_peer->own(IndexPeer::newName));
    start();
    QTRY_COMPARE_WITH_TIMEOUT(m_settled, 1, s_waitMs);
    QCOMPARE(m_told.size(), 1);
    QCOMPARE(m_all.size(), 1);
}

void StoreIndexMirror::theNewerNameGoesFirst()
{
    IndexPeer newer;
    const QString path = file(u"a.mp4"_s);
    const QString newPath = file(u"b.mp4"_s);
    QVERIFY(m_peer->addEndpoint(IndexPeer::endpointPath) && newer.addEndpoint(IndexPeer::endpointPath));
    QVERIFY(m_peer->put(IndexPeer::endpointPath, path, u"nfo:duration 2"_s));
    QVERIFY(newer.put(IndexPeer::endpointPath, newPath, u"nfo:duration 2"_s));
    QVERIFY(m_peer->own(IndexPeer::legacyName) && newer.own(IndexPeer::newName));
    start();
    QTRY_COMPARE_WITH_TIMEOUT(m_settled, 1, s_waitMs);
    QCOMPARE(m_all, QList<QSet<QString>>{{newPath}});
    newer.release(IndexPeer::newName);
    QTRY_VERIFY_WITH_TIMEOUT(told(path), s_waitMs);
}

void StoreIndexMirror::anOwnerThatGoesIsSilence()
{
    QVERIFY(m_peer->addEndpoint(IndexPeer::endpointPath));
    QVERIFY(m_peer->own(IndexPeer::legacyName));
    start();
    QTRY_COMPARE_WITH_TIMEOUT(m_settled, 1, s_waitMs);
    QCOMPARE(m_silent, 0);
    m_peer->release(IndexPeer::legacyName);
    QTRY_COMPARE_WITH_TIMEOUT(m_silent, 1, s_waitMs);
    QVERIFY(m_dropped.isEmpty());
}

void StoreIndexMirror::anOwnerThatComesIsAsked()
{
    start();
    QTRY_COMPARE_WITH_TIMEOUT(m_settled, 1, s_waitMs);
    const QString path = file(u"a.mp4"_s);
    QVERIFY(m_peer->addEndpoint(IndexPeer::endpointPath));
    QVERIFY(m_peer->put(IndexPeer::endpointPath, path, u"nfo:duration 2"_s));
    QVERIFY(m_peer->own(IndexPeer::legacyName));
    QTRY_COMPARE_WITH_TIMEOUT(m_all, QList<QSet<QString>>{{path}}, s_waitMs);
}

void StoreIndexMirror::anEndpointThatDoesNotAnswer()
{
    QVERIFY(m_peer->addDeafEndpoint());
    QVERIFY(m_peer->own(IndexPeer::legacyName));
    start(s_shortPatienceMs);
    QTRY_COMPARE_WITH_TIMEOUT(m_settled, 1, s_waitMs);
    QCOMPARE(m_silent, 1);
    QVERIFY(m_peer->questions() > 0);
}

void StoreIndexMirror::anEndpointWhoseRowsDoNotCome()
{
    QVERIFY(m_peer->addStallingEndpoint());
    QVERIFY(m_peer->own(IndexPeer::legacyName));
    start(s_shortPatienceMs);
    QTRY_COMPARE_WITH_TIMEOUT(m_settled, 1, s_waitMs);
    QCOMPARE(m_silent, 1);
    QVERIFY(m_peer->questions() > 0);
}

// It sorts before it tells: the first row comes long after the question.
void StoreIndexMirror::aLargeIndexMayTakeLonger()
{
    constexpr int patienceMs = 4000;
    QVERIFY(m_peer->addSlowEndpoint(150000, patienceMs * 5 / 4));
    QVERIFY(m_peer->own(IndexPeer::legacyName));
    start(patienceMs);
    QTRY_COMPARE_WITH_TIMEOUT(m_all.size(), 1, 60000);
    QCOMPARE(m_all.constFirst(), QSet<QString>());
}

void StoreIndexMirror::askedAgainItTellsAgain()
{
    const QString path = file(u"a.mp4"_s);
    QVERIFY(m_peer->addEndpoint(IndexPeer::endpointPath));
    QVERIFY(m_peer->put(IndexPeer::endpointPath, path, u"nfo:duration 2"_s));
    QVERIFY(m_peer->own(IndexPeer::legacyName));
    start();
    QTRY_COMPARE_WITH_TIMEOUT(m_settled, 1, s_waitMs);
    m_mirror->tellAll();
    QTRY_COMPARE_WITH_TIMEOUT(m_settled, 2, s_waitMs);
    QCOMPARE(m_told.size(), 2);
    QCOMPARE(m_all.size(), 2);
}

QTEST_GUILESS_MAIN(StoreIndexMirror)
#include "store_indexmirror.moc"

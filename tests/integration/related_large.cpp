// SPDX-License-Identifier: GPL-3.0-or-later
#include "bench/relatedlibrary.h"

#include "relatedfinder.h"

#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int large = 4400; // a series of it has 220 episodes

}

// Libraries with more of everything than is asked for, in the real store.
class TestRelatedLarge : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanupTestCase() { close(); }

    void theNextEpisodesOfALongSeries();
    void theNearestOfACrowdedDay();
    void aFolderBetweenCrowdedFolders();
    void theFirstVideoHasOnlyWhatFollows();

private:
    void open(RelatedLibrary kind, int videos);
    void close();
    QStringList urls(RelatedLibrary kind, int number, Kinship kinship);

    RelatedLibrary m_kind = RelatedLibrary::Mixed;
    std::unique_ptr<QTemporaryDir> m_data;
    QProcess m_store;
    std::unique_ptr<RelatedFinder> m_finder;
};

void TestRelatedLarge::open(RelatedLibrary kind, int videos)
{
    if (m_finder && m_kind == kind)
        return;
    close();
    m_kind = kind;
    m_data = std::make_unique<QTemporaryDir>();
    qputenv("XDG_DATA_HOME", m_data->path().toUtf8());
    fillRelatedLibrary(kind, videos);
    m_store.setProcessChannelMode(QProcess::ForwardedChannels);
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(u"XDG_DATA_DIRS"_s); // where the system says what a video is
    m_store.setProcessEnvironment(environment);
    m_store.start(QStringLiteral(KESTREL_BIN_DIR "/kestrel-store"), QStringList());
    QVERIFY(m_store.waitForStarted());
    m_finder = std::make_unique<RelatedFinder>();
}

void TestRelatedLarge::close()
{
    m_finder.reset();
    if (m_store.state() == QProcess::NotRunning)
        return;
    m_store.terminate();
    m_store.waitForFinished(10'000);
}

QStringList TestRelatedLarge::urls(RelatedLibrary kind, int number, Kinship kinship)
{
    m_finder->look(ContentRecord(relatedUrl(kind, number), QString(), QString(), QString()));
    if (!QTest::qWaitFor([this] { return m_finder->state() == RelatedFinder::State::Found; }, 30'000))
        return {u"no answer"_s};
    QStringList found;
    for (const RelatedEntry &entry : m_finder->entries()) {
        if (entry.kinship == kinship)
            found.append(entry.video.url);
    }
    return found;
}

// More episodes than are read: those that come next are among them, in order.
void TestRelatedLarge::theNextEpisodesOfALongSeries()
{
    const auto kind = RelatedLibrary::Alike;
    open(kind, large);
    const QStringList next = urls(kind, 100, Kinship::NextEpisode); // of 220
    QCOMPARE(next.size(), RelatedFinder::mostEntries);
    for (int i = 0; i < int(next.size()); ++i)
        QCOMPARE(next.at(i), relatedUrl(kind, 101 + i));
    const QStringList previous = urls(kind, 218, Kinship::PreviousEpisode);
    QCOMPARE(previous.size(), RelatedFinder::mostEntries - 1);
    for (int i = 0; i < int(previous.size()); ++i)
        QCOMPARE(previous.at(i), relatedUrl(kind, 217 - i));
}

// All were recorded on one day, a second apart.
void TestRelatedLarge::theNearestOfACrowdedDay()
{
    const auto kind = RelatedLibrary::Alike;
    open(kind, large);
    const QStringList nearest = urls(kind, 1500, Kinship::SameDay);
    const QStringList next = urls(kind, 1500, Kinship::NextEpisode);
    const QStringList previous = urls(kind, 1500, Kinship::PreviousEpisode);
    for (int distance = 1; distance < 25; ++distance) {
        for (const int number : {1500 - distance, 1500 + distance})
            QVERIFY2((nearest + next + previous).contains(relatedUrl(kind, number)),
                     QByteArray::number(number).constData());
    }
}

void TestRelatedLarge::aFolderBetweenCrowdedFolders()
{
    const auto kind = RelatedLibrary::Nested;
    open(kind, 2200);
    const QStringList folder = urls(kind, 1000, Kinship::SameFolder);
    for (const int number : {600, 700, 800, 900, 1100, 1200, 1300, 1400})
        QVERIFY2(folder.contains(relatedUrl(kind, number)), qPrintable(folder.join(u' ')));
}

void TestRelatedLarge::theFirstVideoHasOnlyWhatFollows()
{
    const auto kind = RelatedLibrary::Mixed;
    open(kind, 1000);
    const QStringList folder = urls(kind, 0, Kinship::SameFolder);
    QVERIFY(folder.size() > 20);
    QVERIFY(folder.contains(relatedUrl(kind, 40)));
    QVERIFY(!folder.contains(relatedUrl(kind, 0)));
}

QTEST_MAIN(TestRelatedLarge)

#include "related_large.moc"

// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/desktopminer.h"
#include "support/storesession.h"

#include <QDir>
#include <QFile>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

namespace {
// The index runs when nobody else wants the processor.
constexpr int s_waitMs = 180000;
} // namespace

// A session with the desktop's real file index, which follows Videos and Pictures. The store itself looks at
// Videos only: what it knows of Pictures it has from the index.
class StoreDesktopIndexTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void theLibraryIsThereFromTheIndex();
    void whatTheIndexLeavesOutIsReadHere();
    void aFolderThatTheIndexDoesNotCoverIsReadHere();
    void changesOutsideTheFollowedFoldersComeFromTheIndex();
    void changesInTheFollowedFoldersAreOneVideo();
    void theIndexStopsAndItsFoldersAreFollowedHere();
    void theIndexStopsAndComesBack();
    void theIndexComesLater();
    void theIndexIsNotUsedAnyMore();
    void theIndexIsRebuilt();
    void filesThatWentWhileNobodyRanAreGone();

private:
    [[nodiscard]] QString in(const QString &folder, const QString &name) const
    {
        return m_session->home() + u'/' + folder + u'/' + name;
    }
    bool clip(const QString &folder, const QString &name, const QString &title);
    void startStore(const QStringList &arguments = {});
    void stopStore();
    [[nodiscard]] QString urn(const QString &name) { return urnOf(m_client.get(), name); }
    [[nodiscard]] QString value(const QString &name, const QString &property)
    {
        return valueOf(m_client.get(), name, property);
    }
    [[nodiscard]] QStringList names();
    // Nobody opened the file: the store has no digest of it.
    [[nodiscard]] bool isUnread(const QString &name)
    {
        return value(name, u"nie:identifier"_s).endsWith(u':');
    }
    void makePersonal(const QString &name);
    [[nodiscard]] QStringList personal(const QString &name);

    std::unique_ptr<StoreSession> m_session;
    std::unique_ptr<DesktopMiner> m_miner;
    std::unique_ptr<StoreClient> m_client;
};

void StoreDesktopIndexTest::init()
{
    m_session = std::make_unique<StoreSession>();
    QVERIFY(m_session->isValid());
    m_miner = std::make_unique<DesktopMiner>(m_session->environment());
}

void StoreDesktopIndexTest::cleanup()
{
    if (QTest::currentTestFailed())
        qWarning("%s\n%s", m_session->log().constData(), qUtf8Printable(m_miner->describe()));
    m_client.reset();
    m_session->stop();
    m_miner.reset();
    m_session.reset();
}

bool StoreDesktopIndexTest::clip(const QString &folder, const QString &name, const QString &title)
{
    return QDir().mkpath(QFileInfo(in(folder, name)).path())
        && m_session->makeClip(in(folder, name), {u"-metadata"_s, u"title="_s + title});
}

void StoreDesktopIndexTest::startStore(const QStringList &arguments)
{
    QVERIFY(m_session->start(arguments));
    m_client = m_session->connectClient();
    QVERIFY(m_client->isConnected());
}

void StoreDesktopIndexTest::stopStore()
{
    m_client.reset();
    QVERIFY(m_session->stop());
}

QStringList StoreDesktopIndexTest::names()
{
    QStringList names;
    const QList<QStringList> rows = m_client->query(u"SELECT nfo:fileName(?v) { ?v a nmm:Video }"_s);
    for (const QStringList &row : rows)
        names.append(row.value(0));
    names.sort();
    return names;
}

// A title, a position and a count.
void StoreDesktopIndexTest::makePersonal(const QString &name)
{
    const QString video = urn(name);
    QCOMPARE(m_client->update(propertyUpdate(video, u"nie:title"_s, u"Mine: "_s + name)), QString());
    QCOMPARE(m_client->update(propertyUpdate(video, u"nmm:runTime"_s, u"1"_s)), QString());
    m_session->call(u"RecordPlay"_s, {video});
    QTRY_COMPARE_WITH_TIMEOUT(value(name, u"nie:usageCounter"_s), u"1"_s, s_waitMs);
}

QStringList StoreDesktopIndexTest::personal(const QString &name)
{
    return {urn(name), value(name, u"nie:title"_s), value(name, u"nmm:runTime"_s),
            value(name, u"nie:usageCounter"_s)};
}

void StoreDesktopIndexTest::theLibraryIsThereFromTheIndex()
{
    QVERIFY(clip(u"Videos"_s, u"a.mp4"_s, u"First"_s) && clip(u"Videos/deep"_s, u"b.mp4"_s, u"Second"_s)
            && clip(u"Pictures"_s, u"c.mp4"_s, u"Of the camera"_s));
    QVERIFY(m_miner->start());
    QVERIFY(m_miner->waitFor({u"a.mp4"_s, u"b.mp4"_s, u"c.mp4"_s}));
    startStore();
    QTRY_COMPARE_WITH_TIMEOUT(names(), QStringList({u"a.mp4"_s, u"b.mp4"_s, u"c.mp4"_s}), s_waitMs);
    QTRY_VERIFY_WITH_TIMEOUT(!m_session->isScanning(), s_waitMs);
    QCOMPARE(names().size(), 3);
    for (const QString &name : {u"a.mp4"_s, u"b.mp4"_s, u"c.mp4"_s}) {
        QVERIFY2(isUnread(name), qUtf8Printable(name));
        QCOMPARE(value(name, u"nfo:duration"_s), u"2"_s);
        QCOMPARE(value(name, u"nmm:runTime"_s), u"0"_s);
        QCOMPARE(value(name, u"nie:mimeType"_s), u"video/mp4"_s);
        QCOMPARE(value(name, u"nfo:width"_s), u"160"_s);
        QVERIFY(urn(name).startsWith(u"urn:uuid:"_s));
    }
    QCOMPARE(value(u"b.mp4"_s, u"nie:title"_s), u"Second"_s);
    QCOMPARE(value(u"c.mp4"_s, u"nie:url"_s), u"file://"_s + in(u"Pictures"_s, u"c.mp4"_s));
}

void StoreDesktopIndexTest::whatTheIndexLeavesOutIsReadHere()
{
    QVERIFY(clip(u"Videos"_s, u"a.mp4"_s, u"A"_s) && clip(u"Videos/po"_s, u"ignored folder.mp4"_s, u"B"_s)
            && clip(u"Videos/kept"_s, u"folder that asks for it.mp4"_s, u"C"_s)
            && clip(u"Videos"_s, u"Makefile"_s, u"D"_s) && clip(u"Elsewhere"_s, u"linked.mp4"_s, u"E"_s));
    QFile marker(in(u"Videos/kept"_s, u".nomedia"_s));
    QVERIFY(marker.open(QIODevice::WriteOnly));
    marker.close();
    QVERIFY(QFile::rename(in(u"Videos"_s, u"Makefile"_s), in(u"Videos"_s, u"film.mp4.orig.mp4"_s)));
    QVERIFY(QFile::link(in(u"Elsewhere"_s, u""_s), in(u"Videos"_s, u"link"_s)));
    QVERIFY(m_miner->start());
    QVERIFY(m_miner->waitFor({u"a.mp4"_s, u"film.mp4.orig.mp4"_s}));
    startStore();
    QTRY_COMPARE_WITH_TIMEOUT(
        names(),
        QStringList({u"a.mp4"_s, u"film.mp4.orig.mp4"_s, u"folder that asks for it.mp4"_s,
                     u"ignored folder.mp4"_s, u"linked.mp4"_s}),
        s_waitMs);
    QVERIFY(isUnread(u"a.mp4"_s));
    QVERIFY(!isUnread(u"ignored folder.mp4"_s));
    QCOMPARE(value(u"folder that asks for it.mp4"_s, u"nie:title"_s), u"C"_s);
}

void StoreDesktopIndexTest::aFolderThatTheIndexDoesNotCoverIsReadHere()
{
    QVERIFY(clip(u"Videos"_s, u"a.mp4"_s, u"A"_s) && clip(u"Card"_s, u"b.mp4"_s, u"B"_s));
    QVERIFY(m_miner->start());
    QVERIFY(m_miner->waitFor({u"a.mp4"_s}));
    startStore({u"--root"_s, m_session->home() + u"/Card"_s});
    QTRY_COMPARE_WITH_TIMEOUT(names(), QStringList({u"a.mp4"_s, u"b.mp4"_s}), s_waitMs);
    QVERIFY(isUnread(u"a.mp4"_s));
    QVERIFY(!isUnread(u"b.mp4"_s));
}

void StoreDesktopIndexTest::changesOutsideTheFollowedFoldersComeFromTheIndex()
{
    QVERIFY(clip(u"Pictures"_s, u"a.mp4"_s, u"A"_s));
    QVERIFY(m_miner->start());
    QVERIFY(m_miner->waitFor({u"a.mp4"_s}));
    startStore();
    QTRY_COMPARE_WITH_TIMEOUT(names(), QStringList({u"a.mp4"_s}), s_waitMs);
    makePersonal(u"a.mp4"_s);
    const QStringList before = personal(u"a.mp4"_s);

    // Added.
    QVERIFY(clip(u"Pictures"_s, u"b.mp4"_s, u"B"_s));
    QTRY_COMPARE_WITH_TIMEOUT(names(), QStringList({u"a.mp4"_s, u"b.mp4"_s}), s_waitMs);
    // Renamed, and moved to a new folder.
    QVERIFY(QFile::rename(in(u"Pictures"_s, u"a.mp4"_s), in(u"Pictures"_s, u"c.mp4"_s)));
    QTRY_COMPARE_WITH_TIMEOUT(names(), QStringList({u"b.mp4"_s, u"c.mp4"_s}), s_waitMs);
    QCOMPARE(personal(u"c.mp4"_s), before);
    QVERIFY(QDir().mkpath(in(u"Pictures"_s, u"new"_s)));
    QVERIFY(QFile::rename(in(u"Pictures"_s, u"c.mp4"_s), in(u"Pictures/new"_s, u"c.mp4"_s)));
    const QString moved = u"file://"_s + in(u"Pictures/new"_s, u"c.mp4"_s);
    QTRY_COMPARE_WITH_TIMEOUT(value(u"c.mp4"_s, u"nie:url"_s), moved, s_waitMs);
    QCOMPARE(personal(u"c.mp4"_s), before);
    // Written anew: the title is the file's where the person gave none.
    QVERIFY(clip(u"Pictures"_s, u"b.mp4"_s, u"B again"_s));
    QTRY_COMPARE_WITH_TIMEOUT(value(u"b.mp4"_s, u"nie:title"_s), u"B again"_s, s_waitMs);
    QVERIFY(clip(u"Pictures/new"_s, u"c.mp4"_s, u"C again"_s));
    QVERIFY(QFile::remove(in(u"Pictures"_s, u"b.mp4"_s)));
    QTRY_COMPARE_WITH_TIMEOUT(names(), QStringList({u"c.mp4"_s}), s_waitMs);
    QCOMPARE(personal(u"c.mp4"_s), before);
}

void StoreDesktopIndexTest::changesInTheFollowedFoldersAreOneVideo()
{
    QVERIFY(clip(u"Videos"_s, u"a.mp4"_s, u"A"_s));
    QVERIFY(m_miner->start());
    QVERIFY(m_miner->waitFor({u"a.mp4"_s}));
    startStore();
    QTRY_COMPARE_WITH_TIMEOUT(names(), QStringList({u"a.mp4"_s}), s_waitMs);
    makePersonal(u"a.mp4"_s);
    const QStringList before = personal(u"a.mp4"_s);
    QVERIFY(QFile::rename(in(u"Videos"_s, u"a.mp4"_s), in(u"Videos"_s, u"b.mp4"_s)));
    QVERIFY(clip(u"Videos"_s, u"c.mp4"_s, u"C"_s));
    QTRY_COMPARE_WITH_TIMEOUT(names(), QStringList({u"b.mp4"_s, u"c.mp4"_s}), s_waitMs);
    // Both have told now.
    QVERIFY(m_miner->waitFor({u"b.mp4"_s, u"c.mp4"_s}));
    // From one folder that is followed by both into one that the index alone follows, and back.
    QVERIFY(QFile::rename(in(u"Videos"_s, u"c.mp4"_s), in(u"Pictures"_s, u"c.mp4"_s)));
    QTRY_COMPARE_WITH_TIMEOUT(value(u"c.mp4"_s, u"nie:url"_s), u"file://"_s + in(u"Pictures"_s, u"c.mp4"_s),
                              s_waitMs);
    QVERIFY(QFile::rename(in(u"Pictures"_s, u"c.mp4"_s), in(u"Videos"_s, u"c.mp4"_s)));
    QTRY_COMPARE_WITH_TIMEOUT(value(u"c.mp4"_s, u"nie:url"_s), u"file://"_s + in(u"Videos"_s, u"c.mp4"_s),
                              s_waitMs);
    QVERIFY(m_miner->waitFor({u"b.mp4"_s, u"c.mp4"_s}));
    QCOMPARE(names(), QStringList({u"b.mp4"_s, u"c.mp4"_s}));
    QCOMPARE(personal(u"b.mp4"_s), before);
    QVERIFY(QFile::remove(in(u"Videos"_s, u"c.mp4"_s)));
    QTRY_COMPARE_WITH_TIMEOUT(names(), QStringList({u"b.mp4"_s}), s_waitMs);
}

void StoreDesktopIndexTest::theIndexStopsAndItsFoldersAreFollowedHere()
{
    QVERIFY(clip(u"Pictures"_s, u"a.mp4"_s, u"A"_s) && clip(u"Pictures"_s, u"b.mp4"_s, u"B"_s));
    QVERIFY(m_miner->start());
    QVERIFY(m_miner->waitFor({u"a.mp4"_s, u"b.mp4"_s}));
    startStore();
    QTRY_COMPARE_WITH_TIMEOUT(names(), QStringList({u"a.mp4"_s, u"b.mp4"_s}), s_waitMs);
    makePersonal(u"a.mp4"_s);
    const QStringList a = personal(u"a.mp4"_s);
    stopStore();
    m_miner->stop();
    startStore();
    // However its loss is noticed, the folder is followed then.
    QVERIFY(QFile::remove(in(u"Pictures"_s, u"b.mp4"_s)));
    QTRY_COMPARE_WITH_TIMEOUT(names(), QStringList({u"a.mp4"_s}), s_waitMs);
    QVERIFY(QFile::rename(in(u"Pictures"_s, u"a.mp4"_s), in(u"Pictures"_s, u"a2.mp4"_s)));
    QVERIFY(clip(u"Pictures"_s, u"c.mp4"_s, u"C"_s));
    QTRY_COMPARE_WITH_TIMEOUT(names(), QStringList({u"a2.mp4"_s, u"c.mp4"_s}), s_waitMs);
    QCOMPARE(personal(u"a2.mp4"_s), a);
}

void StoreDesktopIndexTest::theIndexStopsAndComesBack()
{
    QVERIFY(clip(u"Videos"_s, u"a.mp4"_s, u"A"_s) && clip(u"Pictures"_s, u"b.mp4"_s, u"B"_s)
            && clip(u"Pictures"_s, u"c.mp4"_s, u"C"_s));
    QVERIFY(m_miner->start());
    QVERIFY(m_miner->waitFor({u"a.mp4"_s, u"b.mp4"_s, u"c.mp4"_s}));
    startStore();
    QTRY_COMPARE_WITH_TIMEOUT(names().size(), 3, s_waitMs);
    makePersonal(u"a.mp4"_s);
    makePersonal(u"b.mp4"_s);
    const QStringList a = personal(u"a.mp4"_s);
    const QStringList b = personal(u"b.mp4"_s);

    m_miner->stop();
    QVERIFY(QFile::rename(in(u"Videos"_s, u"a.mp4"_s), in(u"Videos"_s, u"a2.mp4"_s)));
    QVERIFY(QFile::rename(in(u"Pictures"_s, u"b.mp4"_s), in(u"Pictures"_s, u"b2.mp4"_s)));
    QVERIFY(QFile::remove(in(u"Pictures"_s, u"c.mp4"_s)));
    QVERIFY(clip(u"Videos"_s, u"d.mp4"_s, u"D"_s));
    // What lies in the followed folders goes on as before.
    QTRY_VERIFY_WITH_TIMEOUT(names().contains(u"a2.mp4"_s) && names().contains(u"d.mp4"_s), s_waitMs);
    QCOMPARE(personal(u"a2.mp4"_s), a);

    QVERIFY(m_miner->start());
    QTRY_COMPARE_WITH_TIMEOUT(names(), QStringList({u"a2.mp4"_s, u"b2.mp4"_s, u"d.mp4"_s}), s_waitMs);
    QCOMPARE(personal(u"a2.mp4"_s), a);
    QCOMPARE(personal(u"b2.mp4"_s), b);
}

void StoreDesktopIndexTest::theIndexComesLater()
{
    QVERIFY(clip(u"Videos"_s, u"a.mp4"_s, u"A"_s) && clip(u"Pictures"_s, u"b.mp4"_s, u"B"_s));
    startStore();
    QTRY_COMPARE_WITH_TIMEOUT(names(), QStringList({u"a.mp4"_s}), s_waitMs);
    QVERIFY(!isUnread(u"a.mp4"_s));
    makePersonal(u"a.mp4"_s);
    const QStringList a = personal(u"a.mp4"_s);
    QVERIFY(m_miner->start());
    QTRY_COMPARE_WITH_TIMEOUT(names(), QStringList({u"a.mp4"_s, u"b.mp4"_s}), s_waitMs);
    QCOMPARE(personal(u"a.mp4"_s), a);
}

void StoreDesktopIndexTest::theIndexIsNotUsedAnyMore()
{
    QVERIFY(clip(u"Videos"_s, u"a.mp4"_s, u"A"_s) && clip(u"Pictures"_s, u"b.mp4"_s, u"B"_s));
    QVERIFY(m_miner->start());
    QVERIFY(m_miner->waitFor({u"a.mp4"_s, u"b.mp4"_s}));
    startStore();
    QTRY_COMPARE_WITH_TIMEOUT(names(), QStringList({u"a.mp4"_s, u"b.mp4"_s}), s_waitMs);
    makePersonal(u"a.mp4"_s);
    makePersonal(u"b.mp4"_s);
    const QStringList a = personal(u"a.mp4"_s);
    const QStringList b = personal(u"b.mp4"_s);
    stopStore();
    QVERIFY(QFile::rename(in(u"Videos"_s, u"a.mp4"_s), in(u"Videos"_s, u"a2.mp4"_s)));
    startStore({u"--no-desktop-index"_s});
    QTRY_COMPARE_WITH_TIMEOUT(names(), QStringList({u"a2.mp4"_s, u"b.mp4"_s}), s_waitMs);
    QTRY_VERIFY_WITH_TIMEOUT(!m_session->isScanning(), s_waitMs);
    QCOMPARE(personal(u"a2.mp4"_s), a);
    QCOMPARE(personal(u"b.mp4"_s), b);
    // A new database: the person's values come back from the journal, whoever tells of the file.
    stopStore();
    QVERIFY(QDir(m_session->data() + u"/store"_s).removeRecursively());
    startStore();
    QTRY_COMPARE_WITH_TIMEOUT(names(), QStringList({u"a2.mp4"_s, u"b.mp4"_s}), s_waitMs);
    QCOMPARE(personal(u"a2.mp4"_s), a);
    QCOMPARE(personal(u"b.mp4"_s), b);
}

void StoreDesktopIndexTest::theIndexIsRebuilt()
{
    QVERIFY(clip(u"Videos"_s, u"a.mp4"_s, u"A"_s) && clip(u"Pictures"_s, u"b.mp4"_s, u"B"_s));
    QVERIFY(m_miner->start());
    QVERIFY(m_miner->waitFor({u"a.mp4"_s, u"b.mp4"_s}));
    startStore();
    QTRY_COMPARE_WITH_TIMEOUT(names(), QStringList({u"a.mp4"_s, u"b.mp4"_s}), s_waitMs);
    makePersonal(u"b.mp4"_s);
    const QStringList b = personal(u"b.mp4"_s);
    const QString a = urn(u"a.mp4"_s);
    m_miner->stop();
    QVERIFY(m_miner->reset());
    QVERIFY(clip(u"Pictures"_s, u"c.mp4"_s, u"C"_s));
    QVERIFY(m_miner->start());
    QTRY_COMPARE_WITH_TIMEOUT(names(), QStringList({u"a.mp4"_s, u"b.mp4"_s, u"c.mp4"_s}), s_waitMs);
    QCOMPARE(personal(u"b.mp4"_s), b);
    QCOMPARE(urn(u"a.mp4"_s), a);
}

void StoreDesktopIndexTest::filesThatWentWhileNobodyRanAreGone()
{
    QVERIFY(clip(u"Videos"_s, u"a.mp4"_s, u"A"_s) && clip(u"Pictures"_s, u"b.mp4"_s, u"B"_s)
            && clip(u"Pictures"_s, u"c.mp4"_s, u"C"_s));
    QVERIFY(m_miner->start());
    QVERIFY(m_miner->waitFor({u"a.mp4"_s, u"b.mp4"_s, u"c.mp4"_s}));
    startStore();
    QTRY_COMPARE_WITH_TIMEOUT(names().size(), 3, s_waitMs);
    stopStore();
    QVERIFY(QFile::remove(in(u"Pictures"_s, u"b.mp4"_s)));
    QVERIFY(m_miner->waitFor({u"a.mp4"_s, u"c.mp4"_s}));
    startStore();
    QTRY_COMPARE_WITH_TIMEOUT(names(), QStringList({u"a.mp4"_s, u"c.mp4"_s}), s_waitMs);
    // Also where there is no index to say so.
    stopStore();
    m_miner->stop();
    QVERIFY(QFile::remove(in(u"Pictures"_s, u"c.mp4"_s)));
    startStore();
    QTRY_COMPARE_WITH_TIMEOUT(names(), QStringList({u"a.mp4"_s}), s_waitMs);
}

QTEST_GUILESS_MAIN(StoreDesktopIndexTest)
#include "store_desktopindex.moc"

// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/storesession.h"

#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

// A person's folder and what the store makes of it, with real clips, real workers and a real file system.
class StoreFilesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void aFirstScanListsEveryVideo();
    void aLoneCopiedFileIsListedWithinThreeSecondsOfItsLastByte();
    void aDeletedFileDisappears();
    void aRenamedFileKeepsVideoTitleAndPosition();
    void oneOfTwoEqualFilesLeavesTheOtherAlone_data();
    void oneOfTwoEqualFilesLeavesTheOtherAlone();
    void aRenamedFolderKeepsItsVideos();
    void aTitleOfThePersonSurvivesATouchAndARestart();
    void namesOfAnyText();

private:
    [[nodiscard]] QString at(const QString &name) const { return m_session->videos() + u'/' + name; }
    void startService();

    std::unique_ptr<StoreSession> m_session;
    std::unique_ptr<StoreClient> m_client;
};

void StoreFilesTest::init()
{
    m_client.reset();
    m_session = std::make_unique<StoreSession>();
    QVERIFY(m_session->isValid());
}

void StoreFilesTest::startService()
{
    m_client.reset();
    QVERIFY(m_session->start());
    m_client = m_session->connectClient();
    QVERIFY(m_client->isConnected());
}

void StoreFilesTest::aFirstScanListsEveryVideo()
{
    QVERIFY(QDir().mkpath(at(u"deep/er"_s)));
    QVERIFY(m_session->makeClip(at(u"with title.mp4"_s), {u"-metadata"_s, u"title=A title"_s}));
    QVERIFY(m_session->makeClip(at(u"deep/er/plain.mp4"_s)));
    QVERIFY(m_session->makeAudioClip(at(u"sound.mp4"_s)));
    QFile text(at(u"text.mp4"_s));
    QVERIFY(text.open(QIODevice::WriteOnly) && text.write("no video at all") > 0);
    text.close();
    startService();
    QTRY_COMPARE_WITH_TIMEOUT(countVideos(m_client.get()), 3, 30000);
    QTRY_VERIFY_WITH_TIMEOUT(!m_session->isScanning(), 30000);
    QCOMPARE(countVideos(m_client.get()), 3);
    QCOMPARE(valueOf(m_client.get(), u"with title.mp4"_s, u"nie:title"_s), u"A title"_s);
    QCOMPARE(valueOf(m_client.get(), u"plain.mp4"_s, u"nie:title"_s), QString());
    QCOMPARE(valueOf(m_client.get(), u"plain.mp4"_s, u"nfo:duration"_s), u"2"_s);
    QCOMPARE(valueOf(m_client.get(), u"plain.mp4"_s, u"nmm:runTime"_s), u"0"_s);
    QCOMPARE(valueOf(m_client.get(), u"plain.mp4"_s, u"nie:usageCounter"_s), u"0"_s);
    QCOMPARE(valueOf(m_client.get(), u"plain.mp4"_s, u"nie:mimeType"_s).left(6), u"video/"_s);
    QCOMPARE(valueOf(m_client.get(), u"plain.mp4"_s, u"nie:url"_s),
             u"file://"_s + at(u"deep/er/plain.mp4"_s));
    // The scan was told, its end last of all.
    QTRY_VERIFY(!m_session->progress.isEmpty());
    QTRY_COMPARE(m_session->progress.last(), QVariantList({false, 4u, 4u}));
}

void StoreFilesTest::aLoneCopiedFileIsListedWithinThreeSecondsOfItsLastByte()
{
    QVERIFY(m_session->makeClip(m_session->home() + u"/source.mp4"_s));
    startService();
    QTRY_VERIFY(!m_session->isScanning());
    QFile source(m_session->home() + u"/source.mp4"_s);
    QVERIFY(source.open(QIODevice::ReadOnly));
    const QByteArray content = source.readAll();
    qint64 took = 0;
    int copies = 0;
    while (copies < 3 && (copies == 0 || took >= 3000)) { // of a busy machine the best
        QFile target(at(u"copy %1.mp4"_s.arg(++copies)));
        QVERIFY(target.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
        QVERIFY(target.write(content + QByteArray(copies, '\0')) > 0); // a file of its own
        target.close();
        QElapsedTimer clock;
        clock.start();
        QTRY_COMPARE_WITH_TIMEOUT(m_client->allInserts().size(), copies, 20000);
        took = clock.elapsed();
    }
    QVERIFY2(took < 3000, qPrintable(QString::number(took)));
    QCOMPARE(countVideos(m_client.get()), copies);
}

void StoreFilesTest::aDeletedFileDisappears()
{
    QVERIFY(m_session->makeClip(at(u"a.mp4"_s)) && m_session->makeClip(at(u"b.mp4"_s)));
    startService();
    QTRY_COMPARE_WITH_TIMEOUT(countVideos(m_client.get()), 2, 30000);
    QVERIFY(QFile::remove(at(u"a.mp4"_s)));
    QTRY_COMPARE(m_client->allDeletes().size(), 1);
    QCOMPARE(countVideos(m_client.get()), 1);
    QVERIFY(!urnOf(m_client.get(), u"b.mp4"_s).isEmpty());
}

void StoreFilesTest::aRenamedFileKeepsVideoTitleAndPosition()
{
    QVERIFY(m_session->makeClip(at(u"a.mp4"_s)));
    startService();
    QTRY_COMPARE_WITH_TIMEOUT(countVideos(m_client.get()), 1, 30000);
    const QString urn = urnOf(m_client.get(), u"a.mp4"_s);
    QCOMPARE(m_client->update(propertyUpdate(urn, u"nie:title"_s, u"Mine"_s)), QString());
    QCOMPARE(m_client->update(propertyUpdate(urn, u"nmm:runTime"_s, u"1"_s)), QString());
    m_client->forget();
    QVERIFY(QFile::rename(at(u"a.mp4"_s), at(u"b.mp4"_s)));
    QTRY_COMPARE(urnOf(m_client.get(), u"b.mp4"_s), urn);
    QCOMPARE(valueOf(m_client.get(), u"b.mp4"_s, u"nie:title"_s), u"Mine"_s);
    QCOMPARE(valueOf(m_client.get(), u"b.mp4"_s, u"nmm:runTime"_s), u"1"_s);
    QCOMPARE(valueOf(m_client.get(), u"b.mp4"_s, u"nie:url"_s), u"file://"_s + at(u"b.mp4"_s));
    const int fileName = m_client->value(u"SELECT tracker:id(nfo:fileName) {}"_s).toInt();
    const int video = m_client->value(u"SELECT tracker:id(<%1>) {}"_s.arg(urn)).toInt();
    QTRY_VERIFY(m_client->allInserts().contains(StoreClient::Quad{0, video, fileName, -1}));
    QVERIFY(m_client->allDeletes().isEmpty());
    // Renamed while nobody looks.
    QVERIFY(m_session->stop());
    QVERIFY(QFile::rename(at(u"b.mp4"_s), at(u"c.mp4"_s)));
    startService();
    QTRY_COMPARE_WITH_TIMEOUT(urnOf(m_client.get(), u"c.mp4"_s), urn, 20000);
    QCOMPARE(countVideos(m_client.get()), 1);
}

void StoreFilesTest::oneOfTwoEqualFilesLeavesTheOtherAlone_data()
{
    QTest::addColumn<QString>("way");
    for (const char *way : {"deleted", "moved away", "renamed"})
        QTest::newRow(way) << QString::fromLatin1(way);
}

// Somebody has a film twice, and something happens to one of them: nothing is told of the other.
void StoreFilesTest::oneOfTwoEqualFilesLeavesTheOtherAlone()
{
    QFETCH(QString, way);
    QVERIFY(m_session->makeClip(at(u"a.mp4"_s)));
    QVERIFY(QFile::copy(at(u"a.mp4"_s), at(u"b.mp4"_s)));
    startService();
    QTRY_COMPARE_WITH_TIMEOUT(countVideos(m_client.get()), 2, 30000);
    QTRY_VERIFY_WITH_TIMEOUT(!m_session->isScanning(), 30000);
    const QString a = urnOf(m_client.get(), u"a.mp4"_s);
    const QString b = urnOf(m_client.get(), u"b.mp4"_s);
    QCOMPARE(m_client->update(propertyUpdate(a, u"nie:title"_s, u"Mine"_s)), QString());
    const auto idOf = [this](const QString &urn) {
        return m_client->value(u"SELECT tracker:id(<%1>) {}"_s.arg(urn)).toInt();
    };
    const int idOfA = idOf(a);
    const int idOfB = idOf(b);
    const auto changedValues = [this] { // of whom; that there are videos may be told late
        QList<int> subjects;
        for (const StoreClient::Quad &quad : m_client->allInserts()) {
            if (quad.object == -1)
                subjects.append(quad.subject);
        }
        return subjects;
    };
    QTRY_COMPARE(changedValues(), QList<int>{idOfA});
    m_client->forget();
    if (way == u"deleted"_s)
        QVERIFY(QFile::remove(at(u"a.mp4"_s)));
    else
        QVERIFY(QFile::rename(at(u"a.mp4"_s),
                              way == u"renamed"_s ? at(u"c.mp4"_s) : m_session->home() + u"/a.mp4"_s));
    if (way == u"renamed"_s) {
        QTRY_COMPARE(urnOf(m_client.get(), u"c.mp4"_s), a);
        QTRY_COMPARE(changedValues(), QList<int>{idOfA});
        QVERIFY(m_client->allDeletes().isEmpty());
        QCOMPARE(valueOf(m_client.get(), u"c.mp4"_s, u"nie:title"_s), u"Mine"_s);
    } else {
        QTRY_COMPARE(m_client->allDeletes().size(), 1);
        QCOMPARE(m_client->allDeletes().first().subject, idOfA);
        QVERIFY(changedValues().isEmpty());
    }
    QCOMPARE(urnOf(m_client.get(), u"b.mp4"_s), b);
    QCOMPARE(idOf(b), idOfB);
    QCOMPARE(valueOf(m_client.get(), u"b.mp4"_s, u"nie:title"_s), QString());
}

void StoreFilesTest::aRenamedFolderKeepsItsVideos()
{
    QVERIFY(QDir().mkpath(at(u"old/deep"_s)));
    QVERIFY(m_session->makeClip(at(u"old/a.mp4"_s)) && m_session->makeClip(at(u"old/deep/b.mp4"_s)));
    startService();
    QTRY_COMPARE_WITH_TIMEOUT(countVideos(m_client.get()), 2, 30000);
    const QString a = urnOf(m_client.get(), u"a.mp4"_s);
    const QString b = urnOf(m_client.get(), u"b.mp4"_s);
    QCOMPARE(m_client->update(propertyUpdate(b, u"nmm:runTime"_s, u"1"_s)), QString());
    QVERIFY(QDir().rename(at(u"old"_s), at(u"new"_s)));
    QTRY_COMPARE(valueOf(m_client.get(), u"b.mp4"_s, u"nie:url"_s), u"file://"_s + at(u"new/deep/b.mp4"_s));
    QCOMPARE(urnOf(m_client.get(), u"a.mp4"_s), a);
    QCOMPARE(urnOf(m_client.get(), u"b.mp4"_s), b);
    QCOMPARE(valueOf(m_client.get(), u"b.mp4"_s, u"nmm:runTime"_s), u"1"_s);
    QVERIFY(m_client->allDeletes().isEmpty());
}

void StoreFilesTest::aTitleOfThePersonSurvivesATouchAndARestart()
{
    const QStringList titled{u"-metadata"_s, u"title=Of the file"_s};
    QVERIFY(m_session->makeClip(at(u"a.mp4"_s), titled));
    startService();
    QTRY_COMPARE_WITH_TIMEOUT(countVideos(m_client.get()), 1, 30000);
    const QString urn = urnOf(m_client.get(), u"a.mp4"_s);
    QCOMPARE(m_client->update(propertyUpdate(urn, u"nie:title"_s, u"Of the person"_s)), QString());
    const QString before = valueOf(m_client.get(), u"a.mp4"_s, u"nfo:fileLastModified"_s);
    // Other content, with a title of its own, under the same name.
    QVERIFY(m_session->makeClip(m_session->home() + u"/new.mp4"_s, titled));
    QFile source(m_session->home() + u"/new.mp4"_s);
    QFile target(at(u"a.mp4"_s));
    QVERIFY(source.open(QIODevice::ReadOnly) && target.open(QIODevice::ReadWrite | QIODevice::Truncate));
    QVERIFY(target.write(source.readAll()) > 0 && target.flush());
    QVERIFY(target.setFileTime(QDateTime::currentDateTime().addDays(1), QFileDevice::FileModificationTime));
    target.close();
    QTRY_VERIFY_WITH_TIMEOUT(valueOf(m_client.get(), u"a.mp4"_s, u"nfo:fileLastModified"_s) != before, 20000);
    QCOMPARE(valueOf(m_client.get(), u"a.mp4"_s, u"nie:title"_s), u"Of the person"_s);
    QVERIFY(m_session->stop());
    startService();
    QTRY_VERIFY_WITH_TIMEOUT(!m_session->progress.isEmpty() && !m_session->isScanning(), 20000);
    QCOMPARE(valueOf(m_client.get(), u"a.mp4"_s, u"nie:title"_s), u"Of the person"_s);
    QCOMPARE(urnOf(m_client.get(), u"a.mp4"_s), urn);
}

void StoreFilesTest::namesOfAnyText()
{
    const QStringList names{u"50% [x];#?.mp4"_s, u"日本 ü 🎬.mp4"_s, u"it's <b>.mp4"_s, u"line\nbreak.mp4"_s};
    for (const QString &name : names)
        QVERIFY(m_session->makeClip(at(name)));
    startService();
    QTRY_COMPARE_WITH_TIMEOUT(countVideos(m_client.get()), int(names.size()), 30000);
    const QList<QStringList> rows = m_client->query(u"SELECT ?n nie:url(?v) { ?v nfo:fileName ?n }"_s);
    for (const QStringList &row : rows) {
        QVERIFY(names.contains(row[0]));
        QCOMPARE(QByteArray::fromPercentEncoding(row[1].toLatin1()), ("file://" + at(row[0]).toUtf8()));
    }
}

QTEST_GUILESS_MAIN(StoreFilesTest)
#include "store_files.moc"

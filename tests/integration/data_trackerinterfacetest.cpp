// SPDX-License-Identifier: GPL-3.0-or-later
// The store layer and the model on the real store service, which reads real clips from a folder.
#include <data/allvideosmodel.h>
#include <data/playrecorder.h>
#include <data/storeprogress.h>
#include <data/trackerinterface.h>
#include <data/videoinfo.h>

#include <platform/sparql/sparqlconnection.h>
#include <platform/sparql/sparqlresult.h>

#include "support/fakethumbnailerclient.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QUrl>

#include <gio/gio.h>

#include <csignal>

using namespace Qt::Literals::StringLiterals;

namespace {

const QString storeName = u"com.harrow.Kestrel.Store"_s;
constexpr int patience = 60000;

QString run(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(program, arguments);
    if (process.waitForFinished(patience) && process.exitCode() == 0)
        return {};
    return program + u": "_s + QString::fromUtf8(process.readAll());
}

// A clip of `seconds`, with what `tags` says of it ("name=value").
QString makeClip(const QString &path, int seconds, const QStringList &tags = {})
{
    QStringList arguments{u"-v"_s,    u"error"_s, u"-f"_s,
                          u"lavfi"_s, u"-i"_s,    u"testsrc2=size=64x48:rate=10:duration=%1"_s.arg(seconds)};
    for (const QString &tag : tags)
        arguments += {u"-metadata"_s, tag};
    return run(u"ffmpeg"_s, arguments + QStringList{path});
}

VideoInfo recordOf(int request, QSignalSpy &answers)
{
    const auto answered = [&] {
        for (const QVariantList &arguments : answers) {
            if (arguments.at(1).toInt() == request)
                return true;
        }
        return false;
    };
    if (!QTest::qWaitFor(answered, 10000))
        return {};
    for (const QVariantList &arguments : answers) {
        if (arguments.at(1).toInt() == request)
            return arguments.first().value<VideoInfo>();
    }
    return {};
}

} // namespace

class DataTrackerInterfaceTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();

    void clipsOfTheFolderBecomeRows();
    void everySpellingOfAnAddressFindsTheVideo_data();
    void everySpellingOfAnAddressFindsTheVideo();
    void anUnknownAddressIsAnsweredToo();
    void aSavedPlaceReachesTheModelAndComesBack();
    void aSaveForNoVideoIsDroppedQuietly();
    void anEditedTitleReachesTheModel();
    void aPlayIsCounted();
    void aRenamedFileKeepsItsRow();
    void aDeletedFileLeavesTheModel();
    void aThousandClipsOfOneCameraAreAThousandRowsOnceEach();
    void aKilledStoreComesBackAndEverythingIsThere();

private:
    [[nodiscard]] QString path(const QString &name) const { return m_videos + u'/' + name; }
    [[nodiscard]] int rowOf(const QString &fileName) const
    {
        for (int row = 0; row < m_model->rowCount(); ++row) {
            if (m_model->text(row, VideoColumn::FileName) == fileName)
                return row;
        }
        return -1;
    }
    [[nodiscard]] QString cell(const QString &fileName, int column) const
    {
        return m_model->text(rowOf(fileName), column);
    }

    QTemporaryDir m_home;
    QString m_videos;
    std::unique_ptr<AllVideosModel> m_model;
};

static const QString oddName = u"a b;c[d]e?f%41g#h+ü日.mp4"_s;

void DataTrackerInterfaceTest::initTestCase()
{
    QVERIFY(m_home.isValid());
    qputenv("HOME", m_home.path().toUtf8());
    for (const char *variable : {"XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_CONFIG_HOME"})
        qunsetenv(variable);
    qputenv("KESTREL_STORE_PROGRAM", KESTREL_BIN_DIR "/kestrel-store");
    qputenv("KESTREL_MEDIA_WORKER_PROGRAM", KESTREL_BIN_DIR "/kestrel-media-worker");
    FakeThumbnailerClient::install();
    m_videos = m_home.filePath(u"Videos"_s);
    QVERIFY(QDir().mkpath(m_videos));
    QCOMPARE(makeClip(path(u"holiday.part1.mp4"_s), 7), QString());
    QCOMPARE(makeClip(path(u"titled.mp4"_s), 3, {u"title=The best one"_s}), QString());
    QCOMPARE(makeClip(m_home.filePath(u"clip.mp4"_s), 9), QString());
    QVERIFY(QFile::rename(m_home.filePath(u"clip.mp4"_s), path(oddName)));
    m_model = std::make_unique<AllVideosModel>(nullptr);
}

void DataTrackerInterfaceTest::cleanupTestCase()
{
    m_model.reset();
    const QDBusReply<uint> pid = QDBusConnection::sessionBus().interface()->servicePid(storeName);
    if (pid.isValid())
        ::kill(pid_t(pid.value()), SIGTERM);
}

void DataTrackerInterfaceTest::clipsOfTheFolderBecomeRows()
{
    QTRY_COMPARE_WITH_TIMEOUT(m_model->rowCount(), 3, patience);
    QCOMPARE(cell(u"holiday.part1.mp4"_s, VideoColumn::Title), u"holiday.part1"_s);
    QCOMPARE(cell(u"holiday.part1.mp4"_s, VideoColumn::Duration), u"7"_s);
    QCOMPARE(cell(u"holiday.part1.mp4"_s, VideoColumn::PlayPosition), u"0"_s);
    QVERIFY(cell(u"holiday.part1.mp4"_s, VideoColumn::MimeType).startsWith(u"video/"_s));
    QVERIFY(cell(u"holiday.part1.mp4"_s, VideoColumn::TrackerId).toInt() > 0);
    QCOMPARE(cell(u"titled.mp4"_s, VideoColumn::Title), u"The best one"_s);
    QCOMPARE(cell(u"titled.mp4"_s, VideoColumn::Duration), u"3"_s);
    const QString odd = cell(oddName, VideoColumn::Url);
    QCOMPARE(QUrl(odd).toLocalFile(), path(oddName));
    // The thumbnailer's answer names the row by the address as it comes out of a QUrl.
    QCOMPARE(QString::fromUtf8(QUrl::fromEncoded(odd.toUtf8()).toEncoded()), odd);
}

void DataTrackerInterfaceTest::everySpellingOfAnAddressFindsTheVideo_data()
{
    QTest::addColumn<QString>("address");
    const QString file = path(oddName);
    char *glib = g_filename_to_uri(file.toUtf8().constData(), nullptr, nullptr);
    QTest::newRow("GLib") << QString::fromUtf8(glib);
    g_free(glib);
    QTest::newRow("Qt, encoded") << QString::fromUtf8(QUrl::fromLocalFile(file).toEncoded());
    QTest::newRow("all escaped") << u"file://"_s + QString::fromUtf8(QUrl::toPercentEncoding(file, "/"));
    QString lowerCase = QString::fromUtf8(QUrl::toPercentEncoding(file, "/"));
    for (qsizetype at = lowerCase.indexOf(u'%'); at >= 0; at = lowerCase.indexOf(u'%', at + 1))
        lowerCase.replace(at, 3, lowerCase.mid(at, 3).toLower());
    QTest::newRow("lower case escapes") << u"file://"_s + lowerCase;
    // A name given on the command line: only "%" and "#" are escaped before it is read as an encoded one.
    QString argument = file;
    argument.replace(u'%', u"%25"_s).replace(u'#', u"%23"_s);
    QTest::newRow("command line") << u"file://"_s
            + QString::fromUtf8(QUrl::fromEncoded(argument.toUtf8()).toEncoded());
    QTest::newRow("as the model has it") << cell(oddName, VideoColumn::Url);
}

void DataTrackerInterfaceTest::everySpellingOfAnAddressFindsTheVideo()
{
    QFETCH(QString, address);
    QSignalSpy answers(TrackerInterface::instance(), &TrackerInterface::dataFromUrlFinished);
    const VideoInfo info = recordOf(TrackerInterface::instance()->dataFromUrl(address, 0), answers);
    QVERIFY(!info.urn.isEmpty());
    QCOMPARE(info.urn, cell(oddName, VideoColumn::Urn));
    QCOMPARE(info.fileName, oddName);
    QCOMPARE(info.duration, 9u);
}

void DataTrackerInterfaceTest::anUnknownAddressIsAnsweredToo()
{
    QSignalSpy answers(TrackerInterface::instance(), &TrackerInterface::dataFromUrlFinished);
    QTest::ignoreMessage(QtWarningMsg, "void TrackerInterface::dataFromUrlReady() No data in query result");
    const VideoInfo info
        = recordOf(TrackerInterface::instance()->dataFromUrl(u"file:///none \"x\".mp4"_s, 0), answers);
    QCOMPARE(info.url, u"file:///none \"x\".mp4"_s);
    QVERIFY(info.urn.isEmpty());
}

void DataTrackerInterfaceTest::aSavedPlaceReachesTheModelAndComesBack()
{
    const QString urn = cell(oddName, VideoColumn::Urn);
    QVERIFY(TrackerInterface::instance()->setPlayedTime(urn, 5));
    QTRY_COMPARE_WITH_TIMEOUT(cell(oddName, VideoColumn::PlayPosition), u"5"_s, 10000);
    QSignalSpy answers(TrackerInterface::instance(), &TrackerInterface::playedTimeFinished);
    const int request = TrackerInterface::instance()->playedTime(urn);
    QTRY_COMPARE(answers.size(), 1);
    QCOMPARE(answers.first(), (QVariantList{5, request}));
    QCOMPARE(m_model->rowCount(), 3);
}

// What the store does not know is played, and left at some place.
void DataTrackerInterfaceTest::aSaveForNoVideoIsDroppedQuietly()
{
    QTest::failOnWarning(QRegularExpression(u"."_s));
    QVERIFY(TrackerInterface::instance()->setPlayedTime(QString(), 9));
    QSignalSpy loads(TrackerInterface::instance(), &TrackerInterface::allVideosFinished);
    QVERIFY(TrackerInterface::instance()->allVideos(0) != 0);
    QTRY_COMPARE(loads.size(), 1);
    QCOMPARE(m_model->rowCount(), 3);
    for (int row = 0; row < 3; ++row)
        QVERIFY(m_model->text(row, VideoColumn::PlayPosition) != u"9"_s);
}

void DataTrackerInterfaceTest::anEditedTitleReachesTheModel()
{
    const QString title = u"Say \"hi\" \\ <b> %41\n日"_s;
    QVERIFY(TrackerInterface::instance()->setTitle(cell(u"titled.mp4"_s, VideoColumn::Urn), title));
    QTRY_COMPARE_WITH_TIMEOUT(cell(u"titled.mp4"_s, VideoColumn::Title), title, 10000);
}

void DataTrackerInterfaceTest::aPlayIsCounted()
{
    const QString urn = cell(u"titled.mp4"_s, VideoColumn::Urn);
    PlayRecorder recorder;
    recorder.record(urn);
    QSignalSpy answers(TrackerInterface::instance(), &TrackerInterface::videoDetailsFinished);
    const auto counted = [&] {
        answers.clear();
        TrackerInterface::instance()->videoDetails(urn);
        return QTest::qWaitFor([&] { return answers.size() == 1; })
            && answers.first().first().value<VideoDetails>().playCount == 1;
    };
    QTRY_VERIFY_WITH_TIMEOUT(counted(), 10000);
    const auto details = answers.first().first().value<VideoDetails>();
    QCOMPARE(details.playPosition, 1);
    QVERIFY(details.lastAccessed.isValid() && details.added.isValid());
    QCOMPARE(details.fileSize, QFileInfo(path(u"titled.mp4"_s)).size());
}

void DataTrackerInterfaceTest::aRenamedFileKeepsItsRow()
{
    const QString urn = cell(oddName, VideoColumn::Urn);
    QVERIFY(QFile::rename(path(oddName), path(u"renamed.mp4"_s)));
    QTRY_COMPARE_WITH_TIMEOUT(cell(u"renamed.mp4"_s, VideoColumn::Urn), urn, 10000);
    QCOMPARE(cell(u"renamed.mp4"_s, VideoColumn::PlayPosition), u"5"_s);
    QCOMPARE(cell(u"renamed.mp4"_s, VideoColumn::Title), u"renamed"_s);
    QCOMPARE(m_model->rowCount(), 3);
}

void DataTrackerInterfaceTest::aDeletedFileLeavesTheModel()
{
    const QString url = cell(u"renamed.mp4"_s, VideoColumn::Url);
    QSignalSpy removed(m_model.get(), &AllVideosModel::filesRemoved);
    QVERIFY(QFile::remove(path(u"renamed.mp4"_s)));
    QTRY_COMPARE_WITH_TIMEOUT(m_model->rowCount(), 2, 10000);
    QCOMPARE(removed.first().first().toStringList(), QStringList{url});
}

void DataTrackerInterfaceTest::aThousandClipsOfOneCameraAreAThousandRowsOnceEach()
{
    constexpr int count = 1000;
    QTemporaryDir camera(m_home.filePath(u"camera-XXXXXX"_s));
    const QString clip = camera.filePath(u"clip.mov"_s);
    QCOMPARE(makeClip(clip, 1, {u"make=Maker"_s, u"model=Model"_s}), QString());
    const QString folder = camera.filePath(u"roll"_s);
    QVERIFY(QDir().mkpath(folder));
    for (int number = 0; number < count; ++number)
        QVERIFY(QFile::copy(clip, folder + u"/clip%1.mov"_s.arg(number)));
    QVERIFY(QFile::rename(folder, path(u"roll"_s)));

    StoreProgress progress;
    QTRY_COMPARE_WITH_TIMEOUT(m_model->rowCount(), count + 2, 3 * patience);
    QSet<QString> urns;
    for (int row = 0; row < m_model->rowCount(); ++row)
        urns.insert(m_model->text(row, VideoColumn::Urn));
    QCOMPARE(urns.size(), count + 2);
    QTRY_VERIFY_WITH_TIMEOUT(!progress.isScanning(), patience);
    QCOMPARE(m_model->rowCount(), count + 2);

    // The story is about videos that share their equipment: they do.
    SparqlConnection connection(u"QTRACKER"_s);
    SparqlResult *result = connection.exec(
        SparqlQuery(u"SELECT COUNT(?v) { ?v a nmm:Video ; nfo:equipment <urn:equipment:Maker:Model:> }"_s));
    QSignalSpy finished(result, &SparqlResult::finished);
    QVERIFY(finished.wait(TestPatience));
    QVERIFY(result->next());
    QCOMPARE(result->value(0).toInt(), count);
}

void DataTrackerInterfaceTest::aKilledStoreComesBackAndEverythingIsThere()
{
    const int rows = m_model->rowCount();
    QVERIFY(TrackerInterface::instance()->setPlayedTime(cell(u"titled.mp4"_s, VideoColumn::Urn), 2));
    QTRY_COMPARE_WITH_TIMEOUT(cell(u"titled.mp4"_s, VideoColumn::PlayPosition), u"2"_s, 10000);
    QSignalSpy loads(TrackerInterface::instance(), &TrackerInterface::allVideosFinished);
    const QDBusReply<uint> pid = QDBusConnection::sessionBus().interface()->servicePid(storeName);
    QVERIFY(pid.isValid());
    QCOMPARE(::kill(pid_t(pid.value()), SIGKILL), 0);
    QTRY_VERIFY_WITH_TIMEOUT(!loads.isEmpty(), patience);
    QTRY_COMPARE_WITH_TIMEOUT(m_model->rowCount(), rows, patience);
    QCOMPARE(cell(u"titled.mp4"_s, VideoColumn::PlayPosition), u"2"_s);
}

QTEST_GUILESS_MAIN(DataTrackerInterfaceTest)
#include "data_trackerinterfacetest.moc"

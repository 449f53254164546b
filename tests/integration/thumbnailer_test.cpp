// SPDX-License-Identifier: GPL-3.0-or-later
// The real thumbnailer on a bus of its own, asked through the program's own client.
#include "platform/thumbs/dbusthumbnailerclient.h"
#include "platform/thumbs/thumbnailname.h"

#include "../support/processtable.h"
#include "../support/testclips.h"

#include <QDBusConnectionInterface>
#include <QDBusInterface>
#include <QDBusReply>
#include <QFile>
#include <QImageReader>
#include <QProcess>
#include <QScopeGuard>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>
#include <utime.h>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int WaitMs = 30000;
const QString ServiceName = u"com.harrow.Kestrel.Thumbnailer"_s;
const QString Flavor = u"video-grid"_s;

// What the client reported, one line a file: "name: ready", "name: error".
class Reports : public QObject
{
public:
    explicit Reports(ThumbnailerClient &client)
    {
        connect(&client, &ThumbnailerClient::thumbnail, this,
                [this](const QUrl &resource, const QUrl &thumbnail) {
                    lines.append(resource.fileName() + u": ready"_s);
                    paths.insert(resource, thumbnail.toLocalFile());
                });
        connect(&client, &ThumbnailerClient::error, this,
                [this](const QString &message, const QUrl &resource) {
                    lines.append(resource.fileName() + u": error"_s);
                    messages.insert(resource, message);
                });
    }
    [[nodiscard]] QStringList sorted() const
    {
        QStringList copy = lines;
        copy.sort();
        return copy;
    }

    QStringList lines;
    QHash<QUrl, QString> paths;
    QHash<QUrl, QString> messages;
};

} // namespace

class ThumbnailerTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        qputenv("KESTREL_THUMBNAILER_PROGRAM", KESTREL_BIN_DIR "/kestrel-thumbnailer");
        qputenv("KESTREL_THUMBNAILER_FILE_MS", "3000");
        useFaultyWorker();
        QCOMPARE(TestClips::make(clip(u"film.mp4"_s), {.width = 1920, .height = 1080}), QString());
        QCOMPARE(TestClips::make(clip(u"small #1 – ü.mkv"_s), {}), QString());
        QCOMPARE(TestClips::make(clip(u"tall.mp4"_s), {.width = 1080, .height = 1920, .sound = false}),
                 QString());
        QCOMPARE(TestClips::make(clip(u"sound.mp4"_s), {.source = {}}), QString());
        write(u"text.mp4"_s, "Dear diary,\n");
        for (const char *fault : {"crash", "hang", "memory"})
            write(QString::fromLatin1(fault), QByteArray("KESTREL-FAULT ") + fault + '\n');
    }

    void init()
    {
        m_client = std::make_unique<DBusThumbnailerClient>(QDBusConnection::sessionBus());
        m_reports = std::make_unique<Reports>(*m_client);
    }

    void cleanup()
    {
        m_reports.reset();
        m_client.reset();
        stopService();
        QDir(thumbnailFolder(Flavor)).removeRecursively();
        QDir(QDir::homePath() + u"/.cache/kestrel/failed-thumbnails"_s).removeRecursively();
        qunsetenv("KESTREL_THUMBNAILER_IDLE_MS");
    }

    void makesThumbnailsOfFiles()
    {
        const QList<QUrl> urls = {url(u"film.mp4"_s), url(u"small #1 – ü.mkv"_s), url(u"tall.mp4"_s)};
        m_client->request(urls, {u"video/mp4"_s, {}, {}}, Flavor);
        QTRY_COMPARE_WITH_TIMEOUT(m_reports->lines.size(), 3, WaitMs);
        QCOMPARE(m_reports->sorted(),
                 (QStringList{u"film.mp4: ready"_s, u"small #1 – ü.mkv: ready"_s, u"tall.mp4: ready"_s}));
        QCOMPARE(imageSize(urls.at(0)), QSize(960, 540));
        QCOMPARE(imageSize(urls.at(1)), QSize(320, 180));
        QCOMPARE(imageSize(urls.at(2)), QSize(607, 1080));
        for (const QUrl &resource : urls) {
            QImageReader reader(m_reports->paths.value(resource));
            QCOMPARE(reader.format(), QByteArray("jpeg"));
            QCOMPARE(m_reports->paths.value(resource),
                     thumbnailPath(QString::fromLatin1(resource.toEncoded()), Flavor));
            QVERIFY(!QFile(m_reports->paths.value(resource)).permissions().testFlag(QFile::ReadOther));
        }
        // Nothing half-written lies about.
        QCOMPARE(QDir(thumbnailFolder(Flavor)).entryList(QDir::Files | QDir::Hidden).size(), 3);
    }

    void whatIsThereIsNotMadeAgainUntilTheFileChanges()
    {
        const QUrl film = url(u"film.mp4"_s);
        QVERIFY(makes(film));
        const QString path = m_reports->paths.value(film);
        const QDateTime before = age(path);
        QVERIFY(makes(film));
        QCOMPARE(QFileInfo(path).lastModified(), before);
        age(film.toLocalFile());
        QVERIFY(makes(film));
        QVERIFY(QFileInfo(path).lastModified() != before);
    }

    void filesWithoutAPictureAreErrors()
    {
        m_client->request({url(u"text.mp4"_s), url(u"sound.mp4"_s), url(u"missing.mp4"_s),
                           QUrl::fromLocalFile(m_folder.path()), QUrl(u"http://localhost/x.mp4"_s)},
                          {}, Flavor);
        QTRY_COMPARE_WITH_TIMEOUT(m_reports->messages.size(), 5, WaitMs);
        QVERIFY(m_reports->paths.isEmpty());
        for (const QString &message : std::as_const(m_reports->messages))
            QVERIFY(!message.isEmpty());
    }

    void anUnknownFlavorIsAnError()
    {
        m_client->request({url(u"film.mp4"_s)}, {}, u"huge"_s);
        QTRY_COMPARE_WITH_TIMEOUT(m_reports->lines, QStringList{u"film.mp4: error"_s}, WaitMs);
    }

    // Files that crash, hang and hog a worker: errors, and the other files have their pictures all the same.
    void hostileFilesHarmNoOther()
    {
        m_client->request(
            {url(u"crash"_s), url(u"film.mp4"_s), url(u"memory"_s), url(u"hang"_s), url(u"tall.mp4"_s)}, {},
            Flavor);
        QTRY_COMPARE_WITH_TIMEOUT(m_reports->lines.size(), 5, WaitMs);
        QCOMPARE(m_reports->sorted(),
                 (QStringList{u"crash: error"_s, u"film.mp4: ready"_s, u"hang: error"_s, u"memory: error"_s,
                              u"tall.mp4: ready"_s}));
    }

    // A file is tried once, also by the next run of the service; when it changes, again.
    void failuresAreRemembered()
    {
        const QUrl hang = url(u"hang"_s);
        QVERIFY(fails(hang));
        const QString first = m_reports->messages.value(hang);
        qint64 took = 0;
        for (int attempt = 0; attempt < 3 && (took == 0 || took >= 2500);
             ++attempt) { // of a busy machine the best
            stopService();
            QElapsedTimer timer;
            timer.start();
            QVERIFY(fails(hang));
            took = timer.elapsed();
        }
        QVERIFY2(took < 2500, "tried again");
        QCOMPARE(m_reports->messages.value(hang), first);

        const QString path = clip(u"late.mp4"_s);
        write(u"late.mp4"_s, "not yet");
        QVERIFY(fails(url(u"late.mp4"_s)));
        QVERIFY(QFile::remove(path));
        QVERIFY(QFile::copy(clip(u"film.mp4"_s), path));
        QVERIFY(makes(url(u"late.mp4"_s)));
    }

    // What was begun is finished and reported, the rest is dropped, and newer requests come first.
    void cancelledRequestsAreDroppedUnlessBegun()
    {
        QList<QUrl> many;
        for (int i = 0; i < 40; ++i) {
            const QString name = u"copy-%1.mp4"_s.arg(i);
            QFile::copy(clip(u"film.mp4"_s), clip(name));
            many.append(url(name));
        }
        m_client->request(many, {}, Flavor);
        QTRY_VERIFY_WITH_TIMEOUT(!m_reports->lines.isEmpty(), WaitMs);
        m_client->cancel();
        m_client->request({url(u"tall.mp4"_s)}, {}, Flavor);
        QTRY_VERIFY_WITH_TIMEOUT(m_reports->lines.contains(u"tall.mp4: ready"_s), WaitMs);
        QDBusInterface service(ServiceName, u"/org/freedesktop/thumbnails/Thumbnailer1"_s,
                               u"org.freedesktop.thumbnails.Thumbnailer1"_s);
        QVERIFY(QDBusReply<QStringList>(service.call(u"GetFlavors"_s)).isValid());
        QVERIFY2(m_reports->lines.size() < 30, QByteArray::number(m_reports->lines.size()).constData());
        // All that was begun is reported, and nothing else was made.
        const QDir folder(thumbnailFolder(Flavor));
        QTRY_COMPARE_WITH_TIMEOUT(folder.entryList({u"*.jpeg"_s}, QDir::Files).size(),
                                  m_reports->lines.size(), WaitMs);
    }

    void removesThumbnails()
    {
        const QUrl film = url(u"film.mp4"_s);
        const QUrl tall = url(u"tall.mp4"_s);
        QVERIFY(makes(film));
        QVERIFY(makes(tall));
        m_client->remove({film});
        QTRY_VERIFY_WITH_TIMEOUT(!QFile::exists(m_reports->paths.value(film)), WaitMs);
        QVERIFY(QFile::exists(m_reports->paths.value(tall)));
    }

    void movesCopiesAndCleansUp()
    {
        const QUrl film = url(u"film.mp4"_s);
        const QUrl copy = url(u"moved.mp4"_s);
        QVERIFY(QFile::exists(copy.toLocalFile()) || QFile::copy(film.toLocalFile(), copy.toLocalFile()));
        QVERIFY(makes(film));
        const QString filmUri = QString::fromLatin1(film.toEncoded());
        const QString copyUri = QString::fromLatin1(copy.toEncoded());
        QDBusInterface cache(ServiceName, u"/org/freedesktop/thumbnails/Cache1"_s,
                             u"org.freedesktop.thumbnails.Cache1"_s);
        QVERIFY(
            QDBusReply<void>(cache.call(u"Copy"_s, QStringList{filmUri}, QStringList{copyUri})).isValid());
        QVERIFY(QFile::exists(thumbnailPath(copyUri, Flavor)));
        QVERIFY(
            QDBusReply<void>(cache.call(u"Move"_s, QStringList{copyUri}, QStringList{filmUri})).isValid());
        QVERIFY(!QFile::exists(thumbnailPath(copyUri, Flavor)));
        const QString elsewhere = QString::fromLatin1(QUrl::fromLocalFile(u"/elsewhere"_s).toEncoded());
        const QString here = QString::fromLatin1(QUrl::fromLocalFile(m_folder.path()).toEncoded());
        const uint later = static_cast<uint>(QDateTime::currentSecsSinceEpoch() + 10);
        QVERIFY(QDBusReply<void>(cache.call(u"Cleanup"_s, QStringList{elsewhere}, later)).isValid());
        QVERIFY(QDBusReply<void>(cache.call(u"Cleanup"_s, QStringList{here}, uint(1))).isValid());
        QVERIFY(QFile::exists(thumbnailPath(filmUri, Flavor)));
        QVERIFY(QDBusReply<void>(cache.call(u"Cleanup"_s, QStringList{here}, later)).isValid());
        QVERIFY(!QFile::exists(thumbnailPath(filmUri, Flavor)));
    }

    void aServiceThatDiesIsStartedAgain_data()
    {
        QTest::addColumn<QByteArray>("withoutBubblewrap");
        QTest::newRow("worker in bubblewrap") << QByteArray("0");
        QTest::newRow("worker by itself") << QByteArray("1");
    }

    // The service is killed in the middle of its work: the client starts it again and everything is answered.
    // The worker that reads the hanging file does not outlive it.
    void aServiceThatDiesIsStartedAgain()
    {
        QFETCH(const QByteArray, withoutBubblewrap);
        qputenv("KESTREL_NO_BUBBLEWRAP", withoutBubblewrap);
        const auto restore = qScopeGuard([] { qunsetenv("KESTREL_NO_BUBBLEWRAP"); });
        m_client->request({url(u"hang"_s), url(u"film.mp4"_s)}, {}, Flavor);
        QTRY_VERIFY_WITH_TIMEOUT(m_reports->lines.contains(u"film.mp4: ready"_s), WaitMs);
        const uint before = servicePid();
        QVERIFY(before > 0);
        const QString hanging = m_folder.filePath(u"hang"_s);
        QTRY_VERIFY_WITH_TIMEOUT(!ProcessTable::readersOf(hanging).isEmpty(), WaitMs);
        const QSet<pid_t> readers = ProcessTable::readersOf(hanging);
        ::kill(static_cast<pid_t>(before), SIGKILL);
        QTRY_VERIFY_WITH_TIMEOUT(m_reports->lines.contains(u"hang: error"_s), WaitMs);
        QVERIFY(servicePid() != before);
        QTRY_VERIFY(!ProcessTable::readersOf(hanging).intersects(readers));
    }

    // Stopped, it neither answers nor goes away.
    void aServiceThatHangsEndsInErrors()
    {
        QVERIFY(makes(url(u"film.mp4"_s)));
        const uint pid = servicePid();
        ::kill(static_cast<pid_t>(pid), SIGSTOP);
        m_client->setDeadline(500);
        m_client->request({url(u"tall.mp4"_s)}, {}, Flavor);
        QTRY_COMPARE_WITH_TIMEOUT(m_reports->lines.last(), u"tall.mp4: error"_s, WaitMs);
        ::kill(static_cast<pid_t>(pid), SIGCONT);
    }

    void theServiceEndsWhenItIsIdleAndComesBack()
    {
        qputenv("KESTREL_THUMBNAILER_IDLE_MS", "200");
        QVERIFY(makes(url(u"film.mp4"_s)));
        QTRY_COMPARE_WITH_TIMEOUT(servicePid(), 0u, WaitMs);
        QVERIFY(makes(url(u"tall.mp4"_s)));
    }

    void saysWhatItSupports()
    {
        QVERIFY(makes(url(u"film.mp4"_s)));
        QDBusInterface service(ServiceName, u"/org/freedesktop/thumbnails/Thumbnailer1"_s,
                               u"org.freedesktop.thumbnails.Thumbnailer1"_s);
        const QDBusMessage supported = service.call(u"GetSupported"_s);
        QCOMPARE(supported.arguments().size(), 2);
        QCOMPARE(supported.arguments().at(0).toStringList().size(),
                 supported.arguments().at(1).toStringList().size());
        QVERIFY(supported.arguments().at(1).toStringList().contains(u"video/mp4"_s));
        QCOMPARE(QDBusReply<QStringList>(service.call(u"GetFlavors"_s)).value(), QStringList{Flavor});
        QVERIFY(!QDBusReply<QStringList>(service.call(u"GetSchedulers"_s)).value().isEmpty());
    }

private:
    static void useFaultyWorker()
    {
        qputenv(
            "KESTREL_MEDIA_WORKER_PROGRAM",
            QFile::encodeName(QCoreApplication::applicationDirPath() + u"/kestrel-media-worker-faulty"_s));
    }

    QString clip(const QString &name) const { return m_folder.filePath(name); }
    QUrl url(const QString &name) const { return QUrl::fromLocalFile(clip(name)); }

    void write(const QString &name, const QByteArray &bytes)
    {
        QFile file(clip(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }

    // Sets the file's time back by a day and returns it.
    static QDateTime age(const QString &path)
    {
        QFile file(path);
        const QDateTime time = QFileInfo(path).lastModified().addDays(-1);
        if (!file.open(QIODevice::ReadWrite) || !file.setFileTime(time, QFileDevice::FileModificationTime))
            return {};
        return QFileInfo(path).lastModified();
    }

    bool reports(const QUrl &resource, const QString &outcome)
    {
        m_reports->lines.clear();
        m_client->request({resource}, {}, Flavor);
        return QTest::qWaitFor([&] { return !m_reports->lines.isEmpty(); }, WaitMs)
            && m_reports->lines == QStringList{resource.fileName() + u": "_s + outcome};
    }
    bool makes(const QUrl &resource) { return reports(resource, u"ready"_s); }
    bool fails(const QUrl &resource) { return reports(resource, u"error"_s); }

    QSize imageSize(const QUrl &resource) const
    {
        return QImageReader(m_reports->paths.value(resource)).size();
    }

    static uint servicePid()
    {
        const QDBusReply<uint> pid = QDBusConnection::sessionBus().interface()->servicePid(ServiceName);
        return pid.isValid() ? pid.value() : 0;
    }

    static void stopService()
    {
        const uint pid = servicePid();
        if (pid > 0)
            ::kill(static_cast<pid_t>(pid), SIGTERM);
        QTRY_COMPARE_WITH_TIMEOUT(servicePid(), 0u, WaitMs);
    }

    QTemporaryDir m_folder;
    std::unique_ptr<DBusThumbnailerClient> m_client;
    std::unique_ptr<Reports> m_reports;
};

QTEST_GUILESS_MAIN(ThumbnailerTest)
#include "thumbnailer_test.moc"

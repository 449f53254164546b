// SPDX-License-Identifier: GPL-3.0-or-later
// A file that crashes a worker, hangs it or eats its memory ends that worker and nothing else.
#include "../../support/hangms.h"
#include "common/mediaworkerpool.h"

#include "../../support/processtable.h"
#include "../../support/testclips.h"

#include <QElapsedTimer>
#include <QFile>
#include <QHash>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

using namespace Qt::Literals::StringLiterals;
using Status = MediaReply::Status;

namespace {

constexpr int WaitMs = 30000;

const MediaWorkerPool::Limits TightLimits{
    .workers = 2, .wallMs = 1500, .cpuMs = 600, .memoryBytes = qint64(256) << 20};

} // namespace

class WorkerFaultsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        qputenv(
            "KESTREL_MEDIA_WORKER_PROGRAM",
            QFile::encodeName(QCoreApplication::applicationDirPath() + u"/kestrel-media-worker-faulty"_s));
        m_good = m_folder.filePath(u"good.mp4"_s);
        QCOMPARE(TestClips::make(m_good, {}), QString());
    }

    void init()
    {
        m_pool = std::make_unique<MediaWorkerPool>(TightLimits);
        m_replies.clear();
        connect(m_pool.get(), &MediaWorkerPool::finished, this,
                [this](int id, const MediaReply &reply) { m_replies.insert(id, reply); });
    }
    void cleanup()
    {
        m_pool.reset();
        qunsetenv("KESTREL_NO_BUBBLEWRAP");
    }

    void aFaultEndsOneFileOnly_data()
    {
        QTest::addColumn<QByteArray>("fault");
        QTest::addColumn<bool>("bubblewrap");
        QTest::addColumn<int>("status");
        for (const bool bubblewrap : {true, false}) {
            const auto row = [bubblewrap](const char *fault, Status status) {
                const QByteArray name = QByteArray(fault) + (bubblewrap ? " in bubblewrap" : " by itself");
                QTest::newRow(name.constData()) << QByteArray(fault) << bubblewrap << int(status);
            };
            row("crash", Status::Crashed);
            row("exit", Status::Crashed);
            row("hang", Status::TimedOut);
            row("spin", Status::TimedOut);
            row("memory", Status::TooMuchMemory);
            row("huge-frame", Status::Crashed);
            row("huge-metadata", Status::Crashed);
            row("flood", Status::Crashed);
        }
    }
    void aFaultEndsOneFileOnly()
    {
        QFETCH(QByteArray, fault);
        QFETCH(bool, bubblewrap);
        QFETCH(int, status);
        if (!bubblewrap) {
            qputenv("KESTREL_NO_BUBBLEWRAP", "1");
            init();
        }
        const int before = submit(m_good);
        const int bad = submit(faultFile(fault));
        QList<int> after;
        for (int i = 0; i < 6; ++i)
            after.append(submit(m_good));
        QVERIFY(waitFor(after + QList<int>{before, bad}));
        QCOMPARE(int(m_replies.value(bad).status), status);
        QVERIFY(!m_replies.value(bad).error.isEmpty());
        for (const int id : after + QList<int>{before}) {
            QCOMPARE(m_replies.value(id).error, QString());
            QCOMPARE(int(m_replies.value(id).status), int(Status::Ok));
        }
    }

    void manyFaultsInARowAreAllAnswered()
    {
        QList<int> ids;
        for (int i = 0; i < 10; ++i)
            ids << submit(faultFile("crash")) << submit(m_good);
        QVERIFY(waitFor(ids));
        for (qsizetype i = 0; i < ids.size(); ++i)
            QCOMPARE(int(m_replies.value(ids.at(i)).status), int(i % 2 ? Status::Ok : Status::Crashed));
    }

    // What a file that was read before left behind is not the fault of the one that is read now.
    void aWorkerThatIsStuckDoesNotCostTheFile()
    {
        m_pool = std::make_unique<MediaWorkerPool>(
            MediaWorkerPool::Limits{.workers = 1, .wallMs = TightLimits.wallMs});
        connect(m_pool.get(), &MediaWorkerPool::finished, this,
                [this](int id, const MediaReply &reply) { m_replies.insert(id, reply); });
        const int before = submit(m_good);
        const int stuck = submit(faultFile("hang-used"));
        QVERIFY(waitFor({before, stuck}));
        QCOMPARE(int(m_replies.value(before).status), int(Status::Ok));
        QCOMPARE(int(m_replies.value(stuck).status), int(Status::NotMedia)); // read, by another worker
    }

    // The card is pulled while a file on it is read: the file is closed at once, the others are read on.
    void releasedFilesAreClosedAtOnce()
    {
        QVERIFY(QDir(m_folder.path()).mkpath(u"card"_s));
        const QString path = m_folder.filePath(u"card/hangs.mp4"_s);
        QVERIFY(QFile::copy(faultFile("hang"), path));
        const QString sibling = m_folder.filePath(u"cardigan"_s);
        QVERIFY(QFile::copy(faultFile("hang"), sibling));
        MediaWorkerPool pool({.workers = 2, .wallMs = 60000});
        connect(&pool, &MediaWorkerPool::finished, this,
                [this](int id, const MediaReply &reply) { m_replies.insert(id, reply); });
        MediaRequest request;
        request.path = path;
        const int onCard = pool.submit(request);
        request.path = sibling;
        const int elsewhere = pool.submit(request);
        QTRY_VERIFY_WITH_TIMEOUT(isOpen(path) && isOpen(sibling), WaitMs);
        QElapsedTimer timer;
        timer.start();
        pool.releaseFilesUnder(m_folder.filePath(u"card/"_s));
        QVERIFY(!isOpen(path));
        QVERIFY2(timer.elapsed() < HangMs, "waited too long");
        QTRY_VERIFY(m_replies.contains(onCard));
        QCOMPARE(int(m_replies.value(onCard).status), int(Status::Unreadable));
        QVERIFY(isOpen(sibling));
        QVERIFY(!m_replies.contains(elsewhere));
    }

    void aPoolThatGoesAwayEndsItsWorkers()
    {
        const QString path = faultFile("hang");
        submit(path);
        QTRY_VERIFY_WITH_TIMEOUT(isOpen(path), WaitMs);
        m_pool.reset();
        QTRY_VERIFY(!isOpen(path));
    }

    void aWorkerThatDoesNotStartIsReported()
    {
        const QByteArray program = qgetenv("KESTREL_MEDIA_WORKER_PROGRAM");
        for (const char *broken : {"/bin/false", "/nowhere/at/all"}) {
            qputenv("KESTREL_MEDIA_WORKER_PROGRAM", broken);
            init();
            const int id = submit(m_good);
            QVERIFY(waitFor({id}));
            // Nothing was found out about the file, so it is not called broken.
            QCOMPARE(int(m_replies.value(id).status), int(Status::Unreadable));
        }
        qputenv("KESTREL_MEDIA_WORKER_PROGRAM", program);
    }

private:
    int submit(const QString &path)
    {
        MediaRequest request;
        request.path = path;
        request.wantFrame = true;
        return m_pool->submit(request);
    }

    QString faultFile(const QByteArray &fault)
    {
        QFile file(m_folder.filePath(QString::fromUtf8(fault)));
        if (file.open(QIODevice::WriteOnly))
            file.write("KESTREL-FAULT " + fault + '\n');
        return file.fileName();
    }

    bool waitFor(const QList<int> &ids)
    {
        return QTest::qWaitFor(
            [&] {
                return std::all_of(ids.begin(), ids.end(), [this](int id) { return m_replies.contains(id); });
            },
            WaitMs);
    }

    static bool isOpen(const QString &path) { return !ProcessTable::readersOf(path).isEmpty(); }

    QTemporaryDir m_folder;
    QString m_good;
    std::unique_ptr<MediaWorkerPool> m_pool;
    QHash<int, MediaReply> m_replies;
};

QTEST_GUILESS_MAIN(WorkerFaultsTest)
#include "worker_faults_test.moc"

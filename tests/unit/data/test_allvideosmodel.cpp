// SPDX-License-Identifier: GPL-3.0-or-later
// What the model holds: the load of the library, its cells and its look-ups.
#include "allvideosmodelfixture.h"

#include <data/thumbnailpaths.h>
#include <data/videoconstants.h>

#include <QElapsedTimer>
#include <QFile>
#include <QMetaMethod>
#include <QTest>

using namespace Qt::Literals::StringLiterals;
using namespace VideoRows;

class TestAllVideosModel : public AllVideosModelFixture
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { startStore(); }
    void init() { startModel(); }
    void cleanup() { stopModel(); }

    void theWholeLibraryIsAskedForAtConstruction();
    void aLibraryThatCannotBeAskedForIsWarnedOf();
    void anyAnswerReplacesTheContent();
    void thumbnailPathsAreFilledWhereTheFileExists();
    void thumbnailsThatComeAfterALoadAreSeenByTheNext();

    void everyRoleGivesTheCell();
    void theRangeTestIsOneWider();
    void thereAreNoGroups();

    void lookUpsTakeTheFirstMatch();
    void lookUpsOfWhatIsNotThereWarn();
    void lookUpsFollowEveryChangeOfTheRows();
    void aLargeLibraryTakesManyReportsQuickly();
    void signalsAndSlotsStandInTheirOrder();
};

void TestAllVideosModel::theWholeLibraryIsAskedForAtConstruction()
{
    const QString text = m_store->lastText();
    QVERIFY2(text.startsWith(u"SELECT     ?_video     ?_title"_s) && !text.contains(u"LIMIT"_s),
             qPrintable(text));
    QSignalSpy resets(m_model.get(), &QAbstractItemModel::modelReset);
    QSignalSpy updates(m_model.get(), &AllVideosModel::modelUpdated);
    m_store->finish(int(m_store->statements().size()) - 1,
                    {{u"urn:1"_s, QString(), u"a.b.mp4"_s, 61, 5, u"video/mp4"_s, urlOf(1), 1}});
    QCOMPARE(m_model->rowCount(), 1);
    QCOMPARE(m_model->columnCount(), 10);
    QCOMPARE(m_model->titleForUrn(u"urn:1"_s), u"a.b"_s);
    QCOMPARE(resets.size(), 1);
    QCOMPARE(updates.size(), 1);
}

void TestAllVideosModel::aLibraryThatCannotBeAskedForIsWarnedOf()
{
    m_store->answer(FakeSparqlAnswer::null());
    QTest::ignoreMessage(
        QtWarningMsg,
        "int TrackerInterface::executeQuery(const SparqlQuery&, const char*) NULL result for query");
    QTest::ignoreMessage(QtWarningMsg,
                         "AllVideosModel::AllVideosModel(QObject*) Could not load videos from tracker");
    AllVideosModel model(nullptr);
    QCOMPARE(model.rowCount(), 0);
    // A later change of the store still brings its videos.
    model.videosChanged({videoRow(1)});
    QCOMPARE(model.rowCount(), 1);
}

// Whoever asked: the answer's id is not looked at.
void TestAllVideosModel::anyAnswerReplacesTheContent()
{
    load(videoRows(3));
    Q_EMIT TrackerInterface::instance()->allVideosFinished({videoRow(9)}, 4711);
    QCOMPARE(column(*m_model, 0), QStringList{u"urn:9"_s});
}

void TestAllVideosModel::thumbnailPathsAreFilledWhereTheFileExists()
{
    // Addresses of every kind: plain, escaped, with characters that spell differently.
    const QStringList urls{u"file:///v/plain.mp4"_s, u"file:///v/a%20b.mp4"_s, u"file:///v/%C3%A4%23.mp4"_s,
                           u"file:///v/[x].mp4"_s, u"http://h/x.mp4"_s};
    QList<QStringList> rows;
    for (const QString &url : urls) {
        QStringList row = videoRow(int(rows.size()) + 1);
        row[6] = url;
        rows.append(row);
    }
    QDir().mkpath(ThumbnailPaths::defaultFolder(THUMBNAIL_FLAVOR));
    const auto create = [](const QString &path) {
        QFile file(path);
        return file.open(QIODevice::WriteOnly);
    };
    for (int i = 0; i < urls.size(); ++i) {
        if (i != 1)
            QVERIFY(create(ThumbnailPaths::defaultPath(urls.at(i), THUMBNAIL_FLAVOR)));
        if (i != 2)
            QVERIFY(create(ThumbnailPaths::pausePath(urls.at(i), THUMBNAIL_FLAVOR)));
    }
    load(rows);
    QStringList expectedDefaults;
    QStringList expectedStills;
    for (int i = 0; i < urls.size(); ++i) {
        expectedDefaults.append(i == 1 ? QString()
                                       : ThumbnailPaths::defaultPath(urls.at(i), THUMBNAIL_FLAVOR));
        expectedStills.append(i == 2 ? QString() : ThumbnailPaths::pausePath(urls.at(i), THUMBNAIL_FLAVOR));
    }
    QCOMPARE(column(*m_model, 8), expectedStills);
    QCOMPARE(column(*m_model, 9), expectedDefaults);
}

void TestAllVideosModel::thumbnailsThatComeAfterALoadAreSeenByTheNext()
{
    load({videoRow(1)});
    QCOMPARE(column(*m_model, 9), QStringList{QString()});
    const QString path = ThumbnailPaths::defaultPath(urlOf(1), THUMBNAIL_FLAVOR);
    QDir().mkpath(ThumbnailPaths::defaultFolder(THUMBNAIL_FLAVOR));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    load({videoRow(1)});
    QCOMPARE(column(*m_model, 9), QStringList{path});
}

void TestAllVideosModel::everyRoleGivesTheCell()
{
    load(videoRows(2));
    for (const int role : {int(Qt::DisplayRole), int(Qt::DecorationRole), int(Qt::UserRole)}) {
        const QVariant cell = m_model->data(m_model->index(1, 1), role);
        QCOMPARE(cell.typeId(), int(QMetaType::QString));
        QCOMPARE(cell.toString(), u"Video 2"_s);
    }
    QCOMPARE(m_model->text(1, 1), u"Video 2"_s);
    QVERIFY(m_model->text(2, 1).isNull() && m_model->text(0, 10).isNull() && m_model->text(-1, 0).isNull());
}

// A row equal to the row count and column 10 pass the test, quietly and with nothing there; what is beyond
// warns.
void TestAllVideosModel::theRangeTestIsOneWider()
{
    load(videoRows(2));
    QVERIFY(!m_model->data(AllVideosModelProbe::beyond(*m_model, 2, 0)).isValid());
    QVERIFY(!m_model->data(AllVideosModelProbe::beyond(*m_model, 0, 10)).isValid());
    QVERIFY(!m_model->data(AllVideosModelProbe::beyond(*m_model, 2, 10)).isValid());
    const char *warning
        = "virtual QVariant AllVideosModel::data(const QModelIndex&, int) const Index out of bounds";
    for (const QModelIndex &index : {AllVideosModelProbe::beyond(*m_model, 3, 0),
                                     AllVideosModelProbe::beyond(*m_model, 0, 11), QModelIndex()}) {
        QTest::ignoreMessage(QtWarningMsg, warning);
        QVERIFY(!m_model->data(index).isValid());
    }
}

void TestAllVideosModel::thereAreNoGroups()
{
    QCOMPARE(m_model->groupCount(), 0);
    QCOMPARE(m_model->groupTitle(0), QString());
    QVERIFY(!m_model->groupData(QModelIndex(), 0, Qt::DisplayRole).isValid());
}

void TestAllVideosModel::lookUpsTakeTheFirstMatch()
{
    QList<QStringList> rows = videoRows(3);
    rows[1][0] = u"urn:1"_s;
    rows[2][6] = urlOf(2);
    load(rows);
    QCOMPARE(m_model->titleForUrn(u"urn:1"_s), u"Video 1"_s);
    QCOMPARE(m_model->urlForUrn(u"urn:3"_s), urlOf(2));
    QCOMPARE(m_model->urnForUrl(urlOf(2)), u"urn:1"_s);
}

void TestAllVideosModel::lookUpsOfWhatIsNotThereWarn()
{
    load(videoRows(1));
    QTest::ignoreMessage(QtWarningMsg,
                         "QString AllVideosModel::titleForUrn(const QString&) Urn not in model");
    QCOMPARE(m_model->titleForUrn(u"URN:1"_s), QString());
    QTest::ignoreMessage(QtWarningMsg, "QString AllVideosModel::urnForUrl(const QString&) Url not in model");
    QCOMPARE(m_model->urnForUrl(u"file:///V/1.mp4"_s), QString());
    QTest::ignoreMessage(QtWarningMsg, "QString AllVideosModel::urlForUrn(const QString&) Urn not in model");
    QCOMPARE(m_model->urlForUrn(u"urn:2"_s), QString());
}

void TestAllVideosModel::lookUpsFollowEveryChangeOfTheRows()
{
    load(videoRows(4));
    QCOMPARE(m_model->urnForUrl(urlOf(4)), u"urn:4"_s);
    m_model->videosDeleted({1});
    QCOMPARE(m_model->urnForUrl(urlOf(4)), u"urn:4"_s);
    QStringList moved = videoRow(3);
    moved[6] = u"file:///elsewhere/3.mp4"_s;
    moved[7] = u"33"_s;
    m_model->videosChanged({moved, videoRow(5)});
    QCOMPARE(m_model->urnForUrl(u"file:///elsewhere/3.mp4"_s), u"urn:3"_s);
    QCOMPARE(m_model->urnForUrl(urlOf(5)), u"urn:5"_s);
    m_model->videosDeleted({33});
    QCOMPARE(column(*m_model, 0), (QStringList{u"urn:2"_s, u"urn:4"_s, u"urn:5"_s}));
    QTest::ignoreMessage(QtWarningMsg, "QString AllVideosModel::urnForUrl(const QString&) Url not in model");
    QCOMPARE(m_model->urnForUrl(urlOf(3)), QString());
}

void TestAllVideosModel::aLargeLibraryTakesManyReportsQuickly()
{
    m_tester.reset(); // it reads whole rows at every signal
    constexpr int count = 50000;
    load(videoRows(count));
    QElapsedTimer clock;
    clock.start();
    for (int number = count; number > count - 5000; --number)
        m_model->defaultThumbnailUpdated(urlOf(number), u"/t/x.jpeg"_s);
    m_model->videosChanged(videoRows(count));
    QVERIFY2(clock.elapsed() < 5000, "look-ups do not scan the library each time");
    QCOMPARE(m_model->rowCount(), count);
}

void TestAllVideosModel::signalsAndSlotsStandInTheirOrder()
{
    QByteArrayList signatures;
    const QMetaObject &object = AllVideosModel::staticMetaObject;
    for (int i = object.methodOffset(); i < object.methodCount(); ++i)
        signatures.append(object.method(i).methodSignature());
    QCOMPARE(signatures.join('\n'),
             QByteArrayList({"modelUpdated()", "filesRemoved(QStringList)",
                             "queryFinished(QList<QStringList>)", "videosDeleted(QList<int>)",
                             "videosChanged(QList<QStringList>)", "defaultThumbnailUpdated(QString,QString)",
                             "pauseThumbnailUpdated(QString,QString)", "doEmitDataChanged()"})
                 .join('\n'));
}

QTEST_GUILESS_MAIN(TestAllVideosModel)
#include "test_allvideosmodel.moc"

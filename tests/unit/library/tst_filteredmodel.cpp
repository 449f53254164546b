// SPDX-License-Identifier: GPL-3.0-or-later
#include "library/filteredmodel.h"
#include "platform/toolkit/locale.h"
#include "platform/toolkit/localewatcher.h"
#include "videotable.h"

#include <QAbstractItemModelTester>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTest>

#include <memory>

using namespace Qt::Literals::StringLiterals;

namespace {

// What the model is compared with: the same rules, spelled out, on the bare proxy.
class PlainProxy : public QSortFilterProxyModel
{
public:
    explicit PlainProxy(const QCollator &collator) : m_collator(collator) { sort(VideoColumn::Title); }
    void look(const QString &text)
    {
        m_text = text;
        invalidate();
    }

protected:
    bool filterAcceptsRow(int row, const QModelIndex &parent) const override
    {
        const QString title = sourceModel()->index(row, VideoColumn::Title, parent).data().toString();
        return title.contains(m_text, Qt::CaseInsensitive);
    }
    bool lessThan(const QModelIndex &left, const QModelIndex &right) const override
    {
        return m_collator.compare(left.data().toString(), right.data().toString()) < 0;
    }

private:
    QCollator m_collator;
    QString m_text;
};

QStringList column(const QAbstractItemModel &model, int number)
{
    QStringList texts;
    for (int row = 0; row < model.rowCount(); ++row)
        texts.append(model.index(row, number).data().toString());
    return texts;
}

QStringList titles(const QAbstractItemModel &model)
{
    return column(model, VideoColumn::Title);
}

void filter(FilteredModel &model, const QString &text)
{
    model.setFilterFixedString(text);
    model.invalidate();
}

// As the watcher reports it; the environment says what the locale is now.
void systemLocaleChanges(FilteredModel &model)
{
    Q_EMIT model.findChild<toolkit::LocaleWatcher *>()->changed({});
}

} // namespace

class FilteredModelTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void isSetUpToSortTitlesAndIgnoreCase();
    void emptyFilterShowsEveryRowInCollationOrder();
    void sourceWithoutDataGivesEmptyTitlesThatComeFirst();
    void findsTextAnywhereWhateverTheCase();
    void filterTextIsPlainText_data();
    void filterTextIsPlainText();
    void filterTextAloneTakesEffectAtOnce();
    void titleEditMovesTheRow();
    void titleEditAloneReSortsToo();
    void excludingAShownVideoHidesItAtOnce();
    void excludingAnUnknownUrlChangesNothing();
    void excludedRowsAlsoHideUnderAFilter();
    void clearExcludedBringsBackWhatStillExists();
    void clearExcludedWithNothingHiddenDoesNotInvalidate();
    void unfilteredListReadsNoDataToAccept();
    void videoInfoCopiesTheRow();
    void videoInfoOfARowWithoutNumbersHasZeros();
    void videoInfoOutOfBoundsWarns_data();
    void videoInfoOutOfBoundsWarns();
    void anotherCollationNameSortsAgain();
    void sameCollationNameDoesNothing();
    void anotherSourceIsReadAnew();
    void agreesWithThePlainProxyOnAnyRunOfChanges_data();
    void agreesWithThePlainProxyOnAnyRunOfChanges();

private:
    QByteArray m_collate;
};

void FilteredModelTest::init()
{
    m_collate = qgetenv("LC_ALL");
    qputenv("LC_ALL", "de_DE.UTF-8");
}

void FilteredModelTest::cleanup()
{
    qputenv("LC_ALL", m_collate);
}

void FilteredModelTest::isSetUpToSortTitlesAndIgnoreCase()
{
    const FilteredModel model;
    QCOMPARE(model.filterCaseSensitivity(), Qt::CaseInsensitive);
    QCOMPARE(model.sortColumn(), 1);
    QCOMPARE(model.sortOrder(), Qt::AscendingOrder);
    QVERIFY(model.dynamicSortFilter());
    const QMetaObject *meta = model.metaObject();
    QCOMPARE(meta->methodCount() - meta->methodOffset(), 1);
    QCOMPARE(meta->method(meta->methodOffset()).methodSignature(), QByteArray("localeChanged()"));
}

void FilteredModelTest::sourceWithoutDataGivesEmptyTitlesThatComeFirst()
{
    VideoTable table({u"beta"_s, u"x"_s, u"alpha"_s});
    table.setCell(1, VideoColumn::Title, QString());
    FilteredModel model;
    model.setSourceModel(&table);
    QCOMPARE(titles(model), QStringList({QString(), u"alpha"_s, u"beta"_s}));
    filter(model, u"a"_s);
    QCOMPARE(titles(model), QStringList({u"alpha"_s, u"beta"_s}));
}

void FilteredModelTest::emptyFilterShowsEveryRowInCollationOrder()
{
    VideoTable table({u"Zoo"_s, u"Äpfel"_s, u"birne"_s, u"Apfel 10"_s, u"Apfel 9"_s});
    FilteredModel model;
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    model.setSourceModel(&table);
    QCOMPARE(titles(model).join(u", "_s), u"Äpfel, Apfel 9, Apfel 10, birne, Zoo"_s);
}

void FilteredModelTest::findsTextAnywhereWhateverTheCase()
{
    VideoTable table({u"my video"_s, u"Video 2"_s, u"clip"_s, u"Banana"_s, u"ANA"_s, u"ä"_s});
    FilteredModel model;
    model.setSourceModel(&table);
    filter(model, u"VID"_s);
    QCOMPARE(titles(model), QStringList({u"my video"_s, u"Video 2"_s}));
    filter(model, u"ana"_s);
    QCOMPARE(titles(model), QStringList({u"ANA"_s, u"Banana"_s}));
    filter(model, u"a"_s);
    QCOMPARE(titles(model), QStringList({u"ANA"_s, u"Banana"_s}));
    filter(model, QString());
    QCOMPARE(model.rowCount(), 6);
}

void FilteredModelTest::filterTextIsPlainText_data()
{
    QTest::addColumn<QString>("text");
    for (const char *text : {".", "*", "(", "[a]", "\\", "?", "^c", "a+b", " "})
        QTest::newRow(text) << QString::fromLatin1(text);
}

void FilteredModelTest::filterTextIsPlainText()
{
    QFETCH(QString, text);
    VideoTable table({u"clip"_s, u"x"_s + text + u"y"_s});
    FilteredModel model;
    model.setSourceModel(&table);
    filter(model, text);
    QCOMPARE(titles(model), QStringList(u"x"_s + text + u"y"_s));
}

void FilteredModelTest::filterTextAloneTakesEffectAtOnce()
{
    VideoTable table({u"a"_s, u"b"_s});
    FilteredModel model;
    model.setSourceModel(&table);
    QCOMPARE(model.rowCount(), 2);
    model.setFilterFixedString(u"b"_s);
    QCOMPARE(titles(model), QStringList(u"b"_s));
}

void FilteredModelTest::titleEditMovesTheRow()
{
    VideoTable table({u"alpha"_s, u"beta"_s, u"gamma"_s});
    FilteredModel model;
    model.setSourceModel(&table);
    filter(model, u"a"_s);
    QCOMPARE(model.rowCount(), 3);
    table.changeTitles(0, {u"zeta"_s});
    model.invalidate();
    QCOMPARE(titles(model), QStringList({u"beta"_s, u"gamma"_s, u"zeta"_s}));
    table.changeTitles(1, {u"BET"_s});
    model.invalidate();
    QCOMPARE(titles(model), QStringList({u"gamma"_s, u"zeta"_s}));
}

void FilteredModelTest::titleEditAloneReSortsToo()
{
    VideoTable table({u"alpha"_s, u"beta"_s, u"gamma"_s});
    FilteredModel model;
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    model.setSourceModel(&table);
    QCOMPARE(model.rowCount(), 3);
    table.changeTitles(0, {u"zeta"_s});
    QCOMPARE(titles(model), QStringList({u"beta"_s, u"gamma"_s, u"zeta"_s}));
}

void FilteredModelTest::excludingAShownVideoHidesItAtOnce()
{
    VideoTable table({u"a"_s, u"b"_s, u"c"_s});
    FilteredModel model;
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    model.setSourceModel(&table);
    QCOMPARE(model.rowCount(), 3);
    model.excludeItem(table.rowAt(1).at(0), table.rowAt(1).at(6));
    QCOMPARE(titles(model), QStringList({u"a"_s, u"c"_s}));
}

void FilteredModelTest::excludingAnUnknownUrlChangesNothing()
{
    VideoTable table({u"a"_s, u"b"_s});
    FilteredModel model;
    model.setSourceModel(&table);
    QCOMPARE(model.rowCount(), 2);
    QSignalSpy removed(&model, &QAbstractItemModel::rowsRemoved);
    model.excludeItem(u"urn:x"_s, u"file:///nowhere.mp4"_s);
    model.excludeItem(table.rowAt(0).at(0), table.rowAt(0).at(6).toUpper());
    QCOMPARE(titles(model), QStringList({u"a"_s, u"b"_s}));
    QCOMPARE(removed.count(), 0);
}

void FilteredModelTest::excludedRowsAlsoHideUnderAFilter()
{
    VideoTable table({u"clip a"_s, u"clip b"_s, u"other"_s});
    FilteredModel model;
    model.setSourceModel(&table);
    filter(model, u"clip"_s);
    model.excludeItem({}, table.rowAt(0).at(6));
    QCOMPARE(titles(model), QStringList(u"clip b"_s));
    filter(model, QString());
    QCOMPARE(titles(model), QStringList({u"clip b"_s, u"other"_s}));
}

void FilteredModelTest::clearExcludedBringsBackWhatStillExists()
{
    // Deleting failed for one of two files: at the next change of the number of rows it is back.
    VideoTable table({u"a"_s, u"b"_s, u"c"_s});
    FilteredModel model;
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    model.setSourceModel(&table);
    model.excludeItem({}, table.rowAt(0).at(6));
    model.excludeItem({}, table.rowAt(1).at(6));
    QCOMPARE(titles(model), QStringList(u"c"_s));
    table.remove(1, 1);
    model.clearExcluded();
    QCOMPARE(titles(model), QStringList({u"a"_s, u"c"_s}));
}

void FilteredModelTest::clearExcludedWithNothingHiddenDoesNotInvalidate()
{
    VideoTable table({u"a"_s, u"b"_s});
    FilteredModel model;
    model.setSourceModel(&table);
    filter(model, u"a"_s);
    QCOMPARE(model.rowCount(), 1);
    table.setCell(0, VideoColumn::Title, u"x"_s); // silently: only filtering again would notice
    table.reads = 0;
    model.clearExcluded();
    QCOMPARE(table.reads, 0);
    QCOMPARE(model.rowCount(), 1);
}

void FilteredModelTest::unfilteredListReadsNoDataToAccept()
{
    VideoTable table({u"b"_s, u"a"_s});
    FilteredModel model;
    model.setSourceModel(&table);
    QCOMPARE(model.rowCount(), 2);
    table.reads = 0;
    model.invalidate();
    QCOMPARE(model.rowCount(), 2);
    QCOMPARE(table.reads, 0);
}

void FilteredModelTest::videoInfoCopiesTheRow()
{
    VideoTable table({u"b"_s, u"a"_s});
    table.setCell(1, VideoColumn::Duration, u"3725"_s);
    table.setCell(1, VideoColumn::PlayPosition, u"4000000000"_s);
    FilteredModel model;
    model.setSourceModel(&table);
    const VideoInfo info = model.videoInfo(0);
    QCOMPARE(info.urn, u"urn:uuid:2"_s);
    QCOMPARE(info.title, u"a"_s);
    QCOMPARE(info.fileName, u"a.mp4"_s);
    QCOMPARE(info.duration, 3725u);
    QCOMPARE(info.playPosition, 4000000000u);
    QCOMPARE(info.mimeType, u"video/mp4"_s);
    QCOMPARE(info.url, u"file:///videos/2.mp4"_s);
    QCOMPARE(info.trackerId, 2u);
}

void FilteredModelTest::videoInfoOfARowWithoutNumbersHasZeros()
{
    VideoTable table({u"a"_s});
    table.setCell(0, VideoColumn::Duration, QString());
    table.setCell(0, VideoColumn::PlayPosition, QString());
    table.setCell(0, VideoColumn::TrackerId, u"1234"_s);
    FilteredModel model;
    model.setSourceModel(&table);
    const VideoInfo info = model.videoInfo(0);
    QCOMPARE(info.duration, 0u);
    QCOMPARE(info.playPosition, 0u);
    QCOMPARE(info.trackerId, 1234u);
}

void FilteredModelTest::videoInfoOutOfBoundsWarns_data()
{
    QTest::addColumn<int>("row");
    QTest::newRow("before the first") << -1;
    QTest::newRow("the row count") << 2;
}

void FilteredModelTest::videoInfoOutOfBoundsWarns()
{
    QFETCH(int, row);
    VideoTable table({u"a"_s, u"b"_s});
    FilteredModel model;
    model.setSourceModel(&table);
    QTest::ignoreMessage(QtWarningMsg, "VideoInfo FilteredModel::videoInfo(int) Index out of bounds");
    const VideoInfo info = model.videoInfo(row);
    QVERIFY(info.urn.isEmpty() && info.title.isEmpty() && info.url.isEmpty());
    QCOMPARE(info.duration + info.playPosition + info.trackerId, 0u);
}

void FilteredModelTest::anotherCollationNameSortsAgain()
{
    VideoTable table({u"zug"_s, u"öl"_s});
    FilteredModel model;
    model.setSourceModel(&table);
    QCOMPARE(titles(model), QStringList({u"öl"_s, u"zug"_s}));
    qputenv("LC_ALL", "sv_SE.UTF-8");
    systemLocaleChanges(model);
    QCOMPARE(titles(model), QStringList({u"öl"_s, u"zug"_s})); // on the next turn of the event loop
    QTRY_COMPARE(titles(model), QStringList({u"zug"_s, u"öl"_s}));
}

void FilteredModelTest::sameCollationNameDoesNothing()
{
    VideoTable table({u"zug"_s, u"öl"_s});
    FilteredModel model;
    model.setSourceModel(&table);
    QCOMPARE(model.rowCount(), 2);
    QSignalSpy changed(&model, &QAbstractItemModel::layoutChanged);
    QSignalSpy told(model.findChild<toolkit::Locale *>(), &toolkit::Locale::settingsChanged);
    systemLocaleChanges(model);
    QCOMPARE(told.count(), 1);
    QCoreApplication::processEvents();
    QCOMPARE(changed.count(), 0);
}

void FilteredModelTest::anotherSourceIsReadAnew()
{
    VideoTable first({u"a"_s});
    VideoTable second({u"c"_s, u"b"_s});
    FilteredModel model;
    model.setSourceModel(&first);
    filter(model, u"b"_s);
    QCOMPARE(model.rowCount(), 0);
    model.setSourceModel(&second);
    QCOMPARE(titles(model), QStringList(u"b"_s));
    first.insert(0, {u"b 2"_s});
    QCOMPARE(titles(model), QStringList(u"b"_s));
}

void FilteredModelTest::agreesWithThePlainProxyOnAnyRunOfChanges_data()
{
    QTest::addColumn<QByteArray>("locale");
    QTest::addColumn<int>("seed");
    for (const char *locale : {"C", "de_DE.UTF-8", "sv_SE.UTF-8"}) {
        for (int seed : {1, 2, 3})
            QTest::addRow("%s %d", locale, seed) << QByteArray(locale) << seed;
    }
}

void FilteredModelTest::agreesWithThePlainProxyOnAnyRunOfChanges()
{
    QFETCH(QByteArray, locale);
    QFETCH(int, seed);
    qputenv("LC_ALL", locale);
    QRandomGenerator random{quint32(seed)};
    const auto someTitles = [&random](int count) {
        static const QStringList words
            = {u"ana"_s, u"Ana"_s, u"öl"_s, u"Zug"_s, u"9"_s, u"10"_s, u"x"_s, u"ä"_s};
        QStringList result;
        for (int i = 0; i < count; ++i)
            result.append(words.at(random.bounded(8)) + u' ' + words.at(random.bounded(8)));
        return result;
    };
    VideoTable table(someTitles(40));
    FilteredModel model;
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    PlainProxy plain(toolkit::Locale().collator());
    model.setSourceModel(&table);
    plain.setSourceModel(&table);
    static const QStringList searches = {u"a"_s, u"an"_s, u"ana"_s, u"ANA Ö"_s, u""_s, u"1"_s, u"10"_s};
    QString text;
    for (int step = 0; step < 120; ++step) {
        const int first = random.bounded(table.rowCount() + 1);
        const int count = 1 + random.bounded(5);
        const bool fits = first + count <= table.rowCount();
        switch (random.bounded(10)) {
        case 0:
        case 1:
        case 2:
            table.insert(first, someTitles(count));
            break;
        case 3:
        case 4:
            if (fits)
                table.remove(first, first + count - 1);
            break;
        case 5:
        case 6:
            if (fits)
                table.changeTitles(first, someTitles(count));
            break;
        case 7:
            if (step % 5 == 0)
                table.setTitles(someTitles(30));
            break;
        default:
            text = searches.at(random.bounded(int(searches.size())));
            filter(model, text);
        }
        plain.look(text); // sorted anew: rows of one title stand as in the source
        QCOMPARE(column(model, VideoColumn::Urn).join(u' '), column(plain, VideoColumn::Urn).join(u' '));
    }
}

QTEST_GUILESS_MAIN(FilteredModelTest)
#include "tst_filteredmodel.moc"

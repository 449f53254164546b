// SPDX-License-Identifier: GPL-3.0-or-later
#include "library/filteredmodel.h"
#include "platform/toolkit/locale.h"
#include "platform/toolkit/localewatcher.h"

#include <QAbstractItemModelTester>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTest>
#include <QThreadPool>

#include <algorithm>
#include <functional>
#include <memory>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int Wait = 30000; // ms
constexpr int Long = FilteredModel::RowsAtOnce + 2500;

QString randomTitle(QRandomGenerator &random)
{
    static const QStringList words = {u"ana"_s, u"Ana"_s, u"öl"_s, u"Zug"_s, u"9"_s, u"10"_s, u"x"_s, u"ä"_s};
    return words.at(random.bounded(8)) + u' ' + words.at(random.bounded(8)) + u' '
        + QString::number(random.bounded(500));
}

QStringList randomTitles(QRandomGenerator &random, int count)
{
    QStringList titles;
    for (int i = 0; i < count; ++i)
        titles.append(randomTitle(random));
    return titles;
}

// Titles and what tells rows apart, and no more, so that many are few bytes.
class Titles : public QAbstractTableModel
{
public:
    explicit Titles(const QStringList &titles) { setTitles(titles); }

    int rowCount(const QModelIndex &parent = QModelIndex()) const override
    {
        return parent.isValid() ? 0 : int(m_rows.size());
    }
    int columnCount(const QModelIndex &parent = QModelIndex()) const override
    {
        return parent.isValid() ? 0 : 2;
    }
    QVariant data(const QModelIndex &index, int role) const override
    {
        if (!index.isValid() || role != Qt::DisplayRole)
            return {};
        const auto &[number, title] = m_rows.at(index.row());
        return index.column() == VideoColumn::Title ? title : QString::number(number);
    }

    void setTitles(const QStringList &titles)
    {
        beginResetModel();
        m_rows.clear();
        for (const QString &title : titles)
            m_rows.append({m_next++, title});
        endResetModel();
    }
    void insert(int first, const QStringList &titles)
    {
        beginInsertRows({}, first, first + int(titles.size()) - 1);
        for (const QString &title : titles)
            m_rows.insert(first++, {m_next++, title});
        endInsertRows();
    }
    void remove(int first, int last)
    {
        beginRemoveRows({}, first, last);
        m_rows.remove(first, last - first + 1);
        endRemoveRows();
    }
    // Told as one range, however far apart they are.
    void changeTitles(const QMap<int, QString> &titles)
    {
        for (auto title = titles.begin(); title != titles.end(); ++title)
            m_rows[title.key()].second = title.value();
        Q_EMIT dataChanged(index(titles.firstKey(), VideoColumn::Title),
                           index(titles.lastKey(), VideoColumn::Title));
    }

    // What is to be shown, by the rules spelled out.
    [[nodiscard]] QString expected(const QString &text) const
    {
        const QCollator collator = toolkit::Locale().collator();
        QList<std::pair<int, QString>> rows;
        std::copy_if(m_rows.cbegin(), m_rows.cend(), std::back_inserter(rows),
                     [&text](const auto &row) { return row.second.contains(text, Qt::CaseInsensitive); });
        std::stable_sort(rows.begin(), rows.end(), [&collator](const auto &left, const auto &right) {
            return collator.compare(left.second, right.second) < 0;
        });
        QStringList numbers;
        for (const auto &row : std::as_const(rows))
            numbers.append(QString::number(row.first));
        return numbers.join(u' ');
    }

private:
    QList<std::pair<int, QString>> m_rows;
    int m_next = 0;
};

QString shown(const FilteredModel &model)
{
    QStringList numbers;
    for (int row = 0; row < model.rowCount(); ++row)
        numbers.append(model.index(row, 0).data().toString());
    return numbers.join(u' ');
}

// Whatever is shown, each row is one of the source and back.
QString checkMapping(const FilteredModel &model)
{
    for (int row = 0; row < model.rowCount(); ++row) {
        const QModelIndex source = model.mapToSource(model.index(row, 0));
        if (!source.isValid() || model.mapFromSource(source).row() != row)
            return u"row %1"_s.arg(row);
    }
    return {};
}

// Turns of the event loop, without waiting.
void turn(int times)
{
    for (int i = 0; i < times; ++i)
        QCoreApplication::processEvents();
}

} // namespace

// A source of more rows than are sorted in one turn of the event loop.
class LongListTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { qputenv("LC_ALL", "de_DE.UTF-8"); }
    void isEmptyUntilItIsSorted();
    void changesInTheMiddle_data();
    void changesInTheMiddle();
    void anotherListInTheMiddle();
    void anotherLocaleInTheMiddle();
    void titlesFarApart();
    void manyRowsAtOnce();
    void searchesInSlices();
    void theEndOfASearchIsToldWhateverEndsIt();
    void anyRunOfChangesEndsInWhatIsExpected_data();
    void anyRunOfChangesEndsInWhatIsExpected();
    void theSourceMayGoInTheMiddle();
    void theModelMayGoInTheMiddle();
};

#define VERIFY_SHOWS(model, table, text)                                                                     \
    QTRY_VERIFY_WITH_TIMEOUT((model).isSettled(), Wait);                                                     \
    QVERIFY(shown(model) == (table).expected(text));                                                         \
    QCOMPARE(checkMapping(model), QString())

void LongListTest::isEmptyUntilItIsSorted()
{
    QRandomGenerator random(1);
    Titles table(randomTitles(random, Long));
    FilteredModel model;
    const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    model.setSourceModel(&table);
    QVERIFY(!model.isSettled());
    QCOMPARE(model.rowCount(), 0);
    QSignalSpy resets(&model, &QAbstractItemModel::modelReset);
    VERIFY_SHOWS(model, table, QString());
    QCOMPARE(resets.count(), 1);
}

void LongListTest::changesInTheMiddle_data()
{
    QTest::addColumn<int>("turns"); // until the changes begin
    QTest::addColumn<int>("between");
    for (const int turns : {0, 1, 2, 3}) {
        for (const int between : {0, 1})
            QTest::addRow("after %d turns, %d between", turns, between) << turns << between;
    }
    QTest::addRow("once it is sorted") << -1 << 0;
}

void LongListTest::changesInTheMiddle()
{
    QFETCH(int, turns);
    QFETCH(int, between);
    QRandomGenerator random(quint32(turns * 2 + between + 3));
    Titles table(randomTitles(random, Long));
    FilteredModel model;
    model.setSourceModel(&table);
    if (turns < 0)
        QTRY_VERIFY_WITH_TIMEOUT(model.isSettled(), Wait);
    else
        turn(turns);
    QString text;
    for (int change = 0; change < 12; ++change) {
        const int row = random.bounded(table.rowCount() - 20);
        switch (change % 4) {
        case 0:
            table.insert(row, randomTitles(random, 5));
            break;
        case 1:
            table.remove(row, row + 7);
            break;
        case 2:
            table.changeTitles({{row, randomTitle(random)}, {row + 9, randomTitle(random)}});
            break;
        default:
            text = QStringList{u"an"_s, u"ana"_s, QString()}.at(change / 4);
            model.setFilterFixedString(text);
            model.invalidate();
        }
        QCOMPARE(checkMapping(model), QString());
        turn(between);
    }
    VERIFY_SHOWS(model, table, text);
}

void LongListTest::anotherListInTheMiddle()
{
    QRandomGenerator random(2);
    Titles table(randomTitles(random, Long));
    FilteredModel model;
    model.setSourceModel(&table);
    for (const int turns : {0, 1, 2, 3}) {
        turn(turns);
        table.setTitles(randomTitles(random, Long));
        QCOMPARE(model.rowCount(), 0);
    }
    VERIFY_SHOWS(model, table, QString());
    table.setTitles(randomTitles(random, Long));
    turn(2);
    table.setTitles({u"b"_s, u"a"_s});
    QVERIFY(model.isSettled());
    const QString two = shown(model);
    QVERIFY(two == table.expected(QString()));
    QThreadPool::globalInstance()->waitForDone();
    turn(3);
    QCOMPARE(shown(model), two);
}

void LongListTest::anotherLocaleInTheMiddle()
{
    const auto change = [](FilteredModel &model, const char *locale) {
        qputenv("LC_ALL", locale);
        Q_EMIT model.findChild<toolkit::LocaleWatcher *>()->changed({});
    };
    QRandomGenerator random(4);
    Titles table(randomTitles(random, Long));
    FilteredModel model;
    model.setSourceModel(&table);
    turn(3);
    change(model, "sv_SE.UTF-8");
    turn(1);
    VERIFY_SHOWS(model, table, QString());
    const QString before = shown(model);
    change(model, "de_DE.UTF-8");
    QTRY_VERIFY_WITH_TIMEOUT(!model.isSettled() || shown(model) != before, Wait);
    QCOMPARE(model.rowCount(), Long); // what is shown stays until then
    VERIFY_SHOWS(model, table, QString());
    QVERIFY(shown(model) != before);
}

void LongListTest::titlesFarApart()
{
    QRandomGenerator random(5);
    Titles table(randomTitles(random, Long));
    FilteredModel model;
    model.setSourceModel(&table);
    QTRY_VERIFY_WITH_TIMEOUT(model.isSettled(), Wait);
    table.changeTitles({{0, u"zzz"_s}, {Long - 1, u"aaa"_s}});
    model.invalidate();
    QCOMPARE(model.rowCount(), Long);
    QVERIFY(!model.isSettled()); // whoever looks at the number of rows is to look again
    table.remove(3, 4);
    QVERIFY(!model.isSettled());
    QSignalSpy layouts(&model, &QAbstractItemModel::layoutChanged);
    VERIFY_SHOWS(model, table, QString());
    QCOMPARE(layouts.count(), 1);
}

void LongListTest::manyRowsAtOnce()
{
    QRandomGenerator random(6);
    Titles table(randomTitles(random, 5));
    FilteredModel model;
    const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    model.setSourceModel(&table);
    table.insert(2, randomTitles(random, Long));
    VERIFY_SHOWS(model, table, QString());
    table.remove(10, Long - 10);
    VERIFY_SHOWS(model, table, QString());
}

void LongListTest::searchesInSlices()
{
    constexpr int count = FilteredModel::SearchesPerTurn + 20000;
    QRandomGenerator random(7);
    Titles table(randomTitles(random, count));
    FilteredModel model;
    model.setSourceModel(&table);
    QTRY_VERIFY_WITH_TIMEOUT(model.isSettled(), Wait);
    QSignalSpy layouts(&model, &QAbstractItemModel::layoutChanged);
    model.setFilterFixedString(u"ana"_s);
    model.invalidate();
    QVERIFY(!model.isSettled());
    QCOMPARE(model.rowCount(), count);
    model.setFilterFixedString(u"zug"_s); // typed on before that was found
    table.remove(count - 1, count - 1);
    QCOMPARE(model.rowCount(), count - 1);
    VERIFY_SHOWS(model, table, u"zug"_s);
    QCOMPARE(layouts.count(), 1);
    model.setFilterFixedString(u"zug ö"_s); // among those found
    QVERIFY(model.isSettled());
    QVERIFY(shown(model) == table.expected(u"zug ö"_s));
}

// The rest is searched when a video is hidden, a turn before it would be.
void LongListTest::theEndOfASearchIsToldWhateverEndsIt()
{
    QStringList titles;
    for (int i = 0; i < FilteredModel::SearchesPerTurn + 20; ++i)
        titles.append(u"ana"_s);
    Titles table(titles);
    FilteredModel model;
    model.setSourceModel(&table);
    QTRY_VERIFY_WITH_TIMEOUT(model.isSettled(), Wait);
    model.setFilterFixedString(u"ana"_s);
    QVERIFY(!model.isSettled());
    QSignalSpy layouts(&model, &QAbstractItemModel::layoutChanged);
    model.excludeItem(u"urn:none"_s, u"file:///none"_s);
    QVERIFY(model.isSettled());
    QCOMPARE(layouts.count(), 1);
    QCOMPARE(model.rowCount(), int(titles.size()));
}

void LongListTest::anyRunOfChangesEndsInWhatIsExpected_data()
{
    QTest::addColumn<int>("seed");
    for (int seed = 1; seed <= 3; ++seed)
        QTest::addRow("%d", seed) << seed;
}

// Whatever is under way when the next change comes.
void LongListTest::anyRunOfChangesEndsInWhatIsExpected()
{
    QFETCH(int, seed);
    QRandomGenerator random{quint32(seed)};
    const QStringList texts = {{}, u"a"_s, u"an"_s, u"ana 1"_s, u"zug"_s, u"none of them"_s};
    Titles table(randomTitles(random, Long));
    FilteredModel model;
    model.setSourceModel(&table);
    QString text;
    for (int round = 0; round < 5; ++round) {
        for (int step = random.bounded(1, 12); step > 0; --step) {
            const int count = table.rowCount();
            const int row = count > 0 ? random.bounded(count) : 0;
            switch (random.bounded(count > 0 ? 9 : 1)) {
            case 0:
                table.insert(row, randomTitles(random, random.bounded(4) == 0 ? Long : 3));
                break;
            case 1:
                table.remove(row, qMin(count - 1, row + random.bounded(5)));
                break;
            case 2:
                if (count > 2 * Long)
                    table.remove(1, count - Long);
                break;
            case 3:
                table.changeTitles({{row, randomTitle(random)}});
                break;
            case 4:
                table.changeTitles({{0, randomTitle(random)}, {count - 1, randomTitle(random)}});
                break;
            case 5:
                if (random.bounded(3) == 0)
                    table.setTitles(randomTitles(random, random.bounded(2 * Long)));
                break;
            case 6:
                model.excludeItem(u"urn:none"_s, u"file:///none"_s);
                model.clearExcluded();
                break;
            default:
                text = texts.at(random.bounded(int(texts.size())));
                model.setFilterFixedString(text);
                model.invalidate();
            }
            QCOMPARE(checkMapping(model), QString());
            turn(random.bounded(3));
        }
        const QString wanted = table.expected(text);
        QTRY_VERIFY_WITH_TIMEOUT(model.isSettled() && shown(model) == wanted, Wait);
        QCOMPARE(checkMapping(model), QString());
    }
}

void LongListTest::theSourceMayGoInTheMiddle()
{
    for (const int turns : {0, 1, 3}) {
        QRandomGenerator random(8);
        auto table = std::make_unique<Titles>(randomTitles(random, Long));
        FilteredModel model;
        model.setSourceModel(table.get());
        turn(turns);
        table.reset();
        QCOMPARE(model.rowCount(), 0);
        QVERIFY(model.isSettled());
        QThreadPool::globalInstance()->waitForDone();
        turn(3);
        QCOMPARE(model.rowCount(), 0);
    }
}

void LongListTest::theModelMayGoInTheMiddle()
{
    for (const int turns : {0, 1, 3}) {
        QRandomGenerator random(9);
        Titles table(randomTitles(random, Long));
        auto model = std::make_unique<FilteredModel>();
        model->setSourceModel(&table);
        turn(turns);
        model.reset();
        QThreadPool::globalInstance()->waitForDone();
        turn(3);
        table.insert(0, {u"nobody looks"_s});
        QCOMPARE(table.rowCount(), Long + 1);
    }
}

QTEST_GUILESS_MAIN(LongListTest)
#include "tst_longlist.moc"

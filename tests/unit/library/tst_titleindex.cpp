// SPDX-License-Identifier: GPL-3.0-or-later
#include "library/titleindex.h"

#include <QRandomGenerator>
#include <QSet>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

// The index must say at every moment what the collator and a plain search say of the titles themselves.
class TitleIndexTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void anyRunOfChangesKeepsPlacesAndHits_data();
    void anyRunOfChangesKeepsPlacesAndHits();
    void equalTitlesStandByRow();
    void searchesInSlices();
    void foldsCharacterByCharacter_data();
    void foldsCharacterByCharacter();
    void anotherCollatorSortsAnew();

private:
    static QString randomTitle(QRandomGenerator &random)
    {
        static const QStringList words
            = {u"Äpfel"_s, u"apfel"_s, u"Zebra"_s, u"zoo"_s, u"10"_s,   u"9"_s, u"ß"_s, u"STRASSE"_s,
               u"İ"_s,     u"ǅ"_s,     u"𐐀𐐁"_s,    u"𐐨"_s,   u"日本"_s, u""_s,  u"-"_s, u"ana"_s};
        QStringList title;
        for (int i = random.bounded(4); i >= 0; --i)
            title.append(words.at(random.bounded(int(words.size()))));
        return title.join(u' ');
    }
    static QStringList randomTitles(QRandomGenerator &random, int count)
    {
        QStringList titles;
        for (int i = 0; i < count; ++i)
            titles.append(randomTitle(random));
        return titles;
    }
    // The first disagreement as text; empty when there is none.
    static QString check(TitleIndex &index, const QStringList &titles, const QCollator &collator,
                         const QString &wanted)
    {
        if (index.count() != titles.size())
            return u"%1 rows instead of %2"_s.arg(index.count()).arg(titles.size());
        for (int row = 0; row < titles.size(); ++row) {
            if (index.contains(row, wanted) != titles.at(row).contains(wanted, Qt::CaseInsensitive))
                return u"'%1' in '%2'"_s.arg(wanted, titles.at(row));
        }
        const QList<int> order = index.order();
        if (QSet<int>(order.cbegin(), order.cend()).size() != titles.size())
            return u"%1 places"_s.arg(order.size());
        for (qsizetype i = 1; i < order.size(); ++i) {
            const int before = collator.compare(titles.at(order.at(i - 1)), titles.at(order.at(i)));
            if (before > 0 || (before == 0 && order.at(i - 1) > order.at(i)))
                return u"'%1' before '%2'"_s.arg(titles.at(order.at(i - 1)), titles.at(order.at(i)));
        }
        return {};
    }
};

void TitleIndexTest::anyRunOfChangesKeepsPlacesAndHits_data()
{
    QTest::addColumn<QLocale>("locale");
    QTest::newRow("C") << QLocale::c();
    QTest::newRow("German") << QLocale(QLocale::German);
    QTest::newRow("Swedish") << QLocale(QLocale::Swedish);
    QTest::newRow("Japanese") << QLocale(QLocale::Japanese);
}

void TitleIndexTest::anyRunOfChangesKeepsPlacesAndHits()
{
    QFETCH(QLocale, locale);
    QCollator collator(locale);
    collator.setNumericMode(true);
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    QRandomGenerator random(7);
    TitleIndex index;
    index.setCollator(collator);
    QStringList titles = randomTitles(random, 60);
    index.reset(titles);
    static const QStringList searches
        = {u"a"_s, u"an"_s, u"ana"_s, u""_s, u"ÄPF"_s, u"𐐨"_s, u"ss"_s, u"z"_s, u"ǆ"_s};

    for (int step = 0; step < 300; ++step) {
        const int first = random.bounded(int(titles.size()) + 1);
        const int room = int(titles.size()) - first;
        switch (random.bounded(step % 50 == 49 ? 4 : 3)) {
        case 0: {
            const QStringList added = randomTitles(random, 1 + random.bounded(8));
            index.insert(first, added);
            for (qsizetype i = 0; i < added.size(); ++i)
                titles.insert(first + i, added.at(i));
            break;
        }
        case 1:
            if (const int count = random.bounded(8); count > 0 && count <= room) {
                index.remove(first, first + count - 1);
                titles.remove(first, count);
            }
            break;
        case 2:
            if (const int count = random.bounded(8); count > 0 && count <= room) {
                const QStringList changed = randomTitles(random, count);
                index.update(first, changed);
                for (int i = 0; i < count; ++i)
                    titles[first + i] = changed.at(i);
            }
            break;
        default:
            titles = randomTitles(random, random.bounded(80));
            index.reset(titles);
        }
        const QString wanted = searches.at(random.bounded(int(searches.size())));
        const QString fault = check(index, titles, collator, wanted);
        QVERIFY2(fault.isEmpty(), qPrintable(u"step %1: %2"_s.arg(step).arg(fault)));
    }
}

void TitleIndexTest::equalTitlesStandByRow()
{
    TitleIndex index;
    index.setCollator(QCollator(QLocale(QLocale::English)));
    index.reset(QStringList{u"same"_s, u"same"_s, u"other"_s});
    QCOMPARE(index.order(), (QList<int>{2, 0, 1}));
    index.insert(1, {u"same"_s});
    QCOMPARE(index.order(), (QList<int>{3, 0, 1, 2}));
}

// A search in slices says what one over all rows does, also when rows come, go and change in its middle and
// when another text is looked for before it is through.
void TitleIndexTest::searchesInSlices()
{
    QRandomGenerator random(3);
    QStringList titles = randomTitles(random, 200);
    TitleIndex index;
    const QCollator collator(QLocale(QLocale::German));
    index.setCollator(collator);
    index.reset(titles);
    static const QStringList searches = {u"a"_s, u"an"_s, u"ana"_s, u"ZOO"_s, u"z"_s, u"ss"_s};
    for (int step = 0; step < 200; ++step) {
        const QString wanted = searches.at(random.bounded(int(searches.size())));
        static_cast<void>(index.search(wanted, 1 + random.bounded(50)));
        const int row = random.bounded(int(titles.size()));
        switch (random.bounded(4)) {
        case 0:
            titles.insert(row, u"Zoo ana"_s);
            index.insert(row, {titles.at(row)});
            break;
        case 1:
            titles.remove(row);
            index.remove(row, row);
            break;
        case 2:
            titles[row] = randomTitle(random);
            index.update(row, {titles.at(row)});
            break;
        default:
            break;
        }
        int slices = 1;
        while (!index.search(wanted, 20))
            ++slices;
        QVERIFY(slices <= 1 + titles.size() / 20);
        const QString fault = check(index, titles, collator, wanted);
        QVERIFY2(fault.isEmpty(), qPrintable(u"step %1: %2"_s.arg(step).arg(fault)));
    }
}

void TitleIndexTest::foldsCharacterByCharacter_data()
{
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("wanted");
    QTest::newRow("case") << u"BANANA"_s << u"nan"_s;
    QTest::newRow("no diacritics") << u"ä"_s << u"a"_s;
    QTest::newRow("sharp s is one letter") << u"Straße"_s << u"ss"_s;
    QTest::newRow("capital sharp s") << u"STRAẞE"_s << u"ß"_s;
    QTest::newRow("long s") << u"Wachſtube"_s << u"chs"_s;
    QTest::newRow("final sigma") << u"ΟΔΟΣ"_s << u"οδος"_s;
    QTest::newRow("beyond the first plane") << u"𐐀"_s << u"𐐨"_s;
    QTest::newRow("lone surrogate") << QString(QChar(0xd801)) << QString(QChar(0xd801));
    QTest::newRow("dotted capital I") << u"İstanbul"_s << u"i"_s;
}

void TitleIndexTest::foldsCharacterByCharacter()
{
    QFETCH(QString, title);
    QFETCH(QString, wanted);
    TitleIndex index;
    index.reset(QStringList{title});
    QCOMPARE(index.contains(0, wanted), title.contains(wanted, Qt::CaseInsensitive));
}

void TitleIndexTest::anotherCollatorSortsAnew()
{
    TitleIndex index;
    index.setCollator(QCollator(QLocale(QLocale::German)));
    index.reset(QStringList{u"öl"_s, u"zug"_s});
    QCOMPARE(index.order(), (QList<int>{0, 1}));
    index.setCollator(QCollator(QLocale(QLocale::Swedish)));
    QCOMPARE(index.order(), (QList<int>{1, 0}));
}

QTEST_GUILESS_MAIN(TitleIndexTest)
#include "tst_titleindex.moc"

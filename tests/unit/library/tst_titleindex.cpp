// SPDX-License-Identifier: GPL-3.0-or-later
#include "library/titleindex.h"

#include <QRandomGenerator>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

// The index must say at every moment what the collator and a plain search say of the titles themselves.
class TitleIndexTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void anyRunOfChangesKeepsPlacesAndHits_data();
    void anyRunOfChangesKeepsPlacesAndHits();
    void equalTitlesAreBeforeNeitherWay();
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
            for (int other = row % 7; other < titles.size(); other += 7) {
                const bool before = collator.compare(titles.at(row), titles.at(other)) < 0;
                if (index.isBefore(row, other) != before)
                    return u"'%1' before '%2'"_s.arg(titles.at(row), titles.at(other));
            }
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

void TitleIndexTest::equalTitlesAreBeforeNeitherWay()
{
    TitleIndex index;
    index.setCollator(QCollator(QLocale(QLocale::English)));
    index.reset({u"same"_s, u"same"_s});
    QVERIFY(!index.isBefore(0, 1));
    QVERIFY(!index.isBefore(1, 0));
    index.insert(1, {u"same"_s});
    QVERIFY(!index.isBefore(0, 1));
    QVERIFY(!index.isBefore(1, 2));
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
    index.reset({title});
    QCOMPARE(index.contains(0, wanted), title.contains(wanted, Qt::CaseInsensitive));
}

void TitleIndexTest::anotherCollatorSortsAnew()
{
    TitleIndex index;
    index.setCollator(QCollator(QLocale(QLocale::German)));
    index.reset({u"öl"_s, u"zug"_s});
    QVERIFY(index.isBefore(0, 1));
    index.setCollator(QCollator(QLocale(QLocale::Swedish)));
    QVERIFY(index.isBefore(1, 0));
}

QTEST_GUILESS_MAIN(TitleIndexTest)
#include "tst_titleindex.moc"

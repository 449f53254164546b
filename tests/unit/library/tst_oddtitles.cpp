// SPDX-License-Identifier: GPL-3.0-or-later
#include "data/allvideosmodel.h"
#include "library/filteredmodel.h"
#include "libraryfixture.h"
#include "platform/toolkit/list.h"

#include <QClipboard>

using namespace Qt::Literals::StringLiterals;

// Titles are what files and people make of them, and anything can be typed.
class OddTitlesTest : public QObject
{
    Q_OBJECT

public:
    explicit OddTitlesTest(LibraryFixture &fixture) : f(fixture) { }

private Q_SLOTS:
    void cleanup() { f.close(); }
    void filterFindsOddTitles_data();
    void filterFindsOddTitles();
    void wholeOddTitleIsPastedAndFound_data();
    void wholeOddTitleIsPastedAndFound();
    void emojiTypedOnTheListOpensTheField();
    void oddTitlesAreDrawnAndPlayed();

private:
    [[nodiscard]] QStringList shown() const
    {
        QStringList titles;
        const FilteredModel *proxy = f.widget()->proxy();
        for (int row = 0; row < proxy->rowCount(); ++row)
            titles.append(proxy->videoInfo(row).title);
        titles.sort();
        return titles;
    }
    static QStringList oddTitles()
    {
        return {u"<b>bold</b> & <img src='x'>"_s,
                u"&lt;entity&gt;"_s,
                u"100 % (a.b) [c] ^$ * ? \\ |"_s,
                u"   "_s,
                u"🎬 film 👨‍👩‍👧"_s,
                u"cafe\u0301"_s, // combining
                u"caf\u00e9"_s,
                u"abc עברית 12 عربي"_s,
                u"zero"_s + QChar(u'\0') + u"inside"_s,
                u"two\nlines\r\nthree"_s,
                u"STRASSE"_s,
                u"straße"_s,
                QString(10000, u'm') + u"end"_s,
                u"half "_s + QChar(0xd83c)};
    }

    LibraryFixture &f;
};

void OddTitlesTest::filterFindsOddTitles_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("found");
    const QStringList titles = oddTitles();
    const auto row = [&titles](const char *name, const QString &text, const QList<int> &indexes) {
        QStringList found;
        for (const int index : indexes)
            found.append(titles.at(index));
        found.sort();
        QTest::newRow(name) << text << found;
    };
    row("mark-up", u"<B>"_s, {0});
    row("end of mark-up", u"</b> &"_s, {0});
    row("an entity is its letters", u"&lt;"_s, {1});
    row("what an entity would mean", u"<entity"_s, {});
    row("no pattern", u".*"_s, {});
    row("no pattern but its letters", u"(a.b) [c] ^$ * ?"_s, {2});
    row("blanks", u"   "_s, {3});
    row("emoji", u"🎬"_s, {4});
    row("a part of a family", u"👩"_s, {4});
    row("combining as typed so", u"cafe\u0301"_s, {5});
    row("without the accent", u"cafe"_s, {5});
    row("precomposed", u"CAF\u00c9"_s, {6});
    row("right to left", u"עברית"_s, {7});
    row("across directions", u"12 ع"_s, {7});
    row("behind a NUL", u"inside"_s, {8});
    row("behind a line break", u"three"_s, {9});
    row("a blank is no line break", u"two lines"_s, {});
    row("case is not folded to two letters", u"strasse"_s, {10});
    row("sharp s", u"straß"_s, {11});
    row("end of a long one", u"mmend"_s, {12});
    row("longer than anything", QString(20000, u'm'), {});
}

void OddTitlesTest::filterFindsOddTitles()
{
    QFETCH(const QString, text);
    QVERIFY(f.open(LibraryFixture::rows(oddTitles())));
    f.page->showTextEdit(text, true);
    QCOMPARE(f.field()->text(), text);
    QTEST(shown(), "found");
    QTRY_COMPARE(f.widget()->list()->visibleIndexes().isEmpty(), shown().isEmpty());
    QVERIFY(!f.window.grab().isNull()); // with what was found marked
    f.field()->setText({});
    QCOMPARE(shown().size(), oddTitles().size());
}

void OddTitlesTest::wholeOddTitleIsPastedAndFound_data()
{
    QTest::addColumn<int>("index");
    for (int index = 0; index < oddTitles().size(); ++index)
        QTest::addRow("%d", index) << index;
}

void OddTitlesTest::wholeOddTitleIsPastedAndFound()
{
    QFETCH(const int, index);
    const QString title = oddTitles().at(index);
    QVERIFY(f.open(LibraryFixture::rows(oddTitles())));
    f.page->showTextEdit({}, true);
    f.edit()->setFocus();
    QGuiApplication::clipboard()->setText(title);
    f.edit()->paste();
    // One line: a title with line breaks or control characters is not found by its copy, and that is all.
    if (f.edit()->text() == title)
        QVERIFY(shown().contains(title));
    else
        QCOMPARE(f.widget()->viewState(), int(MyAllVideosWidget::NoResults));
    for (int times = 0; times < 3; ++times)
        f.key(u"\b"_s, Qt::Key_Backspace);
    QVERIFY(!f.window.grab().isNull());
}

void OddTitlesTest::emojiTypedOnTheListOpensTheField()
{
    QVERIFY(f.open(LibraryFixture::rows(oddTitles())));
    f.key(u"🎬"_s);
    QCOMPARE(f.field()->text(), u"🎬"_s);
    QCOMPARE(shown().size(), 1);
}

void OddTitlesTest::oddTitlesAreDrawnAndPlayed()
{
    QVERIFY(f.open(LibraryFixture::rows(oddTitles())));
    QStringList played;
    connect(f.page.get(), &LocalVideosPage::showNowPlayingPage, this,
            [&played](VideoInfo &info) { played.append(info.title); });
    for (int row = 0; row < f.widget()->proxy()->rowCount(); ++row) {
        const QModelIndex index = f.widget()->proxy()->index(row, 0);
        f.widget()->list()->scrollTo(index);
        QVERIFY(!f.window.grab().isNull());
        Q_EMIT f.widget()->list()->itemClicked(index);
    }
    played.sort();
    QStringList expected = oddTitles();
    expected.sort();
    QCOMPARE(played, expected);
}

int main(int argc, char **argv)
{
    toolkit::Application application(argc, argv, u"video"_s, nullptr);
    LibraryFixture fixture;
    OddTitlesTest test(fixture);
    return QTest::qExec(&test, argc, argv);
}
#include "tst_oddtitles.moc"

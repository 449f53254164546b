// SPDX-License-Identifier: GPL-3.0-or-later
#include "library/videohighlighter.h"
#include "platform/toolkit/theme.h"

#include <QTest>

using namespace Qt::Literals::StringLiterals;

class VideoHighlighterTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { toolkit::Theme::instance()->setAccentColor(QColor(0x4f, 0xa3, 0xff)); }
    void marksWhatTheFilterFound_data();
    void marksWhatTheFilterFound();
    void emptyFilterLeavesTheTitleAsItIs();
    void componentsBelowSixteenHaveOneDigit_data();
    void componentsBelowSixteenHaveOneDigit();
    void theThemesAccentIsTaken();
    void themeChangeReachesCellsFilledAfterwards();

private:
    static QString style(const QString &color)
    {
        return u"<style>highlight{color:#%1;font-weight:bold;text-decoration:underline}</style>"_s.arg(color);
    }
};

void VideoHighlighterTest::marksWhatTheFilterFound_data()
{
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("filter");
    QTest::addColumn<QString>("marked"); // [ and ] for the element
    QTest::newRow("a word at most once") << u"banana bar"_s << u"A"_s << u"b[a]nana b[a]r"_s;
    QTest::newRow("markup is escaped") << u"Tom & Jerry"_s << u"jer"_s << u"Tom &amp; [Jer]ry"_s;
    QTest::newRow("a blank: the whole title") << u"my video clip"_s << u"video cl"_s << u"my [video cl]ip"_s;
    QTest::newRow("across two words") << u"video clip"_s << u"o c"_s << u"vide[o c]lip"_s;
    QTest::newRow("leading blanks are dropped") << u"my video clip"_s << u"  vid"_s << u"my [vid]eo clip"_s;
    QTest::newRow("only blanks: every word, empty") << u"my clip"_s << u"  "_s << u"[]my []clip"_s;
    QTest::newRow("only blanks, two in the title") << u"a  b"_s << u" "_s << u"[]a [] []b"_s;
    QTest::newRow("only blanks, no title") << QString() << u" "_s << u"[]"_s;
    QTest::newRow("across words, no match in one") << u"video clip"_s << u"oc"_s << u"video clip"_s;
    QTest::newRow("a tab is no blank") << u"x a"_s << u"\ta"_s << u"x a"_s;
    QTest::newRow("capitals stay") << u"xABCx"_s << u"abc"_s << u"x[ABC]x"_s;
    QTest::newRow("nothing found") << u"a < b"_s << u"zzz"_s << u"a &lt; b"_s;
    QTest::newRow("two blanks in the title") << u"a  b"_s << u"b"_s << u"a  [b]"_s;
    QTest::newRow("a trailing blank stays") << u"my video clip"_s << u"o "_s << u"my vide[o ]clip"_s;
    QTest::newRow("quotes and brackets inside") << u"\"<b>\""_s << u"<b>"_s << u"&quot;[&lt;b&gt;]&quot;"_s;
    QTest::newRow("longer than any word") << u"ab cd"_s << u"abcd"_s << u"ab cd"_s;
}

void VideoHighlighterTest::marksWhatTheFilterFound()
{
    QFETCH(QString, title);
    QFETCH(QString, filter);
    QFETCH(QString, marked);
    marked.replace(u'[', "<highlight>"_L1).replace(u']', "</highlight>"_L1);
    const VideoHighlighter highlighter;
    QCOMPARE(highlighter.highlight(title, filter), style(u"4fa3ff"_s) + marked);
}

void VideoHighlighterTest::emptyFilterLeavesTheTitleAsItIs()
{
    const VideoHighlighter highlighter;
    QCOMPARE(highlighter.highlight(u"<b> & \"x\""_s, QString()), u"<b> & \"x\""_s);
}

void VideoHighlighterTest::componentsBelowSixteenHaveOneDigit_data()
{
    QTest::addColumn<QColor>("accent");
    QTest::addColumn<QString>("digits");
    QTest::newRow("no red") << QColor(0, 128, 255) << u"080ff"_s;
    QTest::newRow("ten") << QColor(10, 16, 15) << u"a10f"_s;
    QTest::newRow("black") << QColor(0, 0, 0) << u"000"_s;
    QTest::newRow("white") << QColor(255, 255, 255) << u"ffffff"_s;
}

void VideoHighlighterTest::componentsBelowSixteenHaveOneDigit()
{
    QFETCH(QColor, accent);
    QFETCH(QString, digits);
    QCOMPARE(VideoHighlighter::styleBlock(accent), style(digits));
}

void VideoHighlighterTest::theThemesAccentIsTaken()
{
    // The theme raises what is too dark to be read; the block takes what the theme gives.
    const VideoHighlighter highlighter;
    toolkit::Theme::instance()->setAccentColor(QColor(0, 128, 255));
    const QColor accent = toolkit::Theme::instance()->accentColor();
    QCOMPARE(highlighter.highlight(u"x"_s, u"y"_s), VideoHighlighter::styleBlock(accent) + u"x"_s);
}

void VideoHighlighterTest::themeChangeReachesCellsFilledAfterwards()
{
    VideoHighlighter highlighter;
    const QString before = highlighter.highlight(u"x"_s, u"x"_s);
    toolkit::Theme::instance()->setAccentColor(QColor(0xff, 0x80, 0x40));
    const QString accent = toolkit::Theme::instance()->accentColor().name().mid(1);
    const QString after = highlighter.highlight(u"x"_s, u"x"_s);
    QVERIFY(before != after);
    QCOMPARE(after, style(accent) + u"<highlight>x</highlight>"_s);
}

QTEST_MAIN(VideoHighlighterTest)
#include "tst_videohighlighter.moc"

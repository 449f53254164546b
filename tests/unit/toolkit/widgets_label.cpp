// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/toolkit/label.h"
#include "platform/toolkit/textlayouter.h"
#include "platform/toolkit/theme.h"
#include "widgets_support.h"

#include <QApplication>
#include <QFontMetricsF>
#include <QRegularExpression>

using namespace Qt::Literals::StringLiterals;
using toolkit::FormattedText;
using toolkit::Label;
using toolkit::TextLayouter;
using toolkit::Theme;

namespace {

const QString ellipsis(QChar(0x2026));
const QString longTitle = u"Birthday, the candles and the second cake that nobody expected to be so large"_s;
const QString markup
    = u"<style>highlight{color:#4fa3ff;font-weight:bold;text-decoration:underline}</style>"_s;

TextLayouter::Settings settingsFor(qreal width, int lines)
{
    TextLayouter::Settings settings;
    settings.font = Theme::instance()->style(u"KestrelGridCellTitleLabel"_s).font;
    settings.lineHeight = 29;
    settings.width = width;
    settings.maximumLines = lines;
    return settings;
}

QRect inkBox(const QImage &image)
{
    QRect box;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (qGray(image.pixel(x, y)) > 90)
                box |= QRect(x, y, 1, 1);
        }
    }
    return box;
}

} // namespace

class WidgetsLabel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { Theme::instance()->setTextScale(1); }
    void aLongTitleIsElidedAtTheEndOfItsSecondLine();
    void nothingLostStandsBeforeAnEllipsis();
    void aTitleThatFitsIsLeftAlone();
    void noSingleWordIsLeftForTheLastLine();
    void aTextThatIsBrokenWithinWordsIsNotBalanced();
    void oneLongWordIsElidedInItsLine();
    void wordsAreBrokenAtTheirJointsOnly_data();
    void wordsAreBrokenAtTheirJointsOnly();
    void aMarkedWordThatIsCutKeepsItsMark();
    void aRichTitleIsElidedToo();
    void aParagraphThatIsCutIsElided();
    void theHighlightElementIsParsedByItsStyleBlock();
    void entitiesAreText();
    void plainTextKeepsItsMarkupCharacters();
    void theHighlightIsDrawnInItsColourBoldAndUnderlined();
    void aColourOfFiveDigitsDoesNoHarm();
    void linesStandAtEvenDistances();
    void rightToLeftTextAndLayout();
    void digitsHaveOneWidthInTimeLabels();
    void theColonStaysBetweenDigitsOfEveryWriting();
    void theTimePillHugsItsText_data();
    void theTimePillHugsItsText();
    void thePausedPillShowsItsMark();
    void aHeightForOneLineShowsOneLine();
    void heightForWidth();
    void textColourCanBeSet();
};

void WidgetsLabel::aLongTitleIsElidedAtTheEndOfItsSecondLine()
{
    TextLayouter layouter;
    layouter.layOut({longTitle, {}}, settingsFor(226, 2));
    QCOMPARE(layouter.lineCount(), 2);
    QVERIFY(layouter.isElided());
    QVERIFY(layouter.shownText().endsWith(ellipsis));
    QVERIFY(layouter.shownText().startsWith(u"Birthday, the"_s));
    QVERIFY(layouter.size().width() <= 226);
    // Not one more character would have fitted.
    QVERIFY(layouter.shownText().size() > 30);
}

// "and the second cake.…", of the name of a file.
void WidgetsLabel::nothingLostStandsBeforeAnEllipsis()
{
    TextLayouter layouter;
    const QString name = u"The candles, the cake.mkv"_s;
    layouter.layOut({name, {}}, settingsFor(-1, 1));
    const qreal whole = layouter.size().width();
    for (qreal width = 60; width < whole - 1; width += 5) {
        layouter.layOut({name, {}}, settingsFor(width, 1));
        const QString shown = layouter.shownText();
        QVERIFY2(shown.endsWith(ellipsis) && shown.at(shown.size() - 2).isLetter(), qPrintable(shown));
    }
}

void WidgetsLabel::aTitleThatFitsIsLeftAlone()
{
    TextLayouter layouter;
    layouter.layOut({u"First steps"_s, {}}, settingsFor(226, 2));
    QCOMPARE(layouter.lineCount(), 1);
    QVERIFY(!layouter.isElided());
    QCOMPARE(layouter.shownText(), u"First steps"_s);
}

// "The library cannot be" and, below it, "reached".
void WidgetsLabel::noSingleWordIsLeftForTheLastLine()
{
    TextLayouter layouter;
    TextLayouter::Settings settings = settingsFor(240, 0);
    settings.alignment = Qt::AlignHCenter;
    const FormattedText text{u"The library cannot be reached"_s, {}};
    layouter.layOut(text, settings);
    QCOMPARE(layouter.lines(), QStringList({u"The library cannot be"_s, u"reached"_s}));
    settings.balanced = true;
    layouter.layOut(text, settings);
    QCOMPARE(layouter.lines(), QStringList({u"The library cannot"_s, u"be reached"_s}));

    QImage image(240, 58, QImage::Format_RGB32);
    image.fill(Qt::black);
    QPainter painter(&image);
    layouter.draw(&painter, {}, Qt::white);
    painter.end();
    const QRect ink = inkBox(image);
    QVERIFY2(std::abs(ink.left() - (image.width() - 1 - ink.right())) <= 4,
             qPrintable(u"%1"_s.arg(ink.left())));
}

void WidgetsLabel::aTextThatIsBrokenWithinWordsIsNotBalanced()
{
    TextLayouter layouter;
    TextLayouter::Settings settings = settingsFor(120, 0);
    settings.alignment = Qt::AlignHCenter;
    settings.wrapMode = QTextOption::WrapAtWordBoundaryOrAnywhere;
    const FormattedText text{u"Nichtübereinstimmung hier"_s, {}};
    layouter.layOut(text, settings);
    const QStringList lines = layouter.lines();
    QVERIFY(lines.size() > 1);
    settings.balanced = true;
    layouter.layOut(text, settings);
    QCOMPARE(layouter.lines(), lines);
}

void WidgetsLabel::oneLongWordIsElidedInItsLine()
{
    TextLayouter layouter;
    layouter.layOut({u"Donaudampfschifffahrtsgesellschaftskapitaen"_s, {}}, settingsFor(226, 2));
    QVERIFY(layouter.isElided());
    QVERIFY(layouter.shownText().endsWith(ellipsis));
    QVERIFY(layouter.size().width() <= 226);
    QCOMPARE(layouter.lineCount(), 1);
    layouter.layOut({u"VID_20240101_123456789_a_very_long_name_from_a_camera"_s, {}}, settingsFor(10, 2));
    QCOMPARE(layouter.shownText().right(1), ellipsis);
}

void WidgetsLabel::wordsAreBrokenAtTheirJointsOnly_data()
{
    QTest::addColumn<QString>("title");
    QTest::addColumn<qreal>("scale");
    QTest::addColumn<int>("lines"); // at most
    QTest::addColumn<QString>("pattern"); // of what is shown, lines separated by |
    QTest::newRow("large text") << u"Dragonflies over the lake"_s << 2.0 << 3
                                << u"Dragon[a-z]*…\\|over the\\|lake"_s;
    QTest::newRow("ordinary text") << u"Dragonflies over the lake"_s << 1.0 << 2
                                   << u"Dragonflies over the\\|lake"_s;
    QTest::newRow("of a camera") << u"VID_20240101_123456789_4k"_s << 1.0 << 2
                                 << u"VID_20240101_\\|123456789_4k"_s;
    QTest::newRow("of a camera, large")
        << u"VID_20240101_123456"_s << 2.0 << 3 << u"VID_\\|2024[0-9]*…\\|123456"_s;
    QTest::newRow("a long part among others")
        << u"IMG_Hochgeschwindigkeitsstrecke_2"_s << 2.0 << 3 << u"IMG_\\|Hoch[a-z]*…\\|2"_s;
    QTest::newRow("the last line is too long")
        << u"One Hochgeschwindigkeitsstrecke and more"_s << 2.0 << 2 << u"One\\|Hoch[a-z]*…"_s;
    QTest::newRow("no blanks in Chinese")
        << u"\u6625\u5929\u7684\u6e2f\u53e3\u548c\u6d77\u6d0b"_s << 2.0 << 3 << u"[^|]{4,}\\|[^|…]+"_s;
}

// A title is read word by word: at twice the size a word is rather cut short than torn.
void WidgetsLabel::wordsAreBrokenAtTheirJointsOnly()
{
    QFETCH(QString, title);
    QFETCH(qreal, scale);
    QFETCH(int, lines);
    QFETCH(QString, pattern);
    Theme::instance()->setTextScale(scale);
    TextLayouter layouter;
    layouter.layOut({title, {}}, settingsFor(226, lines));
    const QString shown = layouter.lines().join(u'|');
    QVERIFY2(QRegularExpression(QRegularExpression::anchoredPattern(pattern)).match(shown).hasMatch(),
             qPrintable(shown));
    QVERIFY(layouter.size().width() <= 226.5);
    QCOMPARE(layouter.isElided(), shown.contains(ellipsis));
}

void WidgetsLabel::aMarkedWordThatIsCutKeepsItsMark()
{
    const auto settings = settingsFor(226, 3);
    const FormattedText marked = toolkit::parseRichText(
        markup + u"the <highlight>Hochgeschwindigkeitsstrecke</highlight> of today"_s, settings.font);
    TextLayouter layouter;
    layouter.layOut(marked, settings);
    QCOMPARE(layouter.lines().size(), 3);
    QVERIFY(layouter.lines().at(1).endsWith(ellipsis));
    QCOMPARE(layouter.lines().at(2), u"of today"_s);
    // All of the cut word and its ellipsis, and nothing of the next line.
    QImage image(226, 3 * 29, QImage::Format_RGB32);
    image.fill(Qt::black);
    QPainter painter(&image);
    layouter.draw(&painter, {}, Qt::white);
    painter.end();
    const QColor accent(0x4f, 0xa3, 0xff);
    QVERIFY(pixelsLike(image, {0, 29, 226, 29}, accent) > 300);
    QCOMPARE(pixelsLike(image, {0, 2 * 29, 226, 29}, accent, 20), 0);
    QCOMPARE(pixelsLike(image, {0, 29, 226, 29}, Qt::white, 20), 0);
}

void WidgetsLabel::aRichTitleIsElidedToo()
{
    const QFont font = settingsFor(0, 0).font;
    const FormattedText text = toolkit::parseRichText(
        markup
            + u"Birthday, the <highlight>candles</highlight> and the second <highlight>cake that nobody expected</highlight>"_s,
        font);
    TextLayouter layouter;
    layouter.layOut(text, settingsFor(226, 2));
    QVERIFY(layouter.isElided());
    QCOMPARE(layouter.lineCount(), 2);
    QVERIFY(layouter.shownText().endsWith(ellipsis));
    QVERIFY(layouter.size().width() <= 226.5);
}

void WidgetsLabel::aParagraphThatIsCutIsElided()
{
    TextLayouter layouter;
    const QString text
        = u"one"_s + QChar(QChar::LineSeparator) + u"two"_s + QChar(QChar::LineSeparator) + u"three"_s;
    layouter.layOut({text, {}}, settingsFor(226, 2));
    QCOMPARE(layouter.lineCount(), 2);
    QVERIFY(layouter.shownText().endsWith(u"two"_s + ellipsis));
}

void WidgetsLabel::theHighlightElementIsParsedByItsStyleBlock()
{
    const FormattedText text = toolkit::parseRichText(
        markup + u"Open-air <highlight>concert</highlight> in the rain"_s, settingsFor(0, 0).font);
    QCOMPARE(text.text, u"Open-air concert in the rain"_s);
    QCOMPARE(text.formats.size(), 3);
    const QTextLayout::FormatRange mark = text.formats.at(1);
    QCOMPARE(text.text.mid(mark.start, mark.length), u"concert"_s);
    QCOMPARE(mark.format.foreground().color(), QColor(0x4f, 0xa3, 0xff));
    QCOMPARE(mark.format.font().weight(), QFont::Bold);
    QVERIFY(mark.format.font().underline());
    QVERIFY(!text.formats.at(0).format.hasProperty(QTextFormat::ForegroundBrush));
    QCOMPARE(text.formats.at(0).format.font().weight(), QFont::Medium);
}

void WidgetsLabel::entitiesAreText()
{
    const FormattedText text = toolkit::parseRichText(
        markup + u"Tom &amp; <highlight>Jer</highlight>ry &lt;b&gt; &quot;x&quot;"_s, QFont());
    QCOMPARE(text.text, u"Tom & Jerry <b> \"x\""_s);
}

void WidgetsLabel::plainTextKeepsItsMarkupCharacters()
{
    Label label;
    label.setTextFormat(Qt::PlainText);
    label.setText(u"<b>not bold</b> & co"_s);
    label.resize(400, 40);
    QCOMPARE(label.lineCount(), 1);
    const qreal plain = label.effectiveSizeHint(Qt::PreferredSize).width();
    label.setTextFormat(Qt::RichText);
    QVERIFY(label.effectiveSizeHint(Qt::PreferredSize).width() < plain);
}

void WidgetsLabel::theHighlightIsDrawnInItsColourBoldAndUnderlined()
{
    Stage stage;
    auto *label = new Label;
    stage.scene.addItem(label);
    label->setStyleName(u"KestrelGridCellTitleLabel"_s);
    label->setTextFormat(Qt::RichText);
    label->setGeometry(QRectF(10, 10, 226, 116));
    label->setText(markup + u"Open-air <highlight>concert</highlight> in the rain"_s);
    const QImage marked = stage.picture();
    const QColor accent(0x4f, 0xa3, 0xff);
    const int blue = pixelsLike(marked, {10, 10, 226, 116}, accent);
    QVERIFY2(blue > 150, qPrintable(QString::number(blue)));
    QVERIFY(pixelsLike(marked, {10, 10, 226, 116}, QColor(0xF3, 0xF5, 0xF8)) > 150);
    // The line under the word: somewhere a row of the accent colour without a gap.
    int longest = 0;
    for (int y = 10; y < 126; ++y) {
        int run = 0;
        for (int x = 10; x < 236; ++x) {
            run = pixelsLike(marked, {x, y, 1, 1}, accent, 60) == 1 ? run + 1 : 0;
            longest = std::max(longest, run);
        }
    }
    QVERIFY2(longest > 40, qPrintable(QString::number(longest)));
    label->setText(u"Open-air concert in the rain"_s);
    QCOMPARE(pixelsLike(stage.picture(), {10, 10, 226, 116}, accent), 0);
}

// An accent colour with a small component is written with a digit too few; the title is still read.
void WidgetsLabel::aColourOfFiveDigitsDoesNoHarm()
{
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"Unknown color name"_s));
    const FormattedText text = toolkit::parseRichText(
        u"<style>highlight{color:#080ff;font-weight:bold;text-decoration:underline}</style>a <highlight>b</highlight>"_s,
        QFont());
    QCOMPARE(text.text, u"a b"_s);
}

void WidgetsLabel::linesStandAtEvenDistances()
{
    TextLayouter layouter;
    layouter.layOut({u"one two three four five six seven"_s, {}}, settingsFor(100, 0));
    QVERIFY(layouter.lineCount() >= 3);
    QCOMPARE(layouter.size().height(), layouter.lineCount() * 29.0);
}

void WidgetsLabel::rightToLeftTextAndLayout()
{
    Stage stage;
    auto *label = new Label;
    stage.scene.addItem(label);
    label->setStyleName(u"KestrelGridCellTitleLabel"_s);
    label->setGeometry(QRectF(0, 0, 400, 40));
    label->setText(u"Holiday"_s);
    QVERIFY(inkBox(stage.picture()).right() < 200);
    label->setLayoutDirection(Qt::RightToLeft);
    QVERIFY(inkBox(stage.picture()).left() > 200);
    label->setText(u"عطلة"_s);
    QVERIFY(inkBox(stage.picture()).left() > 200);
    label->setAlignment(Qt::AlignHCenter | Qt::AlignVCenter);
    const QRect box = inkBox(stage.picture());
    QVERIFY(std::abs(box.center().x() - 200) < 8);
    QVERIFY(std::abs(box.center().y() - 20) < 10);
}

void WidgetsLabel::digitsHaveOneWidthInTimeLabels()
{
    Label label;
    label.setStyleName(u"KestrelGridCellTimeLabel"_s);
    label.setTextFormat(Qt::PlainText);
    TextLayouter::Settings settings;
    settings.font = label.style().font;
    settings.tabularDigits = true;
    QSizeF first;
    for (const QString &time : {u"11:11"_s, u"04:48"_s, u"58:07"_s}) {
        TextLayouter layouter;
        layouter.layOut({time, {}}, settings);
        if (first.isEmpty())
            first = layouter.size();
        QCOMPARE(layouter.size(), first);
    }
    QVERIFY(QFontMetricsF(settings.font).horizontalAdvance(u"11:11"_s)
            != QFontMetricsF(settings.font).horizontalAdvance(u"04:48"_s));
}

// Arabic digits come from another font than the colon between them.
void WidgetsLabel::theColonStaysBetweenDigitsOfEveryWriting()
{
    for (const QString &time : {u"4:4"_s, u"٤:٤"_s, u"۴:۴"_s}) {
        TextLayouter::Settings settings;
        settings.font = Theme::instance()->style(u"KestrelGridCellTimeLabel"_s).font;
        settings.font.setPixelSize(60);
        settings.tabularDigits = true;
        TextLayouter layouter;
        layouter.layOut({time, {}}, settings);
        QImage image(QSize(int(layouter.size().width()), int(layouter.size().height())),
                     QImage::Format_RGB32);
        image.fill(Qt::black);
        QPainter painter(&image);
        layouter.draw(&painter, {0, 0}, Qt::white);
        painter.end();
        const int half = image.width() / 2;
        const int left = pixelsLike(image, {0, 0, half, image.height()}, Qt::white);
        const int right = pixelsLike(image, {image.width() - half, 0, half, image.height()}, Qt::white);
        QVERIFY2(left > 100 && std::abs(left - right) < left / 4, qPrintable(time));
    }
}

void WidgetsLabel::theTimePillHugsItsText_data()
{
    QTest::addColumn<QString>("style");
    QTest::addColumn<QString>("text");
    QTest::addColumn<qreal>("width");
    QTest::newRow("short") << u"KestrelGridCellTimeLabel"_s << u"48:12"_s << 66.0;
    QTest::newRow("long") << u"KestrelGridCellTimeLabelLong"_s << u"1:24:07"_s << 85.0;
    QTest::newRow("paused") << u"KestrelGridCellTimeLabelPaused"_s << u"07:06"_s << 87.0;
    QTest::newRow("paused long") << u"KestrelGridCellTimeLabelPausedLong"_s << u"1:07:06"_s << 106.0;
}

void WidgetsLabel::theTimePillHugsItsText()
{
    QFETCH(QString, style);
    QFETCH(QString, text);
    QFETCH(qreal, width);
    Label label(text);
    label.setStyleName(style);
    const QSizeF size = label.effectiveSizeHint(Qt::PreferredSize);
    QCOMPARE(size.height(), 26.0);
    QVERIFY2(std::abs(size.width() - width) <= 5, qPrintable(QString::number(size.width())));
    label.resize(size);
    QVERIFY(!label.isElided());
    Theme::instance()->setTextScale(2);
    const QSizeF large = label.effectiveSizeHint(Qt::PreferredSize);
    QVERIFY(large.height() > 30 && large.width() < 190);
    label.resize(large);
    QVERIFY(!label.isElided());
}

void WidgetsLabel::thePausedPillShowsItsMark()
{
    Stage stage;
    auto *label = new Label(u"07:06"_s);
    stage.scene.addItem(label);
    label->setStyleName(u"KestrelGridCellTimeLabelPaused"_s);
    label->setGeometry(QRectF(QPointF(100, 100), label->effectiveSizeHint(Qt::PreferredSize)));
    const QColor accent = Theme::instance()->accentColor();
    const QRect leading(108, 100, 12, 26);
    const QRect trailing(int(label->geometry().right()) - 20, 100, 12, 26);
    QVERIFY(pixelsLike(stage.picture(), leading, accent) > 60);
    QVERIFY(pixelsLike(stage.picture(), trailing, accent) < 60);
    label->setLayoutDirection(Qt::RightToLeft);
    QVERIFY(pixelsLike(stage.picture(), trailing, accent) > 60);
}

void WidgetsLabel::aHeightForOneLineShowsOneLine()
{
    Label label(longTitle);
    label.setStyleName(u"KestrelGridCellTitleLabel"_s);
    label.resize(226, 45);
    QCOMPARE(label.lineCount(), 1);
    QVERIFY(label.isElided());
    label.resize(226, 116);
    QCOMPARE(label.lineCount(), 2);
    label.setWordWrap(false);
    QCOMPARE(label.lineCount(), 1);
    label.setTextElide(false);
    QVERIFY(!label.isElided());
}

void WidgetsLabel::heightForWidth()
{
    Label label(u"The video cannot be played. The video cannot be played. The video cannot be played."_s);
    label.setStyleName(u"CommonLabel"_s);
    const QSizeF wide = label.effectiveSizeHint(Qt::PreferredSize);
    QCOMPARE(wide.height(), 26.0);
    const QSizeF narrow = label.effectiveSizeHint(Qt::PreferredSize, {200, -1});
    QVERIFY(narrow.height() >= 3 * 26);
    QCOMPARE(narrow.width(), 200.0);
}

void WidgetsLabel::textColourCanBeSet()
{
    Stage stage;
    auto *label = new Label(u"####"_s);
    stage.scene.addItem(label);
    label->setGeometry(QRectF(0, 0, 200, 40));
    label->setColor(Qt::red);
    QVERIFY(pixelsLike(stage.picture(), {0, 0, 200, 40}, Qt::red) > 30);
}

QTEST_MAIN(WidgetsLabel)
#include "widgets_label.moc"

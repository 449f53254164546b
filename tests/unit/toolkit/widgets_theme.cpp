// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/toolkit/colormath.h"
#include "platform/toolkit/painthelpers.h"
#include "platform/toolkit/theme.h"
#include "platform/toolkit/themefile.h"
#include "platform/toolkit/widget.h"
#include "support/loglines.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QPainter>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QSvgRenderer>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::Literals::StringLiterals;
using toolkit::Style;
using toolkit::Theme;
using toolkit::Widget;

class WidgetsTheme : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanup();
    void everyStyleNameOfTheProgramIsInTheFile_data();
    void everyStyleNameOfTheProgramIsInTheFile();
    void everyStyleResolvesWithoutAWarning();
    void aThrowAwayWidgetAnswersTheThemedSize_data();
    void aThrowAwayWidgetAnswersTheThemedSize();
    void largeTextGivesTheCellRoomForThreeLines();
    void stylesNamedInvertedAreLightOnDarkInBothSchemes();
    void anotherAccentIsAnnouncedOnceAndShownByWidgets();
    void aBrokenFileChangesNothing_data();
    void aBrokenFileChangesNothing();
    void aFileThatChangesIsReadAgain();
    void aFileThatIsReplacedIsReadAgain();
    void aHalfWrittenFileIsPassedOver();
    void anIconThatChangesIsDrawnAnew();
    void moreContrastHasTokensAndStylesOfItsOwn();
    void landscapeOverridesAndInheritance();
    void everyIconIdDrawsSomething_data();
    void everyIconIdDrawsSomething();
    void everyIconThatIsNamedAnywhereExists();
    void iconsTakeAColour();
    void iconsThatPointAlongTheLineAreMirrored();
    void anUnknownIconIsNoPictureAndNoPath();
    void thePlaceholderHasItsElement();
    void barsGrowInTheDirectionOfReading();

private:
    // The program's own theme with cells of another height.
    static void writeTheme(const QString &path, int cellHeight);

    QTemporaryDir m_dir;
};

void WidgetsTheme::writeTheme(const QString &path, int cellHeight)
{
    QFile bundled(u":/theme/kestrel.theme.json"_s);
    QVERIFY(bundled.open(QIODevice::ReadOnly));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(bundled.readAll().replace("\"preferred\": [480, 136]",
                                         "\"preferred\": [480, " + QByteArray::number(cellHeight) + ']'));
}

void WidgetsTheme::initTestCase()
{
    QVERIFY(m_dir.isValid());
    qputenv("HOME", m_dir.path().toUtf8());
}

void WidgetsTheme::cleanup()
{
    Theme *theme = Theme::instance();
    theme->loadFile(u":/theme/kestrel.theme.json"_s);
    theme->setDark(true);
    theme->setHighContrast(false);
    theme->setTextScale(1);
    theme->setAccentColor(QColor());
}

void WidgetsTheme::everyStyleNameOfTheProgramIsInTheFile_data()
{
    QTest::addColumn<QString>("name");
    for (const char *name : {"VideoApplicationWindow",
                             "VideoApplicationPage",
                             "KestrelPlayerPage",
                             "CommonApplicationPageHeader",
                             "CommonApplicationPageInverted",
                             "KestrelPolicy",
                             "KestrelList",
                             "KestrelGridItem",
                             "KestrelGridCellThumbnail",
                             "KestrelGridCellThumbnailPolicy",
                             "KestrelGridCellTitleLabel",
                             "KestrelGridCellTimeLabel",
                             "KestrelGridCellTimeLabelLong",
                             "KestrelGridCellTimeLabelPaused",
                             "KestrelGridCellTimeLabelPausedLong",
                             "CommonEmptyStateTitleInverted",
                             "CommonEmptyStateTitleKeyword",
                             "CommonSearchFieldInverted",
                             "SearchMagnifier",
                             "ClearButton",
                             "NavigationBarButton",
                             "NavigationBarToolbar",
                             "InfoButton",
                             "CommonLargeSpinnerInverted",
                             "CommonSingleTitleInverted",
                             "SystemBanner",
                             "Sheet",
                             "Inverted",
                             "SheetHeader",
                             "SheetRow",
                             "CommonThumbnail"})
        QTest::newRow(name) << QString::fromLatin1(name);
}

void WidgetsTheme::everyStyleNameOfTheProgramIsInTheFile()
{
    QFETCH(QString, name);
    QVERIFY(Theme::instance()->hasStyle(name));
}

void WidgetsTheme::everyStyleResolvesWithoutAWarning()
{
    QTest::failOnWarning(QRegularExpression(u"theme:"_s));
    for (const bool dark : {true, false}) {
        Theme::instance()->setDark(dark);
        for (const QString &name : Theme::instance()->styleNames()) {
            for (const Qt::Orientation screen : {Qt::Vertical, Qt::Horizontal}) {
                const Style style = Theme::instance()->style(name, screen);
                QCOMPARE(style.name, name);
                QVERIFY2(style.font.pixelSize() >= 15, qPrintable(name));
            }
        }
    }
}

void WidgetsTheme::aThrowAwayWidgetAnswersTheThemedSize_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QSizeF>("size");
    QTest::newRow("cell") << u"KestrelGridItem"_s << QSizeF(480, 136);
    QTest::newRow("picture") << u"KestrelGridCellThumbnail"_s << QSizeF(206, 116);
    QTest::newRow("picture of a page") << u"CommonThumbnail"_s << QSizeF(206, 116);
    QTest::newRow("spinner") << u"CommonLargeSpinnerInverted"_s << QSizeF(96, 96);
    QTest::newRow("bar") << u"NavigationBarToolbar"_s << QSizeF(328, 76);
}

void WidgetsTheme::aThrowAwayWidgetAnswersTheThemedSize()
{
    QFETCH(QString, name);
    QFETCH(QSizeF, size);
    Widget widget;
    widget.setStyleName(name);
    QCOMPARE(widget.preferredSize(), size);
    QCOMPARE(widget.effectiveSizeHint(Qt::PreferredSize), size);
}

void WidgetsTheme::largeTextGivesTheCellRoomForThreeLines()
{
    Widget widget;
    widget.setStyleName(u"KestrelGridItem"_s);
    Theme::instance()->setTextScale(2);
    QCOMPARE(widget.preferredSize(), QSizeF(480, 3 * 58 + 20));
    QCOMPARE(Theme::instance()->style(u"KestrelGridCellTitleLabel"_s).maximumLines, 3);
    Theme::instance()->setTextScale(1.25);
    QCOMPARE(widget.preferredSize(), QSizeF(480, 136));
    QCOMPARE(Theme::instance()->style(u"KestrelGridCellTitleLabel"_s).maximumLines, 2);
}

void WidgetsTheme::stylesNamedInvertedAreLightOnDarkInBothSchemes()
{
    const QColor dark = Theme::instance()->style(u"CommonSearchFieldInverted"_s).color(u"background"_s);
    Theme::instance()->setDark(false);
    const Style style = Theme::instance()->style(u"CommonSearchFieldInverted"_s);
    QCOMPARE(style.color(u"background"_s), dark);
    QVERIFY(toolkit::contrastRatio(style.color(u"text"_s), style.color(u"background"_s)) > 7);
    QVERIFY(Theme::instance()->style(u"KestrelGridCellTitleLabel"_s).color(u"text"_s).lightness() < 60);
}

// Somebody picks another accent colour in the desktop's settings while the list is open.
void WidgetsTheme::anotherAccentIsAnnouncedOnceAndShownByWidgets()
{
    Widget widget;
    widget.setStyleName(u"KestrelGridCellTimeLabelPaused"_s);
    QSignalSpy spy(Theme::instance(), &Theme::themeChangeCompleted);
    QColor seen;
    connect(Theme::instance(), &Theme::themeChangeCompleted, &widget,
            [&] { seen = widget.style().color(u"text"_s); });
    Theme::instance()->setAccentColor(QColor(0xE0, 0x80, 0x40));
    Theme::instance()->setAccentColor(QColor(0xE0, 0x80, 0x40));
    QCOMPARE(spy.count(), 1);
    QCOMPARE(seen, QColor(0xE0, 0x80, 0x40));
    QCOMPARE(widget.style().color(u"icon"_s), QColor(0xE0, 0x80, 0x40));
}

void WidgetsTheme::aBrokenFileChangesNothing_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("cut off") << QByteArray("{\"tokens\": {\"dark\"");
    QTest::newRow("an array") << QByteArray("[1, 2]");
    QTest::newRow("no styles") << QByteArray("{\"tokens\": {\"dark\": {}, \"light\": {}}}");
    QTest::newRow("no tokens") << QByteArray("{\"styles\": {\"A\": {}}}");
}

void WidgetsTheme::aBrokenFileChangesNothing()
{
    QFETCH(QByteArray, content);
    const QString path = m_dir.filePath(u"broken.json"_s);
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(content);
    file.close();
    QSignalSpy spy(Theme::instance(), &Theme::themeChangeCompleted);
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"is no theme"_s));
    QVERIFY(!Theme::instance()->loadFile(path));
    QCOMPARE(spy.count(), 0);
    QCOMPARE(Theme::instance()->style(u"KestrelGridItem"_s).preferredSize, QSizeF(480, 136));
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"cannot be read"_s));
    QVERIFY(!Theme::instance()->loadFile(m_dir.filePath(u"absent.json"_s)));
}

// Whoever works on the look saves the file and sees it.
void WidgetsTheme::aFileThatChangesIsReadAgain()
{
    QFile bundled(u":/theme/kestrel.theme.json"_s);
    QVERIFY(bundled.open(QIODevice::ReadOnly));
    QByteArray content = bundled.readAll();
    const QString path = m_dir.filePath(u"mine.json"_s);
    const auto write = [&path](const QByteArray &text) {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(text);
    };
    write(content);
    QVERIFY(Theme::instance()->loadFile(path));
    Widget widget;
    widget.setStyleName(u"KestrelGridItem"_s);
    QSignalSpy spy(Theme::instance(), &Theme::themeChangeCompleted);
    write(content.replace("\"preferred\": [480, 136]", "\"preferred\": [480, 150]"));
    QTRY_COMPARE(widget.preferredSize(), QSizeF(480, 150));
    QVERIFY(spy.count() >= 1);
}

// Editors write a new file beside the old one and rename it, again and again.
void WidgetsTheme::aFileThatIsReplacedIsReadAgain()
{
    const QString path = m_dir.filePath(u"replaced.json"_s);
    writeTheme(path, 136);
    QVERIFY(Theme::instance()->loadFile(path));
    for (const int height : {150, 160, 170}) {
        writeTheme(m_dir.filePath(u"next.json"_s), height);
        QVERIFY(QFile::remove(path));
        QVERIFY(QFile::rename(m_dir.filePath(u"next.json"_s), path));
        QTRY_COMPARE(Theme::instance()->style(u"KestrelGridItem"_s).preferredSize, QSizeF(480, height));
    }
}

// A save is seen in the middle of it, or the file has a comma too many: the look stays until it is whole.
void WidgetsTheme::aHalfWrittenFileIsPassedOver()
{
    const QString path = m_dir.filePath(u"half.json"_s);
    writeTheme(path, 140);
    QVERIFY(Theme::instance()->loadFile(path));
    LogLines log("kestrel.toolkit.widgets");
    QSignalSpy completed(Theme::instance(), &Theme::themeChangeCompleted);
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write("{\"tokens\": ");
    file.close();
    QTRY_COMPARE(log.all().filter(u"is no theme"_s).size(), 1);
    QCOMPARE(completed.count(), 0);
    QCOMPARE(Theme::instance()->style(u"KestrelGridItem"_s).preferredSize, QSizeF(480, 140));
    writeTheme(path, 155);
    QTRY_COMPARE(Theme::instance()->style(u"KestrelGridItem"_s).preferredSize, QSizeF(480, 155));
}

void WidgetsTheme::anIconThatChangesIsDrawnAnew()
{
    QVERIFY(QDir(m_dir.path()).mkpath(u"look/icons"_s));
    const QString path = m_dir.filePath(u"look/mine.json"_s);
    const QString icon = m_dir.filePath(u"look/icons/icon-m-mine.svg"_s);
    const auto draw = [&icon](const QByteArray &color) {
        QFile file(icon);
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write("<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 8 8\">"
                   "<rect width=\"8\" height=\"8\" fill=\""
                   + color + "\"/></svg>");
    };
    const auto seen = [] {
        return Theme::instance()->icon(u"icon-m-mine"_s, {8, 8}).toImage().pixelColor(4, 4);
    };
    writeTheme(path, 136);
    draw("#ff0000");
    QVERIFY(Theme::instance()->loadFile(path));
    QCOMPARE(seen(), QColor(Qt::red));
    QVERIFY(Theme::instance()->hasIcon(u"icon-m-kestrel-play"_s)); // the program's own stay
    QSignalSpy completed(Theme::instance(), &Theme::themeChangeCompleted);
    draw("#00f");
    QTRY_COMPARE(seen(), QColor(Qt::blue));
    QVERIFY(completed.count() >= 1); // so that everything that shows it paints again
}

void WidgetsTheme::moreContrastHasTokensAndStylesOfItsOwn()
{
    toolkit::ThemeFile file;
    QString error;
    QVERIFY2(file.parse(R"({"tokens": {"dark": {"a": "#111111", "b": "#222222"}, "light": {"a": "#eeeeee"},
                                       "darkContrast": {"a": "#000000"}},
        "styles": {"S": {"colors": {"x": "$a", "y": "$b"}, "numbers": {"n": 1}, "contrast": {"numbers": {"n": 2}}}}})",
                        &error),
             qPrintable(error));
    toolkit::ThemeFile::Context context;
    QCOMPARE(file.resolve(u"S"_s, context).color(u"x"_s), QColor(0x11, 0x11, 0x11));
    QCOMPARE(file.resolve(u"S"_s, context).number(u"n"_s), 1.0);
    context.highContrast = true;
    QCOMPARE(file.resolve(u"S"_s, context).color(u"x"_s), QColor(Qt::black));
    QCOMPARE(file.resolve(u"S"_s, context).color(u"y"_s), QColor(0x22, 0x22, 0x22));
    QCOMPARE(file.resolve(u"S"_s, context).number(u"n"_s), 2.0);
    QCOMPARE(file.token(u"a"_s, false, true), QColor(0xee, 0xee, 0xee)); // none of its own: the scheme's
}

void WidgetsTheme::landscapeOverridesAndInheritance()
{
    toolkit::ThemeFile file;
    QString error;
    QVERIFY2(file.parse(R"({"tokens": {"dark": {"a": "#102030"}, "light": {"a": "#405060"}},
        "type": {"t": {"size": 20, "line": 25, "weight": 700}},
        "styles": {
          "Base": {"type": "t", "preferred": [10, 20], "margins": [1, 2, 3, 4], "colors": {"x": "$a", "y": "#ffffff@1"},
                   "landscape": {"preferred": [30, 5]}, "light": {"colors": {"y": "#000000"}}},
          "Child": {"inherits": "Base", "spacing": 7, "colors": {"z": "$a@0.5"}},
          "Loop": {"inherits": "Loop", "spacing": 1}
        }})",
                        &error),
             qPrintable(error));
    toolkit::ThemeFile::Context context;
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"no such colour"_s));
    const Style portrait = file.resolve(u"Child"_s, context);
    QCOMPARE(portrait.preferredSize, QSizeF(10, 20));
    QCOMPARE(portrait.margins, QMarginsF(1, 2, 3, 4));
    QCOMPARE(portrait.spacing, 7.0);
    QCOMPARE(portrait.font.pixelSize(), 20);
    QCOMPARE(portrait.font.weight(), QFont::Bold);
    QCOMPARE(portrait.lineHeight, 25.0);
    QCOMPARE(portrait.color(u"x"_s), QColor(0x10, 0x20, 0x30));
    QCOMPARE(portrait.color(u"z"_s).alpha(), 128);
    QVERIFY(!portrait.color(u"y"_s).isValid());
    context.orientation = Qt::Horizontal;
    context.dark = false;
    const Style landscape = file.resolve(u"Child"_s, context);
    QCOMPARE(landscape.preferredSize, QSizeF(30, 5));
    QCOMPARE(landscape.color(u"x"_s), QColor(0x40, 0x50, 0x60));
    QCOMPARE(landscape.color(u"y"_s), QColor(Qt::black));
    QCOMPARE(file.resolve(u"Loop"_s, context).spacing, 1.0);
    QVERIFY(!file.parse("nonsense", &error));
    QCOMPARE(file.resolve(u"Child"_s, context).spacing, 7.0);
}

void WidgetsTheme::everyIconIdDrawsSomething_data()
{
    QTest::addColumn<QString>("id");
    for (const char *id : {"icon-m-common-search",
                           "icon-m-input-clear",
                           "icon-m-toolbar-view-menu-white",
                           "icon-m-toolbar-view-menu-dimmed-white",
                           "icon-m-toolbar-back-white",
                           "icon-l-videos-tv-main-view",
                           "icon-s-music-video-description",
                           "icon-m-kestrel-play",
                           "icon-m-kestrel-pause",
                           "icon-m-kestrel-replay",
                           "icon-m-kestrel-volume",
                           "icon-m-kestrel-volume-low",
                           "icon-m-kestrel-volume-mute",
                           "icon-s-kestrel-pause-mark",
                           "icon-l-kestrel-no-videos",
                           "icon-l-kestrel-unreachable",
                           "icon-m-share-email",
                           "icon-m-share-open-with",
                           "icon-m-share-bluetooth",
                           "icon-m-share-copy",
                           "icon-m-share-stop",
                           "icon-m-share-phone",
                           "icon-m-share-computer"})
        QTest::newRow(id) << QString::fromLatin1(id);
}

void WidgetsTheme::everyIconIdDrawsSomething()
{
    QFETCH(QString, id);
    QVERIFY(Theme::instance()->hasIcon(id));
    const QImage image = Theme::instance()->icon(id, {64, 64}).toImage();
    QCOMPARE(image.size(), QSize(64, 64));
    int drawn = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            drawn += image.pixelColor(x, y).alpha() > 128 ? 1 : 0;
    }
    QVERIFY2(drawn > 64 && drawn < 64 * 64, qPrintable(QString::number(drawn)));
}

// Whoever names a new icon in code or theme must have drawn it.
void WidgetsTheme::everyIconThatIsNamedAnywhereExists()
{
    const QString root = QStringLiteral(KESTREL_SOURCE_DIR);
    QStringList files{root + u"/theme/kestrel.theme.json"_s};
    QDirIterator sources(root + u"/src"_s, {u"*.cpp"_s, u"*.h"_s}, QDir::Files, QDirIterator::Subdirectories);
    while (sources.hasNext())
        files.append(sources.next());
    static const QRegularExpression id(u"\"((?:icon-[sml]|image)-[a-z0-9-]+)\""_s);
    QStringList named;
    QStringList missing;
    for (const QString &path : files) {
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QRegularExpressionMatchIterator it = id.globalMatch(QString::fromUtf8(file.readAll()));
        while (it.hasNext()) {
            const QString name = it.next().captured(1);
            named.append(name);
            if (!QFile::exists(u":/theme/icons/%1.svg"_s.arg(name)))
                missing.append(u"%1 (%2)"_s.arg(name, QFileInfo(path).fileName()));
        }
    }
    QVERIFY2(named.size() >= 20, qPrintable(named.join(u' ')));
    QVERIFY2(missing.isEmpty(), qPrintable(missing.join(u' ')));
}

void WidgetsTheme::iconsTakeAColour()
{
    const QImage image
        = Theme::instance()->icon(u"icon-m-kestrel-play"_s, {32, 32}, QColor(Qt::red)).toImage();
    QCOMPARE(image.pixelColor(16, 16), QColor(Qt::red));
    QCOMPARE(Theme::instance()->icon(u"icon-m-kestrel-play"_s, {32, 32}, QColor(Qt::red)).cacheKey(),
             Theme::instance()->icon(u"icon-m-kestrel-play"_s, {32, 32}, QColor(Qt::red)).cacheKey());
}

// The arrow of the way back points to where pages come from, which is the right in Arabic.
void WidgetsTheme::iconsThatPointAlongTheLineAreMirrored()
{
    const auto drawn = [](const QString &icon, Qt::LayoutDirection direction) {
        QImage image(40, 32, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::black);
        QPainter painter(&image);
        toolkit::drawIcon(&painter, icon, QRectF(4, 0, 32, 32), Qt::white, direction);
        return image;
    };
    const QString back = u"icon-m-toolbar-back-white"_s;
    const QString play = u"icon-m-kestrel-play"_s; // runs with the video, not with the line
    QVERIFY(drawn(back, Qt::LeftToRight) != drawn(back, Qt::RightToLeft));
    // But for the smoothing of its edges.
    const QImage mirrored = drawn(back, Qt::LeftToRight).mirrored(true, false);
    const QImage other = drawn(back, Qt::RightToLeft);
    int differing = 0;
    for (int y = 0; y < other.height(); ++y) {
        for (int x = 0; x < other.width(); ++x)
            differing += std::abs(qGray(mirrored.pixel(x, y)) - qGray(other.pixel(x, y))) > 64 ? 1 : 0;
    }
    QCOMPARE(differing, 0);
    QCOMPARE(drawn(play, Qt::LeftToRight), drawn(play, Qt::RightToLeft));
}

void WidgetsTheme::anUnknownIconIsNoPictureAndNoPath()
{
    QVERIFY(!Theme::instance()->hasIcon(u"icon-m-nothing"_s));
    QVERIFY(!Theme::instance()->hasIcon(u"../placeholder"_s));
    QVERIFY(!Theme::instance()->hasIcon(QString()));
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"no icon"_s));
    QVERIFY(Theme::instance()->icon(u"icon-m-nothing"_s, {32, 32}).isNull());
}

void WidgetsTheme::thePlaceholderHasItsElement()
{
    QSvgRenderer renderer(u":/theme/placeholder.svg"_s);
    QVERIFY(renderer.isValid());
    QVERIFY(renderer.elementExists(u"sorelkit-video-placeholder"_s));
    QCOMPARE(renderer.defaultSize(), QSize(206, 116));
}

void WidgetsTheme::barsGrowInTheDirectionOfReading()
{
    const QRectF bar(10, 20, 200, 4);
    QCOMPARE(toolkit::leadingPart(bar, 0.25, Qt::LeftToRight), QRectF(10, 20, 50, 4));
    QCOMPARE(toolkit::leadingPart(bar, 0.25, Qt::RightToLeft), QRectF(160, 20, 50, 4));
    QVERIFY(toolkit::leadingPart(bar, 0, Qt::RightToLeft).isEmpty());
    QCOMPARE(toolkit::leadingPart(bar, 1, Qt::RightToLeft), bar);
}

QTEST_MAIN(WidgetsTheme)
#include "widgets_theme.moc"

// SPDX-License-Identifier: GPL-3.0-or-later
#include "library/pagebackground.h"
#include "platform/toolkit/theme.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

namespace {

// The threshold pattern, as laid out by rows: red is raised where the fraction of its last three bits exceeds
// it.
int raisedPixels(int red)
{
    QImage source(16, 16, QImage::Format_ARGB32);
    source.fill(QColor(red, 0, 0, 40));
    const QImage result = ditheredTo16Bit(source);
    int raised = 0;
    for (int y = 0; y < 16; ++y) {
        for (int x = 0; x < 16; ++x)
            raised += (result.pixel(x, y) >> 19 & 0x1f) == uint(red / 8 + 1);
    }
    return raised;
}

} // namespace

class PageBackgroundTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(!pageBackground().isNull()); } // worked out once
    void shareOfRaisedPixelsFollowsTheColour_data();
    void shareOfRaisedPixelsFollowsTheColour();
    void thresholdsStandAtTheirPlaces();
    void firstRowOfTheMatrixByHand_data();
    void firstRowOfTheMatrixByHand();
    void componentsByHand_data();
    void componentsByHand();
    void alphaBecomesOpaque();
    void onlyImagesOf32BitsAreConverted();
    void isScreenSizedAndOf16Bits();
    void pictureIsStretchedWithoutSmoothing();
    void themeWithoutThePictureHasNone_data();
    void themeWithoutThePictureHasNone();

private:
    // The program's own with another picture behind pages.
    static bool useTheme(const QString &path, const QByteArray &name, const QByteArray &replacement);
};

bool PageBackgroundTest::useTheme(const QString &path, const QByteArray &name, const QByteArray &replacement)
{
    QFile bundled(u":/theme/kestrel.theme.json"_s);
    QFile file(path);
    if (!bundled.open(QIODevice::ReadOnly) || !file.open(QIODevice::WriteOnly))
        return false;
    const QByteArray text = bundled.readAll();
    file.write(QByteArray(text).replace(name, replacement));
    file.close();
    return text.contains(name) && toolkit::Theme::instance()->loadFile(path);
}

void PageBackgroundTest::shareOfRaisedPixelsFollowsTheColour_data()
{
    QTest::addColumn<int>("red");
    QTest::addColumn<int>("raised"); // of 256
    QTest::newRow("exact") << 64 << 0;
    QTest::newRow("an eighth") << 65 << 32;
    QTest::newRow("half") << 68 << 128;
    QTest::newRow("seven eighths") << 71 << 224;
    QTest::newRow("no room above") << 252 << 0;
}

void PageBackgroundTest::shareOfRaisedPixelsFollowsTheColour()
{
    QFETCH(int, red);
    QFETCH(int, raised);
    QCOMPARE(raisedPixels(red), raised);
}

void PageBackgroundTest::thresholdsStandAtTheirPlaces()
{
    // 0, 192, 48, 240 are the first of the matrix's first row, which is the picture's first column.
    QImage source(16, 16, QImage::Format_RGB32);
    source.fill(QColor(4, 0, 2)); // thresholds below 128 and below 64
    const QImage result = ditheredTo16Bit(source);
    const auto red = [&result](int x, int y) { return int(result.pixel(x, y) >> 19 & 0x1f); };
    const auto blue = [&result](int x, int y) { return int(result.pixel(x, y) >> 3 & 0x1f); };
    QCOMPARE(QList<int>({red(0, 0), red(0, 1), red(0, 2), red(0, 3)}), QList<int>({1, 0, 1, 0}));
    QCOMPARE(QList<int>({blue(0, 0), blue(0, 1), blue(0, 2), blue(0, 3)}), QList<int>({1, 0, 1, 0}));
    QCOMPARE(QList<int>({red(1, 0), red(1, 1), blue(1, 1)}), QList<int>({0, 1, 0})); // 128, 64
}

// 0 192 48 240 12 204 60 252 3 195 51 243 15 207 63 255, down the picture's first column. A component of c is
// raised where the threshold is below c * 32 (green: c * 64), of which only the last eight bits count.
void PageBackgroundTest::firstRowOfTheMatrixByHand_data()
{
    QTest::addColumn<int>("component");
    QTest::addColumn<QByteArray>("red"); // 1: raised
    QTest::addColumn<QByteArray>("green");
    QTest::newRow("0") << 0 << QByteArray("0000000000000000") << QByteArray("0000000000000000");
    QTest::newRow("1: 32, 64") << 1 << QByteArray("1000100010001000") << QByteArray("1010101010101010");
    QTest::newRow("2: 64, 128") << 2 << QByteArray("1010101010101010") << QByteArray("1010101010101010");
    QTest::newRow("3: 96, 192") << 3 << QByteArray("1010101010101010") << QByteArray("1010101010101010");
    QTest::newRow("6: 192, 128") << 6 << QByteArray("1010101010101010") << QByteArray("1010101010101010");
    QTest::newRow("7: 224, 192") << 7 << QByteArray("1110111011101110") << QByteArray("1010101010101010");
    QTest::newRow("8: 0, 0") << 8 << QByteArray("0000000000000000") << QByteArray("0000000000000000");
}

void PageBackgroundTest::firstRowOfTheMatrixByHand()
{
    QFETCH(const int, component);
    QImage source(1, 16, QImage::Format_RGB32);
    source.fill(QColor(component, component, component));
    const QImage result = ditheredTo16Bit(source);
    QByteArray red;
    QByteArray green;
    QByteArray blue;
    for (int y = 0; y < 16; ++y) {
        const auto pixel = *reinterpret_cast<const quint16 *>(result.constScanLine(y));
        red += pixel >> 11 > component / 8 ? '1' : '0';
        green += (pixel >> 5 & 0x3f) > component / 4 ? '1' : '0';
        blue += (pixel & 0x1f) > component / 8 ? '1' : '0';
    }
    QTEST(red, "red");
    QTEST(green, "green");
    QTEST(blue, "red");
}

void PageBackgroundTest::componentsByHand_data()
{
    QTest::addColumn<QColor>("colour");
    QTest::addColumn<quint16>("first"); // where the threshold is 0
    QTest::addColumn<quint16>("second"); // where it is 192
    // 100 = 12.5 * 8 = 25 * 4, 200 = 25 * 8 = 50 * 4, 50 = 6.25 * 8 = 12.5 * 4
    QTest::newRow("mixed") << QColor(100, 200, 50) << quint16(13 << 11 | 50 << 5 | 7)
                           << quint16(12 << 11 | 50 << 5 | 6);
    QTest::newRow("just below the top")
        << QColor(247, 251, 247) << quint16(31 << 11 | 63 << 5 | 31) << quint16(31 << 11 | 62 << 5 | 31);
    QTest::newRow("at the top") << QColor(248, 252, 248) << quint16(0xffff) << quint16(0xffff);
    QTest::newRow("black") << QColor(0, 0, 0) << quint16(0) << quint16(0);
}

void PageBackgroundTest::componentsByHand()
{
    QFETCH(const QColor, colour);
    QImage source(1, 2, QImage::Format_RGB32);
    source.fill(colour);
    const QImage result = ditheredTo16Bit(source);
    QTEST(*reinterpret_cast<const quint16 *>(result.constScanLine(0)), "first");
    QTEST(*reinterpret_cast<const quint16 *>(result.constScanLine(1)), "second");
}

void PageBackgroundTest::alphaBecomesOpaque()
{
    QImage source(2, 2, QImage::Format_ARGB32);
    source.fill(QColor(255, 255, 255, 0));
    QCOMPARE(ditheredTo16Bit(source).pixelColor(0, 0), QColor(255, 255, 255));
}

void PageBackgroundTest::onlyImagesOf32BitsAreConverted()
{
    QImage source(3, 2, QImage::Format_Grayscale8);
    source.fill(200);
    const QImage result = ditheredTo16Bit(source);
    QCOMPARE(result.size(), QSize(3, 2));
    QCOMPARE(result.format(), QImage::Format_RGB16);
    QCOMPARE(result.pixelColor(1, 1), QColor(Qt::black));
}

void PageBackgroundTest::isScreenSizedAndOf16Bits()
{
    const QImage &background = pageBackground();
    QCOMPARE(background.size(), QSize(480, 854));
    QCOMPARE(background.format(), QImage::Format_RGB16);
    QCOMPARE(&pageBackground(), &background);
}

// Two pixels by three: each becomes a rectangle, whatever that does to the shape of the whole.
void PageBackgroundTest::pictureIsStretchedWithoutSmoothing()
{
    QTemporaryDir folder;
    QImage small(2, 3, QImage::Format_RGB32);
    const QList<QRgb> colors{0xff000000, 0xffffffff, 0xfff80000, 0xff00fc00, 0xff0000f8, 0xfff8fcf8};
    for (int i = 0; i < 6; ++i)
        small.setPixel(i % 2, i / 2, colors.at(i));
    const QString picture = folder.filePath(u"small.png"_s);
    QVERIFY(small.save(picture));
    QVERIFY(useTheme(folder.filePath(u"theme.json"_s), "image-video-page-background", picture.toUtf8()));
    const QImage drawn = drawnPageBackground();
    QCOMPARE(drawn.size(), QSize(480, 854));
    for (int y = 0; y < drawn.height(); ++y) {
        if (y == 284 || y == 569)
            continue; // the edges lie within these
        for (int x = 0; x < drawn.width(); ++x) {
            const QRgb from = colors.at(x / 240 + 2 * (y * 3 / 854));
            const quint16 wanted = quint16(qRed(from) >> 3 << 11 | qGreen(from) >> 2 << 5 | qBlue(from) >> 3);
            if (reinterpret_cast<const quint16 *>(drawn.constScanLine(y))[x] != wanted)
                QFAIL(qPrintable(u"%1, %2"_s.arg(x).arg(y)));
        }
    }
    // What the program uses was worked out before and stays.
    QVERIFY(pageBackground() != drawn);
}

void PageBackgroundTest::themeWithoutThePictureHasNone_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QByteArray>("replacement");
    QTest::newRow("no such file") << QByteArray("image-video-page-background")
                                  << QByteArray("/nowhere/picture.png");
    QTest::newRow("no picture") << QByteArray("\"backgroundImage\"") << QByteArray("\"otherImage\"");
    QTest::newRow("no style") << QByteArray("\"VideoApplicationPage\"") << QByteArray("\"OtherPage\"");
}

void PageBackgroundTest::themeWithoutThePictureHasNone()
{
    QFETCH(const QByteArray, name);
    QFETCH(const QByteArray, replacement);
    QTemporaryDir folder;
    QVERIFY(useTheme(folder.filePath(u"theme.json"_s), name, replacement));
    QVERIFY(drawnPageBackground().isNull());
}

QTEST_MAIN(PageBackgroundTest)
#include "tst_pagebackground.moc"

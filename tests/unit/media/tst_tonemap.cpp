// SPDX-License-Identifier: GPL-3.0-or-later
#include "pictureclips.h"

#include <platform/media/pictureconverter.h>
#include <platform/media/tonemap.h>

#include <QTest>

using namespace Qt::Literals::StringLiterals;
using tonemap::ReferenceWhite;

namespace {

PictureColours pq(int peak)
{
    return {.matrix = PictureColours::Matrix::Bt2020,
            .transfer = PictureColours::Transfer::Pq,
            .primaries = PictureColours::Primaries::Bt2020,
            .depth = 10,
            .peak = peak};
}

PictureColours hlg()
{
    PictureColours colours = pq(1000);
    colours.transfer = PictureColours::Transfer::Hlg;
    return colours;
}

PictureColours wide()
{
    return {.matrix = PictureColours::Matrix::Bt2020,
            .primaries = PictureColours::Primaries::Bt2020,
            .depth = 10};
}

double shownGrey(double code, const PictureColours &colours)
{
    const Rgb rgb = tonemap::shown({code, code, code}, colours);
    return rgb[1];
}

// A picture of 4:4:4, ten bits, whose samples the test writes.
struct Samples
{
    explicit Samples(const QSize &size) : size(size)
    {
        for (auto &component : values)
            component.resize(size_t(size.width()) * size_t(size.height()));
    }
    void set(int x, int y, const std::array<int, 3> &codes)
    {
        for (size_t i = 0; i < 3; ++i)
            values[i][size_t(y) * size_t(size.width()) + size_t(x)] = uint16_t(codes[i]);
    }
    [[nodiscard]] PlanarPicture picture(const PictureColours &colours) const
    {
        PlanarPicture picture;
        for (size_t i = 0; i < 3; ++i)
            picture.components[i]
                = {reinterpret_cast<const std::byte *>(values[i].data()), size.width() * 2, 1};
        picture.size = picture.squareSize = size;
        picture.chromaShiftX = picture.chromaShiftY = 0;
        picture.sampleBytes = 2;
        picture.depth = 10;
        picture.colours = colours;
        return picture;
    }
    QSize size;
    std::array<std::vector<uint16_t>, 3> values;
};

} // namespace

Q_DECLARE_METATYPE(PictureColours)

// High dynamic range on an ordinary screen: what is told apart in the film is told apart on the screen.
class ToneMapTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void pqIsThatOfTheStandard();
    void aGreyCardIsWhereItBelongs();
    void greysGrowAndHighlightsStayApart_data();
    void greysGrowAndHighlightsStayApart();
    void referenceWhiteIsBrightAndLeavesRoom();
    void huesStay();
    void ordinaryWhiteOfWideGamutIsWhite();
    void theTableIsAsGoodAsTheFormula_data();
    void theTableIsAsGoodAsTheFormula();
    void scalingKeepsWhatIsThere_data();
    void scalingKeepsWhatIsThere();
    void imagesAreUsedAgainOnlyWhenFree();
};

// ITU-R BT.2408, table of reference levels: 58 % is 203 cd/m2, 38 % 26 cd/m2, 75 % 1000 cd/m2.
void ToneMapTest::pqIsThatOfTheStandard()
{
    QCOMPARE(qRound(tonemap::lightOfPq(1)), 10000);
    QCOMPARE(tonemap::lightOfPq(0), 0.0);
    QVERIFY(qAbs(tonemap::pqOfLight(203) - 0.58) < 0.005);
    QVERIFY(qAbs(tonemap::pqOfLight(26) - 0.38) < 0.005);
    QVERIFY(qAbs(tonemap::pqOfLight(1000) - 0.75) < 0.005);
    for (const double light : {0.01, 1.0, 100.0, 4000.0})
        QVERIFY(qAbs(tonemap::lightOfPq(tonemap::pqOfLight(light)) / light - 1) < 1e-6);
}

// 18 % grey: 38 % of PQ and of HLG, 42.5 % in ordinary video.
void ToneMapTest::aGreyCardIsWhereItBelongs()
{
    for (const int peak : {600, 1000, 4000})
        QVERIFY2(qAbs(shownGrey(0.38, pq(peak)) - 0.425) < (peak == 4000 ? 0.03 : 0.01),
                 qPrintable(QString::number(shownGrey(0.38, pq(peak)))));
    QVERIFY2(qAbs(shownGrey(0.38, hlg()) - 0.425) < 0.02,
             qPrintable(QString::number(shownGrey(0.38, hlg()))));
}

void ToneMapTest::greysGrowAndHighlightsStayApart_data()
{
    QTest::addColumn<PictureColours>("colours");
    QTest::addColumn<double>("peak"); // cd/m2
    for (const int peak : {0, 203, 400, 1000, 4000, 10000})
        QTest::addRow("PQ %d", peak) << pq(peak) << double(peak);
    QTest::newRow("HLG") << hlg() << 1000.0;
}

void ToneMapTest::greysGrowAndHighlightsStayApart()
{
    QFETCH(PictureColours, colours);
    QFETCH(double, peak);
    QCOMPARE(shownGrey(0, colours), 0.0);
    QVERIFY(shownGrey(1, colours) > 0.98);
    double last = -1;
    for (int code = 0; code <= 1000; ++code) {
        const double grey = shownGrey(code / 1000.0, colours);
        QVERIFY2(grey > last || grey == 0, qPrintable(QString::number(code)));
        QVERIFY(grey <= 1);
        last = grey;
    }
    if (colours.transfer != PictureColours::Transfer::Pq || peak < 1000)
        return;
    // From half of the peak to the peak, in ten steps: each can be seen, about two of 255 at least.
    for (int step = 5; step < 10; ++step) {
        const double low = shownGrey(tonemap::pqOfLight(peak * step / 10), colours);
        const double high = shownGrey(tonemap::pqOfLight(peak * (step + 1) / 10), colours);
        QVERIFY2((high - low) * 255 > 0.7, qPrintable(u"%1: %2"_s.arg(step).arg((high - low) * 255)));
    }
}

void ToneMapTest::referenceWhiteIsBrightAndLeavesRoom()
{
    const double white = shownGrey(tonemap::pqOfLight(ReferenceWhite), pq(1000));
    QVERIFY2(white > 0.85 && white < 0.95, qPrintable(QString::number(white)));
    // A film that is nowhere brighter has all of the screen.
    QVERIFY(shownGrey(tonemap::pqOfLight(ReferenceWhite), pq(203)) > 0.97);
}

// A lamp far brighter than the screen stays red, green or blue, and a colour beyond the screen's keeps its
// side.
void ToneMapTest::huesStay()
{
    for (size_t channel = 0; channel < 3; ++channel) {
        for (const double light : {50.0, 203.0, 1000.0, 4000.0}) {
            Rgb coded{0, 0, 0};
            coded[channel] = tonemap::pqOfLight(light);
            const Rgb rgb = tonemap::shown(coded, pq(1000));
            for (size_t other = 0; other < 3; ++other) {
                if (other != channel)
                    QVERIFY(rgb[channel] > rgb[other] + 0.2);
            }
        }
    }
}

void ToneMapTest::ordinaryWhiteOfWideGamutIsWhite()
{
    for (const double level : {0.0, 0.25, 0.5, 1.0}) {
        const Rgb rgb = tonemap::shown({level, level, level}, wide());
        for (const double channel : rgb)
            QVERIFY(qAbs(channel - level) < 0.002);
    }
    // The red of BT.709, as BT.2020 codes it (ITU-R BT.2087).
    const double gamma = 1 / 2.4;
    const Rgb red = tonemap::shown(
        {std::pow(0.627404, gamma), std::pow(0.069097, gamma), std::pow(0.016391, gamma)}, wide());
    QVERIFY(red[0] > 0.998 && red[1] < 0.05 && red[2] < 0.05);
}

void ToneMapTest::theTableIsAsGoodAsTheFormula_data()
{
    QTest::addColumn<PictureColours>("colours");
    QTest::addColumn<int>("greyLimit"); // of 255
    QTest::addColumn<double>("lightLimit"); // of white's light
    QTest::addColumn<double>("brightest"); // code of the film's peak
    QTest::newRow("PQ") << pq(1000) << 2 << 0.25 << 0.752;
    QTest::newRow("PQ 4000") << pq(4000) << 2 << 0.25 << 0.903;
    QTest::newRow("HLG") << hlg() << 2 << 0.12 << 1.0;
    QTest::newRow("wide gamut") << wide() << 2 << 0.06 << 1.0;
    QTest::newRow("ordinary") << PictureColours{.depth = 10} << 1 << 0.01 << 1.0;
    QTest::newRow("ordinary full") << PictureColours{.fullRange = true, .depth = 10} << 1 << 0.01 << 1.0;
}

// All colours that can be coded. Far off are only the brightest at the very edge of what the screen has,
// where the third channel rises from nothing within one step of the table: they come out paler.
void ToneMapTest::theTableIsAsGoodAsTheFormula()
{
    QFETCH(PictureColours, colours);
    QFETCH(int, greyLimit);
    QFETCH(double, lightLimit);
    QFETCH(double, brightest);
    pictureclips::Kind kind;
    if (colours.matrix == PictureColours::Matrix::Bt2020)
        kind = {.red = 0.2627, .blue = 0.0593};
    kind.depth = 10;
    kind.full = colours.fullRange;
    constexpr int Steps = 24;
    Samples samples(QSize(Steps * Steps, Steps));
    const auto coded = [brightest](int x, int y) {
        const double step = brightest / (Steps - 1);
        return Rgb{step * (x % Steps), step * (x / Steps), step * y};
    };
    for (int y = 0; y < samples.size.height(); ++y) {
        for (int x = 0; x < samples.size.width(); ++x)
            samples.set(x, y, pictureclips::codes(coded(x, y), kind));
    }
    PictureConverter converter;
    const QImage image = converter.convert(samples.picture(colours), samples.size);
    const auto light = [](double level) { return std::pow(level, 2.4); };
    int worstGrey = 0;
    double worst = 0;
    QString where;
    double sum = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const Rgb rgb = coded(x, y);
            const Rgb exact = tonemap::shown(rgb, colours);
            const QRgb found = image.pixel(x, y);
            const std::array<int, 3> channels{qRed(found), qGreen(found), qBlue(found)};
            for (size_t i = 0; i < 3; ++i) {
                const double off = qAbs(light(exact[i]) - light(channels[i] / 255.0));
                if (off > worst) {
                    worst = off;
                    where = u"%1 %2 %3"_s.arg(rgb[0]).arg(rgb[1]).arg(rgb[2]);
                }
                sum += off;
                if (rgb[0] == rgb[1] && rgb[1] == rgb[2])
                    worstGrey = qMax(worstGrey, qAbs(qRound(exact[i] * 255) - channels[i]));
            }
        }
    }
    const double mean = sum / (3 * image.width() * image.height());
    QVERIFY2(
        worstGrey <= greyLimit && worst <= lightLimit && mean < 0.006,
        qPrintable(u"grey %1, light %2 at %3, mean %4"_s.arg(worstGrey).arg(worst).arg(where).arg(mean)));
}

void ToneMapTest::scalingKeepsWhatIsThere_data()
{
    QTest::addColumn<QSize>("given");
    QTest::addColumn<QSize>("wanted");
    QTest::newRow("same") << QSize(64, 32) << QSize(64, 32);
    QTest::newRow("half") << QSize(64, 32) << QSize(32, 16);
    QTest::newRow("a seventh") << QSize(700, 70) << QSize(100, 10);
    QTest::newRow("larger") << QSize(64, 32) << QSize(301, 177);
    QTest::newRow("to one") << QSize(640, 320) << QSize(1, 1);
    QTest::newRow("of one") << QSize(1, 1) << QSize(50, 30);
    QTest::newRow("wider and flatter") << QSize(50, 500) << QSize(500, 5);
}

// A ramp stays a ramp from edge to edge; its mean stays.
void ToneMapTest::scalingKeepsWhatIsThere()
{
    QFETCH(QSize, given);
    QFETCH(QSize, wanted);
    const auto level = [](int x, int width) { return (x + 0.5) / width; };
    Samples samples(given);
    for (int y = 0; y < given.height(); ++y) {
        for (int x = 0; x < given.width(); ++x) {
            const double grey = level(x, given.width());
            samples.set(x, y, pictureclips::codes({grey, grey, grey}, {.depth = 10}));
        }
    }
    PictureConverter converter;
    const PictureColours colours{.depth = 10};
    const QImage image = converter.convert(samples.picture(colours), wanted);
    QCOMPARE(image.size(), wanted);
    const int edge = qMin(wanted.width() / 2, int(std::ceil(2.0 * wanted.width() / given.width())));
    for (int x = edge; x < wanted.width() - edge; ++x) {
        const int grey = qGreen(image.pixel(x, wanted.height() / 2));
        QVERIFY2(qAbs(grey - 255 * level(x, wanted.width())) <= 2, qPrintable(u"%1: %2"_s.arg(x).arg(grey)));
    }
}

void ToneMapTest::imagesAreUsedAgainOnlyWhenFree()
{
    PictureConverter converter;
    const PictureColours colours{.depth = 10};
    const auto filled = [](int luma) {
        Samples samples(QSize(8, 8));
        for (int i = 0; i < 64; ++i)
            samples.set(i % 8, i / 8, {luma, 512, 512});
        return samples;
    };
    const Samples black = filled(64);
    const Samples white = filled(940);
    const QImage first = converter.convert(black.picture(colours), QSize(8, 8));
    for (int i = 0; i < 20; ++i) {
        const QImage next = converter.convert(white.picture(colours), QSize(8, 8));
        QVERIFY(next.constBits() != first.constBits());
        QCOMPARE(next.pixel(3, 3), qRgb(255, 255, 255));
    }
    QCOMPARE(first.pixel(3, 3), qRgb(0, 0, 0));
}

QTEST_MAIN(ToneMapTest)
#include "tst_tonemap.moc"

// SPDX-License-Identifier: GPL-3.0-or-later
#include "media-worker/picture.h"
#include "media-worker/planeshrink.h"
#include "media-worker/replywriter.h"

#include <QtTest>

#include <string>

namespace {

// One byte names a pixel; rows are separated by blanks.
Picture fromText(const std::string &text)
{
    Picture picture;
    picture.size.width = static_cast<int>(text.find(' '));
    picture.size.height = static_cast<int>(std::count(text.begin(), text.end(), ' ')) + 1;
    for (const char name : text) {
        if (name != ' ')
            picture.pixels.insert(picture.pixels.end(), 4, static_cast<std::uint8_t>(name));
    }
    return picture;
}

std::string toText(const Picture &picture)
{
    std::string text;
    for (int y = 0; y < picture.size.height; ++y) {
        if (y > 0)
            text += ' ';
        for (int x = 0; x < picture.size.width; ++x)
            text += static_cast<char>(
                picture.pixels.at(static_cast<std::size_t>((y * picture.size.width + x) * 4)));
    }
    return text;
}

} // namespace

class WorkerPictureTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void turns_data()
    {
        QTest::addColumn<int>("quarters");
        QTest::addColumn<bool>("flipped");
        QTest::addColumn<std::string>("upright");
        QTest::newRow("not") << 0 << false << std::string("abc def");
        QTest::newRow("90") << 1 << false << std::string("da eb fc");
        QTest::newRow("180") << 2 << false << std::string("fed cba");
        QTest::newRow("270") << 3 << false << std::string("cf be ad");
        QTest::newRow("flip") << 0 << true << std::string("cba fed");
        QTest::newRow("flip 180") << 2 << true << std::string("def abc");
    }
    void turns()
    {
        QFETCH(int, quarters);
        QFETCH(bool, flipped);
        QFETCH(std::string, upright);
        QCOMPARE(toText(turned(fromText("abc def"), {quarters, flipped})), upright);
    }

    void covers_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::addColumn<QSize>("cover");
        QTest::addColumn<QSize>("expected");
        QTest::newRow("half") << QSize(1920, 1080) << QSize(960, 540) << QSize(960, 540);
        QTest::newRow("wider than asked") << QSize(1920, 1080) << QSize(540, 540) << QSize(960, 540);
        QTest::newRow("higher than asked") << QSize(1080, 1920) << QSize(540, 540) << QSize(540, 960);
        QTest::newRow("never enlarged") << QSize(100, 50) << QSize(960, 540) << QSize(100, 50);
        QTest::newRow("own size") << QSize(100, 50) << QSize(0, 0) << QSize(100, 50);
        QTest::newRow("thin") << QSize(10000, 2) << QSize(10, 1) << QSize(5000, 1);
    }
    void covers()
    {
        QFETCH(QSize, size);
        QFETCH(QSize, cover);
        QFETCH(QSize, expected);
        const PictureSize found
            = coveringSize({size.width(), size.height()}, {cover.width(), cover.height()});
        QCOMPARE(QSize(found.width, found.height), expected);
    }

    void measuresBrightness()
    {
        Picture grey;
        grey.size = {30, 20};
        grey.pixels.assign(30 * 20 * 4, 100);
        QCOMPARE(brightness(grey), 100);
        QCOMPARE(brightness(Picture()), 0);
    }

    void shrinksPlanesByMeans_data()
    {
        QTest::addColumn<int>("factor");
        QTest::addColumn<QByteArray>("means");
        // Of 5 x 4 samples; the last column of squares is moved in where there is half a one left.
        QTest::newRow("halves") << 2 << QByteArray("\x0b\x0d\x0e\x1f\x21\x22", 6);
        QTest::newRow("thirds") << 3 << QByteArray("\x10\x12", 2);
    }
    void shrinksPlanesByMeans()
    {
        QFETCH(int, factor);
        QFETCH(QByteArray, means);
        // Sample (x, y) is x + 10 y + 5, in rows of 8.
        std::vector<std::uint8_t> samples(8 * 4, 255);
        for (int y = 0; y < 4; ++y) {
            for (int x = 0; x < 5; ++x)
                samples[static_cast<std::size_t>(y * 8 + x)] = static_cast<std::uint8_t>(x + 10 * y + 5);
        }
        const int width = (5 + factor - 1) / factor;
        const int height = 4 / factor;
        QByteArray found(width * height, '\0');
        shrinkPlane({samples.data(), 8, 5, 4},
                    {reinterpret_cast<std::uint8_t *>(found.data()), width, width, height}, factor);
        QCOMPARE(found.toHex(), means.toHex());
    }

    void cutsTextsBetweenCharacters()
    {
        QCOMPARE(cutText("abc", 8), std::string_view("abc"));
        QCOMPARE(cutText("aä", 2), std::string_view("a"));
        QCOMPARE(cutText("aä", 3), std::string_view("aä"));
        QCOMPARE(cutText("ää", 3), std::string_view("ä"));
    }
};

QTEST_GUILESS_MAIN(WorkerPictureTest)
#include "worker_picture_test.moc"

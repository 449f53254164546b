// SPDX-License-Identifier: GPL-3.0-or-later
#include "videostage.h"

#include <platform/media/linemarks.h>

#include <QApplication>

using namespace std::chrono_literals;
using namespace Qt::Literals::StringLiterals;

// The section that is repeated is seen on the line.
class SeekLoopTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup();
    void itsPlaceOnTheLine_data();
    void itsPlaceOnTheLine();
    void comesAndGoesWithTheLoop();
    void ofAnotherVideoIsForgotten();
    void isPainted_data();
    void isPainted();

private:
    void setLoop(const std::optional<MediaSection> &section)
    {
        f.backend->setLoop(section);
        f.backend->advance(0ms);
    }
    [[nodiscard]] ControlSlider *line() const { return f.widget->controls()->seekSlider(); }
    // Where the picture differs, in a row of it between the line and the band's edge; of the line's length,
    // from left to right.
    [[nodiscard]] QList<qreal> changed(const QImage &before, const QImage &after) const;
    VideoStage f;
};

void SeekLoopTest::cleanup()
{
    toolkit::Theme::instance()->setDark(true);
    f.close();
}

void SeekLoopTest::itsPlaceOnTheLine_data()
{
    QTest::addColumn<int>("start");
    QTest::addColumn<int>("end");
    QTest::addColumn<int>("duration");
    QTest::addColumn<QList<qreal>>("part");
    QTest::newRow("in the middle") << 15 << 30 << 60 << QList<qreal>{0.25, 0.5};
    QTest::newRow("all of it") << 0 << 60 << 60 << QList<qreal>{0, 1};
    QTest::newRow("beyond the end") << 30 << 90 << 60 << QList<qreal>{0.5, 1};
    QTest::newRow("a length that is not known") << 15 << 30 << 0 << QList<qreal>{};
    QTest::newRow("behind the end") << 60 << 90 << 60 << QList<qreal>{};
    QTest::newRow("nothing") << 15 << 15 << 60 << QList<qreal>{};
}

void SeekLoopTest::itsPlaceOnTheLine()
{
    QFETCH(const int, start);
    QFETCH(const int, end);
    QFETCH(const int, duration);
    const auto part = sectionOnLine({std::chrono::seconds(start), std::chrono::seconds(end)},
                                    std::chrono::seconds(duration));
    QTEST(part ? QList<qreal>({part->start, part->end}) : QList<qreal>(), "part");
}

void SeekLoopTest::comesAndGoesWithTheLoop()
{
    QVERIFY(f.open());
    f.widget->setControlsVisible(true);
    QVERIFY(!line()->section());
    setLoop(MediaSection{12s, 30s});
    QCOMPARE(line()->section(), (LinePart{0.2, 0.5}));
    setLoop(MediaSection{12s, 45s});
    QCOMPARE(line()->section(), (LinePart{0.2, 0.75}));
    // Going elsewhere ends it.
    f.backend->seek(50s, MediaBackend::SeekPrecision::Exact);
    f.backend->advance(0ms);
    QVERIFY(!line()->section());
    // What changes while nobody looks is there when somebody does.
    f.widget->setControlsVisible(false);
    setLoop(MediaSection{30s, 60s});
    f.widget->setControlsVisible(true);
    QCOMPARE(line()->section(), (LinePart{0.5, 1}));
}

void SeekLoopTest::ofAnotherVideoIsForgotten()
{
    QVERIFY(f.open());
    f.widget->setControlsVisible(true);
    setLoop(MediaSection{12s, 30s});
    QVERIFY(line()->section());
    f.widget->play(u"file:///b.mp4"_s, 0);
    f.backend->advance(1s);
    QTRY_VERIFY(!line()->section());
}

QList<qreal> SeekLoopTest::changed(const QImage &before, const QImage &after) const
{
    QList<qreal> places;
    const QPoint left = f.middleOf(line(), 0);
    const QPoint right = f.middleOf(line(), 1);
    for (int x = left.x(); x < right.x(); ++x) {
        if (before.pixel(x, left.y() - 7) != after.pixel(x, left.y() - 7))
            places.append(x - left.x());
    }
    return places;
}

void SeekLoopTest::isPainted_data()
{
    QTest::addColumn<bool>("dark");
    QTest::addColumn<Qt::LayoutDirection>("direction");
    for (const bool dark : {true, false}) {
        for (const Qt::LayoutDirection direction : {Qt::LeftToRight, Qt::RightToLeft})
            QTest::addRow("%s, %s", dark ? "dark" : "light",
                          direction == Qt::LeftToRight ? "from left" : "from right")
                << dark << direction;
    }
}

void SeekLoopTest::isPainted()
{
    QFETCH(const bool, dark);
    QFETCH(const Qt::LayoutDirection, direction);
    toolkit::Theme::instance()->setDark(dark);
    QGuiApplication::setLayoutDirection(direction);
    QVERIFY(f.open());
    f.pause();
    f.widget->setControlsVisible(true);
    line()->setValue(0); // the knob is out of the way
    const QImage before = f.window->grab().toImage();
    line()->setSection(LinePart{0.5, 0.75});
    const QImage after = f.window->grab().toImage();
    const QList<qreal> places = changed(before, after);
    QVERIFY(!places.isEmpty());
    const qreal knob = f.widget->controls()->style().number(u"seekKnob"_s, 26);
    const qreal way = line()->size().width() - knob;
    const auto at
        = [&](qreal value) { return knob / 2 + way * (direction == Qt::LeftToRight ? value : 1 - value); };
    // From end to end with the bars, and nowhere else.
    QVERIFY2(qAbs(places.first() - (std::min(at(0.5), at(0.75)) - 2)) <= 1.5,
             qPrintable(QString::number(places.first())));
    QVERIFY2(qAbs(places.last() - (std::max(at(0.5), at(0.75)) + 2)) <= 1.5,
             qPrintable(QString::number(places.last())));
    QVERIFY(places.size() >= places.last() - places.first());
    // The bars are of the theme, and stand out against the band.
    const QColor ends = f.widget->controls()->style().color(u"loopEnds"_s);
    const QPoint left = f.middleOf(line(), 0);
    const auto colorAt
        = [&](qreal place) { return after.pixelColor(left + QPoint(int(std::lround(place)), -7)); };
    for (const qreal end : {0.5, 0.75})
        QVERIFY2(qAbs(qGray(colorAt(at(end)).rgb()) - qGray(ends.rgb())) < 12,
                 qPrintable(colorAt(at(end)).name()));
    const QColor band = colorAt(at(0.62));
    QVERIFY2(qAbs(qGray(band.rgb()) - qGray(ends.rgb())) > 60, qPrintable(band.name()));
    QVERIFY2(band.blue() > band.red() + 20, qPrintable(band.name())); // the accent's
}

QTEST_MAIN(SeekLoopTest)
#include "tst_seekloop.moc"

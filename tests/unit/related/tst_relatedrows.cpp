// SPDX-License-Identifier: GPL-3.0-or-later
#include "pictures.h"
#include "relatedcolumn.h"
#include "relatedrows.h"
#include "relatedtexts.h"
#include "shownlines.h"
#include "touchrow.h"

#include <QFontMetricsF>
#include <QGraphicsScene>
#include <QGraphicsSceneMouseEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QSignalSpy>
#include <QTest>

#include <algorithm>
#include <cmath>

using namespace Qt::Literals::StringLiterals;

class TestRelatedRows : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void neverBlank_data();
    void neverBlank();
    void aProviderThatFailsIsSaid();
    void aFewWithTheirReasons();
    void theWholeListSaysHowMany();
    void aFingerAndAKeyChoose();
    void aFingerThatScrollsChoosesNothing();
    void theKeyboardStaysWhereItWas();
    void everythingTappedIsHighEnough_data();
    void everythingTappedIsHighEnough();
    void rowsAreNoWiderThanPeopleRead_data();
    void rowsAreNoWiderThanPeopleRead();
    void anyTitleFits_data();
    void anyTitleFits();
    void aWordThatIsTooWideIsNotTornApart();
    void nothingLostStandsBeforeAnEllipsis_data();
    void nothingLostStandsBeforeAnEllipsis();
    void aTitleReadsInItsOwnDirection_data();
    void aTitleReadsInItsOwnDirection();
    void aPictureStaysWhereTheListIsSeen();
    void aTitleStandsBesideTheMiddleOfItsPicture();

private:
    [[nodiscard]] QStringList spoken() const;
    [[nodiscard]] TouchRow *row(const QString &spoken) const;

    RelatedTexts m_texts;
    Pictures m_pictures;
    RelatedRows m_rows{m_texts, m_pictures};
    std::unique_ptr<QGraphicsScene> m_scene;
    RelatedColumn *m_column = nullptr;
};

namespace {

using State = RelatedFinder::State;

RelatedEntry entry(const QString &title, Kinship kinship, int duration = 65, int position = 0)
{
    RelatedVideo video;
    video.url = u"file:///"_s + title;
    video.title = title;
    video.duration = duration;
    video.position = position;
    return {video, kinship};
}

QList<RelatedEntry> six()
{
    return {entry(u"a"_s, Kinship::NextEpisode),     entry(u"b"_s, Kinship::NextEpisode),
            entry(u"c"_s, Kinship::PreviousEpisode), entry(u"d"_s, Kinship::SameDay),
            entry(u"e"_s, Kinship::SameFolder),      entry(u"f"_s, Kinship::SimilarTitle)};
}

void send(QGraphicsItem *item, QEvent::Type type)
{
    QGraphicsSceneMouseEvent event(type);
    event.setButton(Qt::LeftButton);
    event.setButtons(Qt::LeftButton);
    event.setPos(item->boundingRect().center());
    item->scene()->sendEvent(item, &event);
}

} // namespace

void TestRelatedRows::init()
{
    m_scene = std::make_unique<QGraphicsScene>();
    m_column = new RelatedColumn;
    m_scene->addItem(m_column);
    m_column->resize(480, 100);
}

QStringList TestRelatedRows::spoken() const
{
    QStringList list;
    for (const TouchRow *row : m_column->rows())
        list.append(row->spoken());
    return list;
}

TouchRow *TestRelatedRows::row(const QString &spoken) const
{
    for (TouchRow *row : m_column->rows()) {
        if (row->spoken().startsWith(spoken))
            return row;
    }
    return nullptr;
}

void TestRelatedRows::neverBlank_data()
{
    QTest::addColumn<int>("state");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("looking") << int(State::Looking) << QStringList(u"Looking for related videos…"_s);
    QTest::newRow("nothing") << int(State::Found) << QStringList(u"No related videos"_s);
    QTest::newRow("failed") << int(
        State::Failed) << QStringList({u"The video library is not available right now."_s, u"Try again"_s});
}

void TestRelatedRows::neverBlank()
{
    QFETCH(int, state);
    QFETCH(QStringList, expected);
    m_column->setRows(m_rows.all({State(state), {}}));
    QCOMPARE(spoken(), expected);
    m_column->setRows(m_rows.few({State(state), {}}));
    QCOMPARE(spoken(), QStringList(u"Related videos"_s) + expected);
}

// “I had set a server, and nothing ever came from it, without a word.”
void TestRelatedRows::aProviderThatFailsIsSaid()
{
    const QStringList online{u"Online videos are not available right now."_s, u"Try again"_s};
    m_column->setRows(m_rows.few({State::Found, six(), true}));
    QCOMPARE(spoken().mid(spoken().size() - 3), QStringList(u"Show all (6)"_s) + online);
    m_column->setRows(m_rows.all({State::Found, six(), true}));
    QCOMPARE(spoken().mid(spoken().size() - 2), online);
    m_column->setRows(m_rows.all({State::Found, {}, true}));
    QCOMPARE(spoken(), QStringList(u"No related videos"_s) + online);
    // One button tries both again.
    m_column->setRows(m_rows.all({State::Failed, {}, true}));
    QCOMPARE(spoken(), QStringList(u"The video library is not available right now."_s) + online);
    QSignalSpy again(&m_rows, &RelatedRows::againWanted);
    send(row(u"Try again"_s), QEvent::GraphicsSceneMousePress);
    send(row(u"Try again"_s), QEvent::GraphicsSceneMouseRelease);
    QTRY_COMPARE(again.size(), 1);
}

void TestRelatedRows::aFewWithTheirReasons()
{
    m_column->setRows(m_rows.few({State::Found, six()}));
    QCOMPARE(spoken(),
             QStringList({u"Related videos"_s, u"Next episodes"_s, u"a, Duration 01:05"_s,
                          u"b, Duration 01:05"_s, u"Previous episodes"_s, u"c, Duration 01:05"_s,
                          u"From the same day"_s, u"d, Duration 01:05"_s, u"Show all (6)"_s}));
    // What fits is not said twice.
    m_column->setRows(m_rows.few({State::Found, six().first(4)}));
    QCOMPARE(row(u"Show all"_s), nullptr);
}

void TestRelatedRows::theWholeListSaysHowMany()
{
    m_column->setRows(m_rows.all({State::Found, six()}));
    QCOMPARE(m_column->rows().size(), 6 + 5);
    m_column->setRows(m_rows.all({State::Found, {entry(u"begun"_s, Kinship::SameDay, 120, 55)}}));
    QCOMPARE(spoken().last(), u"begun, Duration 02:00, 01:05 left"_s);
}

void TestRelatedRows::aFingerAndAKeyChoose()
{
    m_column->setRows(m_rows.few({State::Found, six()}));
    const QSignalSpy chosen(&m_rows, &RelatedRows::chosen);
    const QSignalSpy all(&m_rows, &RelatedRows::allWanted);
    send(row(u"b"_s), QEvent::GraphicsSceneMousePress);
    send(row(u"b"_s), QEvent::GraphicsSceneMouseRelease);
    QCOMPARE(chosen, QList<QVariantList>({{u"file:///b"_s}}));
    QKeyEvent enter(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier);
    m_scene->sendEvent(row(u"Show all"_s), &enter);
    QCOMPARE(all.size(), 1);
}

void TestRelatedRows::aFingerThatScrollsChoosesNothing()
{
    m_column->setRows(m_rows.few({State::Found, six()}));
    const QSignalSpy chosen(&m_rows, &RelatedRows::chosen);
    TouchRow *pressed = row(u"b"_s);
    send(pressed, QEvent::GraphicsSceneMousePress);
    QEvent ungrab(QEvent::UngrabMouse);
    m_scene->sendEvent(pressed, &ungrab);
    send(pressed, QEvent::GraphicsSceneMouseRelease);
    QCOMPARE(chosen.size(), 0);
}

// “I stand on the third video, and the library finds another one before it.”
void TestRelatedRows::theKeyboardStaysWhereItWas()
{
    QEvent activate(QEvent::WindowActivate);
    QCoreApplication::sendEvent(m_scene.get(), &activate);
    m_column->setRows(m_rows.all({State::Found, six()}));
    row(u"c"_s)->setFocus(Qt::TabFocusReason);
    QVERIFY(row(u"c"_s)->isMarked());
    m_column->setRows(
        m_rows.all({State::Found, QList<RelatedEntry>{entry(u"new"_s, Kinship::NextEpisode)} + six()}));
    QVERIFY(row(u"c"_s)->isMarked());
    // A page that is covered takes it away and gives it back.
    row(u"c"_s)->clearFocus();
    QVERIFY(!row(u"c"_s)->isMarked());
    row(u"c"_s)->setFocus(Qt::OtherFocusReason);
    QVERIFY(row(u"c"_s)->isMarked());
    // A page that gives the focus away by itself marks nothing.
    row(u"d"_s)->setFocus(Qt::OtherFocusReason);
    QVERIFY(row(u"d"_s)->hasFocus() && !row(u"d"_s)->isMarked());
}

void TestRelatedRows::everythingTappedIsHighEnough_data()
{
    QTest::addColumn<int>("pixels");
    QTest::newRow("usual") << 20;
    QTest::newRow("twice") << 40;
}

void TestRelatedRows::everythingTappedIsHighEnough()
{
    QFETCH(int, pixels);
    QFont font;
    font.setPixelSize(pixels);
    m_column->setFont(font);
    m_column->setRows(m_rows.few({State::Found, six()}) + m_rows.all({State::Failed, six()}));
    qreal bottom = 0;
    for (const TouchRow *row : m_column->rows()) {
        if (row->canBeTapped())
            QVERIFY(row->size().height() >= 64);
        QCOMPARE(row->y(), bottom);
        QCOMPARE(row->size().width(), 480.0);
        bottom += row->size().height();
    }
    QCOMPARE(m_column->effectiveSizeHint(Qt::PreferredSize, {480, -1}), QSizeF(480, bottom));
}

void TestRelatedRows::rowsAreNoWiderThanPeopleRead_data()
{
    QTest::addColumn<qreal>("page");
    QTest::addColumn<Qt::LayoutDirection>("direction");
    QTest::addColumn<qreal>("left");
    QTest::addColumn<qreal>("width");
    QTest::newRow("upright") << 480.0 << Qt::LeftToRight << 0.0 << 480.0;
    QTest::newRow("a desktop's") << 1280.0 << Qt::LeftToRight << 0.0 << 720.0;
    QTest::newRow("a desktop's, right to left") << 1280.0 << Qt::RightToLeft << 560.0 << 720.0;
}

// A long title ran across the whole of a large window.
void TestRelatedRows::rowsAreNoWiderThanPeopleRead()
{
    QFETCH(qreal, page);
    QFETCH(Qt::LayoutDirection, direction);
    QFETCH(qreal, left);
    QFETCH(qreal, width);
    m_column->setLayoutDirection(direction);
    m_column->resize(page, 100);
    m_column->setRows(m_rows.all({State::Found, six()}));
    for (const TouchRow *row : m_column->rows()) {
        QCOMPARE(row->geometry().left(), left);
        QCOMPARE(row->geometry().width(), width);
    }
}

void TestRelatedRows::anyTitleFits_data()
{
    QTest::addColumn<QString>("title");
    QTest::newRow("empty") << QString();
    QTest::newRow("short") << u"Title"_s;
    QTest::newRow("long") << u"Word "_s.repeated(2000);
    QTest::newRow("one word") << QString(10'000, u'W');
    QTest::newRow("arabic") << u"عنوان طويل "_s.repeated(100);
    QTest::newRow("line breaks") << u"one\ntwo\u2028three\tfour"_s.repeated(30);
}

void TestRelatedRows::anyTitleFits()
{
    QFETCH(QString, title);
    QFont font;
    font.setPixelSize(22);
    const ShownLines lines(title, font, 226, 2);
    QVERIFY(lines.count() <= 2);
    for (const QString &line : lines.lines())
        QVERIFY2(QFontMetricsF(font).horizontalAdvance(line) <= 228, qPrintable(line));
}

// "Dragonflie" and, on the next line, "s over the lake", in text of twice the size.
void TestRelatedRows::aWordThatIsTooWideIsNotTornApart()
{
    QFont font;
    font.setPixelSize(44);
    const QFontMetricsF metrics(font);
    const ShownLines lines(u"Dragonflies over the lake"_s, font,
                           metrics.horizontalAdvance(u"Dragonflies"_s) - 4, 9);
    QVERIFY2(lines.lines().first().startsWith(u"Drag"_s) && lines.lines().first().endsWith(u'…'),
             qPrintable(lines.lines().first()));
    QCOMPARE(lines.lines().mid(1).join(u' '), u"over the lake"_s);

    const QString file = u"VID_2024-01-01_123456.part1"_s;
    const ShownLines parts(file, font, metrics.horizontalAdvance(u"VID_2024-01-"_s) + 1, 9);
    QVERIFY(parts.count() > 1);
    QCOMPARE(parts.lines().join(QString()), file);
}

void TestRelatedRows::nothingLostStandsBeforeAnEllipsis_data()
{
    QTest::addColumn<QString>("title");
    QTest::newRow("latin") << u"The summer of 1987, from the first ferry"_s;
    QTest::newRow("arabic") << u"صيف عام 1988، من أول عبّارة في ضباب الصباح"_s;
}

void TestRelatedRows::nothingLostStandsBeforeAnEllipsis()
{
    QFETCH(QString, title);
    QFont font;
    font.setPixelSize(22);
    const qreal whole = QFontMetricsF(font).horizontalAdvance(title);
    for (qreal width = 60; width < whole - 1; width += 3) {
        const QString line = ShownLines(title, font, width, 1).lines().first();
        QVERIFY2(line.endsWith(u'…'), qPrintable(line));
        const QString shown = QString(line).remove(QChar(0x200d)).chopped(1);
        QVERIFY2(shown.isEmpty() || !QStringView(u" ,،").contains(shown.back()), qPrintable(line));
    }
}

// Its ellipsis and its points stand where it ends, also on a page that reads the other way.
void TestRelatedRows::aTitleReadsInItsOwnDirection_data()
{
    QTest::addColumn<QString>("title");
    QTest::newRow("from left to right") << u"The summer of 1987, from the first ferry to the last fire."_s;
    QTest::newRow("from right to left") << u"صيف عام 1988، من أول عبّارة إلى آخر نار."_s;
}

void TestRelatedRows::aTitleReadsInItsOwnDirection()
{
    QFETCH(QString, title);
    QFont font;
    font.setPixelSize(22);
    const ShownLines lines(title, font, 226, 1);
    QVERIFY(lines.lines().first().endsWith(u'…'));
    const auto painted = [&lines](Qt::LayoutDirection ofPage) {
        QImage canvas(226, 40, QImage::Format_RGB32);
        canvas.fill(Qt::white);
        QPainter painter(&canvas);
        painter.setLayoutDirection(ofPage);
        lines.paint(&painter, canvas.rect(), Qt::RightToLeft);
        return canvas;
    };
    QCOMPARE(painted(Qt::RightToLeft), painted(Qt::LeftToRight));
}

// Scrolled half out of what shows the list: nothing of it stands over the page's head.
void TestRelatedRows::aPictureStaysWhereTheListIsSeen()
{
    QGraphicsScene scene;
    auto *seen = new QGraphicsWidget;
    seen->setFlag(QGraphicsItem::ItemClipsChildrenToShape);
    seen->setGeometry(0, 100, 480, 300);
    scene.addItem(seen);
    const QList<TouchRow *> rows = m_rows.all({State::Found, {entry(u"Picnic"_s, Kinship::SameDay)}});
    for (TouchRow *row : rows)
        row->setParentItem(seen);
    rows.first()->hide(); // why it is related
    rows.last()->setGeometry(0, -60, 480, 136);
    QImage canvas(480, 400, QImage::Format_RGB32);
    canvas.fill(Qt::red);
    QPainter painter(&canvas);
    scene.render(&painter, QRectF(0, 0, 480, 400), QRectF(0, 0, 480, 400));
    painter.end();
    const QImage above = canvas.copy(0, 0, 480, 100);
    const QImage below = canvas.copy(0, 100, 480, 76);
    const auto untouched = [](const QImage &image) {
        QImage plain(image.size(), image.format());
        plain.fill(Qt::red);
        return image == plain;
    };
    QVERIFY(untouched(above));
    QVERIFY(!untouched(below));
}

// It stood half a line too high, as if something were said below it.
void TestRelatedRows::aTitleStandsBesideTheMiddleOfItsPicture()
{
    QCOMPARE(ShownLines(QString(), QFont(), 200, 1).count(), 0);
    QPalette palette;
    palette.setColor(QPalette::WindowText, Qt::red);
    m_column->setPalette(palette);
    m_column->setRows(m_rows.all({State::Found, {entry(u"HHHH"_s, Kinship::SameDay)}}));
    const TouchRow *video = m_column->rows().last();
    const QRectF place = video->mapRectToScene(video->rect());
    QImage canvas(place.size().toSize(), QImage::Format_RGB32);
    canvas.fill(Qt::black);
    QPainter painter(&canvas);
    m_scene->render(&painter, canvas.rect(), place);
    painter.end();
    int first = canvas.height();
    int last = -1;
    for (int y = 0; y < canvas.height(); ++y) {
        for (int x = 0; x < canvas.width(); ++x) {
            const QColor color = canvas.pixelColor(x, y);
            if (color.red() > 150 && color.green() < 80) {
                first = std::min(first, y);
                last = y;
            }
        }
    }
    QVERIFY(last > first);
    // Capitals stand a little above the middle of their line.
    const qreal middle = (first + last) / 2.0;
    QVERIFY2(std::abs(middle - place.height() / 2) <= 4, qPrintable(QString::number(middle)));
}

QTEST_MAIN(TestRelatedRows)
#include "tst_relatedrows.moc"

// SPDX-License-Identifier: GPL-3.0-or-later
#include "data/thumbnailhelper.h"
#include "library/griditemwidget.h"
#include "library/griditemwidgetmodel.h"
#include "library/griditemwidgetstyle.h"
#include "library/localvideoitemcreator.h"
#include "platform/toolkit/imagewidget.h"
#include "platform/toolkit/label.h"
#include "platform/toolkit/layout.h"
#include "platform/toolkit/theme.h"
#include "support/fakethumbnailerclient.h"
#include "videotable.h"

#include <QDir>
#include <QGraphicsScene>
#include <QGraphicsSceneMouseEvent>
#include <QMetaMethod>
#include <QPainter>
#include <QPropertyAnimation>
#include <QScopeGuard>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

class GridItemTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void timeLabelFollowsTheState_data();
    void timeLabelFollowsTheState();
    void unknownTimeStateWarnsAndKeepsTheStyle();
    void positionDecidesWhichTimeIsShown_data();
    void positionDecidesWhichTimeIsShown();
    void withoutAFilterTheTitleIsPlainText();
    void withAFilterTheMatchIsMarked();
    void badIndexOrCellIsLeftUntouched();
    void pictureComesFromTheColumnThatFits_data();
    void pictureComesFromTheColumnThatFits();
    void missingPictureIsAskedForAndThePlaceholderStandsIn();
    void stillThatWasWrittenAgainIsShownAgain();
    void anotherKeyEndsTheFadeIn();
    void sameKeyLeavesTheFadeInAlone();
    void cellIsTakenFromTheRecycler();
    void sizesComeFromTheTheme();
    void longWordsInLargeTextStayInTheCell();
    void titlesBreakBetweenWords();
    void thePressIsPaintedAtOnce();
    void aRecycledCellShowsAKnownPictureWithoutAFade();
    void partsHaveTheirStyles();
    void timeStandsWhereLinesEnd();
    void tapAndLongTapAreTold();
    void panTakesThePressAway();
    void panningHoldsRequests();
    void signalsAndSlotsStandInTheirOrder();

private:
    QString picture(const QString &name, const QColor &color, QSize size = {824, 464});
    QPropertyAnimation *fade(GridItemWidget &cell) { return cell.findChild<QPropertyAnimation *>(); }

    QTemporaryDir m_folder;
    VideoTable m_table;
    std::unique_ptr<LocalVideoItemCreator> m_creator;
};

void GridItemTest::initTestCase()
{
    FakeThumbnailerClient::install();
    toolkit::Theme::instance()->setReducedMotion(false);
}

void GridItemTest::init()
{
    m_table.setTitles({u"one"_s, u"two"_s});
    m_creator = std::make_unique<LocalVideoItemCreator>();
}

QString GridItemTest::picture(const QString &name, const QColor &color, QSize size)
{
    const QString path = m_folder.filePath(name);
    QImage image(size, QImage::Format_RGB32);
    image.fill(color);
    return image.save(path) ? path : QString();
}

void GridItemTest::timeLabelFollowsTheState_data()
{
    QTest::addColumn<int>("seconds");
    QTest::addColumn<int>("state");
    QTest::addColumn<QString>("style");
    QTest::addColumn<QString>("text");
    QTest::newRow("short") << 65 << 0 << u"KestrelGridCellTimeLabel"_s << u"01:05"_s;
    QTest::newRow("just short") << 3599 << 0 << u"KestrelGridCellTimeLabel"_s << u"59:59"_s;
    QTest::newRow("long") << 3600 << 0 << u"KestrelGridCellTimeLabelLong"_s << u"1:00:00"_s;
    QTest::newRow("paused, just short") << 3599 << 1 << u"KestrelGridCellTimeLabelPaused"_s << u"59:59"_s;
    QTest::newRow("paused, long") << 3600 << 1 << u"KestrelGridCellTimeLabelPausedLong"_s << u"1:00:00"_s;
}

void GridItemTest::timeLabelFollowsTheState()
{
    QFETCH(int, seconds);
    QFETCH(int, state);
    GridItemWidget cell;
    cell.setTime(seconds, state);
    QTEST(cell.timeLabel()->styleName(), "style");
    QTEST(cell.timeLabel()->text(), "text");
}

void GridItemTest::unknownTimeStateWarnsAndKeepsTheStyle()
{
    GridItemWidget cell;
    cell.setTime(3600, 1);
    QTest::ignoreMessage(QtWarningMsg, "void GridItemWidget::updateTimeLabel() state: 7 not defined");
    cell.setTime(65, 7);
    QCOMPARE(cell.timeLabel()->styleName(), u"KestrelGridCellTimeLabelPausedLong"_s);
    QCOMPARE(cell.timeLabel()->text(), u"01:05"_s);
}

void GridItemTest::positionDecidesWhichTimeIsShown_data()
{
    QTest::addColumn<QString>("position");
    QTest::addColumn<QString>("duration");
    QTest::addColumn<QString>("shown"); // style suffix and text
    QTest::newRow("never played") << u"0"_s << u"5400"_s << u"Long 1:30:00"_s;
    QTest::newRow("no position") << QString() << u"5400"_s << u"Long 1:30:00"_s;
    QTest::newRow("at its end") << u"60"_s << u"60"_s << u" 01:00"_s;
    QTest::newRow("beyond its end") << u"61"_s << u"60"_s << u" 01:00"_s;
    QTest::newRow("an hour left") << u"1800"_s << u"5400"_s << u"PausedLong 1:00:00"_s;
    QTest::newRow("a second less") << u"1801"_s << u"5400"_s << u"Paused 59:59"_s;
}

void GridItemTest::positionDecidesWhichTimeIsShown()
{
    QFETCH(QString, position);
    QFETCH(QString, duration);
    QFETCH(QString, shown);
    m_table.setCell(0, VideoColumn::PlayPosition, position);
    m_table.setCell(0, VideoColumn::Duration, duration);
    GridItemWidget cell;
    m_creator->updateCell(m_table.index(0, 0), &cell);
    const QString style = cell.timeLabel()->styleName().remove(u"KestrelGridCellTimeLabel"_s);
    QCOMPARE(style + u' ' + cell.timeLabel()->text(), shown);
}

void GridItemTest::withoutAFilterTheTitleIsPlainText()
{
    m_table.setCell(0, VideoColumn::Title, u"<b>bold</b> & more"_s);
    GridItemWidget cell;
    m_creator->updateCell(m_table.index(0, 0), &cell);
    QCOMPARE(cell.titleLabel()->textFormat(), Qt::PlainText);
    QCOMPARE(cell.titleLabel()->text(), u"<b>bold</b> & more"_s);
    QCOMPARE(cell.itemKey(), m_table.rowAt(0).at(VideoColumn::Urn));
}

void GridItemTest::withAFilterTheMatchIsMarked()
{
    m_creator->updateHighlightedText(u"N"_s);
    GridItemWidget cell;
    m_creator->updateCell(m_table.index(0, 0), &cell);
    QCOMPARE(cell.titleLabel()->textFormat(), Qt::RichText);
    QVERIFY(cell.titleLabel()->text().endsWith(u"</style>o<highlight>n</highlight>e"_s));
    m_creator->updateHighlightedText({});
    m_creator->updateCell(m_table.index(0, 0), &cell);
    QCOMPARE(cell.titleLabel()->text(), u"one"_s);
}

void GridItemTest::badIndexOrCellIsLeftUntouched()
{
    GridItemWidget cell;
    cell.setItemKey(u"key"_s);
    m_creator->updateCell({}, &cell);
    QCOMPARE(cell.itemKey(), u"key"_s);
    toolkit::Label other;
    other.setText(u"text"_s);
    m_creator->updateCell(m_table.index(0, 0), &other);
    m_creator->updateCell(m_table.index(0, 0), nullptr);
    QCOMPARE(other.text(), u"text"_s);
}

void GridItemTest::pictureComesFromTheColumnThatFits_data()
{
    QTest::addColumn<QString>("position");
    QTest::addColumn<bool>("hasStill");
    QTest::addColumn<bool>("hasDefault");
    QTest::addColumn<QColor>("shown"); // invalid: the placeholder
    QTest::newRow("at the start: the picture") << u"0"_s << true << true << QColor(Qt::green);
    QTest::newRow("under way: the still") << u"9"_s << true << true << QColor(Qt::red);
    QTest::newRow("under way without a still") << u"9"_s << false << true << QColor();
    QTest::newRow("at the start without a picture") << u"0"_s << true << false << QColor();
}

void GridItemTest::pictureComesFromTheColumnThatFits()
{
    QFETCH(QString, position);
    QFETCH(bool, hasStill);
    QFETCH(bool, hasDefault);
    QFETCH(QColor, shown);
    m_table.setCell(0, VideoColumn::PlayPosition, position);
    if (hasStill)
        m_table.setCell(0, VideoColumn::PauseThumbnail, picture(u"still.png"_s, Qt::red));
    if (hasDefault)
        m_table.setCell(0, VideoColumn::DefaultThumbnail, picture(u"default.png"_s, Qt::green));
    GridItemWidget cell;
    m_creator->updateCell(m_table.index(0, 0), &cell);
    QCOMPARE(cell.hasPicture(), shown.isValid());
    const QPixmap pixmap = cell.thumbnail()->pixmap();
    if (shown.isValid())
        QCOMPARE(pixmap.toImage().pixelColor(5, 5), shown);
    // Decoded to what the cell shows, not to what the file holds.
    QCOMPARE(pixmap.size(), QSize(206, 116));
}

void GridItemTest::missingPictureIsAskedForAndThePlaceholderStandsIn()
{
    GridItemWidget cell;
    m_creator->updateCell(m_table.index(0, 0), &cell);
    QVERIFY(!cell.hasPicture());
    QTRY_VERIFY(!FakeThumbnailerClient::last()->requests.isEmpty());
    const QUrl url(m_table.rowAt(0).at(VideoColumn::Url));
    QVERIFY(FakeThumbnailerClient::last()->requests.last().urls.contains(url));
    FakeThumbnailerClient::last()->answer(url, picture(u"made.png"_s, Qt::blue));
    m_creator->updateCell(m_table.index(0, 0), &cell);
    QVERIFY(cell.hasPicture());
    QCOMPARE(fade(cell)->state(), QAbstractAnimation::Running);
    QTRY_COMPARE(fade(cell)->state(), QAbstractAnimation::Stopped);
    QCOMPARE(cell.thumbnail()->opacity(), 1.0);
}

void GridItemTest::stillThatWasWrittenAgainIsShownAgain()
{
    const QString path = picture(u"again.png"_s, Qt::red);
    m_table.setCell(0, VideoColumn::PlayPosition, u"9"_s);
    m_table.setCell(0, VideoColumn::PauseThumbnail, path);
    GridItemWidget cell;
    m_creator->updateCell(m_table.index(0, 0), &cell);
    picture(u"again.png"_s, Qt::blue);
    Q_EMIT ThumbnailHelper::instance()->pauseThumbnailCreated(m_table.rowAt(0).at(VideoColumn::Url), path);
    m_creator->updateCell(m_table.index(0, 0), &cell);
    QCOMPARE(cell.thumbnail()->pixmap().toImage().pixelColor(5, 5), QColor(Qt::blue));
}

void GridItemTest::anotherKeyEndsTheFadeIn()
{
    GridItemWidget cell;
    cell.setItemKey(u"a"_s);
    cell.fadeIn();
    QCOMPARE(cell.thumbnail()->opacity(), 0.0);
    cell.setItemKey(u"b"_s);
    QCOMPARE(fade(cell)->state(), QAbstractAnimation::Stopped);
    QCOMPARE(cell.thumbnail()->opacity(), 1.0);
}

void GridItemTest::sameKeyLeavesTheFadeInAlone()
{
    GridItemWidget cell;
    m_creator->updateCell(m_table.index(0, 0), &cell);
    cell.fadeIn();
    m_creator->updateCell(m_table.index(0, 0), &cell);
    QCOMPARE(fade(cell)->state(), QAbstractAnimation::Running);
    cell.fadeInDone();
    m_creator->updateCell(m_table.index(0, 0), &cell);
    QCOMPARE(cell.thumbnail()->opacity(), 1.0);
}

void GridItemTest::cellIsTakenFromTheRecycler()
{
    toolkit::CellRecycler recycler;
    toolkit::Widget *cell = m_creator->createCell(m_table.index(0, 0), recycler);
    recycler.recycle(cell);
    toolkit::Widget *again = m_creator->createCell(m_table.index(1, 0), recycler);
    QCOMPARE(again, cell);
    QCOMPARE(qobject_cast<GridItemWidget *>(again)->titleLabel()->text(), u"two"_s);
    recycler.recycle(again);
}

void GridItemTest::sizesComeFromTheTheme()
{
    QCOMPARE(m_creator->cellSize(), QSizeF(480, 136));
    GridItemWidget cell;
    QCOMPARE(cell.styleName(), u"KestrelGridItem"_s);
    QCOMPARE(cell.thumbnail()->preferredSize(), QSizeF(206, 116));
    QVERIFY(!cell.styleObject()->pressFeedback().name().isEmpty());
}

// Text twice as large, and a title in a language of long words.
void GridItemTest::longWordsInLargeTextStayInTheCell()
{
    toolkit::Theme *theme = toolkit::Theme::instance();
    theme->setTextScale(2);
    const auto ordinary = qScopeGuard([theme] { theme->setTextScale(1); });
    QGraphicsScene scene;
    auto *cell = new GridItemWidget;
    scene.addItem(cell);
    cell->setTitle(u"Dragonflies over the Hochgeschwindigkeitsstrecke"_s);
    cell->setGeometry(QRectF(0, 0, 480, 194));
    cell->layout()->activate();
    QImage image(QSize(480, 194), QImage::Format_RGB32);
    image.fill(Qt::black);
    QPainter painter(&image);
    scene.render(&painter, QRectF(image.rect()), QRectF(image.rect()));
    painter.end();
    const auto drawn = [&image](int left, int right) {
        int bright = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = left; x < right; ++x)
                bright += qGray(image.pixel(x, y)) > 60 ? 1 : 0;
        }
        return bright;
    };
    QVERIFY(drawn(238, 464) > 500);
    QCOMPARE(drawn(464, 480), 0); // the margin
}

// At twice the size "Dragonflies" is wider than its line.
void GridItemTest::titlesBreakBetweenWords()
{
    toolkit::Theme *theme = toolkit::Theme::instance();
    const auto ordinary = qScopeGuard([theme] { theme->setTextScale(1); });
    GridItemWidget cell;
    cell.setTitle(u"Dragonflies over the lake"_s);
    const auto lines = [&] {
        cell.setGeometry(QRectF(QPointF(), m_creator->cellSize()));
        cell.layout()->activate();
        return cell.titleLabel()->shownLines();
    };
    QCOMPARE(lines(), QStringList({u"Dragonflies over the"_s, u"lake"_s}));
    theme->setTextScale(2);
    QStringList large = lines();
    QCOMPARE(large.size(), 3);
    QVERIFY2(large.first().startsWith(u"Dragon"_s) && large.first().endsWith(QChar(0x2026)),
             qPrintable(large.first()));
    QCOMPARE(large.mid(1), QStringList({u"over the"_s, u"lake"_s}));
}

void GridItemTest::thePressIsPaintedAtOnce()
{
    QGraphicsScene scene;
    auto *cell = new GridItemWidget;
    scene.addItem(cell);
    cell->resize(480, 136);
    const auto plate = [&] {
        QImage image(QSize(480, 136), QImage::Format_RGB32);
        image.fill(Qt::black);
        QPainter painter(&image);
        scene.render(&painter, QRectF(image.rect()), QRectF(image.rect()));
        painter.end();
        return image.pixelColor(470, 4);
    };
    QCOMPARE(plate(), QColor(Qt::black));
    QGraphicsSceneMouseEvent press(QEvent::GraphicsSceneMousePress);
    press.setScenePos({300, 60});
    press.setButton(Qt::LeftButton);
    press.setButtons(Qt::LeftButton);
    QCoreApplication::sendEvent(&scene, &press);
    QCOMPARE(plate(), cell->style().color(u"pressed"_s)); // in the very next frame
    cell->ungrabMouse();
    QCOMPARE(plate(), QColor(Qt::black));
}

void GridItemTest::aRecycledCellShowsAKnownPictureWithoutAFade()
{
    m_table.setCell(0, VideoColumn::DefaultThumbnail, picture(u"first.png"_s, Qt::red));
    m_table.setCell(1, VideoColumn::DefaultThumbnail, picture(u"second.png"_s, Qt::blue));
    GridItemWidget cell;
    for (const int row : {0, 1, 0, 1}) {
        m_creator->updateCell(m_table.index(row, 0), &cell);
        QVERIFY(cell.hasPicture());
        QCOMPARE(fade(cell)->state(), QAbstractAnimation::Stopped);
        QCOMPARE(cell.thumbnail()->opacity(), 1.0);
    }
}

void GridItemTest::partsHaveTheirStyles()
{
    GridItemWidget cell;
    const auto *row = dynamic_cast<toolkit::Layout *>(cell.layout());
    QVERIFY(row);
    const auto *picture = dynamic_cast<toolkit::Layout *>(row->itemAt(0));
    QVERIFY(picture);
    const QStringList styles = {cell.styleName(),
                                row->policy()->styleName(),
                                picture->policy()->styleName(),
                                cell.thumbnail()->styleName(),
                                cell.titleLabel()->styleName(),
                                cell.timeLabel()->styleName()};
    QCOMPARE(styles,
             QStringList({u"KestrelGridItem"_s, u"KestrelPolicy"_s, u"KestrelGridCellThumbnailPolicy"_s,
                          u"KestrelGridCellThumbnail"_s, u"KestrelGridCellTitleLabel"_s,
                          u"KestrelGridCellTimeLabel"_s}));
    QCOMPARE(picture->itemAt(0), static_cast<QGraphicsLayoutItem *>(cell.thumbnail()));
    QCOMPARE(fade(cell)->propertyName(), QByteArray("opacity"));
    QCOMPARE(fade(cell)->targetObject(), static_cast<QObject *>(cell.thumbnail()));
}

void GridItemTest::timeStandsWhereLinesEnd()
{
    GridItemWidget cell;
    cell.setTime(65, GridItemWidget::FullDuration);
    const qreal width = cell.thumbnail()->preferredSize().width();
    QCOMPARE(cell.timeLabel()->geometry().right(), width - 6);
    cell.setLayoutDirection(Qt::RightToLeft);
    QCOMPARE(cell.timeLabel()->geometry().left(), 6.0);
    cell.setLayoutDirection(Qt::LeftToRight);
    QCOMPARE(cell.timeLabel()->geometry().right(), width - 6);
}

void GridItemTest::tapAndLongTapAreTold()
{
    QGraphicsScene scene;
    auto *cell = new GridItemWidget;
    scene.addItem(cell);
    cell->resize(480, 136);
    QSignalSpy clicked(cell, &GridItemWidget::clicked);
    QSignalSpy longTapped(cell, &GridItemWidget::longTapped);
    const auto mouse = [&scene](QEvent::Type type, QPointF at) {
        QGraphicsSceneMouseEvent event(type);
        event.setScenePos(at);
        event.setButton(Qt::LeftButton);
        event.setButtons(type == QEvent::GraphicsSceneMouseRelease ? Qt::NoButton : Qt::LeftButton);
        QCoreApplication::sendEvent(&scene, &event);
    };
    mouse(QEvent::GraphicsSceneMousePress, {300, 60});
    QVERIFY(cell->model()->isDown());
    mouse(QEvent::GraphicsSceneMouseRelease, {302, 61});
    QVERIFY(!cell->model()->isDown());
    QCOMPARE(clicked.count(), 1);
    mouse(QEvent::GraphicsSceneMousePress, {300, 60});
    QVERIFY(longTapped.wait(TestPatience));
    QCOMPARE(longTapped.first().first().toPointF(), QPointF(300, 60));
    mouse(QEvent::GraphicsSceneMouseRelease, {300, 60});
    QCOMPARE(clicked.count(), 1);
}

void GridItemTest::panTakesThePressAway()
{
    QGraphicsScene scene;
    auto *cell = new GridItemWidget;
    scene.addItem(cell);
    cell->resize(480, 136);
    QSignalSpy clicked(cell, &GridItemWidget::clicked);
    QGraphicsSceneMouseEvent press(QEvent::GraphicsSceneMousePress);
    press.setScenePos({300, 60});
    press.setButton(Qt::LeftButton);
    press.setButtons(Qt::LeftButton);
    QCoreApplication::sendEvent(&scene, &press);
    QVERIFY(cell->model()->isDown());
    cell->ungrabMouse();
    QVERIFY(!cell->model()->isDown());
    QCOMPARE(clicked.count(), 0);
}

void GridItemTest::panningHoldsRequests()
{
    m_table.setTitles({u"held"_s});
    m_table.setCell(0, VideoColumn::Url, u"file:///held.mp4"_s);
    GridItemWidget cell;
    m_creator->panningStarted();
    const qsizetype before = FakeThumbnailerClient::last()->requests.size();
    m_creator->updateCell(m_table.index(0, 0), &cell);
    ThumbnailHelper::instance()->queueTimeOut();
    QCOMPARE(FakeThumbnailerClient::last()->requests.size(), before);
    m_creator->panningStopped();
    QTRY_COMPARE(FakeThumbnailerClient::last()->requests.size(), before + 1);
    m_creator->cancelThumbnailing();
    QVERIFY(FakeThumbnailerClient::last()->outstanding.isEmpty());
}

void GridItemTest::signalsAndSlotsStandInTheirOrder()
{
    const auto methods = [](const QMetaObject &object) {
        QByteArrayList signatures;
        for (int i = object.methodOffset(); i < object.methodCount(); ++i)
            signatures.append(object.method(i).methodSignature());
        return signatures.join(' ');
    };
    QCOMPARE(methods(GridItemWidget::staticMetaObject),
             QByteArray("clicked() longTapped(QPointF) animationDone() emitItemClicked() setReleaseMode() "
                        "setUpAnimations() fadeIn() fadeInDone()"));
    QCOMPARE(methods(LocalVideoItemCreator::staticMetaObject),
             QByteArray("cancelThumbnailing() panningStarted() panningStopped() "
                        "updateHighlightedText(QString)"));
    QCOMPARE(methods(VideoHighlighter::staticMetaObject), QByteArray("setHighlightColor()"));
}

QTEST_MAIN(GridItemTest)
#include "tst_griditem.moc"

// SPDX-License-Identifier: GPL-3.0-or-later
#include <platform/toolkit/button.h>
#include <platform/toolkit/label.h>
#include <platform/toolkit/theme.h>
#include <player/navigationbarwidget.h>
#include <player/playeroverlay.h>

#include <QGraphicsLayout>
#include <QGuiApplication>
#include <QScopeGuard>
#include <QTest>

#include <cmath>

using namespace Qt::Literals::StringLiterals;

namespace {

const QString someTitle = u"Snow"_s;
const QString endlessTitle = u"The summer of 1987, from the first ferry in the morning fog to the last "
                             "campfire on the island, and all that lies between these"_s;

// As the player's page fills its bar.
class FilledOverlay : public PlayerOverlay
{
public:
    explicit FilledOverlay(qreal width)
    {
        navigationBar()->setCentralWidget(toolbar());
        resize(width, 114);
    }
};

} // namespace

// What stands where in the bar over a video.
class TestPlayerOverlay : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aTitleStandsInTheMiddle_data();
    void aTitleStandsInTheMiddle();
    void aLongTitleHasAllTheRoomBesideTheButtons_data();
    void aLongTitleHasAllTheRoomBesideTheButtons();
    void aTitleMovesBeforeItIsCutShort();
    void textThatGrowsMovesTheTitle();

private:
    // In the overlay's coordinates, once all is laid out.
    static QRectF place(const PlayerOverlay &overlay, const QGraphicsWidget *widget)
    {
        overlay.navigationBar()->layout()->activate();
        overlay.toolbar()->layout()->activate();
        return widget->mapRectToItem(&overlay, widget->rect());
    }
    static const toolkit::Label *title(const PlayerOverlay &overlay)
    {
        const toolkit::Label *found = nullptr;
        for (const QGraphicsItem *item : overlay.toolbar()->childItems()) {
            if (const auto *label = dynamic_cast<const toolkit::Label *>(item))
                found = label;
        }
        return found;
    }
};

void TestPlayerOverlay::aTitleStandsInTheMiddle_data()
{
    QTest::addColumn<qreal>("width");
    QTest::addColumn<bool>("mirrored");
    QTest::addColumn<bool>("withButton");
    for (const qreal width : {480.0, 854.0, 1280.0, 1900.0}) {
        for (const bool mirrored : {false, true}) {
            for (const bool withButton : {false, true})
                QTest::addRow("%d%s%s", int(width), mirrored ? ", right to left" : "",
                              withButton ? "" : ", nobody tells details")
                    << width << mirrored << withButton;
        }
    }
}

void TestPlayerOverlay::aTitleStandsInTheMiddle()
{
    QFETCH(qreal, width);
    QFETCH(bool, mirrored);
    QFETCH(bool, withButton);
    QGuiApplication::setLayoutDirection(mirrored ? Qt::RightToLeft : Qt::LeftToRight);
    const auto asBefore = qScopeGuard([] { QGuiApplication::setLayoutDirection(Qt::LeftToRight); });
    FilledOverlay overlay(width);
    overlay.infoButton()->setVisible(withButton);
    overlay.setTitle(someTitle);
    const QRectF text = place(overlay, title(overlay));
    QVERIFY(!title(overlay)->isElided());
    QVERIFY2(std::abs(text.center().x() - width / 2) <= 1, qPrintable(QString::number(text.center().x())));
    const QRectF menu = place(overlay, overlay.navigationBar()->menuButton());
    QCOMPARE(mirrored ? menu.left() : menu.right(), mirrored ? 0 : width);
    if (withButton) {
        const QRectF button = place(overlay, overlay.infoButton());
        QCOMPARE(mirrored ? button.left() : button.right(), mirrored ? menu.right() : menu.left());
    }
}

void TestPlayerOverlay::aLongTitleHasAllTheRoomBesideTheButtons_data()
{
    QTest::addColumn<qreal>("width");
    QTest::newRow("upright") << 480.0;
    QTest::newRow("wide") << 854.0;
}

void TestPlayerOverlay::aLongTitleHasAllTheRoomBesideTheButtons()
{
    QFETCH(qreal, width);
    FilledOverlay overlay(width);
    overlay.setTitle(endlessTitle);
    const QRectF text = place(overlay, title(overlay));
    QCOMPARE(text.left(), place(overlay, overlay.navigationBar()->backButton()).right());
    QCOMPARE(text.right(), place(overlay, overlay.infoButton()).left());
}

// The room before it goes first.
void TestPlayerOverlay::aTitleMovesBeforeItIsCutShort()
{
    FilledOverlay overlay(480);
    const qreal start = place(overlay, overlay.navigationBar()->backButton()).right();
    qreal before = 480;
    for (int letters = 1; letters < 300 && !title(overlay)->isElided(); ++letters) {
        overlay.setTitle(QString(letters, u'i'));
        const qreal left = place(overlay, title(overlay)).left();
        QVERIFY(left <= before);
        before = left;
    }
    QVERIFY(title(overlay)->isElided());
    QCOMPARE(before, start);
}

void TestPlayerOverlay::textThatGrowsMovesTheTitle()
{
    FilledOverlay overlay(480);
    overlay.setTitle(u"A winter's day"_s);
    const qreal before = place(overlay, title(overlay)).left();
    toolkit::Theme::instance()->setTextScale(1.6);
    const auto asBefore = qScopeGuard([] { toolkit::Theme::instance()->setTextScale(1); });
    QTRY_VERIFY(place(overlay, title(overlay)).left() < before);
    QVERIFY(!title(overlay)->isElided());
}

QTEST_MAIN(TestPlayerOverlay)
#include "test_playeroverlay.moc"

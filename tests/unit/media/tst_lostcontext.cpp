// SPDX-License-Identifier: GPL-3.0-or-later
#include "glplayer.h"
#include "glxresets.h"

#include <platform/media/avlorenderer.h>

#include <QGraphicsRectItem>
#include <QGraphicsScene>
#include <QGraphicsRectItem>
#include <QGraphicsScene>
#include <QTemporaryDir>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;
using namespace glplayer;

namespace {

int numberOnScreen(const ApplicationWindow *window)
{
    const QImage picture = onScreen(window);
    return picture.isNull() ? -1 : testclips::frameNumber(picture, picture.rect());
}

} // namespace

// OpenGL gives way to the processor while somebody watches.
class LostContextTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase() { keepDriver(); }
    void init();
    void itGoesOnByTheProcessor();
    void pausedItGivesWayToTheSamePicture();
    void aResetGoesUnnoticed_data();
    void aResetGoesUnnoticed();
    void aResetOfTheListGoesUnnoticed();
    void whereNoWindowGetsOpenGlTheProcessorPaints();

private:
    QTemporaryDir m_home;
    QTemporaryDir m_clips;
    QString m_numbered;
    QString m_plain;
};

void LostContextTest::initTestCase()
{
    for (const char *name : {"HOME", "XDG_CACHE_HOME", "XDG_RUNTIME_DIR"})
        qputenv(name, QFile::encodeName(m_home.path()));
    m_numbered = m_clips.filePath(u"numbered.mp4"_s);
    m_plain = m_clips.filePath(u"plain.mkv"_s);
    QVERIFY(testclips::run(testclips::numberedPicture(30, 160, 90) + testclips::h264()
                           + QStringList{m_numbered}));
    const auto colour = [](int x, int y) {
        return pictureclips::Coded{x / 639.0, y / 359.0, 0.9 - 0.8 * x / 639.0};
    };
    QVERIFY(pictureclips::write(m_plain, {640, 360}, {}, colour));
}

void LostContextTest::init()
{
    glxresets::bringBack();
}

// Whoever paints finds in mid-play that it can no longer.
void LostContextTest::itGoesOnByTheProcessor()
{
    Player player("opengl", {480, 270});
    QList<MediaTime> times;
    QVERIFY(player.start(m_numbered));
    QObject::connect(player.video()->backend(), &MediaBackend::frameChanged, player.window(),
                     [&] { times.append(player.frame().time); });
    QTRY_VERIFY_WITH_TIMEOUT(times.size() > 10 && player.frame().planes, Patience);
    QSignalSpy replaced(player.window(), &ApplicationWindow::viewportReplaced);
    QTest::ignoreMessage(QtWarningMsg, "painted by the processor from now on: reset");
    player.gl()->giveUp(u"reset"_s);
    player.gl()->giveUp(u"reset again"_s);
    QTRY_COMPARE(replaced.count(), 1);
    QVERIFY(player.gl() == nullptr);
    const qsizetype before = times.size();
    // At once, of the planes that are there; then of the images that come.
    const auto shownNumber = [&] {
        const QImage picture = player.picture();
        return testclips::frameNumber(picture, picture.rect());
    };
    QVERIFY(shownNumber() > 0);
    QTRY_VERIFY_WITH_TIMEOUT(!player.frame().image.isNull() && times.size() > before + 10, Patience);
    QVERIFY(std::is_sorted(times.begin(), times.end()));
    QSignalSpy paused(player.video()->backend(), &MediaBackend::paused);
    player.video()->pause();
    QVERIFY(paused.wait(Patience));
    QCOMPARE(shownNumber(), testclips::frameNumber(player.frame().image));
}

void LostContextTest::pausedItGivesWayToTheSamePicture()
{
    Player player("opengl", {480, 270});
    QVERIFY(player.showPaused(m_plain));
    const QImage before = player.picture();
    QSignalSpy replaced(player.window(), &ApplicationWindow::viewportReplaced);
    QTest::ignoreMessage(QtWarningMsg, "painted by the processor from now on: reset");
    player.gl()->giveUp(u"reset"_s);
    QTRY_COMPARE(replaced.count(), 1);
    QCOMPARE(largestDifference(before, player.picture()), QString());
}

void LostContextTest::aResetGoesUnnoticed_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<bool>("forGood");
    QTest::newRow("on a handset") << QSize() << false;
    QTest::newRow("in a window") << QSize(480, 270) << false;
    QTest::newRow("on a handset, for good") << QSize() << true;
    QTest::newRow("in a window, for good") << QSize(480, 270) << true;
}

// The graphics processor is reset, or taken away, in mid-play. The window's own context is lost with all
// others.
void LostContextTest::aResetGoesUnnoticed()
{
    QFETCH(QSize, size);
    QFETCH(bool, forGood);
    Player player("opengl", size);
    QVERIFY(player.start(m_numbered));
    QTRY_VERIFY_WITH_TIMEOUT(player.frame().planes && numberOnScreen(player.window()) > 5, Patience);
    QVERIFY(player.gl() != nullptr);
    QCOMPARE(glxresets::mismatches(), 0);
    const bool active = player.window()->isActiveWindow();

    QSignalSpy replaced(player.window(), &ApplicationWindow::viewportReplaced);
    QSignalSpy left(player.window(), &ApplicationWindow::displayExited);
    QTest::ignoreMessage(QtWarningMsg, "painted by the processor from now on: the OpenGL context is lost");
    forGood ? glxresets::takeAway() : glxresets::reset();
    QTRY_COMPARE_WITH_TIMEOUT(replaced.count(), 1, Patience);
    QVERIFY(player.gl() == nullptr);
    const int number = testclips::frameNumber(player.frame().image);
    QTRY_VERIFY_WITH_TIMEOUT(numberOnScreen(player.window()) > number + 30, Patience);
    QCOMPARE(player.video()->backend()->state(), AvloRenderer::Playing);
    QCOMPARE(left.count(), 0);
    QCOMPARE(player.page()->deactivations, 0);
    QCOMPARE(player.window()->isActiveWindow(), active);
    QCOMPARE(player.window()->isVisible(), true);
}

// Nothing moves: the next thing that is painted is painted.
void LostContextTest::aResetOfTheListGoesUnnoticed()
{
    Player player("opengl", {480, 270});
    QVERIFY(player.isPainted());
    QTRY_VERIFY(player.gl()->isValid());
    QTest::ignoreMessage(QtWarningMsg, "painted by the processor from now on: the OpenGL context is lost");
    glxresets::reset();
    player.window()
        ->scene()
        ->addRect({0, 0, 2000, 2000}, Qt::NoPen, QColor(0x30, 0x70, 0xB0))
        ->setZValue(1e6);
    QTRY_COMPARE_WITH_TIMEOUT(onScreen(player.window()).pixelColor(240, 135).name(), u"#3070b0"_s, Patience);
}

// The trial was promising, and the window has a context; what lies in it gets none.
void LostContextTest::whereNoWindowGetsOpenGlTheProcessorPaints()
{
    QTest::ignoreMessage(QtWarningMsg, "painted by the processor from now on: no OpenGL in this window");
    Player player("opengl", {480, 270}, [] { glxresets::allow(2); });
    QVERIFY(player.start(m_numbered));
    QTRY_VERIFY_WITH_TIMEOUT(numberOnScreen(player.window()) > 5, Patience);
    QVERIFY(player.gl() == nullptr);
    QVERIFY(!player.frame().image.isNull());
}

QTEST_MAIN(LostContextTest)
#include "tst_lostcontext.moc"

// SPDX-License-Identifier: GPL-3.0-or-later
#include "glplayer.h"

#include <platform/media/glpicture.h>

#include <QDir>
#include <QPainter>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <optional>

using namespace Qt::Literals::StringLiterals;
using namespace glplayer;
using pictureclips::Coded;
using pictureclips::Kind;

namespace {

// A picture alone; what cannot be drawn is of one colour.
class Canvas : public QOpenGLWidget
{
public:
    Canvas(const QByteArray &fragmentTail, std::shared_ptr<const PlanarPicture> picture)
        : m_drawing(fragmentTail),
          m_picture(std::move(picture))
    {
    }
    std::optional<bool> drawn;
    [[nodiscard]] QString error() const { return m_drawing.error(); }

protected:
    void paintGL() override
    {
        QPainter painter(this);
        drawn = m_drawing.draw(&painter, this, m_picture, rect(), rect());
        if (!*drawn)
            painter.fillRect(rect(), QColor(0x10, 0x20, 0x30));
    }

private:
    GlPicture m_drawing;
    std::shared_ptr<const PlanarPicture> m_picture;
};

} // namespace

// Both ways of painting show the same picture, and one gives way to the other without anybody noticing.
class GlPictureTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase() { keepDriver(); }
    void rasterIsTakenOfItself();
    void softwareRenderersAreKnown_data();
    void softwareRenderersAreKnown();
    void bothShowTheSame_data();
    void bothShowTheSame();
    void turnedOrFadedBothShowTheSame_data();
    void turnedOrFadedBothShowTheSame();
    void aPictureOfTheWindowChangesNothing();
    void aShaderThatFailsIsTold();
    void theStillIsTheFrame_data();
    void theStillIsTheFrame();

private:
    [[nodiscard]] QString file(const QString &name) const { return m_clips.filePath(name); }

    QTemporaryDir m_home;
    QTemporaryDir m_clips;
};

void GlPictureTest::initTestCase()
{
    for (const char *name : {"HOME", "XDG_CACHE_HOME", "XDG_RUNTIME_DIR"})
        qputenv(name, QFile::encodeName(m_home.path()));
    // Slopes of all colours, and corners that tell which is which.
    const auto colour = [](int x, int y) { return Coded{x / 639.0, y / 359.0, 0.9 - 0.8 * x / 639.0}; };
    const Kind hdr{.red = 0.2627,
                   .blue = 0.0593,
                   .depth = 10,
                   .matrix = u"bt2020nc"_s,
                   .transfer = u"smpte2084"_s,
                   .primaries = u"bt2020"_s};
    const auto light = [&colour](int x, int y) {
        Coded rgb = colour(x, y);
        for (double &channel : rgb)
            channel = 0.3 + 0.4 * channel;
        return rgb;
    };
    const QStringList h264{u"-c:v"_s, u"libx264"_s, u"-qp"_s, u"1"_s};
    QVERIFY(pictureclips::write(file(u"plain.mkv"_s), {640, 360}, {}, colour));
    QVERIFY(pictureclips::write(file(u"plain.mp4"_s), {640, 360}, {}, colour, h264));
    Kind full;
    full.full = true;
    QVERIFY(pictureclips::write(file(u"full.mkv"_s), {640, 360}, full, colour));
    QVERIFY(pictureclips::write(file(u"odd.mkv"_s), {639, 359}, {}, colour));
    QVERIFY(pictureclips::write(file(u"ten.mkv"_s), {640, 360}, {.depth = 10}, colour));
    QVERIFY(pictureclips::write(file(u"hdr.mkv"_s), {640, 360}, hdr, light));
    QVERIFY(testclips::run({u"-i"_s, file(u"plain.mp4"_s), u"-c"_s, u"copy"_s, u"-metadata:s:v:0"_s,
                            u"rotate=90"_s, file(u"turned.mp4"_s)}));
    QVERIFY(testclips::run(
        {u"-i"_s, file(u"plain.mp4"_s), u"-c"_s, u"copy"_s, u"-aspect"_s, u"4:3"_s, file(u"aspect.mkv"_s)}));
}

// Here is no graphics processor, or a renderer that plays one: the program says so in one line.
void GlPictureTest::rasterIsTakenOfItself()
{
    qunsetenv("KESTREL_VIEWPORT");
    const toolkit::ViewportChoice choice = toolkit::chooseViewport();
    QVERIFY(!choice.reason.isEmpty());
    if (!QDir(u"/dev/dri"_s).exists())
        QVERIFY(!choice.openGl);
    qputenv("KESTREL_VIEWPORT", "raster");
    QVERIFY(!toolkit::chooseViewport().openGl);
    qputenv("KESTREL_VIEWPORT", "opengl");
    QVERIFY2(toolkit::chooseViewport().openGl, qPrintable(toolkit::chooseViewport().reason));
}

void GlPictureTest::softwareRenderersAreKnown_data()
{
    QTest::addColumn<QString>("renderer");
    QTest::addColumn<bool>("software");
    QTest::newRow("llvmpipe") << u"llvmpipe (LLVM 15.0.6, 256 bits)"_s << true;
    QTest::newRow("softpipe") << u"softpipe"_s << true;
    QTest::newRow("none") << QString() << true;
    QTest::newRow("Adreno") << u"FD630"_s << false;
    QTest::newRow("Mali") << u"Mali400"_s << false;
    QTest::newRow("Intel") << u"Mesa Intel(R) UHD Graphics 620 (KBL GT2)"_s << false;
}

void GlPictureTest::softwareRenderersAreKnown()
{
    QFETCH(QString, renderer);
    QFETCH(bool, software);
    QCOMPARE(toolkit::isSoftwareRenderer(renderer), software);
}

void GlPictureTest::bothShowTheSame_data()
{
    QTest::addColumn<QString>("clip");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<bool>("fill");
    for (const char *clip :
         {"plain.mkv", "full.mkv", "odd.mkv", "ten.mkv", "hdr.mkv", "turned.mp4", "aspect.mkv"})
        QTest::addRow("%s", clip) << QString::fromLatin1(clip) << QSize(480, 854) << false;
    QTest::newRow("filled") << u"plain.mkv"_s << QSize(480, 854) << true;
    QTest::newRow("filled with hdr") << u"hdr.mkv"_s << QSize(640, 480) << true;
    QTest::newRow("turned and filled") << u"turned.mp4"_s << QSize(854, 480) << true;
    QTest::newRow("small") << u"plain.mkv"_s << QSize(300, 300) << false;
    QTest::newRow("much smaller") << u"plain.mkv"_s << QSize(240, 240) << false;
}

void GlPictureTest::bothShowTheSame()
{
    QFETCH(QString, clip);
    QFETCH(QSize, size);
    QFETCH(bool, fill);
    QList<QImage> pictures;
    for (const char *viewport : {"raster", "opengl"}) {
        Player player(viewport, size);
        QCOMPARE(player.gl() != nullptr, qstrcmp(viewport, "opengl") == 0);
        player.video()->setFillMode(fill);
        QVERIFY(player.showPaused(file(clip)));
        QTRY_VERIFY((player.frame().planes != nullptr) == (player.gl() != nullptr));
        pictures.append(player.picture());
        if (player.gl() != nullptr)
            QVERIFY(player.gl()->isAlive());
    }
    QCOMPARE(largestDifference(pictures.at(0), pictures.at(1)), QString());
    // It is a picture, not two times nothing.
    QVERIFY(pictureclips::largestDifference(pictures.at(1).pixel(size.width() / 4, size.height() / 2),
                                            pictures.at(1).pixel(size.width() * 3 / 4, size.height() / 2))
            > 20);
}

void GlPictureTest::turnedOrFadedBothShowTheSame_data()
{
    QTest::addColumn<QString>("clip");
    QTest::addColumn<int>("angle");
    QTest::addColumn<qreal>("opacity");
    for (const int angle : {0, 90, 180, 270})
        QTest::addRow("window at %d", angle) << u"plain.mkv"_s << angle << 1.0;
    QTest::newRow("turned video in a turned window") << u"turned.mp4"_s << 90 << 1.0;
    QTest::newRow("half there") << u"plain.mkv"_s << 270 << 0.5;
}

// A handset that is held on its side, and a page that is on its way.
void GlPictureTest::turnedOrFadedBothShowTheSame()
{
    QFETCH(QString, clip);
    QFETCH(int, angle);
    QFETCH(qreal, opacity);
    QList<QImage> pictures;
    for (const char *viewport : {"raster", "opengl"}) {
        Player player(viewport, {});
        player.window()->setOrientationAngle(angle, ApplicationWindow::Transition::Immediate);
        player.window()->setBackgroundBrush(QColor(0x60, 0x80, 0xA0));
        player.video()->setOpacity(opacity);
        QVERIFY(player.showPaused(file(clip)));
        QTRY_VERIFY((player.frame().planes != nullptr) == (player.gl() != nullptr));
        pictures.append(player.picture());
    }
    QCOMPARE(largestDifference(pictures.at(0), pictures.at(1)), QString());
}

// An assistive program or a preview paints the page into an image of its own: the video goes on by OpenGL.
void GlPictureTest::aPictureOfTheWindowChangesNothing()
{
    Player player("opengl", {480, 270});
    QVERIFY(player.showPaused(file(u"plain.mkv"_s)));
    const VideoFrame before = player.frame();
    QVERIFY(before.planes);
    const QImage seen = player.picture();
    QImage taken(seen.size(), QImage::Format_RGB32);
    taken.fill(Qt::red);
    QPainter painter(&taken);
    player.window()->render(&painter);
    painter.end();
    QCOMPARE(largestDifference(seen, taken), QString());
    QVERIFY(player.gl() != nullptr);
    QVERIFY(player.gl()->isAlive());
    player.video()->resume();
    QTRY_VERIFY_WITH_TIMEOUT(player.frame().time > before.time, Patience);
    QVERIFY(player.frame().planes);
    QCOMPARE(player.page()->deactivations, 0);
}

// A driver that does not understand the shader: whoever paints is told, and what it paints instead is seen.
void GlPictureTest::aShaderThatFailsIsTold()
{
    static constexpr std::array<std::byte, 4> Samples{};
    const auto picture = std::make_shared<PlanarPicture>();
    for (PlanarPicture::Component &component : picture->components)
        component = {Samples.data(), 2, 1};
    picture->size = picture->squareSize = {2, 2};
    for (const bool broken : {false, true}) {
        Canvas canvas(broken ? "this is no shader" : QByteArray(), picture);
        canvas.resize(40, 40);
        canvas.show();
        QVERIFY(QTest::qWaitForWindowExposed(&canvas));
        QTRY_VERIFY(canvas.drawn.has_value());
        QCOMPARE(*canvas.drawn, !broken);
        QCOMPARE(canvas.error().startsWith(u"shader: "_s), broken);
        const QColor middle = canvas.grabFramebuffer().pixelColor(20, 20);
        QCOMPARE(middle.name(), broken ? u"#102030"_s : u"#004d00"_s);
    }
}

void GlPictureTest::theStillIsTheFrame_data()
{
    QTest::addColumn<QByteArray>("viewport");
    QTest::addColumn<QString>("clip");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<bool>("fill");
    for (const char *viewport : {"raster", "opengl"}) {
        for (const char *clip : {"plain.mkv", "hdr.mkv", "turned.mp4"}) {
            for (const QSize &size : {QSize(480, 854), QSize(855, 481)}) {
                const bool fill = size.width() > size.height();
                QTest::addRow("%s %s %s", viewport, clip, fill ? "filled" : "fitted")
                    << QByteArray(viewport) << QString::fromLatin1(clip) << size << fill;
            }
        }
    }
}

// The still over a video that goes on gives way to the frame it was made of: nothing jumps.
void GlPictureTest::theStillIsTheFrame()
{
    QFETCH(QByteArray, viewport);
    QFETCH(QString, clip);
    QFETCH(QSize, size);
    QFETCH(bool, fill);
    Player player(viewport.constData(), size);
    player.video()->setFillMode(fill);
    QTRY_VERIFY(player.video()->backend() != nullptr);
    player.video()->backend()->setStillOnPause(true);
    QSignalSpy still(player.video()->backend(), &MediaBackend::stillWritten);
    QVERIFY(player.showPaused(file(clip)));
    QTRY_COMPARE(still.count(), 1);
    const QImage frame = player.picture();
    player.video()->setFrame(still.first().at(1).toString());
    const QImage over = player.picture();
    QCOMPARE(over.size(), frame.size());
    double sum = 0;
    for (int y = 0; y < frame.height(); ++y) {
        for (int x = 0; x < frame.width(); ++x)
            sum += pictureclips::largestDifference(frame.pixel(x, y), over.pixel(x, y));
    }
    const double mean = sum / (frame.width() * frame.height());
    QVERIFY2(mean < 3, qPrintable(QString::number(mean))); // the still is a JPEG
}

QTEST_MAIN(GlPictureTest)
#include "tst_glpicture.moc"

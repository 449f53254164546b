// SPDX-License-Identifier: GPL-3.0-or-later
#include <platform/media/loopsection.h>
#include <platform/media/nullmediabackend.h>
#include <platform/media/optiontexts.h>
#include <platform/media/playbackextras.h>
#include <platform/media/playbackoptionrows.h>
#include <platform/media/playbackoptions.h>
#include <platform/media/playercontrols.h>
#include <platform/media/rendererregistry.h>
#include <platform/media/subtitles/subtitleview.h>
#include <platform/media/videowidget.h>
#include <platform/toolkit/application.h>
#include <platform/toolkit/applicationpage.h>
#include <platform/toolkit/applicationwindow.h>
#include <platform/toolkit/locale.h>
#include <platform/toolkit/theme.h>

#include <QFile>
#include <QGraphicsScene>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTranslator>

using namespace std::chrono_literals;
using namespace Qt::Literals::StringLiterals;
using Topic = PlaybackOptions::Topic;

namespace {

const QString First = u"file:///first.mkv"_s;
const QString Second = u"file:///second.mkv"_s;

MediaTrack track(const QString &id, const QString &language, const QString &title = {},
                 const QString &codec = {})
{
    return {id, language, title, codec, false};
}

NullMediaBackend::Media film()
{
    NullMediaBackend::Media media;
    media.duration = 100s;
    media.sounds = {track(u"a1"_s, u"en"_s, {}, u"MPEG-4 AAC"_s), track(u"a2"_s, u"de"_s, u"Kommentar"_s)};
    media.subtitles = {track(u"s1"_s, u"en"_s), track(u"s2"_s, u"ar"_s), track(u"s3"_s, {})};
    const auto cue = [](const QString &words) { return SubtitleCue{0s, 90s, {words, {}, false}}; };
    media.cues = {{u"s1"_s, {cue(u"A line to be read,\nand another one"_s)}},
                  {u"s2"_s, {cue(u"\u0645\u0631\u062d\u0628\u0627"_s)}},
                  {u"s3"_s, {cue(u"\u65e5\u672c\u8a9e"_s)}}};
    media.chapters = {{0s, 40s, u"Opening"_s}, {40s, 100s, {}}};
    return media;
}

} // namespace

class PlaybackOptionsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void opensFromItsButtonAndTheVideoGoesOn();
    void eachWayLeadsToItsList_data();
    void eachWayLeadsToItsList();
    void choosesSubtitlesThatAreSeenAtOnce();
    void sizeAndDelayOfSubtitles();
    void choosesSound();
    void choosesSpeed();
    void aLoopFromHereToThere();
    void goesToAChapter();
    void onlyWhatThereIs();
    void escapeGoesBackAndAway();
    void aTapBesideClosesIt();
    void byKeysAlone();
    void rowsAreLargeEnoughAndReadAloud();
    void fewRowsStandAtTheHead();
    void fitsEveryWindow_data();
    void fitsEveryWindow();
    void subtitlesMakeRoom();
    void nothingStandsOverTheSubtitles();
    void subtitlesAreSharpAndLegible_data();
    void subtitlesAreSharpAndLegible();

private:
    void open(Topic topic = Topic::All);
    [[nodiscard]] QList<OptionRow *> rows() const;
    [[nodiscard]] QStringList titles() const;
    [[nodiscard]] OptionRow *row(const QString &title) const;
    [[nodiscard]] QString chosen() const;
    void tap(const QString &title);
    [[nodiscard]] PlaybackOptions *options() const { return m_widget->extras()->options(); }
    QImage picture() const; // what was to be painted is painted then

    QTemporaryDir m_home;
    QTranslator m_catalog;
    std::unique_ptr<toolkit::ApplicationWindow> m_window;
    toolkit::ApplicationPage *m_page = nullptr;
    VideoWidget *m_widget = nullptr;
    NullMediaBackend *m_backend = nullptr;
};

void PlaybackOptionsTest::initTestCase()
{
    qputenv("HOME", QFile::encodeName(m_home.path()));
    qputenv("XDG_CACHE_HOME", QFile::encodeName(m_home.path()));
    qputenv("XDG_DATA_HOME", QFile::encodeName(m_home.path()));
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(m_home.path()));
    QLocale::setDefault(QLocale(u"en_GB"_s));
    QVERIFY(m_catalog.load(u":/translations/video_en.qm"_s));
    QVERIFY(QCoreApplication::installTranslator(&m_catalog));
    toolkit::Theme::instance()->setReducedMotion(true);
    RendererRegistry::setBackendFactory([this] {
        auto backend = std::make_unique<NullMediaBackend>();
        m_backend = backend.get();
        return backend;
    });
}

void PlaybackOptionsTest::init()
{
    m_window = std::make_unique<toolkit::ApplicationWindow>();
    m_window->setProfile(toolkit::ApplicationWindow::Profile::Desktop);
    m_window->resize(480, 854);
    m_window->show();
    QTRY_VERIFY(m_window->isOnDisplay());
    m_page = new toolkit::ApplicationPage;
    m_page->setComponentsDisplay(toolkit::ApplicationPage::AllComponents,
                                 toolkit::ApplicationPage::ComponentDisplay::Hide);
    m_page->setPannable(false);
    m_widget = new VideoWidget;
    m_page->setCentralWidget(m_widget);
    m_page->appear(m_window.get(), toolkit::Appearance::Immediate);
    QTRY_VERIFY(m_backend != nullptr);
    m_backend->setMedia(First, film());
    m_widget->setOptionsOffered(true);
    m_widget->play(First, 0);
    QTRY_COMPARE(m_backend->state(), AvloRenderer::Playing);
    QTRY_VERIFY(!m_widget->size().isEmpty());
}

void PlaybackOptionsTest::cleanup()
{
    QGuiApplication::setLayoutDirection(Qt::LeftToRight);
    toolkit::Theme::instance()->setTextScale(1);
    delete m_page;
    m_window.reset();
    m_backend = nullptr;
    QFile::remove(m_home.filePath(u"tst_playbackoptions/playback-choices.json"_s));
}

void PlaybackOptionsTest::open(Topic topic)
{
    Q_EMIT m_widget->optionsRequested();
    QVERIFY(options() != nullptr);
    QTRY_VERIFY(options()->isOpen());
    options()->showTopic(topic);
}

QList<OptionRow *> PlaybackOptionsTest::rows() const
{
    QList<OptionRow *> result;
    const auto *column = static_cast<OptionColumn *>(options()->centralWidget());
    for (toolkit::Widget *widget : column->rows()) {
        if (auto *option = qobject_cast<OptionRow *>(widget))
            result.append(option);
    }
    return result;
}

QStringList PlaybackOptionsTest::titles() const
{
    QStringList result;
    const QList<OptionRow *> all = rows();
    for (const OptionRow *option : all)
        result.append(option->text());
    return result;
}

OptionRow *PlaybackOptionsTest::row(const QString &title) const
{
    const QList<OptionRow *> all = rows();
    for (OptionRow *option : all) {
        if (option->text() == title)
            return option;
    }
    return nullptr;
}

QString PlaybackOptionsTest::chosen() const
{
    QStringList result;
    const QList<OptionRow *> all = rows();
    for (const OptionRow *option : all) {
        if (option->isChosen())
            result.append(option->text());
    }
    return result.join(u'|');
}

// By a finger, when it is in sight.
void PlaybackOptionsTest::tap(const QString &title)
{
    OptionRow *option = row(title);
    QVERIFY2(option != nullptr, qPrintable(title));
    QTRY_VERIFY(option->size().height() >= 56);
    const QPointF middle = option->mapToScene(option->rect().center());
    if (options()->takenRect().contains(middle))
        QTest::mouseClick(m_window->viewport(), Qt::LeftButton, {}, m_window->mapFromScene(middle));
    else
        option->click();
}

QImage PlaybackOptionsTest::picture() const
{
    return m_window->grab().toImage();
}

void PlaybackOptionsTest::opensFromItsButtonAndTheVideoGoesOn()
{
    m_widget->setControlsVisible(true);
    const toolkit::Button *button = m_widget->controls()->optionsButton();
    QTRY_VERIFY(button->isVisible());
    QTest::mouseClick(m_window->viewport(), Qt::LeftButton, {},
                      m_window->mapFromScene(button->mapToScene(button->rect().center())));
    QTRY_VERIFY(options() != nullptr && options()->isOpen());
    QCOMPARE(titles(),
             (QStringList{u"Subtitles"_s, u"Sound"_s, u"Speed"_s, u"Repeat a section"_s, u"Chapters"_s}));
    m_backend->advance(5s);
    QCOMPARE(m_backend->state(), AvloRenderer::Playing);
    QCOMPARE(m_backend->position(), MediaTime(5s));
    // Nothing is dimmed: far from the panel the picture is what it was.
    const QImage over = picture();
    options()->dismiss();
    QTRY_VERIFY(!options()->isDisplayed());
    m_widget->setControlsVisible(false);
    QTRY_VERIFY(!m_widget->controls()->isVisible());
    QCOMPARE(over.pixelColor(over.width() / 2, over.height() * 2 / 5),
             picture().pixelColor(over.width() / 2, over.height() * 2 / 5));
}

void PlaybackOptionsTest::eachWayLeadsToItsList_data()
{
    QTest::addColumn<QString>("way");
    QTest::addColumn<QString>("value");
    QTest::addColumn<QStringList>("list");
    QTest::addColumn<QString>("holds");
    QTest::newRow("subtitles") << u"Subtitles"_s << u"Off"_s
                               << QStringList{u"Off"_s, u"English"_s, u"Arabic"_s, u"Track 3"_s} << u"Off"_s;
    QTest::newRow("sound") << u"Sound"_s << u"English"_s << QStringList{u"English"_s, u"German"_s}
                           << u"English"_s;
    QTest::newRow("speed") << u"Speed"_s << u"Normal"_s
                           << QStringList{u"0.5\u00d7"_s, u"0.75\u00d7"_s, u"Normal"_s,  u"1.25\u00d7"_s,
                                          u"1.5\u00d7"_s, u"1.75\u00d7"_s, u"2\u00d7"_s, u"3\u00d7"_s}
                           << u"Normal"_s;
    QTest::newRow("loop") << u"Repeat a section"_s << u"Off"_s
                          << QStringList{u"Off"_s, u"Start here"_s, u"End here"_s} << u"Off"_s;
    QTest::newRow("chapters") << u"Chapters"_s << u"Opening"_s << QStringList{u"Opening"_s, u"Chapter 2"_s}
                              << u"Opening"_s;
}

void PlaybackOptionsTest::eachWayLeadsToItsList()
{
    QFETCH(QString, way);
    QFETCH(QString, value);
    QFETCH(QStringList, list);
    QFETCH(QString, holds);
    open();
    QCOMPARE(row(way)->value(), value);
    row(way)->click();
    QCOMPARE(options()->title(), way);
    QCOMPARE(titles(), list);
    QCOMPARE(chosen(), holds);
}

void PlaybackOptionsTest::choosesSubtitlesThatAreSeenAtOnce()
{
    open(Topic::Subtitles);
    tap(u"English"_s);
    QTRY_COMPARE(chosen(), u"English"_s);
    QCOMPARE(m_backend->subtitleTrack(), u"s1"_s);
    const SubtitleView *view = m_widget->extras()->subtitles();
    QTRY_COMPARE(view->shownText(), u"A line to be read,\nand another one"_s);
    picture(); // it is painted
    const QRectF words = view->mapRectToScene(view->textRect());
    QVERIFY(!words.isEmpty());
    QVERIFY(words.bottom() <= options()->takenRect().top());
    QVERIFY(options()->isOpen()); // and another one may be tried
    tap(u"Off"_s);
    QTRY_COMPARE(chosen(), u"Off"_s);
    QTRY_COMPARE(view->shownText(), QString());
}

void PlaybackOptionsTest::sizeAndDelayOfSubtitles()
{
    open(Topic::Subtitles);
    QList<OptionSteps *> steps;
    const auto *column = static_cast<OptionColumn *>(options()->centralWidget());
    for (toolkit::Widget *widget : column->rows()) {
        if (auto *found = qobject_cast<OptionSteps *>(widget))
            steps.append(found);
    }
    QCOMPARE(steps.size(), 2);
    QCOMPARE(steps.at(0)->text(), u"Size: 100%"_s);
    QCOMPARE(steps.at(1)->text(), u"Delay: 0 s"_s);
    steps.at(0)->steps().at(1)->click();
    QCOMPARE(steps.at(0)->text(), u"Size: 125%"_s);
    QCOMPARE(m_backend->subtitleScale(), 1.25);
    for (int i = 0; i < 20; ++i)
        steps.at(0)->steps().at(1)->click();
    QCOMPARE(m_backend->subtitleScale(), 3.0);
    for (int i = 0; i < 20; ++i)
        steps.at(0)->steps().at(0)->click();
    QCOMPARE(m_backend->subtitleScale(), 0.5);
    steps.at(1)->steps().at(3)->click();
    steps.at(1)->steps().at(2)->click();
    QCOMPARE(steps.at(1)->text(), u"Delay: +0.6 s"_s);
    QCOMPARE(m_backend->subtitleDelay(), MediaTime(600ms));
    steps.at(1)->steps().at(0)->click();
    steps.at(1)->steps().at(0)->click();
    QCOMPARE(steps.at(1)->text(), u"Delay: \u22120.4 s"_s);
    QCOMPARE(steps.at(1)->steps().at(0)->accessibleName(), u"Delay \u22120.5 s"_s);
}

void PlaybackOptionsTest::choosesSound()
{
    open(Topic::Sound);
    QCOMPARE(row(u"German"_s)->value(), u"Kommentar"_s);
    tap(u"German"_s);
    QTRY_COMPARE(chosen(), u"German"_s);
    QCOMPARE(m_backend->audioTrack(), u"a2"_s);
}

void PlaybackOptionsTest::choosesSpeed()
{
    open(Topic::Speed);
    tap(u"1.5\u00d7"_s);
    QTRY_COMPARE(chosen(), u"1.5\u00d7"_s);
    QCOMPARE(m_backend->rate(), 1.5);
    m_backend->setRate(2); // by a long press, say
    QTRY_COMPARE(chosen(), u"2\u00d7"_s);
}

void PlaybackOptionsTest::aLoopFromHereToThere()
{
    open(Topic::Loop);
    m_backend->advance(10s);
    tap(u"Start here"_s);
    QTRY_COMPARE(row(u"Start here"_s)->value(), u"00:10"_s);
    QVERIFY(!m_backend->loop().has_value());
    m_backend->advance(5s);
    tap(u"End here"_s);
    QTRY_COMPARE(row(u"End here"_s)->value(), u"00:15"_s);
    QCOMPARE(m_backend->loop().value(), (MediaSection{10s, 15s}));
    m_backend->advance(7s);
    QVERIFY2(m_backend->position() >= 10s && m_backend->position() < 15s,
             qPrintable(QString::number(m_backend->position() / 1ms)));
    options()->showTopic(Topic::All);
    QCOMPARE(row(u"Repeat a section"_s)->value(), u"00:10 \u2013 00:15"_s);
    options()->showTopic(Topic::Loop);
    tap(u"Off"_s);
    QTRY_VERIFY(!m_backend->loop().has_value());
    QTRY_COMPARE(chosen(), u"Off"_s);
    m_backend->advance(9s);
    QVERIFY(m_backend->position() > 16s);
}

void PlaybackOptionsTest::goesToAChapter()
{
    open(Topic::Chapters);
    QCOMPARE(row(u"Chapter 2"_s)->value(), u"00:40"_s);
    tap(u"Chapter 2"_s);
    QTRY_COMPARE(m_backend->position(), MediaTime(40s));
    QTRY_COMPARE(chosen(), u"Chapter 2"_s);
}

void PlaybackOptionsTest::onlyWhatThereIs()
{
    NullMediaBackend::Media stream;
    stream.seekable = false;
    m_backend->setMedia(Second, stream);
    open();
    m_widget->play(Second, 0); // the next of a list, while it is open
    QTRY_COMPARE(titles(), (QStringList{u"Subtitles"_s, u"Speed"_s}));
    options()->showTopic(Topic::Subtitles);
    QCOMPARE(titles(), QStringList{u"Off"_s});
}

void PlaybackOptionsTest::escapeGoesBackAndAway()
{
    open(Topic::Speed);
    QTest::keyClick(m_window.get(), Qt::Key_Escape);
    QCOMPARE(options()->topic(), Topic::All);
    QVERIFY(options()->isOpen());
    QTest::keyClick(m_window.get(), Qt::Key_Escape);
    QTRY_VERIFY(!options()->isDisplayed());
    QVERIFY(m_page->isShown());
}

void PlaybackOptionsTest::aTapBesideClosesIt()
{
    open(Topic::Speed);
    QSignalSpy asked(m_widget, &VideoWidget::controlsVisibilityChangeRequested);
    QTest::mouseClick(m_window->viewport(), Qt::LeftButton, {}, QPoint(m_window->width() / 2, 40));
    QTRY_VERIFY(!options()->isDisplayed());
    QCOMPARE(asked.size(), 0); // the picture did not get it
}

void PlaybackOptionsTest::byKeysAlone()
{
    open();
    const auto key = [this](Qt::Key code) { QTest::keyClick(m_window.get(), code); };
    key(Qt::Key_Tab);
    key(Qt::Key_Down);
    key(Qt::Key_Down);
    QVERIFY(row(u"Speed"_s)->hasFocus());
    key(Qt::Key_Return);
    QCOMPARE(options()->topic(), Topic::Speed);
    QVERIFY(row(u"Normal"_s)->hasFocus());
    key(Qt::Key_Down);
    key(Qt::Key_Space);
    QTRY_COMPARE(m_backend->rate(), 1.25);
    QTRY_COMPARE(chosen(), u"1.25\u00d7"_s);
    QVERIFY(row(u"1.25\u00d7"_s)->hasFocus());
    key(Qt::Key_Escape);
    key(Qt::Key_Escape);
    QTRY_VERIFY(!options()->isDisplayed());
}

void PlaybackOptionsTest::rowsAreLargeEnoughAndReadAloud()
{
    open();
    for (const Topic topic :
         {Topic::All, Topic::Subtitles, Topic::Sound, Topic::Speed, Topic::Loop, Topic::Chapters}) {
        options()->showTopic(topic);
        const QList<OptionRow *> all = rows();
        for (const OptionRow *option : all)
            QTRY_VERIFY(option->size().height() >= 56 && option->size().width() >= 200);
        // The way back, too.
        const QList<QGraphicsItem *> items = m_window->scene()->items();
        for (const QGraphicsItem *item : items) {
            const auto *button = dynamic_cast<const toolkit::Button *>(item);
            QVERIFY(button == nullptr || !button->isVisible() || !button->accessibleName().isEmpty());
        }
    }
    options()->showTopic(Topic::All);
    QCOMPARE(row(u"Speed"_s)->accessibleName(), u"Speed, Normal"_s);
    QCOMPARE(row(u"Speed"_s)->accessibleRole(), QAccessible::Button);
    options()->showTopic(Topic::Speed);
    QCOMPARE(row(u"Normal"_s)->accessibleName(), u"Normal, selected"_s);
    QCOMPARE(row(u"Normal"_s)->accessibleRole(), QAccessible::RadioButton);
}

// Beside the picture the panel is as high as the window, whatever is in it.
void PlaybackOptionsTest::fewRowsStandAtTheHead()
{
    m_window->resize(854, 480);
    QTRY_COMPARE(m_widget->size(), QSizeF(854, 480));
    open(Topic::Sound);
    const QList<OptionRow *> all = rows();
    QCOMPARE(all.size(), 2);
    QTRY_COMPARE(all.first()->size().height(), all.first()->preferredHeight());
    QCOMPARE(all.last()->geometry().top(), all.first()->geometry().bottom());
}

void PlaybackOptionsTest::fitsEveryWindow_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<bool>("mirrored");
    QTest::addColumn<qreal>("textScale");
    for (const QSize size : {QSize(480, 854), QSize(854, 480), QSize(1280, 800)}) {
        for (const bool mirrored : {false, true}) {
            for (const qreal scale : {1.0, 2.0})
                QTest::addRow("%dx%d%s %.0f%%", size.width(), size.height(), mirrored ? " mirrored" : "",
                              scale * 100)
                    << size << mirrored << scale;
        }
    }
}

void PlaybackOptionsTest::fitsEveryWindow()
{
    QFETCH(QSize, size);
    QFETCH(bool, mirrored);
    QFETCH(qreal, textScale);
    QGuiApplication::setLayoutDirection(mirrored ? Qt::RightToLeft : Qt::LeftToRight);
    toolkit::Theme::instance()->setTextScale(textScale);
    m_window->resize(size);
    QTRY_COMPARE(m_window->size(), size);
    m_backend->selectSubtitleTrack(u"s1"_s);
    open(Topic::Subtitles);
    const QRectF scene(QPointF(), options()->size());
    const QRectF panel = options()->takenRect();
    QVERIFY(scene.contains(panel));
    const bool wide = size.width() > size.height();
    QCOMPARE(panel.height() >= scene.height(), wide);
    // Half of the picture stays free.
    QVERIFY(wide ? panel.width() <= scene.width() / 2 : panel.height() <= scene.height() / 2);
    if (wide)
        QCOMPARE(panel.center().x() > scene.center().x(), !mirrored);
    const QList<OptionRow *> all = rows();
    for (const OptionRow *option : all) {
        const QRectF place = option->mapRectToScene(option->rect());
        QVERIFY(place.left() >= panel.left() && place.right() <= panel.right());
        QTRY_VERIFY(option->size().height() >= QFontMetricsF(option->style().font).height() + 8);
    }
    picture();
    const SubtitleView *view = m_widget->extras()->subtitles();
    QTRY_VERIFY(!view->textRect().isEmpty());
    const QRectF words = view->mapRectToScene(view->textRect());
    QVERIFY(scene.contains(words));
    QVERIFY(!words.intersects(panel));
    const QByteArray folder = qgetenv("KESTREL_TEST_PICTURES");
    if (!folder.isEmpty())
        picture().save(u"%1/options-%2.png"_s.arg(
            QFile::decodeName(folder), QString::fromLatin1(QTest::currentDataTag()).replace(u' ', u'-')));
}

void PlaybackOptionsTest::subtitlesMakeRoom()
{
    m_backend->selectSubtitleTrack(u"s1"_s);
    m_window->resize(854, 480);
    const SubtitleView *view = m_widget->extras()->subtitles();
    QTRY_VERIFY(!picture().isNull() && !view->textRect().isEmpty());
    const QRectF low = view->textRect();
    m_widget->setControlsVisible(true);
    picture();
    QTRY_VERIFY(view->textRect().bottom() < low.bottom() - 40);
    QVERIFY(view->textRect().bottom() <= m_widget->size().height() - 100);
    m_widget->setControlsVisible(false);
    picture();
    QTRY_COMPARE(view->textRect().bottom(), low.bottom());
}

// In an upright window they come to stand in the middle of the picture while the options are there.
void PlaybackOptionsTest::nothingStandsOverTheSubtitles()
{
    m_backend->selectSubtitleTrack(u"s1"_s);
    m_widget->setControlsVisible(true);
    const toolkit::Button *mark = m_widget->controls()->playButton();
    QTRY_VERIFY(mark->isVisible());
    open();
    QVERIFY(!mark->isVisible());
    const SubtitleView *view = m_widget->extras()->subtitles();
    QTRY_VERIFY(!picture().isNull() && !view->textRect().isEmpty());
    const QRectF words = view->mapRectToScene(view->textRect());
    const QList<QGraphicsItem *> items = m_window->scene()->items(words);
    for (const QGraphicsItem *item : items)
        QVERIFY(dynamic_cast<const toolkit::Button *>(item) == nullptr);
    options()->reject();
    QTRY_VERIFY(mark->isVisible());
}

void PlaybackOptionsTest::subtitlesAreSharpAndLegible_data()
{
    QTest::addColumn<QString>("id");
    QTest::addColumn<qreal>("scale");
    QTest::newRow("Latin") << u"s1"_s << 1.0;
    QTest::newRow("Arabic") << u"s2"_s << 1.0;
    QTest::newRow("Japanese") << u"s3"_s << 1.0;
    QTest::newRow("small") << u"s1"_s << 0.5;
    QTest::newRow("large") << u"s1"_s << 3.0;
}

void PlaybackOptionsTest::subtitlesAreSharpAndLegible()
{
    QFETCH(QString, id);
    QFETCH(qreal, scale);
    m_window->resize(854, 480);
    m_backend->setSubtitleScale(scale);
    m_backend->selectSubtitleTrack(id);
    const SubtitleView *view = m_widget->extras()->subtitles();
    QTRY_VERIFY(!picture().isNull() && !view->textRect().isEmpty());
    const QImage image = picture();
    const QRect place = m_window->mapFromScene(view->mapRectToScene(view->textRect())).boundingRect();
    QVERIFY(image.rect().contains(place));
    int white = 0;
    int black = 0;
    for (int y = place.top(); y <= place.bottom(); ++y) {
        for (int x = place.left(); x <= place.right(); ++x) {
            white += image.pixel(x, y) == qRgb(255, 255, 255) ? 1 : 0;
            black += image.pixel(x, y) == qRgb(0, 0, 0) ? 1 : 0;
        }
    }
    QVERIFY2(white > 60 && black > 60, qPrintable(u"%1 white, %2 black"_s.arg(white).arg(black)));
}

QTEST_MAIN(PlaybackOptionsTest)
#include "tst_playbackoptions.moc"

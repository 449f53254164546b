// SPDX-License-Identifier: GPL-3.0-or-later
#include <platform/media/nullmediabackend.h>
#include <platform/media/playbackextras.h>
#include <platform/media/playbackoptionrows.h>
#include <platform/media/playbackoptions.h>
#include <platform/media/rendererregistry.h>
#include <platform/media/videowidget.h>
#include <platform/toolkit/applicationpage.h>
#include <platform/toolkit/applicationwindow.h>
#include <platform/toolkit/theme.h>

#include <QFile>
#include <QFontMetricsF>
#include <QTemporaryDir>
#include <QTest>
#include <QTranslator>

using namespace std::chrono_literals;
using namespace Qt::Literals::StringLiterals;
using Topic = PlaybackOptions::Topic;

// The options of a video as they are seen, in every shape of the window and size of the text.
class OptionsLookTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void wordsOfOneListBeginAtOneLine_data();
    void wordsOfOneListBeginAtOneLine();
    void stepsSayWhatTheyDo_data();
    void stepsSayWhatTheyDo();

private:
    void open(Topic topic);
    QImage picture() const { return m_window->grab().toImage(); } // laid out by then, too
    [[nodiscard]] PlaybackOptions *options() const { return m_widget->extras()->options(); }
    template <typename Kind> [[nodiscard]] QList<Kind *> rows() const
    {
        QList<Kind *> result;
        for (toolkit::Widget *widget : static_cast<OptionColumn *>(options()->centralWidget())->rows()) {
            if (auto *row = qobject_cast<Kind *>(widget))
                result.append(row);
        }
        return result;
    }

    QTemporaryDir m_home;
    QTranslator m_catalog;
    std::unique_ptr<toolkit::ApplicationWindow> m_window;
    std::unique_ptr<toolkit::ApplicationPage> m_page;
    VideoWidget *m_widget = nullptr;
    NullMediaBackend *m_backend = nullptr;
};

void OptionsLookTest::initTestCase()
{
    for (const char *variable : {"HOME", "XDG_CACHE_HOME", "XDG_DATA_HOME", "XDG_RUNTIME_DIR"})
        qputenv(variable, QFile::encodeName(m_home.path()));
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

void OptionsLookTest::init()
{
    m_window = std::make_unique<toolkit::ApplicationWindow>();
    m_window->setProfile(toolkit::ApplicationWindow::Profile::Desktop);
    m_window->resize(480, 854);
    m_window->show();
    QTRY_VERIFY(m_window->isOnDisplay());
    m_page = std::make_unique<toolkit::ApplicationPage>();
    m_page->setComponentsDisplay(toolkit::ApplicationPage::AllComponents,
                                 toolkit::ApplicationPage::ComponentDisplay::Hide);
    m_page->setPannable(false);
    m_widget = new VideoWidget;
    m_page->setCentralWidget(m_widget);
    m_page->appear(m_window.get(), toolkit::Appearance::Immediate);
    QTRY_VERIFY(m_backend != nullptr);
    const QString film = u"file:///film.mkv"_s;
    NullMediaBackend::Media media;
    media.duration = 100s;
    media.subtitles = {{u"s1"_s, u"en"_s, {}, {}, false}};
    m_backend->setMedia(film, media);
    m_widget->play(film, 0);
    QTRY_COMPARE(m_backend->state(), AvloRenderer::Playing);
}

void OptionsLookTest::cleanup()
{
    QGuiApplication::setLayoutDirection(Qt::LeftToRight);
    toolkit::Theme::instance()->setTextScale(1);
    m_page.reset();
    m_window.reset();
    m_backend = nullptr;
}

void OptionsLookTest::open(Topic topic)
{
    Q_EMIT m_widget->optionsRequested();
    QVERIFY(options() != nullptr);
    QTRY_VERIFY(options()->isOpen());
    options()->showTopic(topic);
}

void OptionsLookTest::wordsOfOneListBeginAtOneLine_data()
{
    QTest::addColumn<bool>("mirrored");
    QTest::newRow("left to right") << false;
    QTest::newRow("right to left") << true;
}

// Commands stand among choices, which have room for a mark before them.
void OptionsLookTest::wordsOfOneListBeginAtOneLine()
{
    QFETCH(bool, mirrored);
    QGuiApplication::setLayoutDirection(mirrored ? Qt::RightToLeft : Qt::LeftToRight);
    open(Topic::Loop);
    m_backend->advance(5s);
    rows<OptionRow>().at(1)->click(); // no choice has its mark
    QCOMPARE(rows<OptionRow>().size(), 3);
    QTRY_COMPARE(rows<OptionRow>().at(1)->value(), u"00:05"_s);
    const QImage image = picture();
    const auto begin = [&](int index) {
        const OptionRow *one = rows<OptionRow>().at(index);
        const QRect place = m_window->viewportTransform()
                                .mapRect(one->mapRectToScene(one->rect()))
                                .toRect()
                                .adjusted(6, 6, -6, -6);
        const QColor ground = image.pixelColor(place.topLeft());
        for (int step = 0; step < place.width(); ++step) {
            const int x = mirrored ? place.right() - step : place.left() + step;
            for (int y = place.top(); y < place.bottom(); ++y) {
                if (std::abs(image.pixelColor(x, y).lightness() - ground.lightness()) > 60)
                    return step;
            }
        }
        return -1;
    };
    const int choice = begin(0);
    QVERIFY(choice > 28);
    for (const int command : {1, 2})
        QVERIFY2(std::abs(begin(command) - choice) <= 4, qPrintable(QString::number(begin(command))));
}

void OptionsLookTest::stepsSayWhatTheyDo_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<bool>("mirrored");
    QTest::addColumn<qreal>("textScale");
    for (const QSize size : {QSize(480, 854), QSize(854, 480), QSize(1280, 800)}) {
        for (const bool mirrored : {false, true}) {
            for (const qreal scale : {1.0, 1.39, 1.4, 2.0})
                QTest::addRow("%dx%d%s %.0f%%", size.width(), size.height(), mirrored ? " mirrored" : "",
                              scale * 100)
                    << size << mirrored << scale;
        }
    }
}

// A button whose number is elided says nothing.
void OptionsLookTest::stepsSayWhatTheyDo()
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
    int count = 0;
    picture(); // it is laid out
    for (toolkit::Widget *widget : static_cast<OptionColumn *>(options()->centralWidget())->rows()) {
        const auto *steps = qobject_cast<OptionSteps *>(widget);
        if (steps == nullptr)
            continue;
        const QRectF own = steps->mapRectToScene(steps->rect());
        QRectF before;
        for (const toolkit::Button *button : steps->steps()) {
            const qreal words = QFontMetricsF(button->style().font).horizontalAdvance(button->text());
            const qreal room = button->contentsRect().width();
            QVERIFY2(room >= words, qPrintable(u"%1: %2 of %3"_s.arg(button->text()).arg(room).arg(words)));
            const QRectF place = button->mapRectToScene(button->rect());
            QVERIFY(own.contains(place));
            QVERIFY(!place.intersects(before));
            before = place;
            ++count;
        }
    }
    QCOMPARE(count, 6);
}

QTEST_MAIN(OptionsLookTest)
#include "tst_optionslook.moc"

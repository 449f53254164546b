// SPDX-License-Identifier: GPL-3.0-or-later
#include "playerpagestage.h"

#include <platform/toolkit/banner.h>
#include <platform/toolkit/button.h>
#include <platform/toolkit/label.h>
#include <platform/toolkit/theme.h>
#include <platform/media/controlslider.h>
#include <platform/media/playercontrols.h>

#include <QTranslator>

using namespace Qt::Literals::StringLiterals;
using toolkit::Banner;
using toolkit::Theme;

// What goes wrong is told over the player in words that are seen whole, and nothing that can be tapped lies
// under them: neither the way back nor another try.
class TestPlayerPageBanner : public QObject, protected PlayerPageStage
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void everyMessageIsSeenWholeAndCoversNothing_data();
    void everyMessageIsSeenWholeAndCoversNothing();
    void aMessageMovesWithTheWindow();
    void aMessageIsLightOnDark();

private:
    [[nodiscard]] QList<QRectF> targets() const;
    [[nodiscard]] Banner *tell(const QString &text) const;
};

void TestPlayerPageBanner::initTestCase()
{
    QVERIFY(openWindow());
}

void TestPlayerPageBanner::init()
{
    QVERIFY(showPage());
}

void TestPlayerPageBanner::cleanup()
{
    Theme::instance()->setTextScale(1);
    Theme::instance()->setDark(true);
    m_window->sceneManager()->setSceneSize(m_window->logicalSize());
    removePage();
}

// In the scene: each button and slider of the page, and the times.
QList<QRectF> TestPlayerPageBanner::targets() const
{
    PlayerControls *controls = f.widget->controls();
    QList<QRectF> found;
    const QList<const QGraphicsWidget *> widgets{controls->playButton(),
                                                 controls->seekSlider(),
                                                 controls->volumeButton(),
                                                 controls->volumeSlider(),
                                                 controls->optionsButton(),
                                                 controls->fullScreenButton(),
                                                 m_page->navigationBar()->backButton(),
                                                 m_page->navigationBar()->menuButton()};
    for (const QGraphicsWidget *widget : widgets)
        found.append(widget->sceneBoundingRect());
    found.append(controls->mapRectToScene(controls->places().elapsed));
    found.append(controls->mapRectToScene(controls->places().remaining));
    return found;
}

Banner *TestPlayerPageBanner::tell(const QString &text) const
{
    auto *banner = new Banner;
    banner->setStyleName(u"SystemBanner"_s);
    banner->setTitle(text);
    banner->appear(m_window.get());
    return banner;
}

void TestPlayerPageBanner::everyMessageIsSeenWholeAndCoversNothing_data()
{
    QTest::addColumn<QString>("language");
    QTest::addColumn<QSizeF>("scene");
    QTest::addColumn<qreal>("textScale");
    for (const char *language : {"en", "de", "fr", "es", "fi", "ru", "ar", "ja", "zh_CN"}) {
        for (const QSizeF &scene : {QSizeF(480, 854), QSizeF(854, 480), QSizeF(1280, 800)}) {
            for (const qreal scale : {1.0, 1.3, 2.0})
                QTest::addRow("%s, %d x %d, %d %%", language, int(scene.width()), int(scene.height()),
                              qRound(scale * 100))
                    << QString::fromLatin1(language) << scene << scale;
        }
    }
}

void TestPlayerPageBanner::everyMessageIsSeenWholeAndCoversNothing()
{
    QFETCH(QString, language);
    QFETCH(QSizeF, scene);
    QFETCH(qreal, textScale);
    QTranslator words;
    QVERIFY(words.load(u":/translations/video_%1.qm"_s.arg(language)));
    QCoreApplication::installTranslator(&words);
    Theme::instance()->setTextScale(textScale);
    m_window->sceneManager()->setSceneSize(scene);
    QVERIFY(play(PlayerFixture::video()));
    for (const char *id :
         {"qtn_vide_error_notfound", "qtn_vide_error_connection", "qtn_vide_error_uri",
          "qtn_vide_error_format", "qtn_vide_error_resolution", "qtn_vide_error_frame", "qtn_vide_error_drm",
          "qtn_vide_error_audio", "qtn_vide_error_call", "qtn_vide_error_coded", "qtn_vide_error_generic"}) {
        const QString text = qtTrId(id);
        QVERIFY2(text != QLatin1StringView(id), id);
        const Banner *banner = tell(text);
        const QRectF place = banner->sceneBoundingRect();
        QVERIFY2(QRectF(QPointF(), scene).contains(place), id);
        for (const QRectF &target : targets())
            QVERIFY2(!place.intersects(target), id);
        for (const QGraphicsItem *child : banner->childItems()) {
            const auto *label = qobject_cast<const toolkit::Label *>(child->toGraphicsObject());
            if (label == nullptr)
                continue;
            QVERIFY2(!label->isElided(), id);
            const QSizeF wish = label->effectiveSizeHint(Qt::PreferredSize, {label->size().width(), -1});
            QVERIFY2(label->size().height() >= wish.height() - 0.5, id);
        }
    }
    QCoreApplication::removeTranslator(&words);
}

void TestPlayerPageBanner::aMessageMovesWithTheWindow()
{
    QVERIFY(play(PlayerFixture::video()));
    const Banner *banner = tell(u"The connection to the video failed."_s);
    const auto coversNothing = [&] {
        const QList<QRectF> all = targets();
        return std::none_of(all.begin(), all.end(), [&](const QRectF &target) {
            return banner->sceneBoundingRect().intersects(target);
        });
    };
    for (const QSizeF &scene : {QSizeF(480, 854), QSizeF(854, 480), QSizeF(1280, 800)}) {
        m_window->sceneManager()->setSceneSize(scene);
        QVERIFY(coversNothing());
        Theme::instance()->setTextScale(2);
        QVERIFY(coversNothing());
        Theme::instance()->setTextScale(1);
    }
}

void TestPlayerPageBanner::aMessageIsLightOnDark()
{
    m_page->setStyleName(u"KestrelPlayerPage"_s);
    Theme::instance()->setDark(false);
    const Banner *banner = tell(u"The connection to the video failed."_s);
    QVERIFY(banner->style().color(u"background"_s).lightness() < 60);
    QVERIFY(banner->style().color(u"text"_s).lightness() > 200);
}

QTEST_MAIN(TestPlayerPageBanner)
#include "test_playerpagebanner.moc"

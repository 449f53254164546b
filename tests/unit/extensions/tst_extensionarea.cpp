// SPDX-License-Identifier: GPL-3.0-or-later
#include "extensionplaces.h"
#include "hostingpage.h"

#include <platform/extensions/extensionarea.h>
#include <platform/extensions/extensionfailures.h>
#include <platform/toolkit/locale.h>
#include <platform/toolkit/theme.h>

#include "support/loglines.h"

#include <QGraphicsView>
#include <QSignalSpy>
#include <QTest>

#include <memory>

using namespace Qt::Literals::StringLiterals;

namespace {

const QString interfaceName = u"com.harrow.Kestrel.extensions.PlayerInterface/1.0"_s;
const ContentRecord film(u"file:///home/user/Videos/a.mp4"_s, u"A film"_s, {}, u"2"_s);

QStringList calls()
{
    return qApp->property("calls").toStringList();
}

QStringList takeCalls()
{
    const QStringList calls = ::calls();
    qApp->setProperty("calls", QStringList());
    return calls;
}

bool isMapped(const QString &library)
{
    QFile maps(u"/proc/self/maps"_s);
    return maps.open(QIODevice::ReadOnly) && maps.readAll().contains(QFile::encodeName(library));
}

} // namespace

class TestExtensionArea : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void nothingIsLoadedWithoutAFilter();
    void onlyTheNamedDescriptionIsLoaded_data();
    void onlyTheNamedDescriptionIsLoaded();
    void nothingRunsInAProcessOfItsOwn();
    void theUsersTakesThePlaceOfTheSystems();
    void theUsersHidesTheSystems();
    void aFaultyOneOfTheUsersIsNotReplacedByTheSystems();
    void theExtensionIsToldInOrder();
    void loadingAgainLoadsWhatCame();
    void unloadingTellsThePageAndThenDeletes();
    void aPageThatGoesFirstTakesNoWidgetAlong();
    void deletingTheAreaDeletesTheExtension();
    void theWidgetLooksAsTheProgramDoes();

private:
    void makeArea(const QString &filter);

    toolkit::Locale m_locale;
    std::unique_ptr<ExtensionPlaces> m_places;
    std::unique_ptr<ExtensionArea> m_area;
    std::unique_ptr<HostingPage> m_page;
};

void TestExtensionArea::initTestCase()
{
    m_locale.installTrCatalog(u"video"_s);
    toolkit::Locale::setDefault(&m_locale);
}

void TestExtensionArea::init()
{
    m_places = std::make_unique<ExtensionPlaces>();
    takeCalls();
}

void TestExtensionArea::cleanup()
{
    m_page.reset();
    m_area.reset();
    m_places.reset();
}

void TestExtensionArea::makeArea(const QString &filter)
{
    m_area = std::make_unique<ExtensionArea>(interfaceName);
    m_area->setOutOfProcessFilter(QRegularExpression(u"$^"_s));
    m_area->setInProcessFilter(QRegularExpression(filter));
    m_page = std::make_unique<HostingPage>(m_area.get());
}

void TestExtensionArea::nothingIsLoadedWithoutAFilter()
{
    m_places->install(u"user"_s, u"tested.desktop"_s, u"ext_watched"_s);
    ExtensionArea area(interfaceName);
    area.init();
    QCOMPARE(takeCalls(), QStringList());
    QVERIFY(!isMapped(m_places->library(u"user"_s, u"tested.desktop"_s)));
}

void TestExtensionArea::onlyTheNamedDescriptionIsLoaded_data()
{
    QTest::addColumn<bool>("loaded");
    QTest::newRow("video_youtuberelatedextension.desktop") << true;
    QTest::newRow("a-video_youtuberelatedextension.desktop") << false;
    QTest::newRow("video_youtuberelatedextension.desktop.desktop") << false;
    QTest::newRow("VIDEO_youtuberelatedextension.desktop") << false;
    QTest::newRow("related.desktop") << false;
}

void TestExtensionArea::onlyTheNamedDescriptionIsLoaded()
{
    QFETCH(bool, loaded);
    const QString name = QString::fromUtf8(QTest::currentDataTag());
    // One of the program's own prefix is hidden.
    if (!loaded)
        m_places->write(u"user"_s, u"video_youtuberelatedextension.desktop"_s,
                        u"[Kestrel Extension]\nHidden=true\n"_s);
    m_places->install(u"user"_s, name, u"ext_watched"_s);
    makeArea(u"video_youtuberelatedextension.desktop"_s);
    m_area->init();
    QCOMPARE(m_page->extensions(), loaded ? 1 : 0);
    QCOMPARE(isMapped(m_places->library(u"user"_s, name)), loaded);
    QCOMPARE(m_area->failures()->texts(), QStringList());
}

// A filter that names one for a process of its own keeps it from being loaded into this one.
void TestExtensionArea::nothingRunsInAProcessOfItsOwn()
{
    m_places->install(u"user"_s, u"tested.desktop"_s, u"ext_watched"_s);
    makeArea(u"tested.desktop"_s);
    m_area->setOutOfProcessFilter(QRegularExpression(u"test.*"_s));
    m_area->init();
    QCOMPARE(m_page->extensions(), 0);
    QVERIFY(!isMapped(m_places->library(u"user"_s, u"tested.desktop"_s)));
    QCOMPARE(m_area->failures()->texts(),
             QStringList(u"“The user one” is not used: it could not be started."_s));
}

void TestExtensionArea::theUsersTakesThePlaceOfTheSystems()
{
    m_places->install(u"system"_s, u"tested.desktop"_s, u"ext_faulty"_s);
    m_places->install(u"user"_s, u"tested.desktop"_s, u"ext_watched"_s);
    makeArea(u"tested.desktop"_s);
    m_area->init();
    QCOMPARE(m_page->extensions(), 1);
    QCOMPARE(takeCalls().first(), u"made"_s);
    QVERIFY(!isMapped(m_places->library(u"system"_s, u"tested.desktop"_s)));
}

void TestExtensionArea::theUsersHidesTheSystems()
{
    m_places->install(u"system"_s, u"tested.desktop"_s, u"ext_watched"_s);
    m_places->write(u"user"_s, u"tested.desktop"_s, u"[Kestrel Extension]\nHidden=true\n"_s);
    makeArea(u"tested.desktop"_s);
    m_area->init();
    QCOMPARE(m_page->extensions(), 0);
    QCOMPARE(m_area->failures()->texts(), QStringList());
}

void TestExtensionArea::aFaultyOneOfTheUsersIsNotReplacedByTheSystems()
{
    m_places->install(u"system"_s, u"tested.desktop"_s, u"ext_watched"_s);
    m_places->install(u"user"_s, u"tested.desktop"_s, {});
    makeArea(u"tested.desktop"_s);
    m_area->init();
    QCOMPARE(m_page->extensions(), 0);
    QCOMPARE(m_area->failures()->texts(),
             QStringList(u"“The user one” is not used: its program file is missing."_s));
}

void TestExtensionArea::theExtensionIsToldInOrder()
{
    m_places->install(u"user"_s, u"tested.desktop"_s, u"ext_watched"_s);
    makeArea(u"tested.desktop"_s);
    QCOMPARE(takeCalls(), QStringList());
    m_area->init();
    m_page->show(film);
    QCOMPARE(takeCalls(),
             QStringList({u"made"_s, u"mediator with host"_s, u"widget"_s, u"content A film"_s}));
    QCOMPARE(m_page->mediator()->content(), film);
    QVERIFY(m_page->widget()->findChild<QObject *>(u"watched"_s)
            == nullptr); // it is no child object, it stands in it
    QCOMPARE(m_page->widget()->childItems().constFirst()->toGraphicsObject()->objectName(), u"watched"_s);
    toolkit::Theme::instance()->setReducedMotion(true);
    QTRY_COMPARE(calls(), QStringList(u"surroundings"_s));
    QVERIFY(m_page->mediator()->reducedMotion());
    toolkit::Theme::instance()->setReducedMotion(false);
}

void TestExtensionArea::loadingAgainLoadsWhatCame()
{
    makeArea(u"tested.*"_s);
    m_area->init();
    m_places->install(u"user"_s, u"tested.desktop"_s, u"ext_watched"_s);
    m_area->init();
    m_area->init();
    QCOMPARE(m_page->extensions(), 1);
    m_places->install(u"user"_s, u"tested2.desktop"_s, u"ext_watched"_s);
    m_area->init();
    QCOMPARE(m_page->extensions(), 2);
    QCOMPARE(takeCalls().count(u"made"_s), 2);
}

void TestExtensionArea::unloadingTellsThePageAndThenDeletes()
{
    m_places->install(u"user"_s, u"tested.desktop"_s, u"ext_watched"_s);
    makeArea(u"tested.desktop"_s);
    connect(m_area.get(), &ExtensionArea::extensionRemoved, this,
            [] { qApp->setProperty("calls", calls() << u"removed"_s); });
    const QStringList start{u"made"_s, u"mediator with host"_s, u"widget"_s};
    for (int round = 0; round < 3; ++round) {
        m_area->init();
        QCOMPARE(takeCalls(), start);
        const QPointer<QGraphicsWidget> widget = m_page->widget();
        QVERIFY(QFile::exists(m_places->marker(u"user"_s, u"tested.desktop"_s)));
        m_area->unload();
        QCOMPARE(takeCalls(), QStringList({u"removed"_s, u"deleted"_s}));
        QVERIFY(widget.isNull());
        QCOMPARE(m_page->extensions(), 0);
        QVERIFY(!QFile::exists(m_places->marker(u"user"_s, u"tested.desktop"_s)));
        m_area->unload();
        QCOMPARE(takeCalls(), QStringList());
    }
}

// The widget is the extension's, which deletes it itself.
void TestExtensionArea::aPageThatGoesFirstTakesNoWidgetAlong()
{
    m_places->install(u"user"_s, u"tested.desktop"_s, u"ext_watched"_s);
    makeArea(u"tested.desktop"_s);
    m_area->init();
    const QPointer<QObject> content = m_page->widget()->childItems().constFirst()->toGraphicsObject();
    QVERIFY(content);
    m_page->deletePage();
    QVERIFY(content);
    m_area->unload();
    QVERIFY(!content);
    QCOMPARE(m_area->failures()->texts(), QStringList());
}

void TestExtensionArea::deletingTheAreaDeletesTheExtension()
{
    m_places->install(u"user"_s, u"tested.desktop"_s, u"ext_watched"_s);
    makeArea(u"tested.desktop"_s);
    m_area->init();
    QSignalSpy removed(m_area.get(), &ExtensionArea::extensionRemoved);
    m_area.reset();
    QCOMPARE(removed.count(), 0);
    QCOMPARE(takeCalls().last(), u"deleted"_s);
}

void TestExtensionArea::theWidgetLooksAsTheProgramDoes()
{
    m_places->install(u"user"_s, u"tested.desktop"_s, u"ext_watched"_s);
    makeArea(u"tested.desktop"_s);
    m_area->init();
    auto *content
        = static_cast<QGraphicsWidget *>(m_page->widget()->childItems().constFirst()->toGraphicsObject());
    auto *theme = toolkit::Theme::instance();
    const int normal = content->font().pixelSize();
    for (const bool dark : {true, false}) {
        theme->setDark(dark);
        QTRY_COMPARE(content->palette().color(QPalette::WindowText), theme->token(u"text1"_s));
        QCOMPARE(content->palette().color(QPalette::Highlight), theme->accentColor());
    }
    theme->setDark(true);
    theme->setTextScale(2);
    QTRY_COMPARE(content->font().pixelSize(), 2 * normal);
    theme->setTextScale(1);
    // As high as it wants, as wide as the page.
    QCOMPARE(m_page->widget()->effectiveSizeHint(Qt::PreferredSize, {480, -1}).height(), 80.0);
    QCOMPARE(content->size(), QSizeF(480, 120));
}

QTEST_MAIN(TestExtensionArea)
#include "tst_extensionarea.moc"

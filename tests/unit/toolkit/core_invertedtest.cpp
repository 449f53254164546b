// SPDX-License-Identifier: GPL-3.0-or-later
#include "core_sheetfixture.h"

#include "platform/toolkit/banner.h"
#include "platform/toolkit/label.h"
#include "platform/toolkit/locale.h"
#include "platform/toolkit/objectmenu.h"
#include "platform/toolkit/querydialog.h"
#include "platform/toolkit/sheetheader.h"
#include "platform/toolkit/textedit.h"
#include "platform/toolkit/textmenu.h"

#include <QAction>

#include <optional>

using namespace Qt::Literals::StringLiterals;
using toolkit::Banner;
using toolkit::Label;
using toolkit::ObjectMenu;
using toolkit::QueryDialog;
using toolkit::Sheet;
using toolkit::TextEdit;
using toolkit::Theme;
using toolkit::Widget;

// In the light scheme: what stands in or over something that is dark in both schemes is light on dark.
class InvertedTest : public QObject, private SheetFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void whatLiesOverAPageFollowsIt_data();
    void whatLiesOverAPageFollowsIt();
    void aWidgetFollowsWhatItStandsIn();
    void aWidgetThatIsTakenOutKeepsItsLook();
    void itsOwnInvertedStyleIsTaken();
    void aHeadMayBeInvertedInASheetThatIsNot();
    void whatIsLeavingKeepsItsLook();
    void anOverlayPageDecides();
    void theWindowAroundAPageThatTurnsIsAsDark();
    void theDarkSchemeShowsTheSame();
    void theMenuOfATextFollowsWhatTheFieldStandsIn();

private:
    void makePageDark() { m_page->setStyleName(u"KestrelPlayerPage"_s); }

    toolkit::Locale m_locale;
};

void InvertedTest::init()
{
    m_locale.installTrCatalog(u"video"_s);
    toolkit::Locale::setDefault(&m_locale);
    setUp();
    Theme::instance()->setDark(false);
}

void InvertedTest::cleanup()
{
    Theme::instance()->setDark(true);
    tearDown();
}

namespace {

// Of the widget and of all in it, by what would be painted: true all dark, false all light.
std::optional<bool> isDark(const Widget &top)
{
    QList<const Widget *> widgets{&top};
    for (qsizetype i = 0; i < widgets.size(); ++i) {
        QList<QGraphicsItem *> items = widgets.at(i)->childItems();
        while (!items.isEmpty()) {
            QGraphicsItem *item = items.takeFirst();
            if (const auto *widget = qobject_cast<const Widget *>(item->toGraphicsObject()))
                widgets.append(widget);
            else
                items += item->childItems();
        }
    }
    int dark = 0;
    int light = 0;
    for (const Widget *widget : std::as_const(widgets)) {
        const QColor text = widget->style().color(u"text"_s);
        const QColor ground = widget->style().color(u"background"_s);
        for (const bool lightOnDark :
             {text.isValid() && text.saturation() < 90 ? text.lightness() > 120 : false,
              ground.isValid() && ground.lightness() < 60})
            dark += lightOnDark ? 1 : 0;
        for (const bool darkOnLight :
             {text.isValid() && text.saturation() < 90 ? text.lightness() <= 120 : false,
              ground.isValid() && ground.lightness() > 200})
            light += darkOnLight ? 1 : 0;
    }
    if ((dark > 0) == (light > 0))
        return std::nullopt;
    return dark > 0;
}

} // namespace

void InvertedTest::whatLiesOverAPageFollowsIt_data()
{
    QTest::addColumn<QString>("what");
    for (const char *what : {"menu", "question", "sheet", "full sheet", "banner"})
        QTest::newRow(what) << QString::fromLatin1(what);
}

void InvertedTest::whatLiesOverAPageFollowsIt()
{
    QFETCH(QString, what);
    QAction action(u"Share"_s);
    ObjectMenu menu;
    menu.addAction(&action);
    QueryDialog question;
    question.setTitle(u"Delete?"_s);
    question.setText(u"Holiday"_s);
    Sheet low;
    Sheet full(Sheet::Extent::Full);
    full.setPositiveAction(u"Save"_s);
    full.setNegativeAction(u"Cancel"_s);
    auto *banner = new Banner;
    banner->setTitle(u"Copied"_s);
    const QHash<QString, Widget *> all{{u"menu"_s, &menu},
                                       {u"question"_s, &question},
                                       {u"sheet"_s, &low},
                                       {u"full sheet"_s, &full},
                                       {u"banner"_s, banner}};
    for (Sheet *sheet : {&low, &full}) {
        sheet->setTitle(u"Share"_s);
        sheet->setCentralWidget(new Rows(3));
    }
    Widget *shown = all.value(what);
    const auto appear = [&] {
        if (auto *popup = qobject_cast<toolkit::Popup *>(shown))
            popup->appear(m_window.get());
        else
            banner->appear(m_window.get());
    };
    if (what == "menu"_L1)
        menu.appear(m_window.get());
    else if (what == "question"_L1)
        question.appear(m_window.get());
    else
        appear();
    QCOMPARE(isDark(*shown), std::optional(false));
    // Another page comes under it.
    Page player;
    player.setStyleName(u"KestrelPlayerPage"_s);
    player.appear(m_window.get(), toolkit::Appearance::Immediate);
    QCOMPARE(isDark(*shown), std::optional(true));
    player.dismiss(toolkit::Appearance::Immediate);
    QCOMPARE(isDark(*shown), std::optional(false));
    if (what != "banner"_L1)
        delete banner;
}

void InvertedTest::aWidgetFollowsWhatItStandsIn()
{
    Widget dark;
    dark.setStyleName(u"KestrelPlayerPage"_s);
    Label made(&dark);
    made.setStyleName(u"CommonLabel"_s);
    QVERIFY(made.isInverted());
    QGraphicsWidget between(&dark);
    auto *deep = new Label(&between);
    deep->setStyleName(u"CommonLabel"_s);
    QVERIFY(deep->isInverted());
    QVERIFY(deep->style().color(u"text"_s).lightness() > 200);
    dark.setStyleName(u"CommonApplicationPage"_s);
    QVERIFY(!made.isInverted() && !deep->isInverted());
    QVERIFY(deep->style().color(u"text"_s).lightness() < 60);
    dark.setStyleName(u"CommonApplicationPageInverted"_s);
    QVERIFY(made.isInverted() && deep->isInverted());
    // One that comes from elsewhere, with what stands in it.
    Widget group;
    group.setStyleName(u"SheetRow"_s);
    Label inner(&group);
    inner.setStyleName(u"CommonLabel"_s);
    QVERIFY(!inner.isInverted());
    group.setParentItem(&dark);
    QVERIFY(group.isOnInverted() && inner.isInverted());
    group.setParentItem(nullptr);
    inner.setParentItem(nullptr);
    made.setParentItem(nullptr);
}

void InvertedTest::aWidgetThatIsTakenOutKeepsItsLook()
{
    Widget dark;
    dark.setStyleName(u"CommonApplicationPageInverted"_s);
    Widget light;
    light.setStyleName(u"CommonApplicationPage"_s);
    Label label(&dark);
    label.setStyleName(u"CommonLabel"_s);
    label.setParentItem(nullptr);
    QVERIFY(label.isInverted());
    label.setParentItem(&light);
    QVERIFY(!label.isInverted());
    label.setParentItem(nullptr);
}

void InvertedTest::itsOwnInvertedStyleIsTaken()
{
    const auto name = [](const QString &style, bool inverted) {
        return Theme::instance()->style(style, Qt::Vertical, inverted).name;
    };
    QCOMPARE(name(u"SystemBanner"_s, true), u"SystemBannerInverted"_s);
    QCOMPARE(name(u"SystemBanner"_s, false), u"SystemBanner"_s);
    QCOMPARE(name(u"SystemBannerInverted"_s, true), u"SystemBannerInverted"_s);
    QCOMPARE(name(u"DialogText"_s, true), u"DialogText"_s);
    QCOMPARE(name(QString(), true), QString()); // a style is named Inverted, and is a sheet's
    QVERIFY(Theme::instance()->style(u"DialogText"_s, Qt::Vertical, true).inverted);
    QVERIFY(!Theme::instance()->style(u"DialogText"_s).inverted);
}

void InvertedTest::aHeadMayBeInvertedInASheetThatIsNot()
{
    Sheet sheet(Sheet::Extent::Full);
    sheet.setPositiveAction(u"Save"_s);
    open(&sheet, 2);
    QVERIFY(!sheet.isInverted() && !sheet.header()->isInverted());
    sheet.header()->setStyleName(u"Inverted"_s);
    QVERIFY(sheet.header()->isInverted() && sheet.header()->positiveButton()->isInverted());
    QVERIFY(!sheet.centralWidget()->isInverted());
    sheet.setStyleName(u"Inverted"_s);
    QVERIFY(sheet.centralWidget()->isInverted());
}

// A question whose answer leads back to the list does not turn light while it fades.
void InvertedTest::whatIsLeavingKeepsItsLook()
{
    setReducedMotion(false);
    Page player;
    player.setStyleName(u"KestrelPlayerPage"_s);
    player.appear(m_window.get(), toolkit::Appearance::Immediate);
    QueryDialog question;
    question.setTitle(u"Delete?"_s);
    question.appear(m_window.get());
    QVERIFY(question.isInverted());
    QTRY_VERIFY(question.isOpen());
    question.accept();
    QVERIFY(question.isDisplayed());
    player.dismiss(toolkit::Appearance::Immediate);
    QVERIFY(question.isInverted());
    question.appear(m_window.get()); // after all, over the other page
    QVERIFY(!question.isInverted());
}

void InvertedTest::anOverlayPageDecides()
{
    Page card;
    card.setStyleName(u"CommonApplicationPageInverted"_s);
    Sheet sheet;
    open(&sheet, 2);
    QVERIFY(!sheet.isInverted());
    m_window->sceneManager()->showOverlayPage(&card);
    QVERIFY(sheet.isInverted());
    m_window->sceneManager()->hideOverlayPage(&card);
    QVERIFY(!sheet.isInverted());
}

void InvertedTest::theWindowAroundAPageThatTurnsIsAsDark()
{
    m_window->setStyleName(u"VideoApplicationWindow"_s);
    const auto ground = [this] { return m_window->backgroundBrush().color().lightness(); };
    QVERIFY(ground() > 200);
    Page player;
    player.setStyleName(u"KestrelPlayerPage"_s);
    player.appear(m_window.get(), toolkit::Appearance::Immediate);
    QVERIFY(ground() < 60);
    player.dismiss(toolkit::Appearance::Immediate);
    QVERIFY(ground() > 200);
}

void InvertedTest::theDarkSchemeShowsTheSame()
{
    makePageDark();
    Sheet sheet;
    const Rows *rows = open(&sheet, 2);
    const QHash<QString, QColor> inLight = rows->buttons.first()->style().colors;
    Theme::instance()->setDark(true);
    QCOMPARE(rows->buttons.first()->style().colors, inLight);
}

void InvertedTest::theMenuOfATextFollowsWhatTheFieldStandsIn()
{
    const auto menuOf = [this](Sheet *sheet) {
        auto *edit = new TextEdit;
        edit->setStyleName(u"VideoSheetTextEditInverted"_s);
        edit->setText(u"Holiday"_s);
        sheet->setCentralWidget(edit);
        sheet->appear(m_window.get());
        edit->openMenu();
        return edit->menu();
    };
    Sheet light;
    Widget *menu = menuOf(&light);
    QVERIFY(menu != nullptr && !menu->isInverted());
    light.reject();
    Sheet dark;
    dark.setStyleName(u"Inverted"_s);
    menu = menuOf(&dark);
    QVERIFY(menu != nullptr && menu->isInverted());
}

KESTREL_TOOLKIT_TEST_MAIN(InvertedTest)
#include "core_invertedtest.moc"

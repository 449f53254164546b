// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/toolkit/colormath.h"
#include "platform/toolkit/theme.h"

#include <QTest>

using namespace Qt::Literals::StringLiterals;
using toolkit::Style;
using toolkit::Theme;

// Whether what the theme draws can be told from what it draws it on.
class WidgetsContrast : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup();
    void textColoursHaveTheirContrast_data();
    void textColoursHaveTheirContrast();
    void everyTextIsLegibleOnItsGround_data();
    void everyTextIsLegibleOnItsGround();
    void theAccentIsKeptLegible_data();
    void theAccentIsKeptLegible();
};

void WidgetsContrast::cleanup()
{
    Theme::instance()->setDark(true);
    Theme::instance()->setHighContrast(false);
    Theme::instance()->setAccentColor(QColor());
}

void WidgetsContrast::textColoursHaveTheirContrast_data()
{
    QTest::addColumn<bool>("dark");
    QTest::addColumn<bool>("high");
    QTest::addColumn<QList<qreal>>("ratios"); // of text1, text2, text3, accent, danger
    const QList<qreal> plain{7, 4.5, 3, 4.5, 4.5};
    const QList<qreal> strong{15, 10, 7, 7, 7};
    QTest::newRow("dark") << true << false << plain;
    QTest::newRow("light") << false << false << plain;
    QTest::newRow("dark, more contrast") << true << true << strong;
    QTest::newRow("light, more contrast") << false << true << strong;
}

// On pages and on sheets.
void WidgetsContrast::textColoursHaveTheirContrast()
{
    QFETCH(bool, dark);
    QFETCH(bool, high);
    QFETCH(QList<qreal>, ratios);
    Theme *theme = Theme::instance();
    theme->setDark(dark);
    theme->setHighContrast(high);
    const QStringList names{u"text1"_s, u"text2"_s, u"text3"_s, u"accent"_s, u"danger"_s};
    for (const QString &ground : {u"background"_s, u"surface1"_s}) {
        for (qsizetype i = 0; i < names.size(); ++i) {
            const qreal ratio = toolkit::contrastRatio(theme->token(names.at(i)), theme->token(ground));
            QVERIFY2(ratio >= ratios.at(i),
                     qPrintable(u"%1 on %2: %3"_s.arg(names.at(i), ground).arg(ratio)));
        }
    }
    const qreal line = toolkit::contrastRatio(theme->token(u"line"_s), theme->token(u"background"_s));
    QVERIFY(line >= (high ? 3 : 1.3)); // outlines are seen by everybody who asks for it
}

void WidgetsContrast::everyTextIsLegibleOnItsGround_data()
{
    QTest::addColumn<bool>("dark");
    QTest::addColumn<bool>("high");
    QTest::addColumn<bool>("inverted"); // in or over something that is dark in both schemes
    for (const bool inverted : {false, true}) {
        for (const bool high : {false, true}) {
            for (const bool dark : {true, false})
                QTest::addRow("%s%s%s", dark ? "dark" : "light", high ? ", more contrast" : "",
                              inverted ? ", inverted" : "")
                    << dark << high << inverted;
        }
    }
}

// What stands on a ground of its own, and what on that of the panel or page around it; also while it is
// pressed.
void WidgetsContrast::everyTextIsLegibleOnItsGround()
{
    QFETCH(bool, dark);
    QFETCH(bool, high);
    QFETCH(bool, inverted);
    Theme *theme = Theme::instance();
    theme->setDark(dark);
    theme->setHighContrast(high);
    const auto look = [&](const QString &name) { return theme->style(name, Qt::Vertical, inverted); };
    const QHash<QString, std::pair<QString, QString>> around{
        {u"CommonApplicationPageHeader"_s, {u"VideoApplicationPage"_s, u"background"_s}},
        {u"KestrelGridCellTitleLabel"_s, {u"VideoApplicationPage"_s, u"background"_s}},
        {u"KestrelDetailsPageTitle"_s, {u"VideoApplicationPage"_s, u"background"_s}},
        {u"KestrelDetailsPageLabel"_s, {u"VideoApplicationPage"_s, u"background"_s}},
        {u"KestrelDetailsPageSection"_s, {u"VideoApplicationPage"_s, u"background"_s}},
        {u"CommonEmptyStateTitle"_s, {u"VideoApplicationPage"_s, u"background"_s}},
        {u"CommonEmptyStateTitleInverted"_s, {u"KestrelPlayerPage"_s, u"background"_s}},
        {u"CommonEmptyStateTitleKeyword"_s, {u"CommonApplicationPageInverted"_s, u"background"_s}},
        {u"NavigationBarTitle"_s, {u"KestrelPlayerPage"_s, u"background"_s}},
        {u"SheetTitle"_s, {u"SheetPanel"_s, u"background"_s}},
        {u"SheetBarTitle"_s, {u"SheetHeader"_s, u"background"_s}},
        {u"SheetNegativeAction"_s, {u"SheetHeader"_s, u"background"_s}},
        {u"SheetPositiveAction"_s, {u"SheetHeader"_s, u"background"_s}},
        {u"SheetNegativeActionInverted"_s, {u"Inverted"_s, u"background"_s}},
        {u"SheetPositiveActionInverted"_s, {u"Inverted"_s, u"background"_s}},
        {u"SheetRow"_s, {u"SheetPanel"_s, u"background"_s}},
        {u"SheetText"_s, {u"SheetPanel"_s, u"background"_s}},
        {u"CommonHeaderInverted"_s, {u"SheetPanelInverted"_s, u"full"_s}},
        {u"DialogTitle"_s, {u"DialogPanel"_s, u"background"_s}},
        {u"DialogText"_s, {u"DialogPanel"_s, u"background"_s}},
        {u"SystemBannerTextInverted"_s, {u"SystemBannerInverted"_s, u"background"_s}},
        {u"SystemBannerText"_s, {u"SystemBanner"_s, u"background"_s}}};
    const QHash<QString, qreal> least{{u"text"_s, high ? 7 : 4.5},
                                      {u"highlight"_s, 4.5},
                                      {u"danger"_s, 4.5},
                                      {u"prompt"_s, high ? 7 : 3},
                                      {u"icon"_s, 3},
                                      {u"cursor"_s, 3},
                                      {u"focus"_s, 3}};
    const QColor cell = look(u"KestrelList"_s).color(u"pressed"_s);
    QStringList faults;
    int pairs = 0;
    for (const QString &name : theme->styleNames()) {
        const Style style = look(name);
        const QColor pressed = style.color(u"pressed"_s);
        QList<QColor> grounds{style.color(u"background"_s), pressed};
        if (around.contains(name))
            grounds.append(look(around.value(name).first).color(around.value(name).second));
        if (name == "KestrelGridCellTitleLabel"_L1)
            grounds.append(cell);
        for (const QColor &ground : std::as_const(grounds)) {
            if (!ground.isValid() || ground.alpha() < 255)
                continue;
            for (auto text = least.begin(); text != least.end(); ++text) {
                const QColor color = style.color(text.key());
                if (!color.isValid() || (text.key() == "focus"_L1 && ground == pressed))
                    continue;
                ++pairs;
                // Words in a colour of their own say something by it, too.
                const bool coloured = color != style.color(u"icon"_s) && color.hsvSaturation() > 90;
                const qreal ratio = toolkit::contrastRatio(color, ground);
                if (ratio < (coloured ? std::min(4.5, text.value()) : text.value()))
                    faults.append(u"%1: %2 on %3 has %4"_s.arg(name, text.key(), ground.name()).arg(ratio));
            }
        }
    }
    if (inverted) {
        for (const QString &panel : {u"SheetPanel"_s, u"DialogPanel"_s, u"ObjectMenu"_s, u"SystemBanner"_s})
            QVERIFY2(look(panel).color(u"background"_s).lightness() < 60, qPrintable(panel));
    }
    QVERIFY2(pairs > 50, qPrintable(QString::number(pairs)));
    QVERIFY2(faults.isEmpty(), qPrintable(faults.join(u'\n')));
}

void WidgetsContrast::theAccentIsKeptLegible_data()
{
    QTest::addColumn<QColor>("wanted");
    QTest::newRow("black") << QColor(Qt::black);
    QTest::newRow("white") << QColor(Qt::white);
    QTest::newRow("pure blue") << QColor(0, 0, 255);
    QTest::newRow("pure yellow") << QColor(255, 255, 0);
    QTest::newRow("dark red") << QColor(0x40, 0, 0);
    QTest::newRow("mid grey") << QColor(128, 128, 128);
}

void WidgetsContrast::theAccentIsKeptLegible()
{
    QFETCH(QColor, wanted);
    for (const bool dark : {true, false}) {
        Theme::instance()->setDark(dark);
        Theme::instance()->setAccentColor(wanted);
        const QColor accent = Theme::instance()->accentColor();
        QVERIFY(toolkit::contrastRatio(accent, Theme::instance()->token(u"background"_s)) >= 4.5);
        QVERIFY(accent.red() >= 0x10 && accent.green() >= 0x10 && accent.blue() >= 0x10);
    }
}

QTEST_MAIN(WidgetsContrast)
#include "widgets_contrast.moc"

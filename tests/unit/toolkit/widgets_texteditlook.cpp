// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/toolkit/theme.h"
#include "widgets_texteditfixture.h"

#include <QScopeGuard>

// The text field as it is seen.
class WidgetsTextEditLook : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void thePromptShowsOnlyWhileEmpty();
    void theCursorAndTheSelectionAreSeen();
    void theFocusIsSeenAsARing_data();
    void theFocusIsSeenAsARing();
    void numbersStandWhereLinesBegin();
    void textRunsOutWhereItGoesOn();
    void theRingIsWholeWhereTextRunsOut();
};

void WidgetsTextEditLook::thePromptShowsOnlyWhileEmpty()
{
    Field f;
    const QColor prompt = f.edit->style().color(u"prompt"_s);
    const QRect field(30, 90, 300, 50);
    QVERIFY(pixelsLike(f.stage.picture(), field, prompt, 30) > 100);
    f.edit->setText(u"i"_s);
    QVERIFY(pixelsLike(f.stage.picture(), field, prompt, 30) < 40);
}

void WidgetsTextEditLook::theCursorAndTheSelectionAreSeen()
{
    Field f;
    const QColor cursor = f.edit->style().color(u"cursor"_s);
    const QRect field(24, 92, 432, 44); // within the ring
    f.edit->setText(u"concert"_s);
    QCOMPARE(pixelsLike(f.stage.picture(), field, cursor, 20), 0);
    f.edit->setFocus();
    f.type(u"s"_s); // the blinking begins anew, with the cursor seen
    const int drawn = pixelsLike(f.stage.picture(), field, cursor, 20);
    QVERIFY2(drawn >= 50 && drawn <= 130, qPrintable(QString::number(drawn)));
    const QImage before = f.stage.picture();
    QTRY_VERIFY(pixelsLike(f.stage.picture(), field, cursor, 20) == 0); // it blinks
    f.edit->selectAll();
    QVERIFY(f.stage.picture() != before);
    // A field that is left keeps its selection, but does not show it.
    f.other->setFocus();
    const QImage left = f.stage.picture();
    QCOMPARE(f.edit->selectedText(), u"concerts"_s);
    f.edit->setCursorPosition(0);
    QVERIFY(f.stage.picture() == left);
}

void WidgetsTextEditLook::theFocusIsSeenAsARing_data()
{
    QTest::addColumn<QString>("style");
    QTest::addColumn<bool>("dark");
    QTest::addColumn<bool>("high");
    for (const char *style : {"CommonTextField", "CommonSearchFieldInverted", "VideoSheetTextEditInverted"}) {
        const QString name = QString::fromLatin1(style);
        QTest::addRow("%s, dark", style) << name << true << false;
        QTest::addRow("%s, light", style) << name << false << false;
        QTest::addRow("%s, dark, more contrast", style) << name << true << true;
        QTest::addRow("%s, light, more contrast", style) << name << false << true;
    }
}

// Whoever types sees where, also before the cursor is found.
void WidgetsTextEditLook::theFocusIsSeenAsARing()
{
    QFETCH(QString, style);
    QFETCH(bool, dark);
    QFETCH(bool, high);
    toolkit::Theme *theme = toolkit::Theme::instance();
    const auto asBefore = qScopeGuard([theme] {
        theme->setDark(true);
        theme->setHighContrast(false);
    });
    theme->setDark(dark);
    theme->setHighContrast(high);
    Field f;
    f.edit->setStyleName(style);
    const QColor ring = f.edit->style().color(u"focus"_s);
    const auto width = int(f.edit->style().number(u"focusWidth"_s));
    QVERIFY(width >= (high ? 3 : 2));
    // A piece of each side, clear of the corners.
    const QRect field = f.edit->geometry().toRect();
    const QList<QRect> sides{{140, field.top(), 200, width},
                             {140, field.bottom() + 1 - width, 200, width},
                             {field.left(), 104, width, 20},
                             {field.right() + 1 - width, 104, width, 20}};
    const auto seen = [&] {
        const QImage image = f.stage.picture();
        int pixels = 0;
        for (const QRect &side : sides)
            pixels += pixelsLike(image, side, ring, 12);
        return pixels;
    };
    const int whole = 2 * (200 + 20) * width;
    // With more contrast the field has an edge also where it has no focus.
    const QColor outline = f.edit->style().color(u"outline"_s);
    QCOMPARE(outline.isValid(), high);
    if (high)
        QCOMPARE(pixelsLike(f.stage.picture(), {140, field.top(), 200, 2}, outline, 12), 400);
    QCOMPARE(seen(), 0);
    f.edit->setFocus();
    QVERIFY(f.edit->hasFocus());
    QCOMPARE(seen(), whole);
    f.other->setFocus();
    QCOMPARE(seen(), 0);
}

void WidgetsTextEditLook::numbersStandWhereLinesBegin()
{
    Field f;
    f.edit->setFocus();
    const auto cursor
        = [&f] { return f.stage.scene.inputMethodQuery(Qt::ImCursorRectangle).toRectF().left(); };
    const qreal middle = f.edit->mapRectToScene(f.edit->contentsRect()).center().x();
    f.edit->setText(u"1988"_s);
    QVERIFY(cursor() < middle);
    f.edit->setLayoutDirection(Qt::RightToLeft);
    QVERIFY(cursor() > middle);
    f.edit->setText(u"198 a"_s); // words decide for themselves
    QVERIFY(cursor() < middle);
    f.edit->setText(u"1988 عطلة"_s);
    QVERIFY(cursor() > middle);
}

void WidgetsTextEditLook::textRunsOutWhereItGoesOn()
{
    Field f;
    f.edit->setText(QString(60, u'm'));
    const QRect content = f.edit->mapRectToScene(f.edit->contentsRect()).toRect();
    const QColor ink = f.edit->style().color(u"text"_s);
    const auto bright = [&](int left) {
        return pixelsLike(f.stage.picture(), {left, content.top(), 4, content.height()}, ink, 60);
    };
    QCOMPARE(bright(content.left()), 0); // the cursor is at its end
    QVERIFY(bright(content.left() + 24) + bright(content.left() + 28) > 0);
    QVERIFY(bright(content.right() - 12) + bright(content.right() - 8) > 0);
    f.edit->setCursorPosition(0);
    QVERIFY(bright(content.left()) > 0);
    QCOMPARE(bright(content.right() - 3), 0);
    f.edit->setText(u"brief"_s);
    QVERIFY(bright(content.left() + 2) > 0);
}

void WidgetsTextEditLook::theRingIsWholeWhereTextRunsOut()
{
    Field f;
    f.edit->setText(QString(60, u'm'));
    f.edit->setFocus();
    const QRect field = f.edit->geometry().toRect();
    const QRect content = f.edit->mapRectToScene(f.edit->contentsRect()).toRect();
    const QColor ring = f.edit->style().color(u"focus"_s);
    const auto width = int(f.edit->style().number(u"focusWidth"_s));
    for (const int cursor : {0, 60}) {
        f.edit->setCursorPosition(cursor);
        const QImage image = f.stage.picture();
        for (const int y : {field.top(), field.bottom() + 1 - width}) {
            QCOMPARE(pixelsLike(image, {content.left() - 2, y, 20, width}, ring, 12), 20 * width);
            QCOMPARE(pixelsLike(image, {content.right() - 18, y, 20, width}, ring, 12), 20 * width);
        }
    }
}

QTEST_MAIN(WidgetsTextEditLook)
#include "widgets_texteditlook.moc"

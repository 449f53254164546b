// SPDX-License-Identifier: GPL-3.0-or-later
#include "libraryfixture.h"
#include "platform/toolkit/button.h"
#include "platform/toolkit/imagewidget.h"
#include "platform/toolkit/widgetfactory.h"

#include <QGraphicsLinearLayout>
#include <QSignalSpy>

using namespace Qt::Literals::StringLiterals;

class FilterWidgetTest : public QObject
{
    Q_OBJECT

public:
    explicit FilterWidgetTest(LibraryFixture &fixture) : m_fixture(fixture) { }

private Q_SLOTS:
    void init();
    void cleanup() { m_fixture.close(); }
    void magnifierAndClearButtonChangePlaces();
    void clearButtonEmptiesTheFieldAndTells();
    void newsOfTheTextComesBeforeTheIconsChange();
    void returnClosesTheKeyboardAndKeepsTheText();
    void emptiedByTheUserTheFieldKeepsTheFocus();
    void emptiedByTheProgramTheFieldTakesNoFocus();
    void keyboardIsToldOfItsActionKey();
    void iconsStandAtTheirPlaces();
    void iconsChangeSidesWithTheDirection();
    void fieldIsNoWiderThanTheList();
    void textFieldIsSetUpForTitles();
    void isMadeByName();

private:
    [[nodiscard]] toolkit::IconButton *clearButton() const
    {
        return qobject_cast<toolkit::IconButton *>(childWith(u"ClearButton"_s));
    }
    [[nodiscard]] toolkit::Widget *magnifier() const { return childWith(u"SearchMagnifier"_s); }
    [[nodiscard]] toolkit::Widget *childWith(const QString &style) const
    {
        for (QGraphicsItem *item : m_fixture.field()->childItems()) {
            auto *widget = qobject_cast<toolkit::Widget *>(item->toGraphicsObject());
            if (widget && widget->styleName() == style)
                return widget;
        }
        return nullptr;
    }

    LibraryFixture &m_fixture;
};

void FilterWidgetTest::init()
{
    QVERIFY(m_fixture.open(LibraryFixture::rows({u"one"_s, u"two"_s})));
    m_fixture.page->showTextEdit({}, true);
}

void FilterWidgetTest::magnifierAndClearButtonChangePlaces()
{
    QVERIFY(magnifier()->isVisible() && !clearButton()->isVisible());
    m_fixture.edit()->setFocus();
    m_fixture.key(u"o"_s);
    QVERIFY(!magnifier()->isVisible() && clearButton()->isVisible());
    m_fixture.key(u"\b"_s, Qt::Key_Backspace);
    QCOMPARE(m_fixture.field()->text(), QString());
    QVERIFY(magnifier()->isVisible() && !clearButton()->isVisible());
}

void FilterWidgetTest::clearButtonEmptiesTheFieldAndTells()
{
    m_fixture.field()->setText(u"abc"_s);
    QSignalSpy changed(m_fixture.field(), &FilterWidget::textChanged);
    QSignalSpy cleared(m_fixture.field(), &FilterWidget::clearClicked);
    clearButton()->click();
    QCOMPARE(m_fixture.field()->text(), QString());
    QCOMPARE(changed.count(), 1);
    QCOMPARE(cleared.count(), 1);
    QVERIFY(m_fixture.edit()->hasFocus());
}

void FilterWidgetTest::newsOfTheTextComesBeforeTheIconsChange()
{
    QStringList order;
    connect(m_fixture.field(), &FilterWidget::textChanged, this, [&] {
        order.append(m_fixture.field()->text() + (clearButton()->isVisible() ? u" clear"_s : QString())
                     + (magnifier()->isVisible() ? u" magnifier"_s : QString()));
    });
    connect(m_fixture.field(), &FilterWidget::clearClicked, this, [&] { order.append(u"clicked"_s); });
    m_fixture.field()->setText(u"a"_s);
    clearButton()->click();
    QCOMPARE(order, QStringList({u"a magnifier"_s, u" clear"_s, u"clicked"_s}));
}

void FilterWidgetTest::returnClosesTheKeyboardAndKeepsTheText()
{
    m_fixture.field()->setText(u"abc"_s);
    m_fixture.edit()->setFocus();
    m_fixture.key(u"\r"_s, Qt::Key_Return);
    QVERIFY(!m_fixture.edit()->hasFocus());
    QCOMPARE(m_fixture.field()->text(), u"abc"_s);
}

void FilterWidgetTest::emptiedByTheUserTheFieldKeepsTheFocus()
{
    m_fixture.field()->setText(u"a"_s);
    m_fixture.edit()->clearFocus();
    clearButton()->click();
    QVERIFY(m_fixture.edit()->hasFocus());
}

void FilterWidgetTest::emptiedByTheProgramTheFieldTakesNoFocus()
{
    m_fixture.field()->setText(u"a"_s);
    m_fixture.edit()->clearFocus();
    m_fixture.field()->setText({});
    QVERIFY(!m_fixture.edit()->hasFocus());
}

void FilterWidgetTest::keyboardIsToldOfItsActionKey()
{
    const auto attribute = [this](const QString &name) {
        return m_fixture.edit()->inputMethodAttribute(u"/keys"_s, u"actionKey"_s, name);
    };
    QCOMPARE(attribute(u"label"_s).toString(), qtTrId("qtn_comm_command_done"));
    QCOMPARE(attribute(u"highlighted"_s).toBool(), true);
    QCOMPARE(m_fixture.edit()->prompt(), qtTrId("qtn_vide_filter_videos"));
}

void FilterWidgetTest::iconsStandAtTheirPlaces()
{
    QTRY_COMPARE(m_fixture.field()->size(), QSizeF(480, 80));
    QCOMPARE(magnifier()->pos(), QPointF(412, 16));
    QCOMPARE(clearButton()->pos(), QPointF(408, 8));
    // Both lie in the middle of the strip.
    QCOMPARE(magnifier()->geometry().center().y(), 40.0);
    QCOMPARE(clearButton()->geometry().center().y(), 40.0);
}

void FilterWidgetTest::iconsChangeSidesWithTheDirection()
{
    QTRY_COMPARE(m_fixture.field()->size(), QSizeF(480, 80));
    m_fixture.field()->setLayoutDirection(Qt::RightToLeft);
    QCOMPARE(magnifier()->geometry().topRight(), QPointF(480 - 412, 16));
    QCOMPARE(clearButton()->geometry().topRight(), QPointF(480 - 408, 8));
    m_fixture.field()->setLayoutDirection(Qt::LeftToRight);
    QCOMPARE(magnifier()->pos(), QPointF(412, 16));
    QCOMPARE(clearButton()->pos(), QPointF(408, 8));
}

void FilterWidgetTest::fieldIsNoWiderThanTheList()
{
    // On a wide window the list stands in the middle, and the field above it.
    const auto ends = [this] {
        m_fixture.field()->layout()->activate();
        const QRectF field = m_fixture.edit()->geometry();
        return QList<qreal>({field.left(), field.right()});
    };
    m_fixture.field()->resize(1280, 80);
    QCOMPARE(ends(), QList<qreal>({280 + 16, 1000 - 16}));
    QCOMPARE(magnifier()->pos(), QPointF(1000 - 480 + 412, 16));
    m_fixture.field()->setLayoutDirection(Qt::RightToLeft);
    QCOMPARE(magnifier()->geometry().left(), 280.0 + 480 - 412 - magnifier()->size().width());
    m_fixture.field()->setLayoutDirection(Qt::LeftToRight);
    m_fixture.field()->resize(480, 80);
    QCOMPARE(ends(), QList<qreal>({16, 464}));
}

void FilterWidgetTest::textFieldIsSetUpForTitles()
{
    QCOMPARE(m_fixture.edit()->styleName(), u"CommonSearchFieldInverted"_s);
    // Titles are no prose: neither corrected, nor capitalised, nor foreseen.
    const auto hints = m_fixture.edit()->inputMethodHints();
    QVERIFY(hints.testFlag(Qt::ImhNoAutoUppercase));
    QVERIFY(hints.testFlag(Qt::ImhNoPredictiveText));
    QCOMPARE(magnifier()->minimumSize(), magnifier()->preferredSize());
    const auto *outer = dynamic_cast<QGraphicsLinearLayout *>(m_fixture.field()->layout());
    QVERIFY(outer && outer->count() == 1);
    const auto *inner = dynamic_cast<QGraphicsLinearLayout *>(outer->itemAt(0));
    QVERIFY(inner && inner->count() == 1);
    QCOMPARE(inner->itemAt(0), static_cast<QGraphicsLayoutItem *>(m_fixture.edit()));
    for (const auto *row : {outer, inner}) {
        QCOMPARE(row->orientation(), Qt::Horizontal);
        QCOMPARE(row->spacing(), 0.0);
        qreal left = -1;
        qreal top = -1;
        qreal right = -1;
        qreal bottom = -1;
        row->getContentsMargins(&left, &top, &right, &bottom);
        QCOMPARE(QList<qreal>({left, top, right, bottom}), QList<qreal>({0, 0, 0, 0}));
    }
}

void FilterWidgetTest::isMadeByName()
{
    const std::unique_ptr<toolkit::Widget> made(
        toolkit::WidgetFactory::create(u"kestrel"_s, u"FilterWidget"_s));
    QVERIFY(qobject_cast<FilterWidget *>(made.get()));
}

int main(int argc, char **argv)
{
    toolkit::Application application(argc, argv, u"video"_s, nullptr);
    LibraryFixture fixture;
    FilterWidgetTest test(fixture);
    return QTest::qExec(&test, argc, argv);
}
#include "tst_filterwidget.moc"

// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/toolkit/layout.h"
#include "platform/toolkit/linearsolver.h"
#include "widgets_support.h"

#include <QApplication>

using namespace Qt::Literals::StringLiterals;
using toolkit::Layout;
using toolkit::LinearItem;
using toolkit::LinearLayoutPolicy;
using toolkit::Widget;

Q_DECLARE_METATYPE(QList<LinearItem>)

namespace {

class Box : public Widget
{
public:
    explicit Box(const QSizeF &preferred, const QSizeF &minimum = QSizeF(0, 0))
    {
        setMinimumSize(minimum);
        setPreferredSize(preferred);
    }
};

QString text(const QGraphicsWidget *widget)
{
    const QRectF r = widget->geometry();
    return u"%1,%2 %3x%4"_s.arg(r.x()).arg(r.y()).arg(r.width()).arg(r.height());
}

} // namespace

class WidgetsLayout : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void roomIsSharedByStretchThenGrowthThenEvenly_data();
    void roomIsSharedByStretchThenGrowthThenEvenly();
    void aColumnStacksItsItems();
    void aHiddenItemTakesNoRoomAndComesBack();
    void itemsComeAndGoAtRunTime();
    void aRowIsMirroredRightToLeft();
    void marginsSpacingAndAlignment();
    void aStretchPushesApart();
    void eachOrientationHasItsPolicy();
    void aDeletedWidgetLeavesTheLayout();
    void heightForWidthReachesTheLabelBelow();
};

void WidgetsLayout::roomIsSharedByStretchThenGrowthThenEvenly_data()
{
    QTest::addColumn<QList<LinearItem>>("items");
    QTest::addColumn<qreal>("available");
    QTest::addColumn<QList<qreal>>("sizes");
    using Items = QList<LinearItem>;
    using Sizes = QList<qreal>;
    QTest::newRow("nothing") << Items{} << 100.0 << Sizes{};
    QTest::newRow("preferred fits") << Items{{0, 40, 40, 0, false}, {0, 60, 60, 0, false}} << 100.0
                                    << Sizes{40, 60};
    QTest::newRow("stretch first") << Items{{0, 10, 500, 1, false},
                                            {0, 10, 500, 3, true},
                                            {0, 10, 500, 0, true}}
                                   << 70.0 << Sizes{20, 40, 10};
    QTest::newRow("stretch is full") << Items{{0, 10, 20, 1, false}, {0, 10, 500, 0, true}} << 100.0
                                     << Sizes{20, 80};
    QTest::newRow("growing before the rest")
        << Items{{0, 10, 500, 0, false}, {0, 10, 500, 0, true}} << 100.0 << Sizes{10, 90};
    QTest::newRow("evenly") << Items{{0, 10, 500, 0, false}, {0, 30, 500, 0, false}} << 100.0
                            << Sizes{40, 60};
    QTest::newRow("all full") << Items{{0, 10, 20, 0, false}, {0, 10, 20, 1, false}} << 100.0
                              << Sizes{20, 20};
    QTest::newRow("too little") << Items{{20, 60, 60, 0, false}, {0, 40, 40, 0, false}} << 60.0
                                << Sizes{40, 20};
    QTest::newRow("below the minimum")
        << Items{{30, 60, 60, 0, false}, {30, 40, 40, 0, false}} << 10.0 << Sizes{30, 30};
}

void WidgetsLayout::roomIsSharedByStretchThenGrowthThenEvenly()
{
    QFETCH(QList<LinearItem>, items);
    QFETCH(qreal, available);
    QFETCH(QList<qreal>, sizes);
    const QList<qreal> result = toolkit::distribute(items, available);
    QCOMPARE(result.size(), sizes.size());
    for (qsizetype i = 0; i < sizes.size(); ++i)
        QCOMPARE(result.at(i), sizes.at(i));
}

namespace {

// A widget of 400 x 300 with a layout of one column.
struct Column
{
    explicit Column(Qt::Orientation orientation = Qt::Vertical)
        : layout(new Layout),
          policy(new LinearLayoutPolicy(layout, orientation))
    {
        layout->setPolicy(policy);
        widget.setLayout(layout);
        widget.resize(400, 300);
    }
    void settle()
    {
        layout->activate();
        QCoreApplication::sendPostedEvents();
    }
    Widget widget;
    Layout *layout;
    LinearLayoutPolicy *policy;
};

} // namespace

void WidgetsLayout::aColumnStacksItsItems()
{
    Column column;
    auto *top = new Box({100, 80});
    auto *bottom = new Box({100, 40});
    top->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    column.policy->addItem(top);
    column.policy->addItem(bottom);
    column.settle();
    QCOMPARE(text(top), u"0,0 400x80"_s);
    QCOMPARE(text(bottom), u"0,80 400x220"_s);
    QCOMPARE(top->parentItem(), &column.widget);
}

// The filter field comes and goes above the list, also while its page is covered.
void WidgetsLayout::aHiddenItemTakesNoRoomAndComesBack()
{
    Column column;
    auto *field = new Box({100, 80});
    field->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    auto *list = new Box({100, 40});
    column.policy->addItem(field);
    column.policy->addItem(list);
    field->setVisible(false);
    column.settle();
    QCOMPARE(text(list), u"0,0 400x300"_s);
    QCOMPARE(column.widget.effectiveSizeHint(Qt::PreferredSize).height(), 40.0);
    column.widget.setVisible(false); // the page is covered: its items are not visible, but not hidden
    field->setVisible(true);
    column.widget.setVisible(true);
    column.settle();
    QCOMPARE(text(list), u"0,80 400x220"_s);
    field->setVisible(false);
    column.settle();
    QCOMPARE(text(list), u"0,0 400x300"_s);
}

void WidgetsLayout::itemsComeAndGoAtRunTime()
{
    Column column;
    auto *list = new Box({100, 100});
    auto *field = new Box({100, 80});
    field->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    column.policy->insertItem(0, list);
    column.policy->insertItem(0, field);
    QCOMPARE(column.policy->indexOf(field), 0);
    QCOMPARE(column.policy->indexOf(list), 1);
    QCOMPARE(column.policy->count(), 2);
    QCOMPARE(column.policy->itemAt(1), static_cast<QGraphicsLayoutItem *>(list));
    column.settle();
    QCOMPARE(text(list), u"0,80 400x220"_s);
    column.policy->removeItem(field);
    column.settle();
    QCOMPARE(column.policy->indexOf(field), -1);
    QCOMPARE(text(list), u"0,0 400x300"_s);
    QCOMPARE(field->parentLayoutItem(), nullptr);
    QCOMPARE(field->parentItem(), &column.widget); // it stays the page's, to come back
    column.policy->removeItem(field);
    column.policy->insertItem(0, list); // moved, not doubled
    QCOMPARE(column.policy->count(), 1);
    QCOMPARE(column.policy->itemAt(7), nullptr);
}

void WidgetsLayout::aRowIsMirroredRightToLeft()
{
    Column row(Qt::Horizontal);
    auto *first = new Box({100, 50});
    first->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Expanding);
    auto *second = new Box({100, 50});
    row.policy->addItem(first);
    row.policy->addItem(second);
    row.policy->setContentsMargins(10, 0, 30, 0);
    row.settle();
    QCOMPARE(text(first), u"10,0 100x300"_s);
    QCOMPARE(text(second), u"110,0 260x300"_s);
    row.widget.setLayoutDirection(Qt::RightToLeft);
    row.layout->invalidate();
    row.settle();
    QCOMPARE(text(first), u"290,0 100x300"_s);
    QCOMPARE(text(second), u"30,0 260x300"_s);
}

void WidgetsLayout::marginsSpacingAndAlignment()
{
    Column column;
    auto *first = new Box({100, 50});
    first->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    auto *second = new Box({80, 50});
    column.policy->setContentsMargins(16, 8, 16, 8);
    column.policy->setSpacing(12);
    column.policy->addItem(first);
    column.policy->addItem(second);
    column.policy->setAlignment(second, Qt::AlignHCenter | Qt::AlignBottom);
    second->setMaximumHeight(60);
    column.settle();
    QCOMPARE(text(first), u"16,8 400x50"_s.replace(u"400"_s, u"368"_s));
    QCOMPARE(text(second), u"160,70 80x60"_s);
}

void WidgetsLayout::aStretchPushesApart()
{
    Column column;
    auto *first = new Box({100, 50});
    auto *last = new Box({100, 50});
    column.policy->addItem(first);
    column.policy->addStretch();
    column.policy->addItem(last);
    column.settle();
    QCOMPARE(text(first), u"0,0 400x50"_s);
    QCOMPARE(text(last), u"0,250 400x50"_s);
    column.policy->setStretchFactor(first, 1);
    column.settle();
    QCOMPARE(first->geometry().height(), 150.0);
    QCOMPARE(column.policy->indexOf(last), 1);
}

void WidgetsLayout::eachOrientationHasItsPolicy()
{
    Column column;
    auto *landscape = new LinearLayoutPolicy(column.layout, Qt::Horizontal);
    column.layout->setLandscapePolicy(landscape);
    auto *both = new Box({100, 50});
    auto *portraitOnly = new Box({100, 50});
    auto *landscapeOnly = new Box({100, 50});
    column.policy->addItem(both);
    column.policy->addItem(portraitOnly);
    landscape->addItem(both);
    landscape->addItem(landscapeOnly);
    column.settle();
    QCOMPARE(column.layout->policy(), column.policy); // without a window: portrait
    QCOMPARE(column.layout->count(), 3);
    QVERIFY(portraitOnly->isVisible());
    QVERIFY(!landscapeOnly->isVisible());
    QCOMPARE(text(portraitOnly), u"0,150 400x150"_s);
    column.layout->setPolicy(landscape);
    column.settle();
    QVERIFY(!portraitOnly->isVisible());
    QVERIFY(landscapeOnly->isVisible());
    QCOMPARE(text(landscapeOnly), u"200,0 200x300"_s);
}

void WidgetsLayout::aDeletedWidgetLeavesTheLayout()
{
    Column column;
    auto *first = new Box({100, 50});
    auto *second = new Box({100, 50});
    column.policy->addItem(first);
    column.policy->addItem(second);
    delete first;
    column.settle();
    QCOMPARE(column.policy->count(), 1);
    QCOMPARE(column.layout->count(), 1);
    QCOMPARE(text(second), u"0,0 400x300"_s);
}

void WidgetsLayout::heightForWidthReachesTheLabelBelow()
{
    class Flow : public Widget
    {
    public:
        Flow()
        {
            QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Fixed);
            policy.setHeightForWidth(true);
            setSizePolicy(policy);
        }
        QSizeF sizeHint(Qt::SizeHint which, const QSizeF &constraint) const override
        {
            if (which == Qt::MaximumSize)
                return {10000, 10000};
            if (which == Qt::MinimumSize)
                return {50, 0};
            return constraint.width() > 0 ? QSizeF(constraint.width(), 40000 / constraint.width())
                                          : QSizeF(400, 100);
        }
    };
    Column column;
    auto *flow = new Flow;
    auto *rest = new Box({100, 10});
    column.policy->addItem(flow);
    column.policy->addItem(rest);
    column.settle();
    QCOMPARE(flow->geometry().height(), 100.0);
    column.widget.resize(200, 300);
    column.settle();
    QCOMPARE(flow->geometry().height(), 200.0);
    QCOMPARE(text(rest), u"0,200 200x100"_s);
}

QTEST_MAIN(WidgetsLayout)
#include "widgets_layout.moc"

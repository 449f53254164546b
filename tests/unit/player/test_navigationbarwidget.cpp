// SPDX-License-Identifier: GPL-3.0-or-later
#include <player/navigationbarwidget.h>

#include <platform/toolkit/button.h>
#include <platform/toolkit/label.h>
#include <platform/toolkit/theme.h>

#include <QFile>
#include <QGraphicsGridLayout>
#include <QGraphicsScene>
#include <QGraphicsView>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMetaMethod>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

using namespace Qt::Literals::StringLiterals;

class TestNavigationBarWidget : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void tapsBecomeSignals();
    void disablingTheMenuDimsItAndSwallowsTaps();
    void aNewCentreWidgetHidesAndReturnsTheOldOne();
    void theMiddleHasTheThemedWidth();
    void theMiddleIsMeasuredOnce();
    void inAWideBarTheMiddleIsWide();
    void theMenuButtonCanBeHidden();
    void theTabKeyGoesThroughTheBarInReadingOrder();
    void theBackIconIsTheOwners();
    void aDimmedMenuButtonSwallowsTheFinger();
    void theLayoutIsOneRowWithoutGaps();

private:
    std::unique_ptr<NavigationBarWidget> m_bar;
};

void TestNavigationBarWidget::init()
{
    m_bar = std::make_unique<NavigationBarWidget>();
}

void TestNavigationBarWidget::tapsBecomeSignals()
{
    QSignalSpy back(m_bar.get(), &NavigationBarWidget::backButtonClicked);
    QSignalSpy menu(m_bar.get(), &NavigationBarWidget::menuButtonClicked);
    m_bar->backButton()->click();
    QCOMPARE(back.size(), 1);
    QCOMPARE(menu.size(), 0);
    m_bar->menuButton()->click();
    QCOMPARE(back.size(), 1);
    QCOMPARE(menu.size(), 1);
    QCOMPARE(m_bar->menuButton()->viewType(), u"icon"_s);
    QCOMPARE(m_bar->menuButton()->styleName(), u"NavigationBarButton"_s);
    QCOMPARE(m_bar->backButton()->styleName(), u"NavigationBarButton"_s);
}

void TestNavigationBarWidget::disablingTheMenuDimsItAndSwallowsTaps()
{
    QSignalSpy menu(m_bar.get(), &NavigationBarWidget::menuButtonClicked);
    QCOMPARE(m_bar->menuButton()->iconId(), u"icon-m-toolbar-view-menu-white"_s);
    m_bar->setMenuEnabled(false);
    QCOMPARE(m_bar->menuButton()->iconId(), u"icon-m-toolbar-view-menu-dimmed-white"_s);
    m_bar->menuButton()->click();
    QCOMPARE(menu.size(), 0);
    m_bar->setMenuEnabled(true);
    QCOMPARE(m_bar->menuButton()->iconId(), u"icon-m-toolbar-view-menu-white"_s);
    m_bar->menuButton()->click();
    QCOMPARE(menu.size(), 1);
}

void TestNavigationBarWidget::aNewCentreWidgetHidesAndReturnsTheOldOne()
{
    auto *first = new toolkit::Label(u"first"_s, m_bar.get());
    auto *second = new toolkit::Label(u"second"_s, m_bar.get());
    const auto *layout = static_cast<QGraphicsGridLayout *>(m_bar->layout());
    QCOMPARE(m_bar->setCentralWidget(first), nullptr);
    QVERIFY(first->isVisibleTo(m_bar.get()));
    QCOMPARE(layout->itemAt(0, 1), first);
    QCOMPARE(layout->alignment(first), Qt::AlignCenter);
    QCOMPARE(m_bar->setCentralWidget(second), first);
    QVERIFY(!first->isVisibleTo(m_bar.get()));
    QCOMPARE(layout->itemAt(0, 1), second);
    QCOMPARE(layout->count(), 3);
    QCOMPARE(m_bar->setCentralWidget(nullptr), second);
    QVERIFY(!second->isVisibleTo(m_bar.get()));
    QCOMPARE(layout->count(), 2);
    QCOMPARE(m_bar->setCentralWidget(nullptr), nullptr);
}

void TestNavigationBarWidget::theMiddleHasTheThemedWidth()
{
    toolkit::Widget themed;
    themed.setStyleName(u"NavigationBarToolbar"_s);
    const auto *layout = static_cast<QGraphicsGridLayout *>(m_bar->layout());
    QCOMPARE(layout->columnMinimumWidth(1), qreal(qRound(themed.preferredWidth())));
    QCOMPARE(layout->columnMaximumWidth(1), qreal(qRound(themed.preferredWidth())));
    QVERIFY(themed.preferredWidth() > 0);
}

// Text of another size, or another theme, is for the next bar.
void TestNavigationBarWidget::theMiddleIsMeasuredOnce()
{
    const auto *layout = static_cast<QGraphicsGridLayout *>(m_bar->layout());
    const qreal width = layout->columnMinimumWidth(1);
    QTemporaryDir folder;
    QFile bundled(u":/theme/kestrel.theme.json"_s);
    QVERIFY(bundled.open(QIODevice::ReadOnly));
    QJsonObject theme = QJsonDocument::fromJson(bundled.readAll()).object();
    QJsonObject styles = theme.value("styles"_L1).toObject();
    QJsonObject bar = styles.value("NavigationBarToolbar"_L1).toObject();
    bar.insert("preferred"_L1, QJsonArray{200, 76});
    styles.insert("NavigationBarToolbar"_L1, bar);
    theme.insert("styles"_L1, styles);
    QFile file(folder.filePath(u"other.theme.json"_s));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(QJsonDocument(theme).toJson());
    file.close();
    QVERIFY(toolkit::Theme::instance()->loadFile(file.fileName()));
    toolkit::Widget themed;
    themed.setStyleName(u"NavigationBarToolbar"_s);
    QCOMPARE(themed.preferredWidth(), 200.0);
    m_bar->resize(480, 76);
    QCOMPARE(layout->columnMinimumWidth(1), width);
    QVERIFY(toolkit::Theme::instance()->loadFile(bundled.fileName()));
}

// A wide page has room for the whole of most titles, and what follows the title stands beside the menu.
void TestNavigationBarWidget::inAWideBarTheMiddleIsWide()
{
    NavigationBarWidget *bar = m_bar.get();
    auto *layout = static_cast<QGraphicsGridLayout *>(bar->layout());
    const qreal buttons = bar->backButton()->preferredWidth() + bar->menuButton()->preferredWidth();
    auto *middle = new toolkit::Label(u"a title"_s, bar);
    middle->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    middle->setMaximumWidth(QWIDGETSIZE_MAX);
    bar->setCentralWidget(middle);
    for (const qreal whole : {480.0, 854.0, 1280.0, 500.0}) { // and narrow again
        bar->resize(whole, 76);
        layout->activate();
        QCOMPARE(bar->size().width(), whole);
        QCOMPARE(layout->columnMaximumWidth(1), whole - buttons);
        QCOMPARE(middle->size().width(), whole - buttons);
        QCOMPARE(bar->menuButton()->geometry().left(), middle->geometry().right());
        QCOMPARE(bar->menuButton()->geometry().right(), whole);
        QCOMPARE(layout->columnMinimumWidth(1), 480 - buttons); // never less than its own
    }
}

void TestNavigationBarWidget::theMenuButtonCanBeHidden()
{
    m_bar->setMenuButtonVisible(false);
    QVERIFY(!m_bar->menuButton()->isVisibleTo(m_bar.get()));
    m_bar->setMenuButtonVisible(true);
    QVERIFY(m_bar->menuButton()->isVisibleTo(m_bar.get()));
}

// Back, what stands in the middle, the menu; whatever was put there first or stood there before.
void TestNavigationBarWidget::theTabKeyGoesThroughTheBarInReadingOrder()
{
    const auto middleWith = [](toolkit::Widget *&middle, const QStringList &names) {
        middle = new toolkit::Widget;
        new toolkit::Label(u"title"_s, middle);
        for (const QString &name : names)
            (new toolkit::IconButton(QString(), middle))->setObjectName(name);
    };
    toolkit::Widget *first = nullptr;
    toolkit::Widget *second = nullptr;
    middleWith(first, {u"first"_s});
    middleWith(second, {u"second"_s, u"third"_s});
    m_bar->backButton()->setObjectName(u"back"_s);
    m_bar->menuButton()->setObjectName(u"menu"_s);
    QGraphicsScene scene;
    QGraphicsView view(&scene);
    const auto walk = [&] {
        QStringList names;
        scene.setFocusItem(nullptr);
        for (int i = 0; i < 4; ++i) {
            QTest::keyClick(view.viewport(), Qt::Key_Tab);
            auto *focused = scene.focusItem();
            names.append(focused ? static_cast<QGraphicsWidget *>(focused)->objectName() : QString());
        }
        return names.join(u' ');
    };
    m_bar->setCentralWidget(first);
    NavigationBarWidget *bar = m_bar.release(); // the scene's from here on
    scene.addItem(bar);
    view.show();
    QVERIFY(QTest::qWaitForWindowActive(&view));
    QCOMPARE(walk(), u"back first menu menu"_s);
    bar->setCentralWidget(second);
    QCOMPARE(walk(), u"back second third menu"_s);
    bar->setCentralWidget(nullptr);
    QCOMPARE(walk(), u"back menu menu menu"_s);
    bar->setCentralWidget(first);
    QCOMPARE(walk(), u"back first menu menu"_s);
    for (toolkit::Widget *middle : {first, second})
        QVERIFY(middle->scene() == &scene); // and goes with it
}

void TestNavigationBarWidget::theBackIconIsTheOwners()
{
    m_bar->setBackButtonIcon(u"icon-m-toolbar-back-white"_s);
    QCOMPARE(m_bar->backButton()->iconId(), u"icon-m-toolbar-back-white"_s);
}

void TestNavigationBarWidget::aDimmedMenuButtonSwallowsTheFinger()
{
    QGraphicsScene scene(0, 0, 480, 200);
    QGraphicsView view(&scene);
    NavigationBarWidget *bar = m_bar.get();
    scene.addItem(bar);
    bar->setGeometry(0, 0, 480, bar->preferredHeight());
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    QSignalSpy back(bar, &NavigationBarWidget::backButtonClicked);
    QSignalSpy menu(bar, &NavigationBarWidget::menuButtonClicked);
    const auto tap = [&](const toolkit::IconButton *button) {
        const QPoint at = view.mapFromScene(button->sceneBoundingRect().center());
        QTest::mouseClick(view.viewport(), Qt::LeftButton, {}, at);
    };
    tap(bar->menuButton());
    QCOMPARE(menu.size(), 1);
    bar->setMenuEnabled(false);
    tap(bar->menuButton());
    QCOMPARE(menu.size(), 1);
    bar->setMenuEnabled(true);
    tap(bar->menuButton());
    QCOMPARE(menu.size(), 2);
    QCOMPARE(back.size(), 0);
    tap(bar->backButton());
    QCOMPARE(back.size(), 1);
    QCOMPARE(menu.size(), 2);
    QVERIFY(bar->backButton()->sceneBoundingRect().center().x()
            < bar->menuButton()->sceneBoundingRect().center().x());
    scene.removeItem(bar); // the test's own again
}

void TestNavigationBarWidget::theLayoutIsOneRowWithoutGaps()
{
    const auto *layout = static_cast<QGraphicsGridLayout *>(m_bar->layout());
    QCOMPARE(layout->rowCount(), 1);
    QCOMPARE(layout->columnCount(), 3);
    QCOMPARE(layout->horizontalSpacing(), 0.0);
    QCOMPARE(layout->verticalSpacing(), 0.0);
    qreal left = -1;
    qreal top = -1;
    qreal right = -1;
    qreal bottom = -1;
    layout->getContentsMargins(&left, &top, &right, &bottom);
    QCOMPARE(QList<qreal>({left, top, right, bottom}), QList<qreal>({0, 0, 0, 0}));
    QCOMPARE(layout->itemAt(0, 0), m_bar->backButton());
    QCOMPARE(layout->itemAt(0, 2), m_bar->menuButton());
    const QByteArrayList declared{"backButtonClicked()", "menuButtonClicked()"};
    const QMetaObject &object = NavigationBarWidget::staticMetaObject;
    for (int i = 0; i < declared.size(); ++i)
        QCOMPARE(object.method(object.methodOffset() + i).methodSignature(), declared.at(i));
}

QTEST_MAIN(TestNavigationBarWidget)
#include "test_navigationbarwidget.moc"

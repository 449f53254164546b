// SPDX-License-Identifier: GPL-3.0-or-later
#include "core_windowfixture.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QSignalSpy>
#include <QTest>
#include <QWindow>

using namespace toolkit;
using namespace Qt::Literals::StringLiterals;
using Profile = ApplicationWindow::Profile;

namespace {

// Notes the events that an event filter on the window and its viewport sees.
class Filter : public QObject
{
public:
    QList<QEvent::Type> seen;
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::KeyPress || event->type() == QEvent::KeyRelease
            || event->type() == QEvent::WinIdChange)
            seen.append(event->type());
        return QObject::eventFilter(watched, event);
    }
};

} // namespace

class WindowEscapeTest : public QObject, private WindowFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init() { setUp(); }
    void cleanup() { tearDown(); }

    void filtersSeeKeysAndWindowIds();
    void escapeByEveryWay_data();
    void escapeByEveryWay();
    void escapeOfTheLastPageClosesTheWindow();
    void escapeModes_data();
    void escapeModes();
    void escapeInATextFieldThatTakesItStaysThere();
};

void WindowEscapeTest::filtersSeeKeysAndWindowIds()
{
    Filter filter;
    m_window = std::make_unique<ApplicationWindow>();
    m_window->installEventFilter(&filter);
    m_window->viewport()->installEventFilter(&filter);
    m_window->showForProfile();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    QVERIFY(filter.seen.contains(QEvent::WinIdChange));
    QVERIFY(m_window->effectiveWindowId() != 0);
    filter.seen.clear();
    QTest::keyClick(m_window->windowHandle(), Qt::Key_A);
    QCOMPARE(filter.seen, (QList<QEvent::Type>{QEvent::KeyPress, QEvent::KeyRelease}));
}

void WindowEscapeTest::escapeByEveryWay_data()
{
    QTest::addColumn<QString>("way");
    for (const char *way : {"escape key", "back key", "back button of the mouse", "swipe from the edge"})
        QTest::newRow(way) << QString::fromLatin1(way);
}

void WindowEscapeTest::escapeByEveryWay()
{
    QFETCH(const QString, way);
    show(Profile::Desktop);
    QSignalSpy back(m_page.get(), &ApplicationPage::backButtonClicked);
    QWidget *viewport = m_window->viewport();
    if (way == "escape key"_L1) {
        QTest::keyClick(m_window.get(), Qt::Key_Escape);
    } else if (way == "back key"_L1) {
        QTest::keyClick(m_window.get(), Qt::Key_Back);
    } else if (way == "back button of the mouse"_L1) {
        QTest::mouseClick(viewport, Qt::BackButton, {}, {200, 200});
    } else {
        const auto at = [viewport](QEvent::Type type, QPointF position, Qt::MouseButtons buttons) {
            QMouseEvent event(type, position, viewport->mapToGlobal(position),
                              type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton, buttons,
                              Qt::NoModifier);
            QCoreApplication::sendEvent(viewport, &event);
        };
        at(QEvent::MouseButtonPress, {3, 300}, Qt::LeftButton);
        for (int x = 20; x <= 200; x += 20)
            at(QEvent::MouseMove, QPointF(x, 302), Qt::LeftButton);
        at(QEvent::MouseButtonRelease, {200, 302}, Qt::NoButton);
    }
    QCOMPARE(back.size(), 1);
    QVERIFY(m_window->isVisible());
}

void WindowEscapeTest::escapeOfTheLastPageClosesTheWindow()
{
    show(Profile::Desktop);
    QTest::keyClick(m_window.get(), Qt::Key_Escape);
    QVERIFY(!m_window->isVisible());
}

void WindowEscapeTest::escapeModes_data()
{
    using Mode = ApplicationPage::EscapeMode;
    QTest::addColumn<Mode>("mode");
    QTest::addColumn<bool>("heard");
    QTest::addColumn<bool>("pageBelow");
    QTest::addColumn<QString>("effect");
    QTest::newRow("auto, heard") << Mode::Auto << true << false << u"back"_s;
    QTest::newRow("auto, unheard") << Mode::Auto << false << false << u"closed"_s;
    QTest::newRow("auto, unheard, over another") << Mode::Auto << false << true << u"dismissed"_s;
    QTest::newRow("back") << Mode::Back << true << false << u"back"_s;
    QTest::newRow("close window") << Mode::CloseWindow << true << true << u"closed"_s;
}

void WindowEscapeTest::escapeModes()
{
    QFETCH(const ApplicationPage::EscapeMode, mode);
    QFETCH(const bool, heard);
    QFETCH(const bool, pageBelow);
    m_window = shownWindow(Profile::Desktop);
    Page below;
    if (pageBelow)
        below.appear(m_window.get(), Appearance::Immediate);
    m_page->appear(m_window.get(), Appearance::Immediate);
    m_page->setEscapeMode(mode);
    QString effect;
    if (heard)
        connect(m_page.get(), &ApplicationPage::backButtonClicked, this, [&effect] { effect = u"back"_s; });
    QTest::keyClick(m_window.get(), Qt::Key_Escape);
    if (!m_window->isVisible())
        effect += u"closed"_s;
    else if (m_window->sceneManager()->currentPage() == &below)
        effect += u"dismissed"_s;
    QTEST(effect, "effect");
}

void WindowEscapeTest::escapeInATextFieldThatTakesItStaysThere()
{
    class Field : public Widget
    {
    public:
        using Widget::Widget;

    protected:
        void keyPressEvent(QKeyEvent *event) override { event->accept(); }
    };
    show(Profile::Desktop);
    m_window->raiseToFront();
    QTRY_VERIFY(m_window->isActiveWindow());
    QCOMPARE(QApplication::focusWidget(), m_window.get()); // or the input method would not find the field
    auto *field = new Field(m_page->centralWidget());
    field->setFlag(QGraphicsItem::ItemIsFocusable);
    field->setFocus();
    QTest::keyClick(m_window.get(), Qt::Key_Escape);
    QVERIFY(m_window->isVisible());
}

KESTREL_TOOLKIT_TEST_MAIN(WindowEscapeTest)
#include "core_windowescapetest.moc"

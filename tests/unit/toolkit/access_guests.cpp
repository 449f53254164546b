// SPDX-License-Identifier: GPL-3.0-or-later
#include "accessevents.h"
#include "core_support.h"
#include "platform/toolkit/applicationpage.h"
#include "platform/toolkit/button.h"

#include <QKeyEvent>

using namespace Qt::Literals::StringLiterals;
using namespace toolkit;
using Actions = QAccessibleActionInterface;

namespace {

// A row as somebody makes it who knows of the toolkit nothing at all.
class Row : public QGraphicsWidget
{
    Q_OBJECT
    Q_PROPERTY(QString accessibleName READ name NOTIFY renamed)
    Q_PROPERTY(QString accessibleDescription MEMBER m_description NOTIFY described)

public:
    Row(const QString &name, QGraphicsItem *parent) : QGraphicsWidget(parent), m_name(name)
    {
        setFocusPolicy(Qt::TabFocus);
        resize(200, 64);
    }

    [[nodiscard]] QString name() const { return m_name; }
    void rename(const QString &name)
    {
        m_name = name;
        Q_EMIT renamed();
    }
    QStringList log;

Q_SIGNALS:
    void renamed();
    void described();

protected:
    void keyPressEvent(QKeyEvent *event) override { note(u"press"_s, event); }
    void keyReleaseEvent(QKeyEvent *event) override { note(u"release"_s, event); }

private:
    void note(const QString &what, const QKeyEvent *event)
    {
        log.append(event->key() == Qt::Key_Return ? what : u"another key"_s);
    }

    QString m_name;
    QString m_description;
};

void act(QObject *object, const QString &action)
{
    access(object)->actionInterface()->doAction(action);
}

} // namespace

class AccessGuests : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void rowsAreRead();
    void aRoleIsTakenThatNeedsNothingElse_data();
    void aRoleIsTakenThatNeedsNothingElse();
    void fromTheRightInSuchLanguages();
    void everythingIsFoundAgain();
    void aPressIsTheKeyReturn();
    void whatIsBlockedTakesNoAction();
    void aRowThatEndsWithThePress();
    void theFocusIsTold();
    void changesAreTold();
    void whatComesLaterIsTold();
    void interfacesEndWithTheirRows();

private:
    [[nodiscard]] QString pageTree() const { return accessTree(access(m_window.get())->child(0)); }

    std::unique_ptr<ApplicationWindow> m_window;
    std::unique_ptr<ApplicationPage> m_page;
    QGraphicsWidget *m_column = nullptr; // without a name
    Row *m_first = nullptr;
    Row *m_second = nullptr;
};

void AccessGuests::initTestCase()
{
    QTRY_VERIFY(QAccessible::isActive());
    setReducedMotion(true);
}

void AccessGuests::init()
{
    m_window = shownWindow(ApplicationWindow::Profile::Desktop);
    m_page = std::make_unique<ApplicationPage>();
    m_page->setTitle(u"Details"_s);
    m_page->appear(m_window.get(), Appearance::Immediate);
    m_column = new QGraphicsWidget(m_page->centralWidget());
    m_second = new Row(u"Second"_s, m_column);
    m_second->setPos(0, 64);
    m_first = new Row(u"First"_s, m_column);
    QCoreApplication::processEvents();
}

void AccessGuests::cleanup()
{
    m_page.reset();
    m_window.reset();
}

// “Below the details of a video are others; my reader says nothing of them.”
void AccessGuests::rowsAreRead()
{
    m_first->setProperty("accessibleDescription", u"Duration\n01:05"_s);
    QCOMPARE(pageTree(), u"Pane Details\n  Heading Details\n  Button First\n  Button Second\n"_s);
    QCOMPARE(access(m_first)->text(QAccessible::Description), u"Duration 01:05"_s);
    QCOMPARE(access(m_first)->text(QAccessible::Value), QString());
    m_first->hide();
    m_second->rename(QString());
    auto *inside = new Row(u"Inside"_s, m_second);
    QCOMPARE(pageTree(), u"Pane Details\n  Heading Details\n  Button Inside\n"_s);
    QCOMPARE(access(inside)->parent(), access(m_page.get()));
}

void AccessGuests::aRoleIsTakenThatNeedsNothingElse_data()
{
    QTest::addColumn<QVariant>("role");
    QTest::addColumn<QAccessible::Role>("focusable");
    QTest::addColumn<QAccessible::Role>("notFocusable");
    QTest::newRow("none") << QVariant() << QAccessible::Button << QAccessible::StaticText;
    QTest::newRow("heading") << QVariant(int(QAccessible::Heading)) << QAccessible::Heading
                             << QAccessible::Heading;
    QTest::newRow("by its type") << QVariant::fromValue(QAccessible::ListItem) << QAccessible::ListItem
                                 << QAccessible::ListItem;
    QTest::newRow("a table, whose cells nobody has")
        << QVariant(int(QAccessible::Table)) << QAccessible::Button << QAccessible::StaticText;
    QTest::newRow("nonsense") << QVariant(u"row"_s) << QAccessible::Button << QAccessible::StaticText;
    QTest::newRow("a number that is none") << QVariant(-7) << QAccessible::Button << QAccessible::StaticText;
}

void AccessGuests::aRoleIsTakenThatNeedsNothingElse()
{
    QFETCH(QVariant, role);
    QFETCH(QAccessible::Role, focusable);
    QFETCH(QAccessible::Role, notFocusable);
    m_first->setProperty("accessibleRole", role);
    QCOMPARE(access(m_first)->role(), focusable);
    QCOMPARE(access(m_first)->actionInterface()->actionNames(),
             QStringList({Actions::pressAction(), Actions::setFocusAction()}));
    m_first->setFocusPolicy(Qt::NoFocus);
    QCOMPARE(access(m_first)->role(), notFocusable);
    QCOMPARE(access(m_first)->actionInterface()->actionNames(), QStringList());
    act(m_first, Actions::pressAction());
    QCOMPARE(m_first->log, QStringList());
}

void AccessGuests::fromTheRightInSuchLanguages()
{
    m_second->setPos(220, 0);
    QCOMPARE(pageTree(), u"Pane Details\n  Heading Details\n  Button First\n  Button Second\n"_s);
    m_page->setLayoutDirection(Qt::RightToLeft);
    QCOMPARE(pageTree(), u"Pane Details\n  Heading Details\n  Button Second\n  Button First\n"_s);
}

void AccessGuests::everythingIsFoundAgain()
{
    QAccessibleInterface *page = access(m_page.get());
    QAccessibleInterface *row = access(m_second);
    QCOMPARE(page->child(page->indexOfChild(row)), row);
    QCOMPARE(row->parent(), page);
    QCOMPARE(row->window(), m_window->windowHandle());
    QCOMPARE(row->childCount(), 0);
    const QPoint middle = row->rect().center();
    QCOMPARE(access(m_window.get())->childAt(middle.x(), middle.y()), row);
    QVERIFY(!row->state().invisible && !row->state().offscreen && row->state().focusable);
}

void AccessGuests::aPressIsTheKeyReturn()
{
    act(m_first, Actions::pressAction());
    QCOMPARE(m_first->log, QStringList({u"press"_s, u"release"_s}));
    QVERIFY(m_first->hasFocus());
    m_first->setEnabled(false);
    QVERIFY(access(m_first)->state().disabled);
    act(m_first, Actions::pressAction());
    QCOMPARE(m_first->log.size(), 2);
}

void AccessGuests::whatIsBlockedTakesNoAction()
{
    m_window->sceneManager()->block();
    act(m_first, Actions::pressAction());
    act(m_first, Actions::setFocusAction());
    QVERIFY(!m_first->hasFocus());
    m_window->sceneManager()->unblock();
    QCOMPARE(m_first->log, QStringList());
}

// A list is made anew when one of its videos is deleted.
void AccessGuests::aRowThatEndsWithThePress()
{
    class Mortal : public Row
    {
    public:
        using Row::Row;

    protected:
        void keyPressEvent(QKeyEvent *) override { delete this; }
    };
    auto *mortal = new Mortal(u"Mortal"_s, m_column);
    act(mortal, Actions::pressAction());
    QCOMPARE(pageTree(), u"Pane Details\n  Heading Details\n  Button First\n  Button Second\n"_s);
}

void AccessGuests::theFocusIsTold()
{
    AccessEvents events;
    act(m_second, Actions::setFocusAction());
    QVERIFY(m_second->hasFocus());
    QVERIFY(events.take().contains(u"Focus Second"_s));
    QVERIFY(access(m_second)->state().focused);
    QCOMPARE(access(m_window.get())->focusChild(), access(m_second));
    m_first->setFocus(Qt::TabFocusReason);
    QVERIFY(events.take().contains(u"Focus First"_s));
}

void AccessGuests::changesAreTold()
{
    AccessEvents events;
    QVERIFY(access(m_first) != nullptr);
    events.take();
    m_first->rename(u"Renamed"_s);
    m_first->setProperty("accessibleDescription", u"01:05"_s);
    m_first->setEnabled(false);
    m_first->hide();
    m_first->show();
    QCOMPARE(events.take(),
             QStringList({u"NameChanged Renamed"_s, u"DescriptionChanged Renamed"_s,
                          u"StateChanged Renamed"_s, u"ObjectHide Renamed"_s, u"ObjectShow Renamed"_s}));
}

void AccessGuests::whatComesLaterIsTold()
{
    QVERIFY(!pageTree().isEmpty()); // somebody has looked
    AccessEvents events;
    QStringList told;
    const auto orders = [&] {
        told += events.take();
        return told.count(u"ObjectReorder Details"_s);
    };
    for (const QString &name : {u"Third"_s, u"Fourth"_s})
        (new Row(name, m_column))->setPos(0, 128);
    QTRY_COMPARE(orders(), 1); // both at once
    delete m_first;
    QTRY_COMPARE(orders(), 2);
}

void AccessGuests::interfacesEndWithTheirRows()
{
    const QAccessible::Id row = QAccessible::uniqueId(access(m_first));
    delete m_first;
    QVERIFY(QAccessible::accessibleInterface(row) == nullptr);
    QCOMPARE(pageTree(), u"Pane Details\n  Heading Details\n  Button Second\n"_s);
}

int main(int argc, char **argv)
{
    letAssistiveTechnologyListen();
    qunsetenv("KESTREL_PROFILE");
    QApplication application(argc, argv);
    AccessGuests test;
    return QTest::qExec(&test, argc, argv);
}

#include "access_guests.moc"

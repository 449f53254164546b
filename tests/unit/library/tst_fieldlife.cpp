// SPDX-License-Identifier: GPL-3.0-or-later
#include "fileops/editmanager.h"
#include "library/filteredmodel.h"
#include "libraryfixture.h"
#include "platform/toolkit/list.h"
#include "platform/toolkit/objectmenu.h"
#include "support/driventimer.h"

using namespace Qt::Literals::StringLiterals;

namespace {

// A clock that goes only when it is told to, for one timer: the timer runs out when its interval has passed
// on this clock since it was started last.
class DrivenClock
{
public:
    explicit DrivenClock(QTimer *timer = nullptr) : m_timer(timer) { look(); }

    // A timer that is made on its first use.
    void follow(QTimer *timer)
    {
        m_timer = timer;
        look();
    }
    // To be called after whatever may have started or stopped the timer. Each start has an id of its own.
    void look()
    {
        const int id = m_timer && m_timer->isActive() ? m_timer->timerId() : -1;
        if (id != m_id && m_timer)
            m_left = m_timer->interval();
        m_id = id;
    }
    void advance(int ms)
    {
        if (m_id >= 0 && m_left <= ms)
            runOut(m_timer);
        else
            m_left -= ms;
        look();
    }

private:
    QTimer *m_timer;
    int m_id = -1;
    int m_left = 0;
};

} // namespace

// The filter field goes away by itself when nobody uses it.
class FieldLifeTest : public QObject
{
    Q_OBJECT

public:
    explicit FieldLifeTest(LibraryFixture &fixture) : f(fixture) { }

private Q_SLOTS:
    void cleanup() { f.close(); }
    void fieldIsThereAfter_data();
    void fieldIsThereAfter();

private:
    bool perform(const QString &step);

    LibraryFixture &f;
};

bool FieldLifeTest::perform(const QString &step)
{
    if (step == "pull"_L1) {
        f.widget()->VKBFilter({0, 0});
        f.widget()->VKBFilter({0, -1});
    } else if (step == "open"_L1) {
        f.page->showTextEdit({}, true);
    } else if (step == "focus"_L1) {
        f.edit()->setFocus();
    } else if (step == "unfocus"_L1) {
        f.edit()->clearFocus();
    } else if (step == "pan"_L1) {
        Q_EMIT f.widget()->list()->panningStarted();
        Q_EMIT f.widget()->list()->panningStopped();
    } else if (step == "clear"_L1) {
        f.field()->clearTextField();
    } else if (step == "backspace"_L1) {
        f.key(u"\b"_s, Qt::Key_Backspace);
    } else if (step == "return"_L1) {
        f.key(u"\r"_s, Qt::Key_Return);
    } else if (step == "card"_L1) {
        Q_EMIT f.page->mmcStateChanged(false);
        Q_EMIT f.page->mmcStateChanged(true);
    } else if (step == "reset"_L1) {
        f.page->resetFilter();
    } else if (step == "rename"_L1) {
        f.widget()->itemLongTapped(f.widget()->proxy()->index(0, 0), {});
        f.widget()->objectMenu()->disappear(toolkit::Appearance::Immediate);
        f.widget()->editVideoAction();
        const EditManager *editor = f.widget()->editManager();
        const auto *closing = editor->findChild<QTimer *>(u"displayedTimer"_s);
        return QTest::qWaitFor([=] { return editor->isSheetDisplayed() && !closing->isActive(); });
    } else if (step == "cancel"_L1) {
        f.widget()->editManager()->sheetRejected();
    } else if (step == "save"_L1) {
        f.widget()->editManager()->sheetAccepted();
    } else if (step == "tap"_L1) {
        Q_EMIT f.widget()->list()->itemClicked(f.widget()->proxy()->index(0, 0));
    } else if (step == "type"_L1) {
        QKeyEvent press(QEvent::KeyPress, Qt::Key_A, Qt::NoModifier, u"a"_s);
        f.page->keyEvent(&press);
    } else if (step == "shift"_L1) {
        QKeyEvent press(QEvent::KeyPress, Qt::Key_Shift, Qt::ShiftModifier);
        f.page->keyEvent(&press);
    } else if (step == "tab"_L1) {
        QKeyEvent press(QEvent::KeyPress, Qt::Key_Tab, Qt::NoModifier, u"\t"_s);
        f.page->keyEvent(&press);
    } else if (step == "a"_L1) {
        f.key(u"a"_s, Qt::Key_A);
        return QTest::qWaitFor([this] { return f.edit()->hasFocus(); });
    } else {
        return false;
    }
    return true;
}

void FieldLifeTest::fieldIsThereAfter_data()
{
    QTest::addColumn<QString>("story"); // what happens; numbers are milliseconds that pass
    QTest::addColumn<bool>("visible");
    const auto row = [](const char *story, bool visible) {
        QTest::newRow(story) << QString::fromLatin1(story) << visible;
    };
    row("pull", true);
    row("pull 4999", true);
    row("pull 4999 1", false);
    row("pull 5000", false);
    row("pull 4000 pull 1000", false); // pulled again while it is there: no new life
    row("pull 5000 pull 4999", true);
    row("pull 5000 pull 5000", false);
    row("pull 4000 focus 60000", true);
    row("pull 4000 focus 60000 unfocus 4999", true);
    row("pull 4000 focus 60000 unfocus 5000", false);
    row("open focus unfocus 3000 focus unfocus 4999", true);
    row("open focus unfocus 3000 focus unfocus 5000", false);
    row("pull 4000 a 60000", true);
    row("pull 4000 shift 60000", true); // a key that types nothing ends its time all the same
    row("pull 4000 tab 60000", true);
    row("tab", false);
    row("a 60000", true);
    row("a unfocus 60000", true); // it holds text
    row("a return 60000", true);
    row("a pan 60000", true);
    row("a backspace 60000", true); // emptied, but still in use
    row("a backspace unfocus 4999", true);
    row("a backspace unfocus 5000", false);
    row("a backspace pan 5000", false);
    row("a backspace return 5000", false);
    row("a unfocus clear 60000", true); // the clear button brings the focus back
    row("a unfocus clear pan 4999", true);
    row("a unfocus clear pan 5000", false);
    row("pull 4000 card 1", false);
    row("a card 60000", true);
    row("a reset", false);
    row("pull 1000 reset pull 4999", true);
    // While a title is edited, and 1200 ms longer, neither keys nor taps are for the list.
    row("rename type", false);
    row("rename cancel type", false);
    row("rename cancel 1199 type", false);
    row("rename cancel 1200 type", true);
    row("rename save 1199 type", false);
    row("rename save 1200 type", true);
    row("rename cancel 1000 rename cancel 1199 type", false);
    row("rename cancel 1000 rename cancel 1200 type", true);
    row("a rename tap", true); // a tap that plays empties the field
    row("a rename cancel 1199 tap", true);
    row("a rename cancel 1200 tap", false);
    row("a rename save 1199 tap", true);
    row("a rename save 1200 tap", false);
    row("a rename 60000", true);
    row("pull 4000 rename 999", true);
    row("pull 4000 rename 1000", false); // its time goes on
}

void FieldLifeTest::fieldIsThereAfter()
{
    QFETCH(QString, story);
    QVERIFY(f.open(LibraryFixture::rows({u"alpha"_s, u"beta"_s})));
    DrivenClock clock(f.widget()->findChild<QTimer *>(u"filterTimer"_s));
    DrivenClock sheet;
    for (const QString &step : story.split(u' ')) {
        bool isTime = false;
        const int ms = step.toInt(&isTime);
        if (isTime) {
            clock.advance(ms);
            sheet.advance(ms);
        } else {
            QVERIFY2(perform(step), qPrintable(step));
        }
        clock.look();
        if (const EditManager *editor = f.widget()->editManager())
            sheet.follow(editor->findChild<QTimer *>(u"displayedTimer"_s));
    }
    QTEST(f.field()->isVisible(), "visible");
}

int main(int argc, char **argv)
{
    toolkit::Application application(argc, argv, u"video"_s, nullptr);
    LibraryFixture fixture;
    FieldLifeTest test(fixture);
    return QTest::qExec(&test, argc, argv);
}
#include "tst_fieldlife.moc"

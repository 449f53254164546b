// SPDX-License-Identifier: GPL-3.0-or-later
#include "controllerfixture.h"
#include "details/extensionpage.h"
#include "platform/toolkit/scenemanager.h"
#include "player/playercontroller.h"
#include "player/playerpage.h"

#include <QGraphicsWidget>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

namespace {

// What lies on the stack when a page comes, what lies there afterwards, and how the window is turned.
struct Change
{
    const char *top;
    const char *target;
    const char *stack;
    int angle; // portrait 270, the player's landscape 0
};

// From the library the player turns the window, and nothing but going to the library by its own way turns it
// back: details come as the window is.
constexpr Change Changes[] = {
    {"library", "library", "library", 270},
    {"library", "player", "library player", 0},
    {"library", "details", "library details", 270},
    {"library", "extension", "library extension", 270},
    {"player", "library", "library player library", 0},
    {"player", "player", "library player", 0},
    {"player", "details", "library player details", 0},
    {"player", "extension", "library player extension", 0},
    {"details", "library", "library player details library", 0},
    {"details", "player", "library player details player", 0},
    {"details", "details", "library player details", 0},
    {"details", "extension", "library player details extension", 0},
    {"extension", "library", "library player details extension library", 0},
    {"extension", "player", "library player details extension player", 0},
    {"extension", "details", "library player details extension details", 0},
    {"extension", "extension", "library player details extension extension", 0},
};

struct Current
{
    const char *name;
    const char *urn;
    const char *url;
    bool needsCard;
};

constexpr Current Videos[] = {
    {"in the store", "urn:uuid:1", "file:///videos/1.mp4", true},
    {"in the store, a stream", "urn:uuid:1", "http://host/1.mp4", true},
    {"on the card, not in the store", "", "file:///home/user/MyDocs/1.mp4", true},
    {"elsewhere, not in the store", "", "file:///media/stick/1.mp4", false},
    {"stream", "", "http://host/1.mp4", false},
};

} // namespace

// Page on top x page that comes x memory card x kind of the current video.
class PageStackTest : public ControllerFixture
{
    Q_OBJECT

public:
    using ControllerFixture::ControllerFixture;

private Q_SLOTS:
    void initTestCase() { prepare(); }
    void cleanup();
    void pageComes_data();
    void pageComes();
    void cardGoesAndComes_data();
    void cardGoesAndComes();
    void pageGoes_data();
    void pageGoes();
    void otherOrientationsWarn();
    void escapeOnALoneLibraryClosesTheWindow();

private:
    void bringUp(const QString &top, const Current &current);
    void bring(const QString &target);
    [[nodiscard]] QString nameOf(const toolkit::ApplicationPage *page) const;
    [[nodiscard]] QString seen() const { return nameOf(m_window.sceneManager()->visiblePage()); }

    QGraphicsWidget m_content;
};

void PageStackTest::cleanup()
{
    if (m_controller)
        m_controller->mmcStateChanged(true);
    clean();
}

QString PageStackTest::nameOf(const toolkit::ApplicationPage *page) const
{
    return page == library()                                   ? u"library"_s
        : page == player()                                     ? u"player"_s
        : page == m_controller->detailsPage()                  ? u"details"_s
        : qobject_cast<const ExtensionPage *>(page) != nullptr ? u"extension"_s
                                                               : u"card away"_s;
}

// The player plays, or played, `current`; `top` is on top.
void PageStackTest::bringUp(const QString &top, const Current &current)
{
    start();
    VideoInfo info = video(1);
    info.urn = QString::fromLatin1(current.urn);
    info.url = QString::fromLatin1(current.url);
    m_controller->play(info);
    if (top == u"library"_s) {
        m_controller->returnFromPlay();
    } else if (top != u"player"_s) {
        m_controller->goToPage(m_controller->detailsPage());
        if (top == u"extension"_s)
            m_controller->showExtensionView(&m_content, u"Related"_s);
    }
    QCOMPARE(nameOf(m_controller->pageStack().last()), top);
}

void PageStackTest::bring(const QString &target)
{
    if (target == u"library"_s)
        m_controller->goToPage(library());
    else if (target == u"player"_s)
        m_controller->goToPage(player());
    else if (target == u"details"_s)
        m_controller->goToPage(m_controller->detailsPage());
    else
        m_controller->showExtensionView(&m_content, u"Related"_s);
}

void PageStackTest::pageComes_data()
{
    QTest::addColumn<int>("change");
    QTest::addColumn<int>("current");
    QTest::addColumn<bool>("card");
    for (int change = 0; change < int(std::size(Changes)); ++change) {
        for (int current = 0; current < int(std::size(Videos)); ++current) {
            for (const bool card : {true, false})
                QTest::addRow("%s on top, %s comes, %s, card %s", Changes[change].top, Changes[change].target,
                              Videos[current].name, card ? "there" : "away")
                    << change << current << card;
        }
    }
}

void PageStackTest::pageComes()
{
    QFETCH(int, change);
    QFETCH(int, current);
    QFETCH(bool, card);
    const auto &[top, target, stackThen, angle] = Changes[change];
    bringUp(QString::fromLatin1(top), Videos[current]);
    const bool coveredBefore
        = !card && (QByteArray(top) != "player" || Videos[current].needsCard); // from the moment it went
    if (!card)
        m_controller->mmcStateChanged(false);
    bring(QString::fromLatin1(target));
    QCOMPARE(stack(), QString::fromLatin1(stackThen));
    QCOMPARE(m_window.orientationAngle(), angle);
    QVERIFY(m_window.isOrientationAngleLocked());
    // A page that is on top already changes nothing.
    const bool comes = QByteArray(top) != target || QByteArray(target) == "extension";
    const bool covered
        = !card && (comes ? QByteArray(target) != "player" || Videos[current].needsCard : coveredBefore);
    QCOMPARE(seen(), covered ? u"card away"_s : QString::fromLatin1(target));
    QCOMPARE(nameOf(m_window.sceneManager()->currentPage()), QString::fromLatin1(target));
}

void PageStackTest::cardGoesAndComes_data()
{
    QTest::addColumn<QString>("top");
    QTest::addColumn<int>("current");
    for (const char *top : {"library", "player", "details", "extension"}) {
        for (int current = 0; current < int(std::size(Videos)); ++current)
            QTest::addRow("%s, %s", top, Videos[current].name) << QString::fromLatin1(top) << current;
    }
}

void PageStackTest::cardGoesAndComes()
{
    QFETCH(QString, top);
    QFETCH(int, current);
    bringUp(top, Videos[current]);
    const QString before = stack();
    const int angle = m_window.orientationAngle();
    m_controller->mmcStateChanged(false);
    m_controller->mmcStateChanged(false); // is told twice at times
    QCOMPARE(seen(), top == u"player"_s && !Videos[current].needsCard ? top : u"card away"_s);
    m_controller->mmcStateChanged(true);
    m_controller->mmcStateChanged(true);
    QCOMPARE(seen(), top);
    QCOMPARE(stack(), before);
    QCOMPARE(m_window.orientationAngle(), angle);
}

void PageStackTest::pageGoes_data()
{
    QTest::addColumn<QString>("pages"); // beneath the library lies nothing
    QTest::addColumn<QString>("then");
    QTest::addColumn<int>("angle");
    const auto row = [](const char *pages, const char *then, int angle) {
        QTest::newRow(pages) << QString::fromLatin1(pages) << QString::fromLatin1(then) << angle;
    };
    row("library", "library", 270);
    row("library player", "library", 270);
    row("library details", "library", 270);
    row("library player details", "library player", 0);
    row("library details extension", "library details", 270);
    row("library player details extension", "library player details", 0);
    row("library details player", "library", 270);
    row("library player details player", "library", 270);
    row("library player details extension player", "library", 270);
}

void PageStackTest::pageGoes()
{
    QFETCH(QString, pages);
    QFETCH(QString, then);
    QFETCH(int, angle);
    start();
    for (const QString &page : pages.split(u' ').mid(1)) {
        VideoInfo info = video(1);
        if (page == u"player"_s)
            m_controller->play(info);
        else
            bring(page);
    }
    QCOMPARE(stack(), pages);
    toolkit::ApplicationPage *top = m_controller->pageStack().last();
    // By the way that the page's own back button takes.
    if (top == player())
        Q_EMIT player()->goBack();
    else if (top != library())
        Q_EMIT top->backButtonClicked();
    else
        m_controller->goBack();
    QCOMPARE(stack(), then);
    QCOMPARE(m_window.orientationAngle(), angle);
    QCOMPARE(seen(), then.section(u' ', -1));
}

void PageStackTest::otherOrientationsWarn()
{
    // Only the two that the pages ask for are known; nothing turns and nobody is told.
    start();
    for (const int orientation : {-1, 2, 270}) {
        expect("void ApplicationController::setOrientation(int) Kestrel: Invalid orientation.");
        QVERIFY(QMetaObject::invokeMethod(m_controller.get(), "setOrientation", Q_ARG(int, orientation)));
    }
    QCOMPARE(m_window.orientationAngle(), 270);
    QCOMPARE(library()->requestedOrientation(), 0);
}

void PageStackTest::escapeOnALoneLibraryClosesTheWindow()
{
    start();
    QTest::keyClick(&m_window, Qt::Key_Escape);
    QVERIFY(!m_window.isVisible());
    QCOMPARE(stack(), u"library"_s);
    m_window.showForProfile();
    QVERIFY(QTest::qWaitForWindowActive(&m_window));
    QCOMPARE(seen(), u"library"_s);
}

int main(int argc, char **argv)
{
    return runControllerTest<PageStackTest>(argc, argv);
}
#include "tst_pagestack.moc"

// SPDX-License-Identifier: GPL-3.0-or-later
#include "core_sheetfixture.h"

#include "platform/toolkit/label.h"
#include "platform/toolkit/locale.h"
#include "platform/toolkit/pannableviewport.h"
#include "platform/toolkit/querydialog.h"

#include <QSignalSpy>

using namespace Qt::Literals::StringLiterals;
using toolkit::Button;
using toolkit::QueryDialog;

// A question over the page: whoever asked it gets one answer.
class QueryDialogTest : public QObject, private SheetFixture
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void nothingWithoutAWindow();
    void answers_data();
    void answers();
    void answersOnce();
    void blocksUntilItsResultWasHeard();
    void returnSaysTheHarmlessAnswer_data();
    void returnSaysTheHarmlessAnswer();
    void arrowsGoToTheOtherButton();
    void aLongTextPans();
    void aLongTextRunsOutWhereItGoesOn();
    void richTextIsShown_data();
    void richTextIsShown();
    void staysOnTheScreen_data();
    void staysOnTheScreen();
    void buttonsChangePlacesInTheOtherDirection();
    void asksAgain();
    void itsWindowGoes();
    void dismissedWithoutAnAnswer();

private:
    QPointF centerOf(QueryDialog::StandardButton which) const
    {
        return m_dialog->button(which)->sceneBoundingRect().center();
    }
    QRectF panel() const { return m_dialog->button(QueryDialog::Yes)->parentItem()->sceneBoundingRect(); }

    toolkit::Locale m_locale;
    std::unique_ptr<QueryDialog> m_dialog;
    QStringList m_story;
};

void QueryDialogTest::init()
{
    m_locale.installTrCatalog(u"video"_s);
    toolkit::Locale::setDefault(&m_locale);
    setUp();
    m_story.clear();
    m_dialog = std::make_unique<QueryDialog>();
    m_dialog->setTitle(u"Delete video?"_s);
    m_dialog->setText(u"Birthday"_s);
    connect(m_dialog.get(), &QueryDialog::accepted, this, [this] { m_story.append(u"accepted"_s); });
    connect(m_dialog.get(), &QueryDialog::rejected, this, [this] { m_story.append(u"rejected"_s); });
    connect(m_dialog.get(), &QueryDialog::finished, this,
            [this](int result) { m_story.append(u"finished %1"_s.arg(result)); });
}

void QueryDialogTest::cleanup()
{
    m_dialog.reset();
    tearDown();
    toolkit::Locale::setDefault(nullptr);
}

void QueryDialogTest::nothingWithoutAWindow()
{
    m_dialog->appear(nullptr);
    QVERIFY(!m_dialog->isDisplayed());
    m_dialog->accept();
    m_dialog->reject();
    QVERIFY(m_story.isEmpty());
}

void QueryDialogTest::answers_data()
{
    QTest::addColumn<QString>("way");
    QTest::addColumn<QStringList>("story");
    const QStringList yes = {u"accepted"_s, u"finished 1"_s};
    const QStringList no = {u"rejected"_s, u"finished 0"_s};
    QTest::newRow("yes") << u"yes"_s << yes;
    QTest::newRow("no") << u"no"_s << no;
    QTest::newRow("escape") << u"escape"_s << no;
    QTest::newRow("the back key") << u"back"_s << no;
    QTest::newRow("the mouse's back button") << u"button"_s << no;
    QTest::newRow("a tap beside it") << u"beside"_s << no;
    QTest::newRow("a tap on its text") << u"text"_s << QStringList();
}

void QueryDialogTest::answers()
{
    QFETCH(QString, way);
    QFETCH(QStringList, story);
    m_dialog->appear(m_window.get());
    QVERIFY(m_dialog->isOpen());
    if (way == "yes"_L1)
        tap(centerOf(QueryDialog::Yes));
    else if (way == "no"_L1)
        tap(centerOf(QueryDialog::No));
    else if (way == "escape"_L1)
        QTest::keyClick(m_window.get(), Qt::Key_Escape);
    else if (way == "back"_L1)
        QTest::keyClick(m_window.get(), Qt::Key_Back);
    else if (way == "button"_L1)
        QTest::mouseClick(m_window->viewport(), Qt::BackButton, {}, {200, 200});
    else if (way == "beside"_L1)
        tap({20, 20});
    else
        tap(m_dialog->textLabel()->sceneBoundingRect().center());
    QCOMPARE(m_story, story);
    QCOMPARE(m_dialog->isDisplayed(), story.isEmpty());
    QVERIFY(m_window->isVisible());
}

void QueryDialogTest::answersOnce()
{
    setReducedMotion(false);
    m_dialog->appear(m_window.get());
    QTRY_VERIFY(m_dialog->isOpen());
    m_dialog->accept();
    m_dialog->reject(); // on its way out
    m_dialog->accept();
    QCOMPARE(m_story, (QStringList{u"accepted"_s, u"finished 1"_s}));
    QTRY_VERIFY(!m_dialog->isDisplayed());
}

void QueryDialogTest::blocksUntilItsResultWasHeard()
{
    bool unblocked = true;
    connect(m_dialog.get(), &QueryDialog::finished, this,
            [&] { unblocked = m_page->events.contains(QEvent::WindowUnblocked); });
    m_dialog->appear(m_window.get());
    QCOMPARE(m_page->events, QList<QEvent::Type>{QEvent::WindowBlocked});
    m_dialog->accept();
    QVERIFY(!unblocked);
    QTRY_COMPARE(m_page->events, (QList<QEvent::Type>{QEvent::WindowBlocked, QEvent::WindowUnblocked}));
}

void QueryDialogTest::returnSaysTheHarmlessAnswer_data()
{
    QTest::addColumn<bool>("destructive");
    QTest::addColumn<QString>("answer");
    QTest::newRow("of a grave question") << true << u"rejected"_s;
    QTest::newRow("of another") << false << u"accepted"_s;
}

void QueryDialogTest::returnSaysTheHarmlessAnswer()
{
    QFETCH(bool, destructive);
    QFETCH(QString, answer);
    m_dialog->setDestructive(destructive);
    m_dialog->appear(m_window.get());
    QTest::keyClick(m_window.get(), Qt::Key_Return);
    QCOMPARE(m_story.value(0), answer);
}

void QueryDialogTest::arrowsGoToTheOtherButton()
{
    m_dialog->setDestructive(true);
    m_dialog->appear(m_window.get());
    QTest::keyClick(m_window.get(), Qt::Key_Tab);
    QVERIFY(m_dialog->button(QueryDialog::No)->hasFocus());
    QTest::keyClick(m_window.get(), Qt::Key_Right);
    QVERIFY(m_dialog->button(QueryDialog::Yes)->hasFocus());
    QTest::keyClick(m_window.get(), Qt::Key_Return);
    QCOMPARE(m_story, (QStringList{u"accepted"_s, u"finished 1"_s}));
}

void QueryDialogTest::aLongTextPans()
{
    m_window->resize(854, 480);
    QTRY_COMPARE(m_window->logicalSize(), QSizeF(854, 480));
    m_dialog->setText(QString(400, u'w'));
    m_dialog->appear(m_window.get());
    QVERIFY(m_window->sceneManager()->root()->rect().contains(panel()));
    QVERIFY(m_dialog->textLabel()->size().height()
            > m_dialog->textLabel()->parentItem()->boundingRect().height());
}

void QueryDialogTest::aLongTextRunsOutWhereItGoesOn()
{
    QueryDialog dialog;
    dialog.setTitle(u"Delete video?"_s);
    dialog.setText(QString(3000, u'm'));
    dialog.appear(m_window.get());
    auto *viewport = dynamic_cast<toolkit::PannableViewport *>(dialog.textLabel()->parentItem());
    QVERIFY(viewport != nullptr && viewport->range().height() > 0);
    const QColor ground = toolkit::Theme::instance()->style(u"DialogPanel"_s).color(u"background"_s);
    // How far from the ground the colours of a few rows go.
    const auto ink = [&](qreal from) {
        const QRectF rows(0, from, viewport->size().width() - 20, 3);
        const QPolygon place = m_window->mapFromScene(viewport->mapRectToScene(rows));
        const QImage picture = m_window->grab(place.boundingRect()).toImage();
        int most = 0;
        for (int y = 0; y < picture.height(); ++y) {
            for (int x = 0; x < picture.width(); ++x)
                most = std::max(most, std::abs(picture.pixelColor(x, y).lightness() - ground.lightness()));
        }
        return most;
    };
    const qreal foot = viewport->size().height() - 3;
    QVERIFY2(ink(foot) < 24, qPrintable(QString::number(ink(foot))));
    // The bar that shows the place has no letters under it.
    QVERIFY(dialog.textLabel()->contentsRect().right() <= viewport->size().width() - 12);
    viewport->setPosition({0, viewport->range().height() / 2 + 7});
    QVERIFY(ink(0) < 24 && ink(foot) < 24);
    viewport->setPosition({0, viewport->range().height()});
    qreal last = 0;
    for (qreal y = foot - 26; y < foot; y += 3)
        last = std::max<qreal>(last, ink(y));
    QVERIFY(last > 60); // the last line is all there
    dialog.dismiss();
}

void QueryDialogTest::richTextIsShown_data()
{
    QTest::addColumn<QString>("title");
    QTest::newRow("plain") << u"Birthday"_s;
    QTest::newRow("mark-up") << u"<b>a</b> & <script>b</script>"_s;
    QTest::newRow("an entity") << u"&lt;&amp;"_s;
    QTest::newRow("an end of its own") << u"</span><h1>x"_s;
    QTest::newRow("quotes") << u"\"a\" 'b'"_s;
    QTest::newRow("emoji") << u"\U0001F3D4 summit"_s;
}

// The text of the question about a video: its closing tag is not closed itself.
void QueryDialogTest::richTextIsShown()
{
    QFETCH(QString, title);
    toolkit::Label plain;
    plain.setStyleName(u"DialogText"_s);
    plain.setTextFormat(Qt::PlainText);
    plain.setText(title);
    m_dialog->setText(u"<span>"_s + title.toHtmlEscaped() + u"</span"_s);
    QCOMPARE(m_dialog->textLabel()->effectiveSizeHint(Qt::PreferredSize),
             plain.effectiveSizeHint(Qt::PreferredSize));
    QCOMPARE(toolkit::parseRichText(m_dialog->text(), {}).text, title);
}

void QueryDialogTest::staysOnTheScreen_data()
{
    QTest::addColumn<QSize>("window");
    QTest::newRow("portrait") << QSize(480, 854);
    QTest::newRow("landscape") << QSize(854, 480);
    QTest::newRow("narrow") << QSize(360, 360);
    QTest::newRow("wide") << QSize(1280, 800);
}

void QueryDialogTest::staysOnTheScreen()
{
    QFETCH(QSize, window);
    m_window->resize(window);
    m_dialog->setText(QString(401, u'x'));
    m_dialog->appear(m_window.get());
    QTRY_COMPARE(m_dialog->rect(), m_window->sceneManager()->root()->rect());
    const QRectF whole = m_dialog->rect();
    QVERIFY2(whole.contains(panel()), qPrintable(QDebug::toString(panel())));
    QVERIFY(panel().width() <= 448);
    for (const auto which : {QueryDialog::Yes, QueryDialog::No})
        QVERIFY(panel().contains(m_dialog->button(which)->sceneBoundingRect()));
    QVERIFY(!m_dialog->button(QueryDialog::Yes)
                 ->sceneBoundingRect()
                 .intersects(m_dialog->button(QueryDialog::No)->sceneBoundingRect()));
}

void QueryDialogTest::buttonsChangePlacesInTheOtherDirection()
{
    m_dialog->appear(m_window.get());
    QVERIFY(centerOf(QueryDialog::No).x() < centerOf(QueryDialog::Yes).x());
    QGuiApplication::setLayoutDirection(Qt::RightToLeft);
    QTRY_VERIFY(centerOf(QueryDialog::No).x() > centerOf(QueryDialog::Yes).x());
}

void QueryDialogTest::asksAgain()
{
    for (int time = 1; time <= 2; ++time) {
        m_dialog->appear(m_window.get());
        QVERIFY(m_dialog->isOpen());
        tap(centerOf(QueryDialog::No));
        QCOMPARE(m_story.count(u"rejected"_s), time);
        QTRY_VERIFY(!m_window->sceneManager()->isBlocked());
    }
}

void QueryDialogTest::itsWindowGoes()
{
    m_dialog->appear(m_window.get());
    m_page.reset();
    m_window.reset();
    QCOMPARE(m_story, (QStringList{u"rejected"_s, u"finished 0"_s}));
    QVERIFY(!m_dialog->isDisplayed());
}

void QueryDialogTest::dismissedWithoutAnAnswer()
{
    m_dialog->appear(m_window.get());
    m_dialog->dismiss();
    QVERIFY(m_story.isEmpty());
    QVERIFY(!m_dialog->isDisplayed());
}

KESTREL_TOOLKIT_TEST_MAIN(QueryDialogTest)
#include "core_querydialogtest.moc"

// SPDX-License-Identifier: GPL-3.0-or-later
#include "data/allvideosmodel.h"
#include "library/filteredmodel.h"
#include "library/pagebackground.h"
#include "libraryfixture.h"
#include "platform/toolkit/label.h"
#include "platform/toolkit/pannableviewport.h"
#include "platform/toolkit/layout.h"
#include "platform/toolkit/list.h"
#include "support/displayproxy.h"
#include "support/sceneitems.h"

#include <QAbstractItemModelTester>
#include <QScopeGuard>
#include <QPainter>
#include <QStyleOptionGraphicsItem>
#include <QTimer>

#include <cmath>

using namespace Qt::Literals::StringLiterals;

// Which of the list, "no results" and "empty collection" stands on the page, and how it looks there.
class ViewStatesTest : public QObject
{
    Q_OBJECT

public:
    explicit ViewStatesTest(LibraryFixture &fixture) : f(fixture) { }

private Q_SLOTS:
    void cleanup();
    void stateAfter_data();
    void stateAfter();
    void stateHoldsWhatBelongsToIt_data();
    void stateHoldsWhatBelongsToIt();
    void unknownStateIsLeftByRowsOnly();
    void withoutAnAnswerThePageIsBlack_data();
    void withoutAnAnswerThePageIsBlack();
    void noNavigationBarStandsOnThePage();
    void everyChangeIsAnnouncedOnce();
    void fieldOnACoveredPageCounts();
    void emptyFieldThatLostTheFocusUnderAnotherPageGoes();
    void titleIsReadableOnWhatIsBehindIt_data();
    void titleIsReadableOnWhatIsBehindIt();
    void titleStandsAboveTheListOfAWideWindow();
    void noResultsIsReadableInEveryScheme_data();
    void noResultsIsReadableInEveryScheme();
    void noResultsStandsInTheMiddleOfWhatIsSeen_data();
    void noResultsStandsInTheMiddleOfWhatIsSeen();
    void emptyCollectionSaysHowFarTheScanIs();
    void switcherSeesThePicture_data();
    void switcherSeesThePicture();

private:
    [[nodiscard]] toolkit::List *list() const { return f.widget()->list(); }
    [[nodiscard]] toolkit::Label *label(const QString &style) const
    {
        return childWhere<toolkit::Label>(
            f.widget(), [&](const toolkit::Label *found) { return found->styleName() == style; });
    }
    [[nodiscard]] toolkit::Label *emptyLabel() const { return label(u"CommonEmptyStateTitleInverted"_s); }
    [[nodiscard]] QString column() const; // what stands in the widget's layout, from top to bottom
    void perform(const QString &step);
    static qreal contrast(const QColor &one, const QColor &other);

    LibraryFixture &f;
};

void ViewStatesTest::cleanup()
{
    f.close();
    toolkit::Theme::instance()->setDark(true);
    toolkit::Theme::instance()->setHighContrast(false);
}

QString ViewStatesTest::column() const
{
    const auto *layout = static_cast<toolkit::Layout *>(f.widget()->layout());
    QStringList names;
    for (int index = 0; index < layout->policy()->count(); ++index) {
        QGraphicsLayoutItem *item = layout->policy()->itemAt(index);
        if (item == list())
            names.append(u"list"_s);
        else if (item == emptyLabel())
            names.append(u"text"_s);
        else
            names.append(u"spacer %1"_s.arg(item->minimumHeight()));
    }
    return names.join(u", "_s);
}

void ViewStatesTest::perform(const QString &step)
{
    const auto argument = step.section(u' ', 1);
    if (step.startsWith("type"_L1)) {
        f.page->showTextEdit({}, true);
        f.field()->setText(argument);
    } else if (step.startsWith("text"_L1)) {
        f.field()->setText(argument); // shown or not
    } else if (step == "show"_L1) {
        f.page->showTextEdit({}, true);
    } else if (step == "hide"_L1) {
        f.page->showTextEdit({}, false);
    } else if (step == "away"_L1) {
        Q_EMIT f.page->mmcStateChanged(false);
    } else if (step == "back"_L1) {
        Q_EMIT f.page->mmcStateChanged(true);
    } else if (step.startsWith("rename"_L1)) {
        Q_EMIT TrackerInterface::instance()->videosChanged({LibraryFixture::row(1, argument)});
    } else if (step.startsWith("remove"_L1)) {
        f.widget()->model()->removeVideo(u"file:///videos/%1.mp4"_s.arg(argument));
        QCoreApplication::processEvents();
    } else if (step.startsWith("exclude"_L1)) {
        f.page->deleteFile(u"file:///videos/%1.mp4"_s.arg(argument));
    } else {
        QFAIL(qPrintable(step));
    }
}

void ViewStatesTest::stateAfter_data()
{
    QTest::addColumn<QStringList>("titles");
    QTest::addColumn<QString>("steps");
    QTest::addColumn<int>("state");
    const QStringList none;
    const QStringList two{u"alpha"_s, u"beta"_s};
    const QStringList one{u"alpha"_s};
    const auto row = [](const QStringList &titles, const char *steps, int state) {
        QTest::addRow("%d: %s", int(titles.size()), steps) << titles << QString::fromLatin1(steps) << state;
    };
    constexpr int Empty = 1;
    constexpr int NoResults = 2;
    constexpr int List = 3;
    // The text and whether the field is there.
    row(none, "hide", Empty);
    row(none, "show", Empty);
    row(none, "show; text x; text ", Empty);
    row(none, "type x", NoResults);
    row(none, "text x", Empty);
    row(two, "hide", List);
    row(two, "show", List);
    row(two, "type al", List);
    row(two, "type zz", NoResults);
    row(two, "type zz; text ", List);
    row(two, "type zz; text z; text be", List);
    row(two, "text zz", List); // nothing says why the list would be empty
    // Titles that change.
    row(two, "type zz; rename zzz", List);
    row(two, "type al; rename zeta", NoResults);
    row(two, "type al; rename alphabet", List);
    // Rows that come and go.
    row(two, "remove 1", List);
    row(two, "type al; remove 1", NoResults);
    row(two, "type be; remove 1", List);
    row(two, "remove 1; remove 2", Empty);
    row(one, "type al; remove 1", Empty); // with it the field goes
    row(one, "type al; remove 1; type x", NoResults);
    // Videos whose deletion is under way.
    row(two, "exclude 1", List);
    row(one, "exclude 1; show; text x; text ", NoResults); // one is left, and not to be seen
    row(two, "type al; exclude 1; text alp", NoResults);
    // The memory card.
    row(none, "away", Empty);
    row(none, "away; back", Empty);
    row(two, "away", List);
    row(two, "type zz; away", List); // the text goes with it
    row(two, "type zz; away; back", NoResults); // and comes back with it
    row(two, "type al; away; back", List);
}

void ViewStatesTest::stateAfter()
{
    QFETCH(const QStringList, titles);
    QFETCH(const QString, steps);
    QVERIFY(f.open(LibraryFixture::rows(titles)));
    // Nothing of this is unsound to a view of either model.
    DisplayProxy all;
    all.setSourceModel(f.widget()->model());
    DisplayProxy shown;
    shown.setSourceModel(f.widget()->proxy());
    const auto mode = QAbstractItemModelTester::FailureReportingMode::QtTest;
    const QAbstractItemModelTester allTester(&all, mode);
    const QAbstractItemModelTester shownTester(&shown, mode);
    for (const QString &step : steps.split(u"; "_s))
        perform(step);
    QTEST(f.widget()->viewState(), "state");
}

void ViewStatesTest::stateHoldsWhatBelongsToIt_data()
{
    QTest::addColumn<QString>("steps");
    QTest::addColumn<QString>("column");
    QTest::addColumn<QString>("text");
    QTest::newRow("list") << u"hide"_s << u"list"_s << QString();
    QTest::newRow("no results") << u"type zz"_s << u"spacer 100, text"_s << u"qtn_vide_no_results"_s;
    QTest::newRow("list again") << u"type zz; text "_s << u"list"_s << QString();
    QTest::newRow("empty") << u"remove 1"_s << u"text"_s << u"qtn_vide_collection_empty"_s;
    QTest::newRow("empty after no results")
        << u"type zz; remove 1"_s << u"text"_s << u"qtn_vide_collection_empty"_s;
    QTest::newRow("no results after empty")
        << u"remove 1; type zz"_s << u"spacer 100, text"_s << u"qtn_vide_no_results"_s;
}

void ViewStatesTest::stateHoldsWhatBelongsToIt()
{
    QFETCH(const QString, steps);
    QFETCH(const QString, text);
    QVERIFY(f.open(LibraryFixture::rows({u"alpha"_s})));
    for (const QString &step : steps.split(u"; "_s))
        perform(step);
    QTEST(column(), "column");
    QCOMPARE(list()->isVisible(), text.isEmpty());
    QCOMPARE(emptyLabel()->isVisible(), !text.isEmpty());
    if (!text.isEmpty())
        QCOMPARE(emptyLabel()->text(), qtTrId(text.toLatin1().constData()));
}

void ViewStatesTest::unknownStateIsLeftByRowsOnly()
{
    // A title that changes before the first answer of the store says nothing of the collection.
    MyAllVideosWidget widget;
    QCOMPARE(widget.viewState(), 0);
    widget.modelDataChanged(widget.model()->index(0, 1), widget.model()->index(0, 1));
    QCOMPARE(widget.viewState(), 0);
    widget.modelRowCountChanged();
    QCOMPARE(widget.viewState(), 1);
}

void ViewStatesTest::withoutAnAnswerThePageIsBlack_data()
{
    QTest::addColumn<bool>("dark");
    QTest::addColumn<bool>("contrast");
    for (const bool dark : {true, false}) {
        for (const bool contrast : {true, false})
            QTest::addRow("%s%s", dark ? "dark" : "light", contrast ? ", more contrast" : "")
                << dark << contrast;
    }
}

// The store has not answered yet, and says then that there is nothing.
void ViewStatesTest::withoutAnAnswerThePageIsBlack()
{
    QFETCH(const bool, dark);
    QFETCH(const bool, contrast);
    toolkit::Theme::instance()->setDark(dark);
    toolkit::Theme::instance()->setHighContrast(contrast);
    f.store.answer(FakeSparqlAnswer::later());
    f.page = std::make_unique<LocalVideosPage>();
    f.page->appear(&f.window, toolkit::Appearance::Immediate);
    f.window.showForProfile();
    QVERIFY(QTest::qWaitForWindowActive(&f.window));
    const auto isBlack = [this] {
        const QImage picture = f.window.grab().toImage();
        for (const QPoint &at : {QPoint(4, 4), QPoint(4, picture.height() / 2),
                                 QPoint(picture.width() - 4, picture.height() - 4)}) {
            if (picture.pixelColor(at) != QColor(Qt::black))
                return false;
        }
        return true;
    };
    QCOMPARE(f.widget()->viewState(), 0);
    QVERIFY(isBlack());
    f.widget()->modelRowCountChanged();
    QCOMPARE(f.widget()->viewState(), 1);
    QVERIFY(isBlack());
    f.widget()->model()->queryFinished({LibraryFixture::row(1, u"alpha"_s)});
    QTRY_COMPARE(f.widget()->viewState(), 3);
    QCOMPARE(isBlack(), contrast && dark); // the page's own colour
}

void ViewStatesTest::noNavigationBarStandsOnThePage()
{
    for (const QStringList &titles : {QStringList(), QStringList(u"alpha"_s)}) {
        QVERIFY(f.open(LibraryFixture::rows(titles)));
        for (QGraphicsItem *item : f.window.scene()->items()) {
            const auto *widget = qobject_cast<toolkit::Widget *>(item->toGraphicsObject());
            if (widget && widget->isVisible())
                QVERIFY2(!widget->styleName().startsWith("NavigationBar"_L1),
                         qPrintable(widget->styleName()));
        }
        f.close();
    }
}

void ViewStatesTest::everyChangeIsAnnouncedOnce()
{
    QVERIFY(f.open(LibraryFixture::rows({u"alpha"_s})));
    QString heard;
    connect(f.widget(), &MyAllVideosWidget::contentVisible, this,
            [&heard](bool visible) { heard += visible ? u'+' : u'-'; });
    for (const QString &step :
         {u"type zz"_s, u"text z"_s, u"text "_s, u"text a"_s, u"away"_s, u"back"_s, u"remove 1"_s})
        perform(step);
    QCOMPARE(heard, u"-+-"_s);
    QVERIFY(!f.page->isPannable());
}

void ViewStatesTest::fieldOnACoveredPageCounts()
{
    // The details of a filtered video are open when the last match is renamed elsewhere and the text changes.
    QVERIFY(f.open(LibraryFixture::rows({u"alpha"_s, u"beta"_s})));
    f.page->showTextEdit(u"al"_s, true);
    toolkit::ApplicationPage details;
    details.appear(&f.window, toolkit::Appearance::Immediate);
    QVERIFY(!f.field()->isVisible());
    f.field()->setText(u"zz"_s);
    QCOMPARE(f.widget()->viewState(), int(MyAllVideosWidget::NoResults));
    details.dismiss(toolkit::Appearance::Immediate);
    QVERIFY(f.field()->isVisible());
    QCOMPARE(f.widget()->viewState(), int(MyAllVideosWidget::NoResults));
}

void ViewStatesTest::emptyFieldThatLostTheFocusUnderAnotherPageGoes()
{
    QVERIFY(f.open(LibraryFixture::rows({u"alpha"_s})));
    f.page->showTextEdit({}, true);
    f.edit()->setFocus();
    toolkit::ApplicationPage details;
    details.appear(&f.window, toolkit::Appearance::Immediate);
    QVERIFY(!f.edit()->hasFocus());
    QVERIFY(f.widget()->findChild<QTimer *>(u"filterTimer"_s)->isActive());
    details.dismiss(toolkit::Appearance::Immediate);
}

qreal ViewStatesTest::contrast(const QColor &one, const QColor &other)
{
    const auto luminance = [](const QColor &color) {
        const auto linear = [](qreal part) {
            return part <= 0.03928 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
        };
        return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF())
            + 0.0722 * linear(color.blueF());
    };
    const qreal a = luminance(one);
    const qreal b = luminance(other);
    return (qMax(a, b) + 0.05) / (qMin(a, b) + 0.05);
}

void ViewStatesTest::titleIsReadableOnWhatIsBehindIt_data()
{
    QTest::addColumn<bool>("dark");
    QTest::addColumn<QStringList>("titles");
    for (const bool dark : {true, false}) {
        QTest::addRow("%s, empty", dark ? "dark" : "light") << dark << QStringList();
        QTest::addRow("%s, list", dark ? "dark" : "light") << dark << QStringList(u"alpha"_s);
    }
}

void ViewStatesTest::titleIsReadableOnWhatIsBehindIt()
{
    QFETCH(const bool, dark);
    QFETCH(const QStringList, titles);
    toolkit::Theme::instance()->setDark(dark);
    QVERIFY(f.open(LibraryFixture::rows(titles)));
    const QImage picture = f.window.grab().toImage();
    const QColor behind = picture.pixelColor(picture.width() - 4, 38);
    if (titles.isEmpty())
        QCOMPARE(behind, QColor(Qt::black)); // in every scheme
    qreal best = 0;
    for (int x = 16; x < 120; ++x) {
        for (int y = 20; y < 60; ++y)
            best = qMax(best, contrast(picture.pixelColor(x, y), behind));
    }
    QVERIFY2(best >= 7, qPrintable(QString::number(best)));
}

void ViewStatesTest::titleStandsAboveTheListOfAWideWindow()
{
    const QSize before = f.window.size();
    const auto again = qScopeGuard([&] { f.window.resize(before); });
    f.window.resize(1200, 720);
    QVERIFY(f.open(LibraryFixture::rows({u"alpha"_s})));
    QTRY_COMPARE(f.page->size().width(), f.window.logicalSize().width());
    const QImage picture = f.window.grab().toImage();
    const QColor behind = picture.pixelColor(4, 38);
    int first = 0;
    while (first < picture.width() && contrast(picture.pixelColor(first, 38), behind) < 3)
        ++first;
    const qreal scale = picture.width() / f.page->size().width();
    const qreal column = (f.page->size().width() - 720) / 2 + 16;
    QVERIFY2(std::abs(first / scale - column) < 8, qPrintable(QString::number(first)));
}

void ViewStatesTest::noResultsIsReadableInEveryScheme_data()
{
    QTest::addColumn<bool>("before");
    QTest::addColumn<bool>("dark");
    QTest::newRow("dark") << true << true;
    QTest::newRow("light") << false << false;
    QTest::newRow("becomes light while it stands there") << true << false;
    QTest::newRow("becomes dark while it stands there") << false << true;
}

void ViewStatesTest::noResultsIsReadableInEveryScheme()
{
    QFETCH(const bool, before);
    QFETCH(const bool, dark);
    toolkit::Theme::instance()->setDark(before);
    QVERIFY(f.open(LibraryFixture::rows({u"alpha"_s})));
    f.page->showTextEdit(u"zz"_s, true);
    toolkit::Theme::instance()->setDark(dark);
    QTRY_VERIFY(emptyLabel()->geometry().top() > 99);
    const QImage picture = f.window.grab().toImage();
    const QColor behind = picture.pixelColor(4, picture.height() - 4);
    QCOMPARE(behind, f.page->style().color(u"background"_s));
    qreal best = 0;
    const QPoint middle = f.window.mapFromScene(emptyLabel()->mapToScene(emptyLabel()->rect().center()));
    for (int x = -80; x < 80; ++x) {
        for (int y = -16; y < 16; ++y)
            best = qMax(best, contrast(picture.pixelColor(middle + QPoint(x, y)), behind));
    }
    QVERIFY2(best >= 4.5, qPrintable(QString::number(best)));
}

void ViewStatesTest::noResultsStandsInTheMiddleOfWhatIsSeen_data()
{
    QTest::addColumn<QSize>("window");
    QTest::newRow("portrait") << QSize(480, 854);
    QTest::newRow("landscape") << QSize(854, 480);
}

void ViewStatesTest::noResultsStandsInTheMiddleOfWhatIsSeen()
{
    QFETCH(const QSize, window);
    const QSize before = f.window.size();
    f.window.resize(window);
    const auto again = qScopeGuard([&] { f.window.resize(before); });
    QStringList titles;
    for (int i = 0; i < 12; ++i)
        titles.append(u"alpha %1"_s.arg(i));
    QVERIFY(f.open(LibraryFixture::rows(titles)));
    f.page->showTextEdit(u"a"_s, true); // first some, then none
    QTRY_VERIFY(f.field()->size().height() > 0 && f.page->pannableViewport()->range().height() > 0);
    f.field()->setText(u"azz"_s);
    QTRY_VERIFY(emptyLabel()->geometry().top() > 99);
    QTRY_COMPARE(emptyLabel()->mapRectToScene(emptyLabel()->rect()).bottom(), f.page->rect().bottom());
    QCOMPARE(f.widget()->mapRectToScene(f.widget()->rect()).top(),
             f.field()->mapRectToScene(f.field()->rect()).bottom());
}

void ViewStatesTest::emptyCollectionSaysHowFarTheScanIs()
{
    QVERIFY(f.open({}));
    const toolkit::Label *scan = label(u"CommonEmptyStateTitleKeyword"_s);
    QVERIFY(!scan->isVisible());
    f.widget()->setScanProgress(true, 0, 0); // nothing is known yet
    QVERIFY(!scan->isVisible());
    f.widget()->setScanProgress(true, 340, 122);
    QVERIFY(scan->isVisible());
    QCOMPARE(scan->text(), qtTrId("qtn_vide_scan_progress").arg(u"122"_s, u"340"_s));
    QCOMPARE(emptyLabel()->text(), qtTrId("qtn_vide_collection_empty"));
    QVERIFY(scan->geometry().top() >= emptyLabel()->geometry().center().y());
    f.widget()->setScanProgress(false, 340, 340);
    QVERIFY(!scan->isVisible());
    // With the first videos it is the list's turn.
    f.widget()->setScanProgress(true, 340, 130);
    Q_EMIT TrackerInterface::instance()->videosChanged({LibraryFixture::row(1, u"alpha"_s)});
    QTRY_COMPARE(f.widget()->viewState(), int(MyAllVideosWidget::ListShown));
    QVERIFY(!scan->isVisible());
}

void ViewStatesTest::switcherSeesThePicture_data()
{
    QTest::addColumn<QStringList>("titles");
    QTest::addColumn<QString>("behind");
    QTest::newRow("list") << QStringList(u"alpha"_s) << u"picture"_s;
    QTest::newRow("empty") << QStringList() << u"black"_s;
}

void ViewStatesTest::switcherSeesThePicture()
{
    QFETCH(const QStringList, titles);
    QVERIFY(f.open(LibraryFixture::rows(titles)));
    f.window.showMinimized();
    QTRY_VERIFY(f.window.isInSwitcher());
    QImage painted(f.page->size().toSize(), QImage::Format_RGB32);
    painted.fill(Qt::magenta);
    QPainter painter(&painted);
    QStyleOptionGraphicsItem option;
    static_cast<QGraphicsItem *>(f.page.get())->paint(&painter, &option, nullptr);
    static_cast<QGraphicsItem *>(f.page.get())->paint(nullptr, &option, nullptr); // nothing happens
    painter.end();
    QImage picture(painted.size(), QImage::Format_RGB32);
    picture.fill(Qt::black);
    QPainter expected(&picture);
    expected.drawImage(QRectF(painted.rect()), pageBackground(), pageBackground().rect());
    expected.end();
    QVERIFY(picture.pixelColor(3, 3) != QColor(Qt::black));
    const QString behind = painted == picture           ? u"picture"_s
        : painted.pixelColor(3, 3) == QColor(Qt::black) ? u"black"_s
                                                        : u"something else"_s;
    QTEST(behind, "behind");
    f.window.raiseToFront();
    QTRY_VERIFY(!f.window.isInSwitcher());
}

int main(int argc, char **argv)
{
    toolkit::Application application(argc, argv, u"video"_s, nullptr);
    LibraryFixture fixture;
    ViewStatesTest test(fixture);
    return QTest::qExec(&test, argc, argv);
}
#include "tst_viewstates.moc"

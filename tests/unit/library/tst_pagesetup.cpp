// SPDX-License-Identifier: GPL-3.0-or-later
#include "data/allvideosmodel.h"
#include "library/filteredmodel.h"
#include "library/filterwidget.h"
#include "library/localvideospage.h"
#include "library/myallvideoswidget.h"
#include "platform/toolkit/application.h"
#include "platform/toolkit/applicationwindow.h"
#include "platform/toolkit/label.h"
#include "platform/toolkit/layout.h"
#include "platform/toolkit/list.h"
#include "platform/toolkit/textedit.h"
#include "support/fakesparqldriver.h"
#include "support/fakethumbnailerclient.h"
#include "support/sceneitems.h"

#include <QGraphicsScene>
#include <QKeyEvent>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include <cstdlib>
#include <new>

using namespace Qt::Literals::StringLiterals;

namespace {

bool memoryIsOut = false;

// Signatures of the class's own methods of one kind, in the order in which they are declared.
QStringList methods(const QMetaObject &meta, QMetaMethod::MethodType kind)
{
    QStringList result;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        if (meta.method(i).methodType() == kind)
            result.append(QString::fromLatin1(meta.method(i).methodSignature()));
    }
    return result;
}

} // namespace

// What is asked for without throwing can be refused here; everything else is as ever.
// Not inlined: gcc 14 takes a half of the pair that is for another allocator's.
[[gnu::noinline]] void *operator new(std::size_t size, const std::nothrow_t &) noexcept
{
    return memoryIsOut ? nullptr : std::malloc(size);
}

[[gnu::noinline]] void operator delete(void *memory) noexcept
{
    std::free(memory);
}

[[gnu::noinline]] void operator delete(void *memory, std::size_t) noexcept
{
    std::free(memory);
}

[[gnu::noinline]] void operator delete(void *memory, const std::nothrow_t &) noexcept
{
    std::free(memory);
}

[[gnu::noinline]] void *operator new(std::size_t size)
{
    if (void *memory = std::malloc(size))
        return memory;
    throw std::bad_alloc();
}

// The library page without a window, and what it is made of.
class PageSetupTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void withoutAWindowConstructionWarns();
    void pageIsSetUp();
    void contentStandsInOneColumn();
    void contentThatCannotBeMadeWarns();
    void keyWithoutAWindowOnlyTakesTheFocus();
    void listAndFieldAreSetUp();
    void signalsAndSlotsAreDeclaredInOrder();
    void missingModelsWarn();

private:
    static std::unique_ptr<LocalVideosPage> makePage()
    {
        if (!toolkit::Application::activeApplicationWindow())
            QTest::ignoreMessage(QtWarningMsg, "Kestrel: Unable to get active window.");
        return std::make_unique<LocalVideosPage>();
    }

    FakeSparqlStore m_store;
};

void PageSetupTest::initTestCase()
{
    FakeThumbnailerClient::install();
    m_store.answerWith({{u"urn:uuid:1"_s, u"alpha"_s, u"alpha.mp4"_s, u"65"_s, u"0"_s, u"video/mp4"_s,
                         u"file:///videos/1.mp4"_s, u"1"_s}});
    QVERIFY(!toolkit::Application::activeApplicationWindow());
}

void PageSetupTest::withoutAWindowConstructionWarns()
{
    QTest::ignoreMessage(QtWarningMsg, "Kestrel: Unable to get active window.");
    const LocalVideosPage page;
    QVERIFY(!page.localVideosWidget());
}

void PageSetupTest::pageIsSetUp()
{
    const auto page = makePage();
    QVERIFY(!page->parentItem());
    QCOMPARE(page->title(), qtTrId("qtn_vide_collection"));
    QVERIFY(page->isPannable());
    QCOMPARE(page->escapeMode(), toolkit::ApplicationPage::EscapeMode::CloseWindow);
    for (const auto component :
         {toolkit::ApplicationPage::NavigationBar, toolkit::ApplicationPage::HomeButton,
          toolkit::ApplicationPage::EscapeButton})
        QCOMPARE(page->componentDisplay(component), toolkit::ApplicationPage::ComponentDisplay::Hide);
    QCOMPARE(page->styleName(), u"VideoApplicationPage"_s);
    QSignalSpy left(page.get(), &LocalVideosPage::goBackClicked);
    Q_EMIT page->backButtonClicked();
    QCOMPARE(left.count(), 1);
}

void PageSetupTest::contentStandsInOneColumn()
{
    const auto page = makePage();
    page->ensureContent();
    QCOMPARE(page->localVideosWidget()->parentItem(), static_cast<QGraphicsItem *>(page->centralWidget()));
    const auto *layout = dynamic_cast<toolkit::Layout *>(page->centralWidget()->layout());
    QVERIFY(layout);
    QCOMPARE(layout->policy()->styleName(), u"KestrelPolicy"_s);
    QCOMPARE(layout->policy()->count(), 1);
    page->showTextEdit({}, true);
    const FilterWidget *field = page->localVideosWidget()->filterWidget();
    QCOMPARE(layout->policy()->count(), 2);
    QCOMPARE(layout->policy()->indexOf(field), 0);
    page->showTextEdit({}, true);
    QCOMPARE(layout->policy()->count(), 2);
    page->showTextEdit({}, false);
    QCOMPARE(layout->policy()->indexOf(field), -1);
    QVERIFY(!field->isVisible());
}

void PageSetupTest::contentThatCannotBeMadeWarns()
{
    const auto page = makePage();
    memoryIsOut = true;
    QTest::ignoreMessage(QtWarningMsg,
                         "virtual void LocalVideosPage::createContent() localVideosWidget is null");
    page->ensureContent();
    memoryIsOut = false;
    QVERIFY(!page->localVideosWidget());
    page->hideEmptyFilter();
    QTest::ignoreMessage(
        QtWarningMsg, "void LocalVideosPage::showTextEdit(const QString&, bool) Widget returned NULL filter");
    page->showTextEdit(u"a"_s, true);
}

void PageSetupTest::keyWithoutAWindowOnlyTakesTheFocus()
{
    QGraphicsScene scene;
    const auto page = makePage();
    scene.addItem(page.get());
    page->show();
    QEvent activate(QEvent::WindowActivate);
    QCoreApplication::sendEvent(&scene, &activate);
    page->ensureContent();
    MyAllVideosWidget *widget = page->localVideosWidget();
    QTRY_COMPARE(widget->viewState(), int(MyAllVideosWidget::ListShown));
    page->showTextEdit({}, true);
    widget->filterWidget()->textEdit()->setFocus();
    QVERIFY(widget->filterWidget()->textEdit()->hasFocus());
    QSignalSpy asked(widget, &MyAllVideosWidget::showTextEdit);
    QKeyEvent key(QEvent::KeyPress, Qt::Key_A, Qt::NoModifier, u"a"_s);
    page->keyEvent(&key);
    QVERIFY(!widget->filterWidget()->textEdit()->hasFocus());
    QCOMPARE(asked.count(), 0);
    QCOMPARE(widget->filterWidget()->text(), QString());
    scene.removeItem(page.get());
}

void PageSetupTest::listAndFieldAreSetUp()
{
    const MyAllVideosWidget widget;
    QCOMPARE(widget.viewState(), 0);
    const toolkit::List *list = widget.list();
    QCOMPARE(list->viewType(), u"fast"_s);
    QCOMPARE(list->styleName(), u"KestrelList"_s);
    QVERIFY(list->focusPolicy() != Qt::NoFocus);
    QCOMPARE(list->itemModel(), static_cast<QAbstractItemModel *>(widget.proxy()));
    QCOMPARE(widget.proxy()->sourceModel(), static_cast<QAbstractItemModel *>(widget.model()));
    QCOMPARE(widget.proxy()->filterKeyColumn(), 1);
    QVERIFY(widget.proxy()->dynamicSortFilter());
    QCOMPARE(widget.filterWidget()->minimumHeight(), 80.0);
    QCOMPARE(widget.filterWidget()->maximumHeight(), 80.0);
    QVERIFY(!widget.filterWidget()->isVisible());
    const auto *label = childWhere<toolkit::Label>(&widget, [](const toolkit::Label *found) {
        return found->styleName() == "CommonEmptyStateTitleInverted"_L1;
    });
    QVERIFY(label && !label->isVisible());
    QCOMPARE(label->textFormat(), Qt::RichText);
    QCOMPARE(label->alignment(), Qt::AlignCenter);
    QVERIFY(label->wordWrap());
    const auto *layout = dynamic_cast<toolkit::Layout *>(widget.layout());
    QVERIFY(layout);
    QCOMPARE(layout->policy()->styleName(), u"KestrelPolicy"_s);
    const auto *timer = widget.findChild<QTimer *>(u"filterTimer"_s);
    QVERIFY(timer && timer->isSingleShot() && !timer->isActive());
    QCOMPARE(timer->interval(), 5000);
}

void PageSetupTest::signalsAndSlotsAreDeclaredInOrder()
{
    QCOMPARE(methods(LocalVideosPage::staticMetaObject, QMetaMethod::Signal).join(u' '),
             u"showNowPlayingPage(VideoInfo&) showDetailsPage(QString) goBackClicked() localContentCreated() "
             "handleError(QString) shareVideo(QString) mmcStateChanged(bool)"_s);
    QCOMPARE(methods(MyAllVideosWidget::staticMetaObject, QMetaMethod::Signal).join(u' '),
             u"playVideo(VideoInfo&) notify(QString) shareVideo(QString) detailsActionClicked(QString) "
             "showTextEdit(QString,bool) contentVisible(bool)"_s);
    QCOMPARE(methods(LocalVideosPage::staticMetaObject, QMetaMethod::Slot).join(u' '),
             u"hideEmptyFilter() showTextEdit(QString,bool) keyEvent(QKeyEvent*) deleteFile(QString) "
             "disableThumbnailing(bool) cancelDialogs() timerEvent(QTimerEvent*) delayEvent()"_s);
    QCOMPARE(methods(MyAllVideosWidget::staticMetaObject, QMetaMethod::Slot).join(u' '),
             u"itemClicked(QModelIndex) itemLongTapped(QModelIndex,QPointF) deleteVideoAction() "
             "detailsVideoAction() shareVideoAction() editVideoAction() goingBack() mmcStateChanged(bool) "
             "modelRowCountChanged() deleteDone(bool) liveFilteringTextChanged() "
             "liveFilteringClearClicked() liveFilteringFocusChanged() filterTimeout() VKBFilter(QPointF) "
             "videoListEntered() panningStarted() modelDataChanged(QModelIndex,QModelIndex) blockPlay() "
             "unblockPlay()"_s);
    QCOMPARE(methods(FilterWidget::staticMetaObject, QMetaMethod::Signal).join(u' '),
             u"textChanged() clearClicked()"_s);
    QCOMPARE(methods(FilterWidget::staticMetaObject, QMetaMethod::Slot).join(u' '),
             u"handleTextChanged() clearTextField() closeTheVKB()"_s);
}

void PageSetupTest::missingModelsWarn()
{
    MyAllVideosWidget widget;
    widget.proxy()->setSourceModel(nullptr);
    QTest::ignoreMessage(QtWarningMsg, "void MyAllVideosWidget::liveFilteringTextChanged() NULL sourceModel");
    widget.filterWidget()->setText(u"a"_s);
    widget.list()->setItemModel(nullptr);
    QTest::ignoreMessage(QtWarningMsg, "void MyAllVideosWidget::itemClicked(const QModelIndex&) NULL model");
    widget.itemClicked({});
}

int main(int argc, char **argv)
{
    toolkit::Application application(argc, argv, u"video"_s, nullptr);
    PageSetupTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_pagesetup.moc"

// SPDX-License-Identifier: GPL-3.0-or-later
// The store is on a server, and the server is away.
#include "libraryfixture.h"

#include "data/allvideosmodel.h"
#include "platform/toolkit/label.h"
#include "platform/toolkit/list.h"
#include "platform/toolkit/spinner.h"

#include <QSignalSpy>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

class TestUnreachable : public QObject
{
    Q_OBJECT

public:
    explicit TestUnreachable(LibraryFixture &fixture) : f(fixture) { }

private Q_SLOTS:
    void cleanup() { f.close(); }
    void theListStaysAndTheBannerSaysItOnce();
    void itIsSaidWhenThePageIsSeenAgain();
    void whatIsOverBeforeThePageIsSeenIsNotSaid();
    void aPageWithoutAListDoesNotClaimThatThereAreNoVideos();
    void aListThatIsLongInComingIsWaitedForVisibly();
    void anEmptyLibraryStaysEmpty();

private:
    bool openWithoutAnswer();
    // Those that are visible.
    template <class T> [[nodiscard]] QList<T *> children() const
    {
        QList<T *> found;
        for (QGraphicsItem *child : f.widget()->childItems()) {
            auto *widget = qobject_cast<T *>(child->toGraphicsObject());
            if (widget && widget->isVisible())
                found.append(widget);
        }
        return found;
    }
    template <class T> [[nodiscard]] T *child() const { return children<T>().value(0); }
    [[nodiscard]] QStringList emptyTexts() const
    {
        QStringList texts;
        for (const toolkit::Label *label : children<toolkit::Label>())
            texts.append(label->text());
        return texts;
    }

    LibraryFixture &f;
};

bool TestUnreachable::openWithoutAnswer()
{
    f.store.answer(FakeSparqlAnswer::never());
    f.page = std::make_unique<LocalVideosPage>();
    f.page->appear(&f.window, toolkit::Appearance::Immediate);
    f.window.showForProfile();
    return QTest::qWaitForWindowActive(&f.window);
}

void TestUnreachable::theListStaysAndTheBannerSaysItOnce()
{
    QVERIFY(f.open(LibraryFixture::rows({u"alpha"_s})));
    QTRY_VERIFY_WITH_TIMEOUT(f.page->isOnDisplay(), 20000);
    QSignalSpy banners(f.page.get(), &LocalVideosPage::handleError);
    f.page->setLibraryReachable(false);
    f.page->setLibraryReachable(false);
    QCOMPARE(banners.size(), 1);
    QCOMPARE(banners.first().first().toString(), qtTrId("qtn_vide_library_unreachable"));
    QCOMPARE(f.widget()->viewState(), int(MyAllVideosWidget::ListShown));
    QCOMPARE(f.titles(), QStringList{u"alpha"_s});
    f.page->setLibraryReachable(true);
    QCOMPARE(banners.size(), 1);
    f.page->setLibraryReachable(false);
    QCOMPARE(banners.size(), 2);
}

void TestUnreachable::itIsSaidWhenThePageIsSeenAgain()
{
    QVERIFY(f.open(LibraryFixture::rows({u"alpha"_s})));
    QTRY_VERIFY_WITH_TIMEOUT(f.page->isOnDisplay(), 20000);
    QSignalSpy banners(f.page.get(), &LocalVideosPage::handleError);
    toolkit::ApplicationPage details;
    details.appear(&f.window, toolkit::Appearance::Immediate);
    QTRY_VERIFY_WITH_TIMEOUT(!f.page->isOnDisplay(), 20000);
    f.page->setLibraryReachable(false);
    QCOMPARE(banners.size(), 0);
    details.dismiss(toolkit::Appearance::Immediate);
    QTRY_COMPARE_WITH_TIMEOUT(banners.size(), 1, 20000);
}

void TestUnreachable::whatIsOverBeforeThePageIsSeenIsNotSaid()
{
    QVERIFY(f.open(LibraryFixture::rows({u"alpha"_s})));
    QTRY_VERIFY_WITH_TIMEOUT(f.page->isOnDisplay(), 20000);
    QSignalSpy banners(f.page.get(), &LocalVideosPage::handleError);
    toolkit::ApplicationPage details;
    details.appear(&f.window, toolkit::Appearance::Immediate);
    QTRY_VERIFY_WITH_TIMEOUT(!f.page->isOnDisplay(), 20000);
    f.page->setLibraryReachable(false);
    f.page->setLibraryReachable(true);
    details.dismiss(toolkit::Appearance::Immediate);
    QTRY_VERIFY_WITH_TIMEOUT(f.page->isOnDisplay(), 20000);
    QCOMPARE(banners.size(), 0);
}

void TestUnreachable::aPageWithoutAListDoesNotClaimThatThereAreNoVideos()
{
    QVERIFY(openWithoutAnswer());
    QSignalSpy banners(f.page.get(), &LocalVideosPage::handleError);
    f.page->setLibraryReachable(false);
    QCOMPARE(f.widget()->viewState(), int(MyAllVideosWidget::Unreachable));
    QCOMPARE(emptyTexts(),
             QStringList({qtTrId("qtn_vide_library_unreachable"), qtTrId("qtn_vide_library_trying")}));
    Q_EMIT f.page->mmcStateChanged(false);
    Q_EMIT f.page->mmcStateChanged(true);
    QCOMPARE(f.widget()->viewState(), int(MyAllVideosWidget::Unreachable));
    f.page->setLibraryReachable(true); // until there is a list
    QCOMPARE(f.widget()->viewState(), int(MyAllVideosWidget::Unreachable));
    f.widget()->model()->queryFinished({LibraryFixture::row(1, u"alpha"_s)});
    QTRY_COMPARE_WITH_TIMEOUT(f.widget()->viewState(), int(MyAllVideosWidget::ListShown), 20000);
    QCOMPARE(banners.size(), 0); // the page had said it
    QVERIFY(f.widget()->list()->isVisible());
    QCOMPARE(emptyTexts(), QStringList());
}

void TestUnreachable::aListThatIsLongInComingIsWaitedForVisibly()
{
    QVERIFY(openWithoutAnswer());
    QTRY_VERIFY_WITH_TIMEOUT(child<toolkit::Spinner>(), 20000);
    const toolkit::Spinner *ring = child<toolkit::Spinner>();
    QVERIFY(ring->unknownDuration());
    QCOMPARE(ring->accessibleName(), qtTrId("qtn_vide_library_waiting"));
    QCOMPARE(ring->geometry().center(), f.widget()->rect().center());
    f.widget()->model()->queryFinished({LibraryFixture::row(1, u"alpha"_s)});
    QTRY_COMPARE_WITH_TIMEOUT(f.widget()->viewState(), int(MyAllVideosWidget::ListShown), 20000);
    QVERIFY(!child<toolkit::Spinner>());
}

void TestUnreachable::anEmptyLibraryStaysEmpty()
{
    QVERIFY(f.open({}));
    f.page->setLibraryReachable(false);
    QCOMPARE(f.widget()->viewState(), int(MyAllVideosWidget::EmptyCollection));
    QCOMPARE(emptyTexts(), QStringList{qtTrId("qtn_vide_collection_empty")});
}

int main(int argc, char **argv)
{
    toolkit::Application app(argc, argv, u"video"_s, nullptr);
    LibraryFixture fixture;
    TestUnreachable test(fixture);
    return QTest::qExec(&test, argc, argv);
}

#include "tst_unreachable.moc"

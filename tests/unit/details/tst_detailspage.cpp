// SPDX-License-Identifier: GPL-3.0-or-later
#include "details/extensionpage.h"
#include "detailsfixture.h"

#include "platform/toolkit/pannableviewport.h"

#include <QMetaMethod>
#include <QSignalSpy>
#include <QTimer>

using namespace Qt::Literals::StringLiterals;

namespace {

VideoDetails video(int number, const QString &title = {})
{
    VideoDetails details = playedVideo();
    details.urn = u"urn:uuid:%1"_s.arg(number);
    details.title = title.isEmpty() ? u"video %1"_s.arg(number) : title;
    details.url = u"file:///videos/%1.mp4"_s.arg(number);
    return details;
}

void expect(const char *warning)
{
    QTest::ignoreMessage(QtWarningMsg, warning);
}

bool isNear(const QColor &color, const QColor &other)
{
    return qAbs(color.red() - other.red()) + qAbs(color.green() - other.green())
        + qAbs(color.blue() - other.blue())
        < 12;
}

} // namespace

// What the page asks the store for, and what it does with the answers.
class DetailsPageTest : public QObject
{
    Q_OBJECT

public:
    explicit DetailsPageTest(DetailsFixture &fixture) : f(fixture) { }

private Q_SLOTS:
    void cleanup();
    void signalsAndSlotsStandInTheirOrder();
    void headingAndWayBack();
    void detailsOfAVideo();
    void anAnswerToAnOlderQueryIsIgnored();
    void anAnswerThatWasNotAskedForIsIgnored();
    void theSameAnswerTwiceIsTakenOnce();
    void withoutUrnNothingIsAsked();
    void aQueryThatCannotStartLeavesThePage_data();
    void aQueryThatCannotStartLeavesThePage();
    void withoutPreviewNothingIsAsked();
    void theThumbnailIsShown();
    void aPictureThatIsThereBeforeThePageIsSeenStays();
    void theStillGoesBeforeTheThumbnail();
    void withoutThumbnailThePlaceholderIsShownAndOneIsMade();
    void aNewStillIsShown();
    void anOldStillAnswerIsIgnored();
    void stillOfNothingIsNotAskedFor();
    void playRequestIsPassedOn();
    void playRequestBeyondTheListIsRefused_data();
    void playRequestBeyondTheListIsRefused();
    void withoutDetailsThePageIsNotBlank();
    void aStoreThatNeverAnswersLeavesNoBlankPage();
    void anotherVideoBeginsAtTheTop();
    void thePageBeginsAtTheTopEachTimeItIsOpened();
    void keysScroll();
    void keysScrollThePageOfAnExtension();
    void textsFollowTheLanguage();
    void thatThereIsNothingFollowsTheLanguage();
    void inTheSwitcherItHasTheSharedBackground();

private:
    DetailsFixture &f;
};

void DetailsPageTest::cleanup()
{
    f.close();
}

void DetailsPageTest::signalsAndSlotsStandInTheirOrder()
{
    const auto methods = [](QMetaMethod::MethodType kind) {
        QStringList result;
        const QMetaObject &meta = DetailsPage::staticMetaObject;
        for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
            if (meta.method(i).methodType() == kind)
                result.append(QString::fromLatin1(meta.method(i).methodSignature()));
        }
        return result;
    };
    QCOMPARE(methods(QMetaMethod::Signal),
             QStringList({u"extensionVideoPlaybackRequest(QString&)"_s,
                          u"showExtensionView(QGraphicsWidget*,QString)"_s}));
    QCOMPARE(methods(QMetaMethod::Slot),
             QStringList({u"addExtension(ExtensionInterface*)"_s, u"removeExtension(ExtensionInterface*)"_s,
                          u"showExtensionSubView()"_s, u"processPlayRequest(QStringList,uint,QString)"_s,
                          u"detailsReady(VideoDetails,int)"_s, u"dataReady(VideoInfo,int)"_s}));
}

void DetailsPageTest::headingAndWayBack()
{
    QVERIFY(f.open());
    QCOMPARE(f.page->title(), u"Details"_s);
    QCOMPARE(f.page->escapeMode(), toolkit::ApplicationPage::EscapeMode::Back);
    QVERIFY(f.page->isPannable());
    QSignalSpy back(f.page.get(), &DetailsPage::backButtonClicked);
    QTest::keyClick(&f.window, Qt::Key_Escape);
    QCOMPARE(back.count(), 1);
}

void DetailsPageTest::detailsOfAVideo()
{
    QVERIFY(f.open());
    QVERIFY(f.show(video(1)));
    QCOMPARE(f.texts().first(), u"video 1 "_s);
    QCOMPARE(f.texts().size(), 7);
    QCOMPARE(f.page->preview()->detailsContainer()->labels().first()->styleName(),
             u"KestrelDetailsPageTitle"_s);
}

void DetailsPageTest::anAnswerToAnOlderQueryIsIgnored()
{
    QVERIFY(f.open());
    f.store.answer(FakeSparqlAnswer::later());
    f.page->setPlayedVideo(u"urn:uuid:1"_s);
    f.page->setPlayedVideo(u"urn:uuid:2"_s);
    f.store.finish(1, {DetailsFixture::row(video(2))});
    QCOMPARE(f.page->urn(), u"urn:uuid:2"_s);
    f.store.finish(0, {DetailsFixture::row(video(1))});
    QCOMPARE(f.page->urn(), u"urn:uuid:2"_s);
    QCOMPARE(f.texts().first(), u"video 2 "_s);
}

void DetailsPageTest::anAnswerThatWasNotAskedForIsIgnored()
{
    QVERIFY(f.open());
    f.page->detailsReady(video(1), 0); // as long as none is outstanding, its id is 0, too
    f.page->detailsReady(video(1), 7);
    QCOMPARE(f.page->urn(), QString());
}

void DetailsPageTest::theSameAnswerTwiceIsTakenOnce()
{
    QVERIFY(f.open());
    QList<int> ids;
    connect(TrackerInterface::instance(), &TrackerInterface::videoDetailsFinished, f.page.get(),
            [&](const VideoDetails &, int id) { ids.append(id); });
    QVERIFY(f.show(video(1)));
    QCOMPARE(ids.size(), 1);
    f.page->detailsReady(video(2), ids.first());
    QCOMPARE(f.page->urn(), u"urn:uuid:1"_s);
}

void DetailsPageTest::withoutUrnNothingIsAsked()
{
    QVERIFY(f.open());
    expect("void DetailsPage::setPlayedVideo(const QString&) No urn specified");
    f.page->setPlayedVideo(QString());
    QCOMPARE(f.store.texts(), QStringList());
}

void DetailsPageTest::aQueryThatCannotStartLeavesThePage_data()
{
    QTest::addColumn<bool>("details");
    QTest::newRow("details") << true;
    QTest::newRow("still") << false;
}

void DetailsPageTest::aQueryThatCannotStartLeavesThePage()
{
    QFETCH(bool, details);
    QVERIFY(f.open());
    QVERIFY(f.show(video(1)));
    f.store.answer(FakeSparqlAnswer::null());
    expect("int TrackerInterface::executeQuery(const SparqlQuery&, const char*) NULL result for query");
    if (details) {
        expect("void DetailsPage::setPlayedVideo(const QString&) Tracker query failed");
        f.page->setPlayedVideo(u"urn:uuid:2"_s);
    } else {
        expect("void DetailsPage::updatePauseThumbnail() Tracker query failed");
        f.page->updatePauseThumbnail();
    }
    QCOMPARE(f.texts().first(), u"video 1 "_s);
}

void DetailsPageTest::withoutPreviewNothingIsAsked()
{
    QVERIFY(f.open());
    delete f.page->preview();
    expect("void DetailsPage::setPlayedVideo(const QString&) Preview widget missing");
    f.page->setPlayedVideo(u"urn:uuid:1"_s);
    QCOMPARE(f.store.texts(), QStringList());
}

void DetailsPageTest::theThumbnailIsShown()
{
    QVERIFY(f.open());
    const VideoDetails details = video(11);
    QVERIFY(!DetailsFixture::makePicture(details.url, Qt::red).isEmpty());
    QVERIFY(f.show(details));
    QVERIFY(isNear(f.shownColor(), Qt::red));
}

void DetailsPageTest::aPictureThatIsThereBeforeThePageIsSeenStays()
{
    const VideoDetails details = video(16);
    QVERIFY(!DetailsFixture::makePicture(details.url, Qt::red).isEmpty());
    f.page = std::make_unique<DetailsPage>(TrackerInterface::instance(), ThumbnailHelper::instance());
    QVERIFY(f.page->preview()->image()->pixmap().isNull());
    QVERIFY(f.show(details));
    f.page->appear(&f.window, toolkit::Appearance::Immediate);
    f.window.showForProfile();
    QTRY_VERIFY(f.page->isShown());
    QVERIFY(isNear(f.shownColor(), Qt::red));
}

void DetailsPageTest::theStillGoesBeforeTheThumbnail()
{
    QVERIFY(f.open());
    const VideoDetails details = video(12);
    QVERIFY(!DetailsFixture::makePicture(details.url, Qt::red).isEmpty());
    QVERIFY(!DetailsFixture::makePicture(details.url, Qt::blue, true).isEmpty());
    QVERIFY(f.show(details));
    QVERIFY(isNear(f.shownColor(), Qt::blue));
}

void DetailsPageTest::withoutThumbnailThePlaceholderIsShownAndOneIsMade()
{
    QVERIFY(f.open());
    const VideoDetails red = video(11);
    QVERIFY(!DetailsFixture::makePicture(red.url, Qt::red).isEmpty());
    QVERIFY(f.show(red));
    const VideoDetails details = video(13, u"not seen in the list yet"_s);
    QVERIFY(f.show(details));
    QCOMPARE(f.page->preview()->image()->pixmap().toImage(),
             ThumbnailHelper::instance()->placeHolder(ThumbnailHelper::pictureSize).toImage());
    QTRY_VERIFY(FakeThumbnailerClient::last()->outstanding.contains(QUrl(details.url)));
    FakeThumbnailerClient::last()->answer(QUrl(details.url),
                                          DetailsFixture::makePicture(details.url, Qt::green));
    QVERIFY(isNear(f.shownColor(), Qt::green));
    // That of another video is not this one's.
    FakeThumbnailerClient::last()->answer(QUrl(red.url), DetailsFixture::pathOf(red.url));
    QVERIFY(isNear(f.shownColor(), Qt::green));
}

void DetailsPageTest::aNewStillIsShown()
{
    QVERIFY(f.open());
    const VideoDetails details = video(14);
    QVERIFY(!DetailsFixture::makePicture(details.url, Qt::red).isEmpty());
    QVERIFY(f.show(details));
    QVERIFY(!DetailsFixture::makePicture(details.url, Qt::blue, true).isEmpty());
    f.store.answerWith({DetailsFixture::dataRow(details)});
    f.page->updatePauseThumbnail();
    QTRY_VERIFY(isNear(f.shownColor(), Qt::blue));
}

// The still of the video that was shown before comes when the next is on the page.
void DetailsPageTest::anOldStillAnswerIsIgnored()
{
    QVERIFY(f.open());
    QVERIFY(!DetailsFixture::makePicture(video(11).url, Qt::red).isEmpty());
    QVERIFY(!DetailsFixture::makePicture(video(15).url, Qt::green).isEmpty());
    QVERIFY(f.show(video(11)));
    f.store.clear();
    f.store.answer(FakeSparqlAnswer::later());
    f.page->updatePauseThumbnail();
    f.page->setPlayedVideo(u"urn:uuid:15"_s);
    f.store.finish(1, {DetailsFixture::row(video(15))});
    f.store.finish(0, {DetailsFixture::dataRow(video(11))});
    QVERIFY(isNear(f.shownColor(), Qt::green));
    // And one that was asked for twice: the later counts.
    f.page->updatePauseThumbnail();
    f.page->updatePauseThumbnail();
    f.store.finish(2, {DetailsFixture::dataRow(video(11))});
    QVERIFY(isNear(f.shownColor(), Qt::green));
}

void DetailsPageTest::stillOfNothingIsNotAskedFor()
{
    QVERIFY(f.open());
    f.page->updatePauseThumbnail();
    QCOMPARE(f.store.texts(), QStringList());
}

void DetailsPageTest::playRequestIsPassedOn()
{
    QVERIFY(f.open());
    QStringList asked;
    connect(f.page.get(), &DetailsPage::extensionVideoPlaybackRequest, f.page.get(),
            [&](QString &address) { asked.append(address); });
    f.page->processPlayRequest({u"file:///a"_s, u"file:///b"_s}, 1, u"anybody"_s);
    f.page->processPlayRequest({u"file:///a"_s, u"file:///b"_s}, 0, QString());
    QCOMPARE(asked, QStringList({u"file:///b"_s, u"file:///a"_s}));
}

void DetailsPageTest::playRequestBeyondTheListIsRefused_data()
{
    QTest::addColumn<QStringList>("list");
    QTest::addColumn<uint>("index");
    QTest::newRow("the list's length") << QStringList{u"a"_s, u"b"_s} << 2U;
    QTest::newRow("empty list") << QStringList() << 0U;
    QTest::newRow("far beyond") << QStringList{u"a"_s} << std::numeric_limits<uint>::max();
}

void DetailsPageTest::playRequestBeyondTheListIsRefused()
{
    QFETCH(QStringList, list);
    QFETCH(uint, index);
    QVERIFY(f.open());
    QSignalSpy asked(f.page.get(), SIGNAL(extensionVideoPlaybackRequest(QString &)));
    QVERIFY(asked.isValid());
    expect("void DetailsPage::processPlayRequest(QStringList, uint, QString) Faulty index");
    f.page->processPlayRequest(list, index, u"anybody"_s);
    QCOMPARE(asked.count(), 0);
}

// From the player to the details of a stream, before those of any video were shown.
void DetailsPageTest::withoutDetailsThePageIsNotBlank()
{
    QVERIFY(f.open());
    QTRY_COMPARE(f.texts(), QStringList(u"Details not available"_s));
    QVERIFY(!f.page->preview()->image()->pixmap().isNull());
    QVERIFY(f.show(video(1)));
    QCOMPARE(f.texts().size(), 7);
}

void DetailsPageTest::aStoreThatNeverAnswersLeavesNoBlankPage()
{
    f.page = std::make_unique<DetailsPage>(TrackerInterface::instance(), ThumbnailHelper::instance());
    f.store.answer(FakeSparqlAnswer::never());
    f.page->setPlayedVideo(u"urn:uuid:1"_s);
    f.page->appear(&f.window, toolkit::Appearance::Immediate);
    f.window.showForProfile();
    auto *guard = f.page->findChild<QTimer *>(u"emptyGuard"_s);
    QVERIFY(guard);
    QTRY_VERIFY(guard->isActive());
    QVERIFY(f.labels().isEmpty()); // an answer may still come
    guard->stop();
    QMetaObject::invokeMethod(guard, "timeout");
    QCOMPARE(f.texts(), QStringList(u"Details not available"_s));
}

void DetailsPageTest::anotherVideoBeginsAtTheTop()
{
    QVERIFY(f.open(QSize(480, 500)));
    QVERIFY(f.show(video(1)));
    toolkit::PannableViewport *viewport = f.page->pannableViewport();
    QTRY_VERIFY(viewport->range().height() > 0);
    viewport->setPosition({0, 100});
    QCOMPARE(viewport->position().y(), 100.0);
    QVERIFY(f.show(video(1))); // read again
    QCOMPARE(viewport->position().y(), 100.0);
    QVERIFY(f.show(video(2)));
    QCOMPARE(viewport->position().y(), 0.0);
}

// Left at its foot and opened again, for the same video.
void DetailsPageTest::thePageBeginsAtTheTopEachTimeItIsOpened()
{
    QVERIFY(f.open(QSize(480, 500)));
    QVERIFY(f.show(video(1)));
    toolkit::PannableViewport *viewport = f.page->pannableViewport();
    QTRY_VERIFY(viewport->range().height() > 0);
    viewport->setPosition({0, 100});
    // Uncovered, as when the page of an extension is left: it is where it was.
    toolkit::ApplicationPage above;
    above.appear(&f.window, toolkit::Appearance::Immediate);
    QTRY_VERIFY(!f.page->isShown());
    above.dismiss();
    QTRY_VERIFY(f.page->isShown());
    QCOMPARE(viewport->position().y(), 100.0);
    toolkit::ApplicationPage list;
    list.appear(&f.window, toolkit::Appearance::Immediate);
    QTRY_VERIFY(!f.page->isShown());
    f.page->setPlayedVideo(u"urn:uuid:1"_s);
    f.page->appear(&f.window, toolkit::Appearance::Immediate);
    QTRY_VERIFY(f.page->isShown());
    QCOMPARE(viewport->position().y(), 0.0);
    list.dismiss();
}

void DetailsPageTest::keysScroll()
{
    QVERIFY(f.open(QSize(480, 500)));
    QVERIFY(f.show(video(1)));
    toolkit::PannableViewport *viewport = f.page->pannableViewport();
    QTRY_VERIFY(viewport->range().height() > 0);
    QTest::keyClick(&f.window, Qt::Key_End);
    QTRY_COMPARE(viewport->position().y(), viewport->range().height());
    QTest::keyClick(&f.window, Qt::Key_Home);
    QTRY_COMPARE(viewport->position().y(), 0.0);
}

void DetailsPageTest::keysScrollThePageOfAnExtension()
{
    QGraphicsWidget content;
    content.setPreferredSize(400, 2000);
    ExtensionPage page(&content, u"More of them"_s);
    f.window.resize(480, 500);
    page.appear(&f.window, toolkit::Appearance::Immediate);
    f.window.showForProfile();
    QVERIFY(QTest::qWaitForWindowActive(&f.window));
    QTRY_VERIFY(page.pannableViewport()->range().height() > 1000);
    QTest::keyClick(&f.window, Qt::Key_PageDown);
    QTRY_VERIFY(page.pannableViewport()->position().y() > 100);
}

void DetailsPageTest::textsFollowTheLanguage()
{
    QVERIFY(f.open());
    QVERIFY(f.show(video(1)));
    {
        const DeviceLocale german(u"de_DE"_s);
        QTRY_COMPARE(f.page->title(), u"Details"_s);
        QTRY_COMPARE(f.texts().at(1), u"Länge: 12:40"_s);
    }
    f.locale.install();
    QTRY_COMPARE(f.texts().at(1), u"Length: 12:40"_s);
}

void DetailsPageTest::thatThereIsNothingFollowsTheLanguage()
{
    QVERIFY(f.open());
    QTRY_COMPARE(f.texts(), QStringList(u"Details not available"_s));
    {
        const DeviceLocale german(u"de_DE"_s);
        QTRY_COMPARE(f.texts(), QStringList(u"Keine Details verfügbar"_s));
    }
    f.locale.install();
    QTRY_COMPARE(f.texts(), QStringList(u"Details not available"_s));
}

void DetailsPageTest::inTheSwitcherItHasTheSharedBackground()
{
    QVERIFY(f.open());
    static int asked = 0;
    f.page->setSwitcherBackground([]() -> const QImage & {
        static const QImage image = [] {
            QImage blue(8, 8, QImage::Format_RGB32);
            blue.fill(Qt::blue);
            return blue;
        }();
        ++asked;
        return image;
    });
    const auto painted = [&] {
        QImage canvas(f.page->size().toSize(), QImage::Format_RGB32);
        canvas.fill(Qt::red);
        QPainter painter(&canvas);
        static_cast<QGraphicsItem *>(f.page.get())->paint(&painter, nullptr, nullptr);
        painter.end();
        return canvas.pixelColor(4, 4);
    };
    QVERIFY(painted() != QColor(Qt::blue));
    QCOMPARE(asked, 0); // worked out when it is needed
    f.window.showMinimized();
    QTRY_VERIFY(f.window.isInSwitcher());
    QCOMPARE(painted(), QColor(Qt::blue));
}

int main(int argc, char **argv)
{
    toolkit::Application application(argc, argv, QStringLiteral("video"), nullptr);
    DetailsFixture fixture;
    DetailsPageTest test(fixture);
    return QTest::qExec(&test, argc, argv);
}
#include "tst_detailspage.moc"

// SPDX-License-Identifier: GPL-3.0-or-later
#include "details/extensionfailurelist.h"
#include "detailsfixture.h"
#include "support/sceneitems.h"
#include "unit/extensions/extensionplaces.h"

#include <kestrel/actionmediator.h>
#include <kestrel/extensioninterface.h>
#include <kestrel/playerhostinterface.h>
#include <platform/extensions/extensionarea.h>
#include <platform/extensions/extensionfailures.h>
#include <platform/toolkit/button.h>

#include <QGraphicsScene>
#include <QGraphicsWidget>
#include <QPointer>
#include <QSignalSpy>

using namespace Qt::Literals::StringLiterals;

namespace {

const QString relatedName = u"video_youtuberelatedextension.desktop"_s;

// Takes down what it is told.
class Related : public ExtensionInterface
{
public:
    explicit Related(bool hasWidget = true)
    {
        if (!hasWidget)
            return;
        shown = new QGraphicsWidget;
        shown->setPreferredSize(480, 120);
    }
    ~Related() override { delete shown; }
    void setActionMediator(ActionMediator *given) override { mediator = given; }
    QGraphicsWidget *widget() override { return shown; }
    void contentChanged(const ContentRecord &content) override { records.append(content); }
    [[nodiscard]] PlayerHostInterface *host() const { return mediator->hostInterface(); }

    ActionMediator *mediator = nullptr;
    QPointer<QGraphicsWidget> shown;
    QList<ContentRecord> records;
};

VideoDetails episode()
{
    VideoDetails details = playedVideo();
    details.additionalInfo = u"7"_s;
    return details;
}

void expect(const char *warning)
{
    QTest::ignoreMessage(QtWarningMsg, warning);
}

} // namespace

// What extensions show on the page, and what they ask of it.
class DetailsExtensionsTest : public QObject
{
    Q_OBJECT

public:
    explicit DetailsExtensionsTest(DetailsFixture &fixture) : f(fixture) { }

private Q_SLOTS:
    void init() { m_places = std::make_unique<ExtensionPlaces>(); }
    void cleanup();
    void onlyTheNamedDescriptionIsLoaded();
    void nothingIsLoadedBeforeThePageIsSeen();
    void aRealExtensionStandsBelowTheDetails();
    void itsWidgetGrowsShrinksAndHides();
    void theSettingTakesItAwayAndBringsItBack();
    void itsWidgetStandsBelowTheDetailsAndGoes();
    void removedWithoutHavingBeenAddedIsOnlyToldInTheLog();
    void addedAgainIsRecordedOnce();
    void withoutWidgetItStillHearsOfTheVideo();
    void newcomersHearOfTheVideoThatIsShown();
    void everyVideoIsTold_data();
    void everyVideoIsTold();
    void itsOwnPageIsAskedFor();
    void whoIsNoHostOpensNothing();
    void itsPlayRequestIsPassedOn();
    void signalsOfItsHostThatItEmitsItself();
    void failuresStandOnThePage();
    void failuresFollowTheLanguage();
    void laterFailuresAreNamedInTheLanguageOfNow();
    void whatCrashedIsTriedAgainWhenAsked();
    void aWidgetThatDeletesItselfLeavesThePage();

private:
    [[nodiscard]] ExtensionFailureList *failureList() const
    {
        return childOf<ExtensionFailureList>(f.page->centralWidget());
    }
    // The widget of the real extension.
    [[nodiscard]] QGraphicsWidget *watched() const
    {
        for (QGraphicsItem *item : f.page->scene()->items()) {
            if (item->isWidget() && item->toGraphicsObject()->objectName() == u"watched"_s)
                return static_cast<QGraphicsWidget *>(item);
        }
        return nullptr;
    }
    [[nodiscard]] static QStringList calls()
    {
        return QCoreApplication::instance()->property("calls").toStringList();
    }
    void open()
    {
        QVERIFY(f.open());
        f.page->loadExtensions();
    }

    DetailsFixture &f;
    std::unique_ptr<ExtensionPlaces> m_places;
};

void DetailsExtensionsTest::cleanup()
{
    f.close();
    QCoreApplication::instance()->setProperty("calls", QVariant());
    m_places.reset();
}

void DetailsExtensionsTest::onlyTheNamedDescriptionIsLoaded()
{
    for (const QString &name : {relatedName, u"another.desktop"_s, u"x"_s + relatedName,
                                relatedName + u".desktop"_s, u"video_youtuberelatedextensionXdesktop"_s})
        m_places->install(u"user"_s, name,
                          QString()); // without libraries: what is loaded fails, and is named
    open();
    const QList<ExtensionFailure> failures = f.page->extensionArea()->failures()->list();
    QCOMPARE(failures.size(), 1);
    QCOMPARE(failures.first().file, relatedName);
    // And it was to be loaded into this process.
    QCOMPARE(failures.first().kind, ExtensionFailure::Kind::LibraryMissing);
}

void DetailsExtensionsTest::nothingIsLoadedBeforeThePageIsSeen()
{
    m_places->install(u"user"_s, relatedName, u"ext_watched"_s);
    f.page = std::make_unique<DetailsPage>(TrackerInterface::instance(), ThumbnailHelper::instance());
    f.page->loadExtensions();
    QVERIFY(!f.page->extensionArea());
    QCOMPARE(calls(), QStringList());
    f.page->appear(&f.window, toolkit::Appearance::Immediate);
    f.window.showForProfile();
    QTRY_VERIFY(calls().contains(u"made"_s));
    const QStringList once = calls();
    f.page->loadExtensions(); // it is there
    QCOMPARE(calls(), once);
}

void DetailsExtensionsTest::aRealExtensionStandsBelowTheDetails()
{
    m_places->install(u"user"_s, relatedName, u"ext_watched"_s);
    open();
    QVERIFY(f.show(episode()));
    QCOMPARE(calls(), QStringList({u"made"_s, u"mediator with host"_s, u"widget"_s, u"content Birthday"_s}));
    f.close();
    QCOMPARE(calls().last(), u"deleted"_s);
}

// “The videos that belong to this one came a second later, and the page had no room for them.”
void DetailsExtensionsTest::itsWidgetGrowsShrinksAndHides()
{
    m_places->install(u"user"_s, relatedName, u"ext_watched"_s);
    open();
    QVERIFY(f.show(episode()));
    QGraphicsWidget *content = watched();
    QVERIFY(content);
    const auto room = [content] { return content->parentWidget()->size().height(); };
    QTRY_COMPARE(room(), 80.0);
    const qreal page = f.page->centralWidget()->size().height();
    content->setPreferredHeight(2000);
    QTRY_COMPARE(room(), 2000.0);
    QCOMPARE(content->size(), QSizeF(480, 2000));
    QTRY_VERIFY(f.page->centralWidget()->size().height() > page + 1000);
    content->setPreferredHeight(100);
    QTRY_COMPARE(room(), 100.0);
    content->hide();
    QTRY_COMPARE(room(), 0.0);
    content->show();
    QTRY_COMPARE(room(), 100.0);
    QCOMPARE(content->size(), QSizeF(480, 100));
}

void DetailsExtensionsTest::theSettingTakesItAwayAndBringsItBack()
{
    m_places->install(u"user"_s, relatedName, u"ext_watched"_s);
    open();
    QVERIFY(f.show(episode()));
    f.page->unloadExtensions();
    QCOMPARE(calls().last(), u"deleted"_s);
    f.page->unloadExtensions();
    f.page->loadExtensions();
    QCOMPARE(calls().mid(calls().indexOf(u"deleted"_s) + 1),
             QStringList({u"made"_s, u"mediator with host"_s, u"widget"_s, u"content Birthday"_s}));
    QCOMPARE(f.texts().size(), 7);
}

void DetailsExtensionsTest::itsWidgetStandsBelowTheDetailsAndGoes()
{
    QVERIFY(f.open());
    QVERIFY(f.show(episode()));
    Related one;
    Related two;
    f.page->addExtension(&one);
    f.page->addExtension(&two);
    const auto top = [](const QGraphicsWidget *widget) { return widget->geometry().top(); };
    QTRY_VERIFY(top(two.shown) > 0);
    QTRY_VERIFY(top(one.shown) >= f.page->preview()->geometry().bottom());
    QTRY_VERIFY(top(two.shown) >= one.shown->geometry().bottom());
    QCOMPARE(one.shown->size().width(), f.page->size().width());
    const QPointer<ActionMediator> mediator = one.mediator;
    f.page->removeExtension(&one);
    QCOMPARE(one.shown->parentItem(), nullptr);
    QCOMPARE(one.shown->scene(), nullptr);
    QTRY_VERIFY(top(two.shown) <= f.page->preview()->geometry().bottom() + 1);
    QTRY_VERIFY(!mediator);
    f.page->removeExtension(&two);
}

void DetailsExtensionsTest::removedWithoutHavingBeenAddedIsOnlyToldInTheLog()
{
    QVERIFY(f.open());
    QVERIFY(f.show(episode()));
    Related stranger;
    expect("void DetailsPage::removeExtension(ExtensionInterface*) No widget founds for removed extension!");
    f.page->removeExtension(&stranger);
    expect("void DetailsPage::removeExtension(ExtensionInterface*) No widget founds for removed extension!");
    f.page->removeExtension(nullptr);
    QCOMPARE(f.texts().size(), 7);
}

void DetailsExtensionsTest::addedAgainIsRecordedOnce()
{
    QVERIFY(f.open());
    Related related;
    f.page->addExtension(&related);
    const QPointer<ActionMediator> first = related.mediator;
    f.page->addExtension(&related);
    QVERIFY(related.mediator != first);
    QTRY_VERIFY(!first);
    QVERIFY(f.show(episode()));
    QCOMPARE(related.records.size(), 1);
    f.page->removeExtension(&related);
    expect("void DetailsPage::removeExtension(ExtensionInterface*) No widget founds for removed extension!");
    f.page->removeExtension(&related);
}

void DetailsExtensionsTest::withoutWidgetItStillHearsOfTheVideo()
{
    QVERIFY(f.open());
    Related bare(false);
    f.page->addExtension(&bare);
    QVERIFY(f.show(episode()));
    QCOMPARE(bare.records.size(), 1);
    const QPointer<ActionMediator> mediator = bare.mediator;
    expect("void DetailsPage::removeExtension(ExtensionInterface*) No widget founds for removed extension!");
    f.page->removeExtension(&bare);
    QTRY_VERIFY(!mediator);
}

void DetailsExtensionsTest::newcomersHearOfTheVideoThatIsShown()
{
    QVERIFY(f.open());
    Related early;
    f.page->addExtension(&early);
    QCOMPARE(early.records.size(), 0);
    QVERIFY(f.show(episode()));
    Related late;
    f.page->addExtension(&late);
    const ContentRecord record(u"file:///videos/clip.mp4"_s, u"Birthday"_s, QString(), u"7"_s);
    QCOMPARE(early.records, QList<ContentRecord>{record});
    QCOMPARE(late.records, QList<ContentRecord>{record});
    QCOMPARE(record.keys(), QStringList({u"episode"_s, u"series"_s, u"title"_s, u"uri"_s}));
    f.page->removeExtension(&early);
    f.page->removeExtension(&late);
}

void DetailsExtensionsTest::everyVideoIsTold_data()
{
    QTest::addColumn<QString>("additionalInfo");
    QTest::addColumn<QString>("episode");
    QTest::newRow("number") << u"12"_s << u"12"_s;
    QTest::newRow("synopsis") << u"Two people lose a map."_s << QString();
    QTest::newRow("synopsis that begins with a number") << u"12 people lose a map."_s << QString();
    QTest::newRow("nothing") << QString() << QString();
    QTest::newRow("below zero") << u"-1"_s << QString();
}

void DetailsExtensionsTest::everyVideoIsTold()
{
    QFETCH(QString, additionalInfo);
    QVERIFY(f.open());
    Related related;
    f.page->addExtension(&related);
    VideoDetails details = playedVideo();
    details.additionalInfo = additionalInfo;
    QVERIFY(f.show(details));
    QTEST(related.records.last().episode(), "episode");
    QCOMPARE(related.records.last().series(), QString());
    details.urn = u"urn:uuid:2"_s;
    details.title.clear();
    details.url = u"file:///videos/a%20b.mp4"_s;
    QVERIFY(f.show(details));
    QCOMPARE(related.records.size(), 2);
    QCOMPARE(related.records.last().uri(), u"file:///videos/a%20b.mp4"_s);
    QCOMPARE(related.records.last().title(), QString());
    f.page->removeExtension(&related);
}

void DetailsExtensionsTest::itsOwnPageIsAskedFor()
{
    QVERIFY(f.open());
    Related related;
    f.page->addExtension(&related);
    QGraphicsWidget content;
    QList<std::pair<QGraphicsWidget *, QString>> asked;
    connect(f.page.get(), &DetailsPage::showExtensionView, f.page.get(),
            [&](QGraphicsWidget *widget, const QString &title) {
                asked.append({widget, title});
            });
    related.host()->showSubPage(&content, u"More of them"_s);
    QTRY_COMPARE(asked.size(), 1);
    QCOMPARE(asked.first().first, &content);
    QCOMPARE(asked.first().second, u"More of them"_s);
    f.page->removeExtension(&related);
}

void DetailsExtensionsTest::whoIsNoHostOpensNothing()
{
    QVERIFY(f.open());
    QSignalSpy asked(f.page.get(), &DetailsPage::showExtensionView);
    expect("void DetailsPage::showExtensionSubView() interface is NULL");
    f.page->showExtensionSubView();
    QObject stranger;
    connect(&stranger, &QObject::objectNameChanged, f.page.get(), &DetailsPage::showExtensionSubView);
    expect("void DetailsPage::showExtensionSubView() interface is NULL");
    stranger.setObjectName(u"a stranger"_s);
    QCOMPARE(asked.count(), 0);
}

void DetailsExtensionsTest::itsPlayRequestIsPassedOn()
{
    QVERIFY(f.open());
    Related related;
    f.page->addExtension(&related);
    QStringList asked;
    connect(f.page.get(), &DetailsPage::extensionVideoPlaybackRequest, f.page.get(),
            [&](QString &address) { asked.append(address); });
    related.host()->play({u"file:///a.mp4"_s, u"file:///b.mp4"_s}, 1, u"related"_s);
    QTRY_COMPARE(asked, QStringList(u"file:///b.mp4"_s));
    f.page->removeExtension(&related);
}

// They can be called by their names, and then nobody has looked at what they say.
void DetailsExtensionsTest::signalsOfItsHostThatItEmitsItself()
{
    m_places->install(u"user"_s, relatedName, u"ext_faulty"_s);
    open();
    QSignalSpy played(f.page.get(), SIGNAL(extensionVideoPlaybackRequest(QString &)));
    QList<QGraphicsWidget *> views;
    connect(f.page.get(), &DetailsPage::showExtensionView, f.page.get(),
            [&](QGraphicsWidget *widget) { views.append(widget); });
    qputenv("FAULT", "signals by name");
    expect("void DetailsPage::processPlayRequest(QStringList, uint, QString) Faulty index");
    QVERIFY(f.show(episode()));
    qunsetenv("FAULT");
    QCOMPARE(played.count(), 0);
    QCOMPARE(views, QList<QGraphicsWidget *>{nullptr}); // a page that is left at once
    QTRY_COMPARE(f.page->extensionArea()->failures()->texts(),
                 QStringList(u"“The user one” asked for something that is not possible."_s));
}

void DetailsExtensionsTest::failuresStandOnThePage()
{
    m_places->install(u"user"_s, relatedName, QString());
    open();
    QVERIFY(f.show(episode()));
    QVERIFY(failureList());
    QTRY_VERIFY(failureList()->isVisible());
    const auto *label = childOf<toolkit::Label>(failureList());
    QTRY_VERIFY(label);
    QCOMPARE(label->text(), f.page->extensionArea()->failures()->texts().first());
    QTRY_VERIFY(failureList()->geometry().top() >= f.page->preview()->geometry().bottom());
    f.page->unloadExtensions();
    QTRY_VERIFY(!failureList()->isVisible());
    QCOMPARE(f.texts().size(), 7);
}

// “I chose another language, and half of the sentence was still in the first one.”
void DetailsExtensionsTest::failuresFollowTheLanguage()
{
    m_places->install(u"user"_s, relatedName, QString());
    open();
    const auto shown = [this] {
        const auto *label = childOf<toolkit::Label>(failureList());
        return label ? label->text() : QString();
    };
    QTRY_COMPARE(shown(), u"“The user one” is not used: its program file is missing."_s);
    {
        const DeviceLocale german(u"de_DE"_s);
        QTRY_COMPARE(shown(), u"„Der von user“ wird nicht verwendet: Die Programmdatei fehlt."_s);
    }
    f.locale.install();
    QTRY_COMPARE(shown(), u"“The user one” is not used: its program file is missing."_s);
    // The file is gone: the name is kept as it is.
    QVERIFY(QFile::remove(m_places->folder(u"user"_s) + u'/' + relatedName));
    {
        const DeviceLocale german(u"de_DE"_s);
        QTRY_COMPARE(shown(), u"„The user one“ wird nicht verwendet: Die Programmdatei fehlt."_s);
    }
    f.locale.install();
    QTRY_COMPARE(shown(), u"“The user one” is not used: its program file is missing."_s);
}

void DetailsExtensionsTest::laterFailuresAreNamedInTheLanguageOfNow()
{
    m_places->install(u"user"_s, relatedName, u"ext_faulty"_s);
    open();
    QVERIFY(f.show(episode()));
    {
        const DeviceLocale german(u"de_DE"_s);
        QTRY_COMPARE(f.texts().at(1), u"Länge: 12:40"_s);
        qputenv("FAULT", "no address");
        QVERIFY(f.show(episode()));
        QTRY_COMPARE(f.page->extensionArea()->failures()->list().size(), 1);
        qunsetenv("FAULT");
        QCOMPARE(f.page->extensionArea()->failures()->list().first().name, u"Der von user"_s);
    }
    f.locale.install();
    QTRY_COMPARE(f.texts().at(1), u"Length: 12:40"_s);
}

void DetailsExtensionsTest::whatCrashedIsTriedAgainWhenAsked()
{
    m_places->install(u"user"_s, relatedName, QString());
    open();
    f.page->extensionArea()->failures()->add(
        {relatedName, u"Related"_s, ExtensionFailure::Kind::Crashed, u"crashed"_s});
    QTRY_VERIFY(childOf<toolkit::Button>(failureList()));
    auto *button = childOf<toolkit::Button>(failureList());
    QCOMPARE(button->text(), u"Try again"_s);
    button->click();
    // It is looked for again, and is missing as before.
    QTRY_VERIFY(!childOf<toolkit::Button>(failureList()));
    QCOMPARE(f.page->extensionArea()->failures()->list().size(), 1);
}

void DetailsExtensionsTest::aWidgetThatDeletesItselfLeavesThePage()
{
    QVERIFY(f.open());
    QVERIFY(f.show(episode()));
    Related related;
    f.page->addExtension(&related);
    QTRY_VERIFY(related.shown->geometry().top() > 0);
    delete related.shown;
    QVERIFY(f.show(episode()));
    expect("void DetailsPage::removeExtension(ExtensionInterface*) No widget founds for removed extension!");
    f.page->removeExtension(&related);
}

int main(int argc, char **argv)
{
    toolkit::Application application(argc, argv, QStringLiteral("video"), nullptr);
    DetailsFixture fixture;
    DetailsExtensionsTest test(fixture);
    return QTest::qExec(&test, argc, argv);
}
#include "tst_detailsextensions.moc"

// SPDX-License-Identifier: GPL-3.0-or-later
#include "unit/extensions/extensionplaces.h"
#include "unit/extensions/hostingpage.h"
#include "unit/related/localserver.h"

#include <platform/extensions/extensionarea.h>

#include <QDir>
#include <QGraphicsSceneMouseEvent>
#include <QProcess>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>

#include <memory>

using namespace Qt::Literals::StringLiterals;

// The plug-in, loaded as the program loads it, with a provider that the person sets, changes and takes away
// while a page is open. There is no library: what comes from the network comes all the same.
class TestRelatedProvider : public QObject
{
    Q_OBJECT

public:
    static void initMain()
    {
        // A store in a file, which other processes change: read before the first use of settings.
        qputenv("GSETTINGS_BACKEND", "keyfile");
    }

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void withoutAnAddressNobodyIsAsked();
    void anAddressTakesEffectOnThePageThatIsOpen();
    void anEmptiedAddressTakesItsRowsAway();
    void whatIsUnderWayIsCalledBack();
    void anotherProviderTakesThePlaceOfTheFirst();
    void whoWantsNothingOfTheNetworkGetsNothing();
    void aVideoIsAskedAboutOnce();
    void whoComesBackAfterAFailureIsAskedForAgain();
    void aFailureIsSeenAndCanBeTriedAgain();
    void aTapPlaysAStream();
    void onlyWhatIsPlayableIsShown();
    void turnedOffInTheMiddle();

private:
    void show(const QString &title);
    [[nodiscard]] QStringList shown() const;
    [[nodiscard]] QGraphicsWidget *row(const QString &text) const;

    ExtensionPlaces m_places;
    std::unique_ptr<LocalServer> m_server;
    std::unique_ptr<ExtensionArea> m_area;
    std::unique_ptr<HostingPage> m_page;
};

namespace {

const QStringList withoutLibrary{u"Related videos"_s, u"The video library is not available right now."_s,
                                 u"Try again"_s};

QByteArray answer(const QByteArray &entries)
{
    return LocalServer::ok("{\"videos\":[" + entries + "]}");
}

bool set(const QString &key, const QString &value)
{
    QProcess gsettings;
    gsettings.setProcessChannelMode(QProcess::ForwardedChannels);
    gsettings.start(u"gsettings"_s,
                    {u"--schemadir"_s,
                     QCoreApplication::applicationDirPath() + u"/../share/glib-2.0/schemas"_s, u"set"_s,
                     u"com.harrow.kestrel"_s, key, value});
    return gsettings.waitForFinished() && gsettings.exitCode() == 0;
}

bool setProvider(const QUrl &address)
{
    return set(u"related-videos-provider"_s, address.toString());
}

void collect(const QGraphicsItem *item, QList<QGraphicsObject *> &found)
{
    for (QGraphicsItem *child : item->childItems()) {
        QGraphicsObject *object = child->toGraphicsObject();
        if (object && object->isVisible() && object->property("accessibleName").isValid())
            found.append(object);
        collect(child, found);
    }
}

void tap(QGraphicsWidget *widget)
{
    for (const QEvent::Type type : {QEvent::GraphicsSceneMousePress, QEvent::GraphicsSceneMouseRelease}) {
        QGraphicsSceneMouseEvent event(type);
        event.setButton(Qt::LeftButton);
        event.setButtons(Qt::LeftButton);
        event.setPos(widget->rect().center());
        widget->scene()->sendEvent(widget, &event);
    }
}

} // namespace

void TestRelatedProvider::initTestCase()
{
    QVERIFY(QDir().mkpath(QString::fromLocal8Bit(qgetenv("XDG_CONFIG_HOME")) + u"/glib-2.0/settings"_s));
    const QString folder = m_places.folder(u"user"_s);
    QVERIFY(QFile::copy(QStringLiteral(KESTREL_RELATED_PLUGIN), folder + u"/relatedextension.so"_s));
    QVERIFY(QFile::copy(QStringLiteral(KESTREL_RELATED_DESCRIPTION),
                        folder + u"/video_youtuberelatedextension.desktop"_s));
}

void TestRelatedProvider::init()
{
    QVERIFY(setProvider(QUrl()));
    m_server = std::make_unique<LocalServer>();
    m_server->answers.insert(
        "/related", {answer(R"({"title":"A walk","address":"walk.mp4"},{"title":"A run","address":"/r"})")});
    m_area = std::make_unique<ExtensionArea>(u"com.harrow.Kestrel.extensions.PlayerInterface/1.0"_s);
    m_area->setInProcessFilter(QRegularExpression(u"video_youtuberelatedextension.desktop"_s));
    m_page = std::make_unique<HostingPage>(m_area.get());
    m_area->init();
    QCOMPARE(m_page->extensions(), 1);
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"^the library does not answer: "_s));
    show(u"First"_s);
    QTRY_COMPARE(shown(), withoutLibrary);
}

void TestRelatedProvider::cleanup()
{
    m_area.reset();
    m_page.reset();
}

void TestRelatedProvider::show(const QString &title)
{
    m_page->show({u"file:///home/user/Videos/%1.mp4"_s.arg(title), title, u"Nests"_s, u"2"_s});
}

QStringList TestRelatedProvider::shown() const
{
    QList<QGraphicsObject *> rows;
    collect(m_page->widget(), rows);
    QStringList list;
    for (const QGraphicsObject *row : std::as_const(rows))
        list.append(row->property("accessibleName").toString());
    return list;
}

QGraphicsWidget *TestRelatedProvider::row(const QString &text) const
{
    QList<QGraphicsObject *> rows;
    collect(m_page->widget(), rows);
    for (QGraphicsObject *row : std::as_const(rows)) {
        if (row->property("accessibleName").toString() == text)
            return static_cast<QGraphicsWidget *>(row);
    }
    return nullptr;
}

void TestRelatedProvider::withoutAnAddressNobodyIsAsked()
{
    QVERIFY(setProvider(m_server->url(u"/related"_s)));
    QTRY_COMPARE(m_server->requests.size(), 1);
    QVERIFY(setProvider(QUrl()));
    QTRY_COMPARE(shown(), withoutLibrary);
    show(u"Second"_s);
    QTRY_COMPARE(shown(), withoutLibrary);
    // What is asked for afterwards is the first that comes.
    QVERIFY(setProvider(m_server->url(u"/later"_s)));
    QTRY_COMPARE(m_server->requests.size(), 2);
    QVERIFY(m_server->requests.constLast().startsWith("GET /later?title=Second&series=Nests&episode=2 "));
}

void TestRelatedProvider::anAddressTakesEffectOnThePageThatIsOpen()
{
    QVERIFY(setProvider(m_server->url(u"/related"_s)));
    QTRY_COMPARE(shown(), withoutLibrary + QStringList({u"Online"_s, u"A walk"_s, u"A run"_s}));
    QCOMPARE(m_server->requests.size(), 1);
    QVERIFY(m_server->requests.constFirst().startsWith("GET /related?title=First&series=Nests&episode=2 "));
}

void TestRelatedProvider::anEmptiedAddressTakesItsRowsAway()
{
    QVERIFY(setProvider(m_server->url(u"/related"_s)));
    QTRY_VERIFY(row(u"A walk"_s));
    QVERIFY(setProvider(QUrl()));
    QTRY_COMPARE(shown(), withoutLibrary);
}

void TestRelatedProvider::whatIsUnderWayIsCalledBack()
{
    QVERIFY(setProvider(m_server->url(u"/silent"_s)));
    QTRY_COMPARE(m_server->requests.size(), 1);
    QVERIFY(setProvider(QUrl()));
    QTRY_COMPARE(m_server->left, 1);
}

void TestRelatedProvider::anotherProviderTakesThePlaceOfTheFirst()
{
    QVERIFY(setProvider(m_server->url(u"/related"_s)));
    QTRY_VERIFY(row(u"A walk"_s));
    m_server->answers.insert("/other", {answer(R"({"title":"A swim","address":"swim.mp4"})")});
    QVERIFY(setProvider(m_server->url(u"/other"_s)));
    QTRY_COMPARE(shown(), withoutLibrary + QStringList({u"Online"_s, u"A swim"_s}));
}

void TestRelatedProvider::whoWantsNothingOfTheNetworkGetsNothing()
{
    QVERIFY(setProvider(m_server->url(u"/related"_s)));
    QTRY_VERIFY(row(u"A walk"_s));
    QVERIFY(set(u"online-content-mode"_s, u"0"_s));
    QTRY_COMPARE(shown(), withoutLibrary);
    show(u"Second"_s);
    QTRY_COMPARE(shown(), withoutLibrary);
    QCOMPARE(m_server->requests.size(), 1);
    QVERIFY(set(u"online-content-mode"_s, u"1"_s));
    QTRY_VERIFY(row(u"A walk"_s));
    QCOMPARE(m_server->requests.size(), 2);
}

void TestRelatedProvider::aVideoIsAskedAboutOnce()
{
    QVERIFY(setProvider(m_server->url(u"/related"_s)));
    QTRY_VERIFY(row(u"A walk"_s));
    show(u"First"_s);
    m_server->answers.insert("/related", {answer(R"({"title":"A swim","address":"swim.mp4"})")});
    show(u"Second"_s);
    QTRY_VERIFY(row(u"A swim"_s));
    QVERIFY(!row(u"A walk"_s));
    QCOMPARE(m_server->requests.size(), 2);
}

void TestRelatedProvider::whoComesBackAfterAFailureIsAskedForAgain()
{
    m_server->answers.insert("/related", {LocalServer::status(500)});
    QTest::ignoreMessage(QtWarningMsg, "nothing from the provider: the server says 500");
    QVERIFY(setProvider(m_server->url(u"/related"_s)));
    QTRY_COMPARE(m_server->requests.size(), 1);
    m_server->answers.insert("/related", {answer(R"({"title":"A swim","address":"swim.mp4"})")});
    QGraphicsItem *page = m_page->widget()->parentItem();
    QTRY_VERIFY2((page->hide(), page->show(), row(u"A swim"_s)), "it is not asked again");
    QCOMPARE(m_server->requests.size(), 2);
    page->hide();
    page->show();
    QVERIFY(row(u"A swim"_s));
}

void TestRelatedProvider::aFailureIsSeenAndCanBeTriedAgain()
{
    m_server->answers.insert("/related", {LocalServer::status(500)});
    QTest::ignoreMessage(QtWarningMsg, "nothing from the provider: the server says 500");
    QVERIFY(setProvider(m_server->url(u"/related"_s)));
    QTRY_COMPARE(shown(),
                 QStringList({withoutLibrary.at(0), withoutLibrary.at(1),
                              u"Online videos are not available right now."_s, withoutLibrary.at(2)}));
    m_server->answers.insert("/related", {answer(R"({"title":"A swim","address":"swim.mp4"})")});
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"^the library does not answer: "_s));
    tap(row(u"Try again"_s));
    QTRY_COMPARE(shown(), withoutLibrary + QStringList({u"Online"_s, u"A swim"_s}));
    // The next video has its own answer.
    m_server->answers.insert("/related", {LocalServer::status(500)});
    QTest::ignoreMessage(QtWarningMsg, "nothing from the provider: the server says 500");
    show(u"Second"_s);
    QTRY_VERIFY(row(u"Online videos are not available right now."_s));
    QVERIFY(setProvider(QUrl()));
    QTRY_COMPARE(shown(), withoutLibrary);
}

void TestRelatedProvider::aTapPlaysAStream()
{
    QStringList list;
    uint number = 0;
    connect(m_page->host(), &PlayerHostInterface::playRequested, this,
            [&](const QStringList &addresses, uint index) {
                list = addresses;
                number = index;
            });
    QVERIFY(setProvider(m_server->url(u"/related"_s)));
    QTRY_VERIFY(row(u"A run"_s));
    tap(row(u"A run"_s));
    QTRY_COMPARE(list,
                 QStringList({m_server->url(u"/walk.mp4"_s).toString(), m_server->url(u"/r"_s).toString()}));
    QCOMPARE(number, 1U);
}

// The video itself is not company for itself, and no file or script ever stands in the list.
void TestRelatedProvider::onlyWhatIsPlayableIsShown()
{
    const QUrl stream = m_server->url(u"/stream.mp4"_s);
    m_server->answers.insert(
        "/related",
        {answer(R"({"title":"Itself","address":"stream.mp4"},)"
                R"({"title":"File","address":"file:///home/user/Videos/First.mp4"},)"
                R"-({"title":"Script","address":"javascript:alert(1)"},)-"
                R"({"title":"Data","address":"data:video/mp4;base64,AAAA"},)"
                R"({"title":"A run","address":"/r"},{"title":"Again","address":"/r"})")});
    QVERIFY(setProvider(m_server->url(u"/related"_s)));
    QTRY_VERIFY(row(u"A run"_s));
    m_page->show({stream.toString(), u"A stream"_s, QString(), QString()});
    QTRY_COMPARE(m_server->requests.size(), 2);
    QTRY_COMPARE(shown(), withoutLibrary + QStringList({u"Online"_s, u"A run"_s}));
}

void TestRelatedProvider::turnedOffInTheMiddle()
{
    QVERIFY(setProvider(m_server->url(u"/silent"_s)));
    QTRY_COMPARE(m_server->requests.size(), 1);
    m_area->unload();
    QCOMPARE(m_page->extensions(), 0);
    QTRY_COMPARE(m_server->left, 1);
    QVERIFY(setProvider(m_server->url(u"/related"_s)));
    QCOMPARE(m_server->requests.size(), 1);
}

QTEST_MAIN(TestRelatedProvider)
#include "related_provider.moc"

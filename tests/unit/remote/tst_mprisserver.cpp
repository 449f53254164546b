// SPDX-License-Identifier: GPL-3.0-or-later
#include "fakeremoteplayer.h"

#include "platform/remote/mprisserver.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCall>
#include <QDBusVariant>
#include <QTest>
#include <QXmlStreamReader>

#include <limits>
#include <memory>

using namespace std::chrono_literals;
using namespace Qt::Literals::StringLiterals;

namespace {

const QString Name = u"org.mpris.MediaPlayer2.org.example.Player"_s;
const QString Path = u"/org/mpris/MediaPlayer2"_s;
const QString Root = u"org.mpris.MediaPlayer2"_s;
const QString Player = u"org.mpris.MediaPlayer2.Player"_s;
const QString Properties = u"org.freedesktop.DBus.Properties"_s;

RemoteIdentity identity()
{
    return {u"org.example.Player"_s,
            u"Example"_s,
            u"org.example.Player"_s,
            {u"file"_s, u"http"_s},
            {u"video/mp4"_s}};
}

RemoteState playing()
{
    RemoteState state;
    state.status = RemoteState::Status::Playing;
    state.track = 3;
    state.title = u"Ein Film – „\u202Bx\u202C“"_s;
    state.url = u"file:///videos/a%20b.mp4"_s;
    state.artUrl = u"file:///pictures/a.jpeg"_s;
    state.length = 60s;
    state.canSeek = true;
    return state;
}

// The members of an interface, sorted: "method Seek(x Offset)", "property Volume d readwrite".
QStringList membersOf(const QString &xml, const QString &interface)
{
    QStringList members;
    QStringList arguments;
    bool inside = false;
    QXmlStreamReader reader(xml);
    while (!reader.atEnd()) {
        reader.readNext();
        const auto attribute = [&reader](const QString &name) { return reader.attributes().value(name); };
        const QString tag = reader.name().toString();
        if (tag == u"interface"_s && reader.isStartElement())
            inside = attribute(u"name"_s) == interface;
        if (!inside)
            continue;
        if (reader.isStartElement() && tag == u"property"_s)
            members.append(u"property %1 %2 %3"_s.arg(attribute(u"name"_s), attribute(u"type"_s),
                                                      attribute(u"access"_s)));
        else if (reader.isStartElement() && tag == u"arg"_s)
            arguments.append(u"%1 %2"_s.arg(attribute(u"type"_s), attribute(u"name"_s)));
        else if (reader.isStartElement() && (tag == u"method"_s || tag == u"signal"_s))
            members.append(u"%1 %2"_s.arg(tag, attribute(u"name"_s)));
        else if (reader.isEndElement() && (tag == u"method"_s || tag == u"signal"_s))
            members.last() += u'(' + std::exchange(arguments, {}).join(u", "_s) + u')';
    }
    members.sort();
    return members;
}

} // namespace

// Over the bus, as media keys and panels see it: the caller has a connection of its own.
class MprisServerTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void rootPropertiesHaveTheirTypes();
    void playerPropertiesHaveTheirTypes();
    void metadataHasItsTypes();
    void withoutVideoThereIsNothing();
    void introspectionIsComplete();
    void changesAreToldOnceAndOnlyWhenTheyAre();
    void positionIsNeverToldAsAChange();
    void jumpFollowsTheChangesOfItsVideo();
    void methodsReachThePlayer_data();
    void methodsReachThePlayer();
    void playPauseTwiceIsBackWhereItBegan();
    void seekStaysWithinTheVideo_data();
    void seekStaysWithinTheVideo();
    void positionOfAnotherTrackIsStale();
    void positionBeyondTheEndIsIgnored();
    void whatCannotBeMovedIsNot();
    void volumeIsHeldWithinItsRange_data();
    void volumeIsHeldWithinItsRange();
    void rateOfZeroPausesAndOthersChangeNothing();
    void unknownSchemesAreRefused();
    void wrongSignaturesAreErrors_data();
    void wrongSignaturesAreErrors();
    void takenNameGetsTheProcessNumber();
    void nameIsFreeAfterwards();

public Q_SLOTS:
    void heard(const QDBusMessage &signal) { m_signals.append(signal); }

private:
    [[nodiscard]] QDBusMessage ask(const QString &interface, const QString &method,
                                   const QVariantList &arguments = {});
    [[nodiscard]] QVariant get(const QString &interface, const QString &property);
    [[nodiscard]] QDBusMessage set(const QString &property, const QVariant &value)
    {
        return ask(Properties, u"Set"_s, {Player, property, QVariant::fromValue(QDBusVariant(value))});
    }
    [[nodiscard]] QVariantMap getAll(const QString &interface)
    {
        return qdbus_cast<QVariantMap>(ask(Properties, u"GetAll"_s, {interface}).arguments().value(0));
    }
    // The signals so far, in order: names of changed properties, or "Seeked 5".
    [[nodiscard]] QStringList told();
    [[nodiscard]] bool isOwned(const QString &name)
    {
        return m_caller.interface()->isServiceRegistered(name);
    }

    QDBusConnection m_caller{u"none"_s};
    FakeRemotePlayer m_player;
    std::unique_ptr<MprisServer> m_server;
    QList<QDBusMessage> m_signals;
};

void MprisServerTest::initTestCase()
{
    m_caller = QDBusConnection::connectToBus(QDBusConnection::SessionBus, u"caller"_s);
    QVERIFY(m_caller.isConnected());
    QVERIFY(
        m_caller.connect(Name, Path, Properties, u"PropertiesChanged"_s, this, SLOT(heard(QDBusMessage))));
    QVERIFY(m_caller.connect(Name, Path, Player, u"Seeked"_s, this, SLOT(heard(QDBusMessage))));
}

void MprisServerTest::init()
{
    m_player = FakeRemotePlayer();
    m_server = std::make_unique<MprisServer>(QDBusConnection::sessionBus(), identity(), &m_player);
    QTRY_COMPARE(m_server->serviceName(), Name);
    m_server->setState(playing());
    QTRY_COMPARE(told().size(), 1);
    m_signals.clear();
}

void MprisServerTest::cleanup()
{
    m_server.reset();
    QTRY_VERIFY(!isOwned(Name));
    m_signals.clear();
}

QDBusMessage MprisServerTest::ask(const QString &interface, const QString &method,
                                  const QVariantList &arguments)
{
    QDBusMessage call = QDBusMessage::createMethodCall(Name, Path, interface, method);
    call.setArguments(arguments);
    const QDBusPendingCall reply = m_caller.asyncCall(call);
    if (!QTest::qWaitFor([&reply] { return reply.isFinished(); }))
        return QDBusMessage::createError(u"none"_s, u"no answer"_s);
    return reply.reply();
}

QVariant MprisServerTest::get(const QString &interface, const QString &property)
{
    const QDBusMessage reply = ask(Properties, u"Get"_s, {interface, property});
    return reply.arguments().value(0).value<QDBusVariant>().variant();
}

QStringList MprisServerTest::told()
{
    QStringList list;
    for (const QDBusMessage &signal : std::as_const(m_signals)) {
        if (signal.member() == u"Seeked"_s)
            list.append(u"Seeked %1"_s.arg(signal.arguments().value(0).toLongLong()));
        else if (signal.member() == u"PropertiesChanged"_s)
            list.append(qdbus_cast<QVariantMap>(signal.arguments().value(1)).keys().join(u' '));
    }
    return list;
}

void MprisServerTest::rootPropertiesHaveTheirTypes()
{
    QVariantMap expected{{u"CanQuit"_s, true},
                         {u"CanRaise"_s, true},
                         {u"HasTrackList"_s, false},
                         {u"Identity"_s, u"Example"_s},
                         {u"DesktopEntry"_s, u"org.example.Player"_s},
                         {u"SupportedUriSchemes"_s, QStringList({u"file"_s, u"http"_s})},
                         {u"SupportedMimeTypes"_s, QStringList(u"video/mp4"_s)}};
    QCOMPARE(getAll(Root), expected);
}

void MprisServerTest::playerPropertiesHaveTheirTypes()
{
    m_player.at = 12s;
    QVariantMap all = getAll(Player);
    all.remove(u"Metadata"_s);
    const QVariantMap expected{{u"PlaybackStatus"_s, u"Playing"_s},
                               {u"Rate"_s, 1.0},
                               {u"Volume"_s, 1.0},
                               {u"Position"_s, qlonglong(12000000)},
                               {u"MinimumRate"_s, 1.0},
                               {u"MaximumRate"_s, 1.0},
                               {u"CanGoNext"_s, false},
                               {u"CanGoPrevious"_s, false},
                               {u"CanPlay"_s, true},
                               {u"CanPause"_s, true},
                               {u"CanSeek"_s, true},
                               {u"CanControl"_s, true}};
    QCOMPARE(all, expected);
    for (auto value = expected.cbegin(); value != expected.cend(); ++value)
        QCOMPARE(all.value(value.key()).typeId(), value->typeId());
}

void MprisServerTest::metadataHasItsTypes()
{
    const auto metadata = qdbus_cast<QVariantMap>(get(Player, u"Metadata"_s));
    QCOMPARE(metadata.value(u"mpris:trackid"_s).value<QDBusObjectPath>().path(),
             u"/org/example/Player/Track/3"_s);
    QCOMPARE(metadata.value(u"mpris:length"_s), QVariant(qlonglong(60000000)));
    QCOMPARE(metadata.value(u"xesam:title"_s), QVariant(playing().title));
    QCOMPARE(metadata.value(u"xesam:url"_s), QVariant(playing().url));
    QCOMPARE(metadata.value(u"mpris:artUrl"_s), QVariant(playing().artUrl));
    QCOMPARE(metadata.size(), 5);
}

void MprisServerTest::withoutVideoThereIsNothing()
{
    m_server->setState(RemoteState());
    QCOMPARE(get(Player, u"PlaybackStatus"_s), QVariant(u"Stopped"_s));
    QVERIFY(qdbus_cast<QVariantMap>(get(Player, u"Metadata"_s)).isEmpty());
    for (const QString &property : {u"CanPlay"_s, u"CanPause"_s, u"CanSeek"_s})
        QCOMPARE(get(Player, property), QVariant(false));
    QCOMPARE(ask(Player, u"PlayPause"_s).type(), QDBusMessage::ErrorMessage);
    for (const QString &method : {u"Play"_s, u"Pause"_s, u"Stop"_s})
        QCOMPARE(ask(Player, method).type(), QDBusMessage::ReplyMessage);
    QCOMPARE(m_player.asked, QStringList());
}

void MprisServerTest::introspectionIsComplete()
{
    const QString xml
        = ask(u"org.freedesktop.DBus.Introspectable"_s, u"Introspect"_s).arguments().value(0).toString();
    QCOMPARE(membersOf(xml, Root),
             u"method Quit()|method Raise()|property CanQuit b read|property CanRaise b read|"
             "property DesktopEntry s read|property HasTrackList b read|property Identity s read|"
             "property SupportedMimeTypes as read|property SupportedUriSchemes as read"_s.split(u'|'));
    QCOMPARE(membersOf(xml, Player),
             u"method Next()|method OpenUri(s Uri)|method Pause()|method Play()|method PlayPause()|"
             "method Previous()|method Seek(x Offset)|method SetPosition(o TrackId, x Position)|"
             "method Stop()|property CanControl b read|property CanGoNext b read|"
             "property CanGoPrevious b read|property CanPause b read|property CanPlay b read|"
             "property CanSeek b read|property MaximumRate d read|property Metadata a{sv} read|"
             "property MinimumRate d read|property PlaybackStatus s read|property Position x read|"
             "property Rate d readwrite|property Volume d readwrite|signal Seeked(x Position)"_s.split(u'|'));
}

void MprisServerTest::changesAreToldOnceAndOnlyWhenTheyAre()
{
    RemoteState state = playing();
    m_server->setState(state);
    state.status = RemoteState::Status::Paused;
    m_server->setState(state);
    state.volume = 0.5;
    m_server->setState(state);
    state.artUrl = u"file:///pictures/still.jpeg"_s;
    m_server->setState(state);
    QTRY_COMPARE(told(), QStringList(u"Metadata PlaybackStatus Volume"_s));
    QCOMPARE(m_signals.first().interface(), Properties);
    QCOMPARE(m_signals.first().signature(), u"sa{sv}as"_s);
    QCOMPARE(m_signals.first().arguments().value(0).toString(), Player);
    // There and back within one turn is no change.
    state.volume = 0.7;
    m_server->setState(state);
    state.volume = 0.5;
    m_server->setState(state);
    state.canSeek = false;
    m_server->setState(state);
    QTRY_COMPARE(told(), QStringList({u"Metadata PlaybackStatus Volume"_s, u"CanSeek"_s}));
}

void MprisServerTest::positionIsNeverToldAsAChange()
{
    m_player.at = 30s;
    RemoteState state = playing();
    state.volume = 0.2;
    m_server->setState(state);
    QTRY_COMPARE(told(), QStringList(u"Volume"_s));
    QCOMPARE(get(Player, u"Position"_s), QVariant(qlonglong(30000000)));
    m_player.at = -1s;
    QCOMPARE(get(Player, u"Position"_s), QVariant(qlonglong(0)));
}

void MprisServerTest::jumpFollowsTheChangesOfItsVideo()
{
    RemoteState state = playing();
    state.track = 4;
    m_server->setState(state);
    m_server->announceJump(17s);
    QTRY_COMPARE(told(), QStringList({u"Metadata"_s, u"Seeked 17000000"_s}));
}

void MprisServerTest::methodsReachThePlayer_data()
{
    QTest::addColumn<QString>("interface");
    QTest::addColumn<QString>("method");
    QTest::addColumn<QVariantList>("arguments");
    QTest::addColumn<QStringList>("asked");
    const auto row = [](const QString &interface, const QString &method, const QVariantList &arguments,
                        const QStringList &asked) {
        QTest::newRow(qPrintable(method)) << interface << method << arguments << asked;
    };
    row(Root, u"Raise"_s, {}, {u"raise"_s});
    row(Root, u"Quit"_s, {}, {u"quit"_s});
    row(Player, u"Play"_s, {}, {u"play"_s});
    row(Player, u"Pause"_s, {}, {u"pause"_s});
    row(Player, u"PlayPause"_s, {}, {u"pause"_s});
    row(Player, u"Stop"_s, {}, {u"stop"_s});
    row(Player, u"Next"_s, {}, {});
    row(Player, u"Previous"_s, {}, {});
    row(Player, u"Seek"_s, {qlonglong(5000000)}, {u"seek 25000000"_s});
    row(Player, u"SetPosition"_s,
        {QVariant::fromValue(QDBusObjectPath(u"/org/example/Player/Track/3"_s)), qlonglong(1)},
        {u"seek 1"_s});
    row(Player, u"OpenUri"_s, {u"FILE:///a.mp4"_s}, {u"open FILE:///a.mp4"_s});
}

void MprisServerTest::methodsReachThePlayer()
{
    QFETCH(QString, interface);
    QFETCH(QString, method);
    QFETCH(QVariantList, arguments);
    QFETCH(QStringList, asked);
    m_player.at = 20s;
    const QDBusMessage reply = ask(interface, method, arguments);
    QCOMPARE(reply.type(), QDBusMessage::ReplyMessage);
    QTRY_COMPARE(m_player.asked, asked);
}

void MprisServerTest::playPauseTwiceIsBackWhereItBegan()
{
    // Faster than the player can say that it paused.
    (void)ask(Player, u"PlayPause"_s);
    (void)ask(Player, u"PlayPause"_s);
    QTRY_COMPARE(m_player.asked, QStringList({u"pause"_s, u"play"_s}));
}

void MprisServerTest::seekStaysWithinTheVideo_data()
{
    QTest::addColumn<qlonglong>("offset");
    QTest::addColumn<QStringList>("asked");
    QTest::newRow("forward") << qlonglong(10) << QStringList(u"seek 20000010"_s);
    QTest::newRow("back") << qlonglong(-10) << QStringList(u"seek 19999990"_s);
    QTest::newRow("before the beginning") << qlonglong(-30000000) << QStringList(u"seek 0"_s);
    QTest::newRow("to the very end") << qlonglong(40000000) << QStringList(u"seek 60000000"_s);
    // As Next, and there is no next video.
    QTest::newRow("beyond the end") << qlonglong(40000001) << QStringList();
    QTest::newRow("largest") << std::numeric_limits<qlonglong>::max() << QStringList();
    QTest::newRow("smallest") << std::numeric_limits<qlonglong>::min() << QStringList(u"seek 0"_s);
}

void MprisServerTest::seekStaysWithinTheVideo()
{
    QFETCH(qlonglong, offset);
    QFETCH(QStringList, asked);
    m_player.at = 20s;
    (void)ask(Player, u"Seek"_s, {offset});
    QCOMPARE(m_player.asked, asked);
}

void MprisServerTest::positionOfAnotherTrackIsStale()
{
    for (const QString &track :
         {u"/org/example/Player/Track/2"_s, u"/"_s, u"/org/mpris/MediaPlayer2/TrackList/NoTrack"_s})
        (void)ask(Player, u"SetPosition"_s, {QVariant::fromValue(QDBusObjectPath(track)), qlonglong(5)});
    QCOMPARE(m_player.asked, QStringList());
}

void MprisServerTest::positionBeyondTheEndIsIgnored()
{
    const auto track = QVariant::fromValue(QDBusObjectPath(u"/org/example/Player/Track/3"_s));
    for (const qlonglong position :
         {qlonglong(60000001), qlonglong(-1), std::numeric_limits<qlonglong>::max()})
        (void)ask(Player, u"SetPosition"_s, {track, position});
    QCOMPARE(m_player.asked, QStringList());
    (void)ask(Player, u"SetPosition"_s, {track, qlonglong(60000000)});
    QCOMPARE(m_player.asked, QStringList(u"seek 60000000"_s));
}

void MprisServerTest::whatCannotBeMovedIsNot()
{
    RemoteState state = playing();
    state.canSeek = false;
    m_server->setState(state);
    (void)ask(Player, u"Seek"_s, {qlonglong(5)});
    (void)ask(Player, u"SetPosition"_s,
              {QVariant::fromValue(QDBusObjectPath(u"/org/example/Player/Track/3"_s)), qlonglong(5)});
    QCOMPARE(m_player.asked, QStringList());
}

void MprisServerTest::volumeIsHeldWithinItsRange_data()
{
    QTest::addColumn<double>("value");
    QTest::addColumn<QStringList>("asked");
    QTest::newRow("half") << 0.5 << QStringList(u"volume 0.5"_s);
    QTest::newRow("negative") << -3.0 << QStringList(u"volume 0"_s);
    QTest::newRow("too loud") << 7.0 << QStringList(u"volume 1"_s);
    QTest::newRow("infinite") << std::numeric_limits<double>::infinity() << QStringList(u"volume 1"_s);
    QTest::newRow("no number") << std::numeric_limits<double>::quiet_NaN() << QStringList();
}

void MprisServerTest::volumeIsHeldWithinItsRange()
{
    QFETCH(double, value);
    QFETCH(QStringList, asked);
    QCOMPARE(set(u"Volume"_s, value).type(), QDBusMessage::ReplyMessage);
    QCOMPARE(m_player.asked, asked);
}

void MprisServerTest::rateOfZeroPausesAndOthersChangeNothing()
{
    (void)set(u"Rate"_s, 2.0);
    QCOMPARE(m_player.asked, QStringList());
    QCOMPARE(get(Player, u"Rate"_s), QVariant(1.0));
    (void)set(u"Rate"_s, 0.0);
    QCOMPARE(m_player.asked, QStringList(u"pause"_s));
}

void MprisServerTest::unknownSchemesAreRefused()
{
    for (const QString &uri : {u"gopher://a"_s, u"/videos/a.mp4"_s, u""_s, u":"_s, u"file"_s})
        QCOMPARE(ask(Player, u"OpenUri"_s, {uri}).type(), QDBusMessage::ErrorMessage);
    QCOMPARE(m_player.asked, QStringList());
}

void MprisServerTest::wrongSignaturesAreErrors_data()
{
    QTest::addColumn<QString>("interface");
    QTest::addColumn<QString>("method");
    QTest::addColumn<QVariantList>("arguments");
    QTest::newRow("seek by a text") << Player << u"Seek"_s << QVariantList{u"5"_s};
    QTest::newRow("seek by nothing") << Player << u"Seek"_s << QVariantList{};
    QTest::newRow("track as text") << Player << u"SetPosition"_s << QVariantList{u"/a"_s, qlonglong(5)};
    QTest::newRow("unknown method") << Player << u"Explode"_s << QVariantList{};
    QTest::newRow("unknown interface") << u"org.example.None"_s << u"Play"_s << QVariantList{};
    QTest::newRow("play with an argument") << Player << u"Play"_s << QVariantList{1};
    const auto value = [](const QVariant &of) { return QVariant::fromValue(QDBusVariant(of)); };
    QTest::newRow("read-only") << Properties << u"Set"_s << QVariantList{Player, u"CanSeek"_s, value(true)};
    QTest::newRow("volume as text") << Properties << u"Set"_s
                                    << QVariantList{Player, u"Volume"_s, value(u"loud"_s)};
    QTest::newRow("unknown property") << Properties << u"Get"_s << QVariantList{Player, u"Shuffle"_s};
}

void MprisServerTest::wrongSignaturesAreErrors()
{
    QFETCH(QString, interface);
    QFETCH(QString, method);
    QFETCH(QVariantList, arguments);
    QCOMPARE(ask(interface, method, arguments).type(), QDBusMessage::ErrorMessage);
    QCOMPARE(m_player.asked, QStringList());
    QCOMPARE(get(Player, u"PlaybackStatus"_s), QVariant(u"Playing"_s));
}

void MprisServerTest::takenNameGetsTheProcessNumber()
{
    m_server.reset();
    QTRY_VERIFY(!isOwned(Name));
    QVERIFY(m_caller.registerService(Name));
    const QString numbered = Name + u".instance%1"_s.arg(QCoreApplication::applicationPid());
    QTest::ignoreMessage(QtInfoMsg,
                         qPrintable(u"%1: taken by another program, this one is %2"_s.arg(Name, numbered)));
    m_server = std::make_unique<MprisServer>(QDBusConnection::sessionBus(), identity(), &m_player);
    QTRY_COMPARE(m_server->serviceName(), numbered);
    QVERIFY(isOwned(numbered));
    m_server.reset();
    QTRY_VERIFY(!isOwned(numbered));
    QVERIFY(m_caller.unregisterService(Name));
}

void MprisServerTest::nameIsFreeAfterwards()
{
    QVERIFY(isOwned(Name));
    m_server.reset();
    QTRY_VERIFY(!isOwned(Name));
    QDBusMessage call = QDBusMessage::createMethodCall(QDBusConnection::sessionBus().baseService(), Path,
                                                       Player, u"Play"_s);
    const QDBusPendingCall reply = m_caller.asyncCall(call);
    QTRY_VERIFY(reply.isFinished());
    QVERIFY(reply.isError());
    // And again before the answer came.
    m_server = std::make_unique<MprisServer>(QDBusConnection::sessionBus(), identity(), &m_player);
    m_server.reset();
    m_server = std::make_unique<MprisServer>(QDBusConnection::sessionBus(), identity(), &m_player);
    QTRY_COMPARE(m_server->serviceName(), Name);
}

QTEST_GUILESS_MAIN(MprisServerTest)
#include "tst_mprisserver.moc"

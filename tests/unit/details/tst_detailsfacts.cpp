// SPDX-License-Identifier: GPL-3.0-or-later
#include "detailsfixture.h"

#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>

using namespace Qt::Literals::StringLiterals;

// Stands for the store service on the test's own session bus, and answers when it is told to.
class LateStore : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.harrow.Kestrel.Store")

public:
    // Over a connection of its own: nobody can answer their own process late.
    LateStore() : m_bus(QDBusConnection::connectToBus(QDBusConnection::SessionBus, u"late store"_s))
    {
        m_registered
            = m_bus.registerObject(u"/com/harrow/Kestrel/Store"_s, this, QDBusConnection::ExportAllSlots)
            && m_bus.registerService(u"com.harrow.Kestrel.Store"_s);
    }
    ~LateStore() override { QDBusConnection::disconnectFromBus(u"late store"_s); }
    [[nodiscard]] bool isRegistered() const { return m_registered; }
    void answer(qsizetype question, const QVariantMap &facts)
    {
        m_bus.send(questions.at(question).createReply(facts));
    }
    void fail(qsizetype question)
    {
        m_bus.send(questions.at(question).createErrorReply(QDBusError::Failed, u"broken"_s));
    }
    QList<QDBusMessage> questions;
    QStringList urns;

public Q_SLOTS:
    QVariantMap Facts(const QString &urn)
    {
        setDelayedReply(true);
        questions.append(message());
        urns.append(urn);
        return {};
    }

private:
    QDBusConnection m_bus;
    bool m_registered = false;
};

// What was read in the file comes when it comes, or never.
class DetailsFactsTest : public QObject
{
    Q_OBJECT

public:
    explicit DetailsFactsTest(DetailsFixture &fixture) : f(fixture) { }

private Q_SLOTS:
    void init();
    void cleanup();
    void factsComeBelowTheDetails();
    void aFileThatCannotBeReadHasNone();
    void aStreamIsNotAskedAbout();
    void factsOfTheVideoBeforeAreIgnored();
    void factsStayWhileTheFileIsReadAgain();
    void aFileThatChangedLosesItsFacts();
    void nonsenseIsNotShown();
    void aStoreThatGoesAwayLeavesTheDetails();
    void thePageMayGoWhileAFileIsRead();

private:
    static VideoDetails video(int number)
    {
        VideoDetails details = playedVideo();
        details.urn = u"urn:uuid:%1"_s.arg(number);
        details.url = u"file:///videos/%1.mp4"_s.arg(number);
        return details;
    }
    static QVariantMap facts(int width)
    {
        return {{u"width"_s, width}, {u"height"_s, 180}, {u"video-codec"_s, u"H.264"_s}};
    }
    [[nodiscard]] QStringList shownFacts() const { return f.texts().mid(7); }
    // Sent after what was answered before, so that this has arrived.
    void settle()
    {
        const QDBusMessage ping = QDBusMessage::createMethodCall(u"org.freedesktop.DBus"_s, u"/"_s,
                                                                 u"org.freedesktop.DBus"_s, u"GetId"_s);
        QDBusPendingCallWatcher watcher(QDBusConnection::sessionBus().asyncCall(ping));
        QTRY_VERIFY(watcher.isFinished());
    }

    DetailsFixture &f;
    std::unique_ptr<LateStore> m_store;
};

void DetailsFactsTest::init()
{
    m_store = std::make_unique<LateStore>();
    QVERIFY(m_store->isRegistered());
    QVERIFY(f.open());
}

void DetailsFactsTest::cleanup()
{
    f.close();
    m_store.reset();
}

void DetailsFactsTest::factsComeBelowTheDetails()
{
    QVERIFY(f.show(video(1)));
    QTRY_COMPARE(m_store->urns, QStringList(u"urn:uuid:1"_s));
    QCOMPARE(shownFacts(), QStringList());
    const QStringList before = f.texts();
    m_store->answer(0,
                    {{u"width"_s, 320},
                     {u"height"_s, 180},
                     {u"frame-rate"_s, 25.0},
                     {u"bit-rate"_s, qint64(640000)},
                     {u"video-codec"_s, u"H.264"_s},
                     {u"audio-codecs"_s, QStringList{u"AAC"_s}},
                     {u"audio-tracks"_s, 1},
                     {u"audio-languages"_s, QStringList{u"fi"_s}},
                     {u"subtitle-tracks"_s, 0}});
    QTRY_COMPARE(shownFacts(),
                 QStringList({u"File"_s, u"Resolution: 320\u00A0×\u00A0180"_s, u"Frame rate: 25\u00A0fps"_s,
                              u"Codecs: H.264, AAC"_s, u"Bit rate: 640\u00A0kbit/s"_s,
                              u"Audio tracks: 1 (Finnish)"_s, u"Subtitles: 0"_s, u"Folder: /videos"_s}));
    QCOMPARE(f.texts().first(7), before);
    QCOMPARE(f.labels().at(7)->accessibleRole(), QAccessible::Heading);
}

void DetailsFactsTest::aFileThatCannotBeReadHasNone()
{
    QVERIFY(f.show(video(1)));
    QTRY_COMPARE(m_store->questions.size(), 1);
    m_store->fail(0);
    settle();
    QCOMPARE(f.texts().size(), 7);
}

void DetailsFactsTest::aStreamIsNotAskedAbout()
{
    VideoDetails details = video(1);
    details.url = u"http://host/a.mp4"_s;
    QVERIFY(f.show(details));
    settle();
    QCOMPARE(m_store->urns, QStringList());
}

void DetailsFactsTest::factsOfTheVideoBeforeAreIgnored()
{
    QVERIFY(f.show(video(1)));
    QVERIFY(f.show(video(2)));
    QTRY_COMPARE(m_store->questions.size(), 2);
    m_store->answer(0, facts(111));
    settle();
    QCOMPARE(shownFacts(), QStringList());
    m_store->answer(1, facts(222));
    QTRY_COMPARE(shownFacts().value(1), u"Resolution: 222\u00A0×\u00A0180"_s);
}

void DetailsFactsTest::factsStayWhileTheFileIsReadAgain()
{
    QVERIFY(f.show(video(1)));
    QTRY_COMPARE(m_store->questions.size(), 1);
    m_store->answer(0, facts(111));
    QTRY_COMPARE(shownFacts().value(1), u"Resolution: 111\u00A0×\u00A0180"_s);
    f.page->setPlayedVideo(u"urn:uuid:1"_s);
    QTRY_COMPARE(m_store->questions.size(), 2);
    QCOMPARE(shownFacts().value(1), u"Resolution: 111\u00A0×\u00A0180"_s);
    m_store->answer(1, facts(222));
    QTRY_COMPARE(shownFacts().value(1), u"Resolution: 222\u00A0×\u00A0180"_s);
    QVERIFY(f.show(video(2))); // but not to another video
    QCOMPARE(shownFacts(), QStringList());
}

void DetailsFactsTest::aFileThatChangedLosesItsFacts()
{
    QVERIFY(f.show(video(1)));
    QTRY_COMPARE(m_store->questions.size(), 1);
    m_store->answer(0, facts(111));
    QTRY_COMPARE(shownFacts().value(1), u"Resolution: 111\u00A0×\u00A0180"_s);
    f.page->setPlayedVideo(u"urn:uuid:1"_s);
    QTRY_COMPARE(m_store->questions.size(), 2);
    m_store->fail(1);
    QTRY_COMPARE(shownFacts(), QStringList());
}

void DetailsFactsTest::nonsenseIsNotShown()
{
    QVERIFY(f.show(video(1)));
    QTRY_COMPARE(m_store->questions.size(), 1);
    m_store->answer(0,
                    {{u"width"_s, u"wide"_s},
                     {u"height"_s, QStringList{u"high"_s}},
                     {u"frame-rate"_s, -25.0},
                     {u"bit-rate"_s, qint64(-1)},
                     {u"video-codec"_s, u"VP9"_s},
                     {u"audio-tracks"_s, -7}});
    QTRY_COMPARE(shownFacts(),
                 QStringList({u"File"_s, u"Codecs: VP9"_s, u"Audio tracks: 0"_s, u"Subtitles: 0"_s,
                              u"Folder: /videos"_s}));
}

void DetailsFactsTest::aStoreThatGoesAwayLeavesTheDetails()
{
    QVERIFY(f.show(video(1)));
    QTRY_COMPARE(m_store->questions.size(), 1);
    m_store.reset();
    settle();
    QCOMPARE(f.texts().size(), 7);
    QVERIFY(f.show(video(2))); // there is nobody to ask
    QCOMPARE(f.texts().size(), 7);
}

void DetailsFactsTest::thePageMayGoWhileAFileIsRead()
{
    QVERIFY(f.show(video(1)));
    QTRY_COMPARE(m_store->questions.size(), 1);
    f.page.reset();
    m_store->answer(0, facts(111));
    settle();
}

int main(int argc, char **argv)
{
    toolkit::Application application(argc, argv, QStringLiteral("video"), nullptr);
    DetailsFixture fixture;
    DetailsFactsTest test(fixture);
    return QTest::qExec(&test, argc, argv);
}
#include "tst_detailsfacts.moc"

// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/servers/credentials.h"

#include "support/fakesecrets.h"
#include "support/heartbeat.h"
#include "support/loglines.h"
#include "support/privatebus.h"

#include <QDBusConnection>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <memory>
#include <optional>

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr int s_patience = 30000; // ms; a limit, not a wait
const QString server = u"archive.example:443"_s;
const QString secret = u"zwei schöne Worte"_s;

FakeSecrets::Item itemOf(const QString &user, const QString &password, bool isLocked = false)
{
    return {{{u"application"_s, u"com.harrow.kestrel"_s}, {u"server"_s, server}, {u"user"_s, user}},
            password,
            isLocked};
}

QString printed(const Login &login)
{
    return login.error.isEmpty() ? login.user + u'/' + login.password : u"error: "_s + login.error;
}

} // namespace

// A person has stored a password for a server, in the keyring or in a file.
class TestCredentials : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void theKeyringHasIt_data();
    void theKeyringHasIt();
    void aLockedOneIsUnlockedByThePerson();
    void whoDeclinesIsAskedOnce();
    void whoDoesNotAnswerIsAskedOnce();
    void whoUnlocksElsewhereAfterwardsIsUnderstood();
    void withoutAKeyringTheFileCounts();
    void withoutABusTheFileCounts();
    void whatTheKeyringLacksTheFileMayHave();
    void aKeyringThatFailsIsSurvived_data();
    void aKeyringThatFailsIsSurvived();
    void aKeyringThatGoesWhileItAsksIsSurvived();
    void anItemWithoutAUserIsNone();
    void theFileIsRefusedAloud();
    void nothingAnywhereIsNoLogin();
    void oneAfterTheOther();
    void destroyedOnTheWay_data();
    void destroyedOnTheWay();
    void serversOfAddresses_data();
    void serversOfAddresses();

private:
    [[nodiscard]] QString find(const QString &user = {});
    [[nodiscard]] bool writeFile(const QByteArray &text,
                                 QFile::Permissions permissions = QFile::ReadOwner) const;
    void make(const SecretPatience &patience = {});

    std::unique_ptr<PrivateBus> m_bus;
    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<FakeSecrets> m_keyring;
    std::unique_ptr<LogLines> m_log;
    std::unique_ptr<Credentials> m_credentials;
};

void TestCredentials::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_bus = std::make_unique<PrivateBus>();
    const QString address = m_bus->start();
    QVERIFY(QDBusConnection::connectToBus(address, u"client"_s).isConnected());
    m_keyring = std::make_unique<FakeSecrets>(address);
    QVERIFY(m_keyring->appear());
    m_log = std::make_unique<LogLines>("kestrel.servers");
    make();
}

void TestCredentials::cleanup()
{
    const QStringList lines = m_log->all();
    m_log.reset();
    for (const QString &line : lines)
        QVERIFY2(!line.contains(secret), qPrintable(line));
    m_credentials.reset();
    m_keyring.reset();
    QDBusConnection::disconnectFromBus(u"client"_s);
    m_bus.reset();
}

void TestCredentials::make(const SecretPatience &patience)
{
    m_credentials = std::make_unique<Credentials>(QDBusConnection(u"client"_s),
                                                  m_folder->filePath(u"credentials"_s), nullptr, patience);
}

QString TestCredentials::find(const QString &user)
{
    std::optional<Login> login;
    m_credentials->find(server, user, [&login](const Login &found) { login = found; });
    if (login)
        return u"from within find()"_s;
    if (!QTest::qWaitFor([&login] { return login.has_value(); }, s_patience))
        return u"no answer"_s;
    return printed(*login);
}

bool TestCredentials::writeFile(const QByteArray &text, QFile::Permissions permissions) const
{
    QFile file(m_folder->filePath(u"credentials"_s));
    return file.open(QIODevice::WriteOnly) && file.write(text) == text.size()
        && file.setPermissions(permissions);
}

void TestCredentials::theKeyringHasIt_data()
{
    QTest::addColumn<QString>("user");
    QTest::addColumn<QString>("login");
    QTest::newRow("whoever is stored first") << QString() << u"anna/"_s + secret;
    QTest::newRow("the one who is set") << u"bert"_s << u"bert/"_s;
    QTest::newRow("somebody else") << u"carl"_s << u"/"_s;
}

void TestCredentials::theKeyringHasIt()
{
    QFETCH(QString, user);
    m_keyring->items = {FakeSecrets::Item{{{u"application"_s, u"another"_s}, {u"server"_s, server}}, u"x"_s},
                        itemOf(u"anna"_s, secret), itemOf(u"bert"_s, QString())};
    QTEST(find(user), "login");
}

void TestCredentials::aLockedOneIsUnlockedByThePerson()
{
    m_keyring->items = {itemOf(u"anna"_s, secret, true)};
    QCOMPARE(find(u"anna"_s), u"anna/"_s + secret);
    QTRY_COMPARE_WITH_TIMEOUT(m_keyring->calls,
                              (QStringList{u"OpenSession"_s, u"SearchItems"_s, u"Unlock"_s, u"Prompt"_s,
                                           u"GetSecrets"_s, u"Close"_s}),
                              s_patience);
}

void TestCredentials::whoDeclinesIsAskedOnce()
{
    m_keyring->items = {itemOf(u"anna"_s, secret, true)};
    m_keyring->person = FakeSecrets::Person::Declines;
    QCOMPARE(find(),
             u"error: the password of archive.example:443 is in the secret service: it was not unlocked"_s);
    QVERIFY(find().startsWith("error: "_L1));
    QCOMPARE(m_keyring->calls.count(u"Prompt"_s), 1);
    QTRY_COMPARE_WITH_TIMEOUT(m_keyring->calls.count(u"Dismiss"_s), 1, s_patience);
    QCOMPARE(m_log->all().size(), 2);
}

void TestCredentials::whoDoesNotAnswerIsAskedOnce()
{
    make({25000ms, 50ms});
    m_keyring->items = {itemOf(u"anna"_s, secret, true)};
    m_keyring->person = FakeSecrets::Person::Waits;
    QCOMPARE(
        find(),
        u"error: the password of archive.example:443 is in the secret service: nobody has unlocked it"_s);
    QTRY_COMPARE_WITH_TIMEOUT(m_keyring->calls.count(u"Dismiss"_s), 1, s_patience);
    QVERIFY(find().startsWith("error: "_L1));
    QCOMPARE(m_keyring->calls.count(u"Prompt"_s), 1);
}

void TestCredentials::whoUnlocksElsewhereAfterwardsIsUnderstood()
{
    m_keyring->items = {itemOf(u"anna"_s, secret, true)};
    m_keyring->person = FakeSecrets::Person::Declines;
    QVERIFY(find().startsWith("error: "_L1));
    m_keyring->items[0].isLocked = false;
    QCOMPARE(find(), u"anna/"_s + secret);
}

void TestCredentials::withoutAKeyringTheFileCounts()
{
    m_keyring->vanish();
    QVERIFY(writeFile("[archive.example:443]\nuser=anna\npassword=" + secret.toUtf8()));
    QCOMPARE(find(), u"anna/"_s + secret);
    QCOMPARE(m_log->all(),
             QStringList(u"archive.example:443: logging on as anna, who comes from the file"_s));
}

void TestCredentials::withoutABusTheFileCounts()
{
    m_credentials
        = std::make_unique<Credentials>(QDBusConnection(u"nowhere"_s), m_folder->filePath(u"credentials"_s));
    QVERIFY(writeFile("[archive.example:443]\nuser=anna\npassword=" + secret.toUtf8()));
    QCOMPARE(find(), u"anna/"_s + secret);
}

void TestCredentials::whatTheKeyringLacksTheFileMayHave()
{
    m_keyring->items = {itemOf(u"bert"_s, u"other"_s)};
    QVERIFY(writeFile("[archive.example:443]\nuser=anna\npassword=" + secret.toUtf8()));
    QCOMPARE(find(u"anna"_s), u"anna/"_s + secret);
    QCOMPARE(find(u"bert"_s), u"bert/other"_s);
}

void TestCredentials::aKeyringThatFailsIsSurvived_data()
{
    QTest::addColumn<QString>("method");
    QTest::addColumn<FakeSecrets::Fault>("fault");
    for (const char *method : {"OpenSession", "SearchItems", "Unlock", "Prompt", "Get", "GetSecrets"}) {
        const QString name = QString::fromLatin1(method);
        QTest::addRow("%s is silent", method) << name << FakeSecrets::Fault::Silent;
        QTest::addRow("%s is an error", method) << name << FakeSecrets::Fault::Error;
        QTest::addRow("%s is garbage", method) << name << FakeSecrets::Fault::Garbage;
        QTest::addRow("%s is the end", method) << name << FakeSecrets::Fault::Gone;
    }
}

void TestCredentials::aKeyringThatFailsIsSurvived()
{
    QFETCH(QString, method);
    QFETCH(FakeSecrets::Fault, fault);
    const bool isSilent = fault == FakeSecrets::Fault::Silent;
    if (isSilent && method == "Prompt"_L1)
        make({25000ms, 100ms});
    else if (isSilent)
        make({100ms, 25000ms});
    m_keyring->items = {itemOf(u"anna"_s, secret, true)};
    m_keyring->faultAt = method;
    m_keyring->fault = fault;
    QVERIFY(writeFile("[archive.example:443]\nuser=anna\npassword=of the file"));
    const Heartbeat heart;
    const QString login = find();
    QVERIFY2(heart.isSteady(), heart.report());
    // A person who does not answer is not told from a service that does not ask.
    if (isSilent && method == "Prompt"_L1) {
        QVERIFY2(login.endsWith("nobody has unlocked it"_L1), qPrintable(login));
        return;
    }
    QCOMPARE(login, u"anna/of the file"_s);
    QVERIFY(m_log->all().constFirst().startsWith("the secret service is of no use: "_L1));
}

void TestCredentials::aKeyringThatGoesWhileItAsksIsSurvived()
{
    m_keyring->items = {itemOf(u"anna"_s, secret, true)};
    m_keyring->person = FakeSecrets::Person::Waits;
    std::optional<Login> login;
    m_credentials->find(server, {}, [&login](const Login &found) { login = found; });
    QTRY_VERIFY_WITH_TIMEOUT(m_keyring->calls.contains(u"Prompt"_s), s_patience);
    m_keyring->vanish();
    QTRY_VERIFY_WITH_TIMEOUT(login.has_value(), s_patience);
    QCOMPARE(printed(*login), u"/"_s);
}

void TestCredentials::anItemWithoutAUserIsNone()
{
    m_keyring->items = {itemOf(QString(), secret)};
    QVERIFY(writeFile("[archive.example:443]\nuser=anna\npassword=of the file"));
    QCOMPARE(find(), u"anna/of the file"_s);
    QVERIFY(m_log->contains(
        u"the secret service is of no use: what it has for archive.example:443 is without the "
        "attribute \"user\""_s));
}

void TestCredentials::theFileIsRefusedAloud()
{
    QVERIFY(writeFile("[archive.example:443]\nuser=anna\npassword=" + secret.toUtf8(),
                      QFile::ReadOwner | QFile::WriteOwner | QFile::ReadOther));
    const QString file = m_folder->filePath(u"credentials"_s);
    const QString line = file
        + u" is not used: its mode is 0604, and only its owner may read it; mend it: chmod 600 '"_s + file
        + u'\'';
    QCOMPARE(find(), u"error: "_s + line);
    QCOMPARE(m_log->all(), QStringList(line));
}

void TestCredentials::nothingAnywhereIsNoLogin()
{
    QCOMPARE(find(), u"/"_s);
    QCOMPARE(m_log->all(), QStringList());
}

void TestCredentials::oneAfterTheOther()
{
    m_keyring->items = {itemOf(u"anna"_s, secret, true), itemOf(u"bert"_s, u"b"_s, true)};
    QStringList found;
    for (const QString &user : {u"anna"_s, u"bert"_s, u"carl"_s})
        m_credentials->find(server, user, [&found](const Login &login) { found.append(printed(login)); });
    QTRY_COMPARE_WITH_TIMEOUT(found, (QStringList{u"anna/"_s + secret, u"bert/b"_s, u"/"_s}), s_patience);
}

void TestCredentials::destroyedOnTheWay_data()
{
    QTest::addColumn<QString>("method");
    for (const char *method : {"OpenSession", "SearchItems", "Unlock", "Prompt", "Get", "GetSecrets"})
        QTest::addRow("at %s", method) << QString::fromLatin1(method);
}

void TestCredentials::destroyedOnTheWay()
{
    QFETCH(QString, method);
    m_keyring->items = {itemOf(u"anna"_s, secret, true)};
    m_keyring->faultAt = method;
    m_keyring->fault = FakeSecrets::Fault::Silent;
    bool isCalled = false;
    m_credentials->find(server, {}, [&isCalled](const Login &) { isCalled = true; });
    QTRY_VERIFY_WITH_TIMEOUT(m_keyring->calls.contains(method), s_patience);
    m_credentials.reset();
    // A prompt that is open goes with it.
    if (method == "Prompt"_L1)
        QTRY_VERIFY_WITH_TIMEOUT(m_keyring->calls.contains(u"Dismiss"_s), s_patience);
    make();
    m_keyring->fault = FakeSecrets::Fault::None;
    QCOMPARE(find(), u"anna/"_s + secret);
    QVERIFY(!isCalled);
}

void TestCredentials::serversOfAddresses_data()
{
    QTest::addColumn<QUrl>("address");
    QTest::addColumn<QString>("server");
    QTest::newRow("https") << QUrl(u"https://Archive.example/sparql"_s) << u"archive.example:443"_s;
    QTest::newRow("http") << QUrl(u"http://10.0.0.7/sparql"_s) << u"10.0.0.7:80"_s;
    QTest::newRow("a port") << QUrl(u"http://localhost:8890/sparql-auth"_s) << u"localhost:8890"_s;
    QTest::newRow("version 6") << QUrl(u"https://[::1]:8443/"_s) << u"[::1]:8443"_s;
    QTest::newRow("international") << QUrl(u"https://bücher.example/"_s) << u"xn--bcher-kva.example:443"_s;
}

void TestCredentials::serversOfAddresses()
{
    QFETCH(QUrl, address);
    QTEST(Credentials::serverOf(address), "server");
}

QTEST_GUILESS_MAIN(TestCredentials)
#include "test_credentials.moc"

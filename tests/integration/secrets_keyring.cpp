// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/servers/credentials.h"

#include "support/loglines.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTest>

#include <memory>
#include <optional>

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr int s_patience = 30000; // ms; a limit, not a wait
const QString server = u"127.0.0.1:8890"_s;
const QString secret = u"zwei schöne Worte"_s;
const QString login = u"/org/freedesktop/secrets/collection/login"_s;

QDBusMessage ask(const QString &method, const QVariantList &arguments)
{
    QDBusMessage message
        = QDBusMessage::createMethodCall(u"org.freedesktop.secrets"_s, u"/org/freedesktop/secrets"_s,
                                         u"org.freedesktop.Secret.Service"_s, method);
    message.setArguments(arguments);
    message.setAutoStartService(false);
    return QDBusConnection::sessionBus().call(message);
}

// The keyring into which passwords go unless another is named.
QString defaultCollection()
{
    const QDBusMessage reply = ask(u"ReadAlias"_s, {u"default"_s});
    return reply.arguments().value(0).value<QDBusObjectPath>().path();
}

QString printed(const Login &found)
{
    return found.error.isEmpty() ? found.user + u'/' + found.password : u"error: "_s + found.error;
}

} // namespace

// A person who has stored the password with the desktop's own tool, in the desktop's own keyring.
class TestKeyring : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void whatTheToolStoresIsFound_data();
    void whatTheToolStoresIsFound();
    void aNewPasswordCountsAtOnce();
    void aLockedKeyringIsLeftLocked();
    void aKeyringThatEndedLeavesTheFile();
    void cleanupTestCase();

private:
    [[nodiscard]] QString find(const QString &user, const SecretPatience &patience = {});
    [[nodiscard]] static bool store(const QString &user, const QString &password);

    QProcess m_daemon;
};

void TestKeyring::initTestCase()
{
    m_daemon.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_daemon.start(u"gnome-keyring-daemon"_s, {u"--foreground"_s, u"--components=secrets"_s, u"--unlock"_s});
    QVERIFY(m_daemon.waitForStarted());
    m_daemon.write("the master's own");
    m_daemon.closeWriteChannel();
    QTRY_COMPARE_WITH_TIMEOUT(defaultCollection(), login, s_patience);
    QVERIFY(store(u"anna"_s, secret));
    QVERIFY(store(u"bert"_s, u"other"_s));
}

void TestKeyring::cleanupTestCase()
{
    m_daemon.terminate();
    m_daemon.waitForFinished(s_patience);
}

bool TestKeyring::store(const QString &user, const QString &password)
{
    QProcess tool;
    tool.start(u"secret-tool"_s,
               {u"store"_s, u"--label=A library"_s, u"application"_s, u"com.harrow.kestrel"_s, u"server"_s,
                server, u"user"_s, user});
    tool.write(password.toUtf8());
    tool.closeWriteChannel();
    return tool.waitForFinished(s_patience) && tool.exitStatus() == QProcess::NormalExit
        && tool.exitCode() == 0;
}

QString TestKeyring::find(const QString &user, const SecretPatience &patience)
{
    const LogLines log("kestrel.servers");
    Credentials credentials(QDBusConnection::sessionBus(), QDir::homePath() + u"/credentials"_s, nullptr,
                            patience);
    std::optional<Login> found;
    credentials.find(server, user, [&found](const Login &answer) { found = answer; });
    if (!QTest::qWaitFor([&found] { return found.has_value(); }, s_patience))
        return u"no answer"_s;
    for (const QString &line : log.all()) {
        if (line.contains(secret))
            return u"logged"_s;
    }
    return printed(*found);
}

void TestKeyring::whatTheToolStoresIsFound_data()
{
    QTest::addColumn<QString>("user");
    QTest::addColumn<QStringList>("logins");
    QTest::newRow("one") << u"anna"_s << QStringList(u"anna/"_s + secret);
    QTest::newRow("the other") << u"bert"_s << QStringList(u"bert/other"_s);
    QTest::newRow("nobody") << u"carl"_s << QStringList(u"/"_s);
    QTest::newRow("whoever") << QString() << QStringList{u"anna/"_s + secret, u"bert/other"_s};
}

void TestKeyring::whatTheToolStoresIsFound()
{
    QFETCH(QString, user);
    QFETCH(QStringList, logins);
    const QString found = find(user);
    QVERIFY2(logins.contains(found), qPrintable(found));
}

void TestKeyring::aNewPasswordCountsAtOnce()
{
    QVERIFY(store(u"bert"_s, u"a newer one"_s));
    QCOMPARE(find(u"bert"_s), u"bert/a newer one"_s);
}

void TestKeyring::aLockedKeyringIsLeftLocked()
{
    const QDBusMessage reply
        = ask(u"Lock"_s, {QVariant::fromValue(QList<QDBusObjectPath>{QDBusObjectPath(login)})});
    QCOMPARE(reply.type(), QDBusMessage::ReplyMessage);
    const QString found = find(u"anna"_s, {25000ms, 1000ms});
    // Nobody answers the dialog, and without a desktop there may be none.
    QVERIFY2(found.startsWith("error: the password of 127.0.0.1:8890 is in the secret service: "_L1),
             qPrintable(found));
}

void TestKeyring::aKeyringThatEndedLeavesTheFile()
{
    m_daemon.terminate();
    QVERIFY(m_daemon.waitForFinished(s_patience));
    QVERIFY(QFile::remove(QDir::homePath() + u"/.local/share/keyrings/login.keyring"_s));
    QFile file(QDir::homePath() + u"/credentials"_s);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("[127.0.0.1:8890]\nuser = anna\npassword = of the file\n");
    file.close();
    QVERIFY(file.setPermissions(QFile::ReadOwner | QFile::WriteOwner));
    // The bus may start another one, which has nothing.
    QCOMPARE(find(u"anna"_s), u"anna/of the file"_s);
}

QTEST_GUILESS_MAIN(TestKeyring)
#include "secrets_keyring.moc"

// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/servers/credentialsfile.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::Literals::StringLiterals;

namespace {

const QString server = u"archive.example:443"_s;
const QByteArray good = "[archive.example:443]\nuser = anna\npassword = secret\n";

QString printed(const Login &login)
{
    return login.error.isEmpty() ? login.user + u'/' + login.password : u"error: "_s + login.error;
}

} // namespace

// A person has written a password into a file, with the rights that files have.
class TestCredentialsFile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }
    void onlyItsOwnerMayReadIt_data();
    void onlyItsOwnerMayReadIt();
    void anothersIsRefused();
    void aLinkToAnothersIsRefused();
    void aLinkToOnesOwnIsRead();
    void noFileIsNoLogin();
    void whatIsNoFileIsRefused();
    void oneThatIsTooLargeIsRefused();
    void whatStandsInIt_data();
    void whatStandsInIt();

private:
    [[nodiscard]] QString file(const char *name = "credentials") const
    {
        return m_folder->filePath(QString::fromLatin1(name));
    }
    [[nodiscard]] QString write(const QByteArray &text, mode_t mode, const char *name = "credentials") const;
    // A file that is somebody else's; made when this user may do that, else one of the system.
    [[nodiscard]] QString anothersFile() const;

    std::unique_ptr<QTemporaryDir> m_folder;
};

QString TestCredentialsFile::write(const QByteArray &text, mode_t mode, const char *name) const
{
    QFile out(file(name));
    if (!out.open(QIODevice::WriteOnly) || out.write(text) != text.size())
        return {};
    out.close();
    return ::chmod(QFile::encodeName(file(name)).constData(), mode) == 0 ? file(name) : QString();
}

QString TestCredentialsFile::anothersFile() const
{
    if (::geteuid() != 0)
        return u"/etc/passwd"_s;
    const QString path = write(good, 0600, "another");
    return ::chown(QFile::encodeName(path).constData(), 1, 1) == 0 ? path : u"/proc/1/environ"_s;
}

void TestCredentialsFile::onlyItsOwnerMayReadIt_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<bool>("isUsed");
    for (const int mode : {0600, 0400})
        QTest::addRow("%04o", unsigned(mode)) << mode << true;
    for (const int mode : {0644, 0640, 0604, 0620, 0602, 0610, 0601, 0700, 0660, 0444, 04600, 02600, 01600})
        QTest::addRow("%04o", unsigned(mode)) << mode << false;
}

void TestCredentialsFile::onlyItsOwnerMayReadIt()
{
    QFETCH(int, mode);
    QFETCH(bool, isUsed);
    const QString path = write(good, mode_t(mode));
    const QString refusal
        = u"error: %1 is not used: its mode is %2, and only its owner may read it; mend it: chmod 600 '%1'"_s
              .arg(path, u"%1"_s.arg(mode, 4, 8, QLatin1Char('0')));
    QCOMPARE(printed(loginFromFile(path, server, {})), isUsed ? u"anna/secret"_s : refusal);
}

void TestCredentialsFile::anothersIsRefused()
{
    const QString error = loginFromFile(anothersFile(), server, {}).error;
    QVERIFY2(error.contains(u" is not used: it belongs to the user "_s)
                 && error.contains(u"mend it: chown "_s),
             qPrintable(error));
}

void TestCredentialsFile::aLinkToAnothersIsRefused()
{
    QVERIFY(QFile::link(anothersFile(), file()));
    const QString error = loginFromFile(file(), server, {}).error;
    QVERIFY2(error.contains(u" is not used: it belongs to the user "_s), qPrintable(error));
}

void TestCredentialsFile::aLinkToOnesOwnIsRead()
{
    QVERIFY(QFile::link(write(good, 0600, "kept elsewhere"), file()));
    QCOMPARE(printed(loginFromFile(file(), server, {})), u"anna/secret"_s);
    (void)write(good, 0644, "kept elsewhere");
    QVERIFY(loginFromFile(file(), server, {}).error.contains(u"its mode is 0644"_s));
}

void TestCredentialsFile::noFileIsNoLogin()
{
    QCOMPARE(printed(loginFromFile(file(), server, {})), u"/"_s);
    QCOMPARE(printed(loginFromFile(u"/nowhere/at/all"_s, server, {})), u"/"_s);
    QVERIFY(QFile::link(u"/nowhere/at/all"_s, file()));
    QCOMPARE(printed(loginFromFile(file(), server, {})), u"/"_s);
}

void TestCredentialsFile::whatIsNoFileIsRefused()
{
    const QString no = u" is not used: it is no regular file"_s;
    QCOMPARE(loginFromFile(m_folder->path(), server, {}).error, m_folder->path() + no);
    QCOMPARE(loginFromFile(u"/dev/zero"_s, server, {}).error, u"/dev/zero"_s + no);
    // Nobody writes into it.
    QCOMPARE(::mkfifo(QFile::encodeName(file()).constData(), 0600), 0);
    QCOMPARE(loginFromFile(file(), server, {}).error, file() + no);
}

void TestCredentialsFile::oneThatIsTooLargeIsRefused()
{
    const QString path = write(good + QByteArray(65536, '#'), 0600);
    QCOMPARE(loginFromFile(path, server, {}).error, path + u" is not used: File too large"_s);
}

void TestCredentialsFile::whatStandsInIt_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("user");
    QTest::addColumn<QString>("login"); // with "error: LINE" for a line that is none
    const auto row = [](const char *name, const QByteArray &text, const QString &login,
                        const QString &user = {}) { QTest::newRow(name) << text << user << login; };
    row("empty", "", u"/"_s);
    row("comments and blank lines", "# x = y\n\n  # [a]\n \t\n" + good, u"anna/secret"_s);
    row("without an end of line", good.chopped(1), u"anna/secret"_s);
    row("of another system", QByteArray(good).replace("\n", "\r\n"), u"anna/secret"_s);
    row("without blanks", "[archive.example:443]\nuser=anna\npassword=secret", u"anna/secret"_s);
    row("blanks around", "  [ archive.example:443 ] \n  user =  anna b  \n  password = s", u"anna b/s"_s);
    row("blanks of the password", "[archive.example:443]\nuser=anna\npassword =  two  words \n",
        u"anna/ two  words "_s);
    row("signs in the password", "[archive.example:443]\nuser=anna\npassword = [#=\"ß]\n", u"anna/[#=\"ß]"_s);
    row("no password", "[archive.example:443]\nuser=anna\n", u"anna/"_s);
    row("no user", "[archive.example:443]\npassword=secret\n", u"/"_s);
    row("password first", "[archive.example:443]\npassword=secret\nuser=anna\n", u"anna/secret"_s);
    row("case", "[Archive.EXAMPLE:443]\nuser=anna\npassword=secret\n", u"anna/secret"_s);
    row("another port", "[archive.example:8443]\nuser=anna\npassword=secret\n", u"/"_s);
    const QByteArray two
        = "[b:1]\nuser=x\npassword=y\n" + good + "[archive.example:443]\nuser=bert\npassword=b\n";
    row("the first of two", two, u"anna/secret"_s);
    row("the one who is set", two, u"bert/b"_s, u"bert"_s);
    row("another who is set", two, u"/"_s, u"carl"_s);
    row("before any server", "user=anna\n" + good, u"error: 1"_s);
    row("an unknown key", good + "passwort=a\n", u"error: 4"_s);
    row("no key", good + "\nsecret\n", u"error: 5"_s);
    row("half a section", "[archive.example:443\n", u"error: 1"_s);
    row("an empty section", "[]\n", u"error: 1"_s);
    row("a lone bracket", "[\n", u"error: 1"_s);
}

void TestCredentialsFile::whatStandsInIt()
{
    QFETCH(QByteArray, text);
    QFETCH(QString, user);
    QFETCH(QString, login);
    const QString path = write(text, 0600);
    if (login.startsWith("error: "_L1))
        login
            = u"error: %1 is not used: line %2 is neither [host:port] nor, below that, user = ... or password = ..."_s
                  .arg(path, login.mid(7));
    QCOMPARE(printed(loginFromFile(path, server, user)), login);
}

QTEST_APPLESS_MAIN(TestCredentialsFile)
#include "test_credentialsfile.moc"

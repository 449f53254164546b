// SPDX-License-Identifier: GPL-3.0-or-later
#include "streamclips.h"
#include "support/mediaserver.h"
#include "support/mountnamespace.h"
#include "support/playback.h"

#include <QApplication>
#include <QDateTime>
#include <QProcess>

#include <map>
#include <memory>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int Patience = 60000; // ms; a loaded machine
const QString SystemTrust = QStringLiteral("/etc/ssl/certs/ca-certificates.crt");

QTemporaryDir &certificates()
{
    static QTemporaryDir folder;
    return folder;
}

bool openssl(const QStringList &arguments)
{
    QProcess process;
    process.setWorkingDirectory(certificates().path());
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(u"openssl"_s, arguments);
    const bool made = process.waitForFinished(60000) && process.exitCode() == 0;
    if (!made)
        qWarning("%s", process.readAll().constData());
    return made;
}

QStringList newKey(const QString &key)
{
    return {u"-newkey"_s, u"rsa:2048"_s, u"-nodes"_s, u"-keyout"_s, key};
}

bool makeAuthority()
{
    return openssl(QStringList{u"req"_s, u"-x509"_s, u"-days"_s, u"2"_s, u"-subj"_s, u"/CN=Test authority"_s,
                               u"-out"_s, u"authority.pem"_s}
                   + newKey(u"authority.key"_s));
}

// Signed by the authority; with its key in one file. The empty string when that failed.
QString makeCertificate(const QString &name, const QString &host, int days)
{
    const QString key = name + u".key"_s;
    const QString request = name + u".csr"_s;
    const QString signedOne = name + u".crt"_s;
    QFile names(certificates().filePath(name + u".names"_s));
    if (!names.open(QIODevice::WriteOnly) || names.write("subjectAltName=" + host.toLatin1() + '\n') < 0)
        return {};
    names.close();
    const bool made
        = openssl(QStringList{u"req"_s, u"-subj"_s, u"/CN=Test server"_s, u"-out"_s, request} + newKey(key))
        && openssl({u"x509"_s, u"-req"_s, u"-in"_s, request, u"-CA"_s, u"authority.pem"_s, u"-CAkey"_s,
                    u"authority.key"_s, u"-CAcreateserial"_s, u"-days"_s, QString::number(days),
                    u"-extfile"_s, name + u".names"_s, u"-out"_s, signedOne});
    QFile whole(certificates().filePath(name + u".pem"_s));
    if (!made || !whole.open(QIODevice::WriteOnly))
        return {};
    for (const QString &part : {signedOne, key}) {
        QFile file(certificates().filePath(part));
        if (!file.open(QIODevice::ReadOnly) || whole.write(file.readAll()) <= 0)
            return {};
    }
    return whole.fileName();
}

} // namespace

// Encrypted on the way: who is vouched for by an authority that this system trusts is believed, and nobody
// else.
class TlsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void vouchedFor_data();
    void vouchedFor();
    void notVouchedFor_data();
    void notVouchedFor();
    void nothingIsAskedOfStrangers();

private:
    void add(const QString &name, const QString &address, bool trusted)
    {
        (trusted ? m_trusted : m_refused).append(name);
        m_playbacks[name] = std::make_unique<Playback>(address);
    }

    QTemporaryDir m_folder;
    MediaServer m_good;
    MediaServer m_elsewhere; // says that it is another one
    MediaServer m_old; // whose time is over
    MediaServer m_stranger; // who vouches for itself
    QStringList m_trusted;
    QStringList m_refused;
    std::map<QString, std::unique_ptr<Playback>> m_playbacks;
};

void TlsTest::initTestCase()
{
    QString hls;
    QString dash;
    QCOMPARE(TestClips::make(m_folder.filePath(u"clip.mp4"_s), streamclips::small(streamclips::h264())),
             QString());
    QCOMPARE(streamclips::makeAdaptive(m_folder.path(), u"hls"_s, &hls), QString());
    QCOMPARE(streamclips::makeAdaptive(m_folder.path(), u"dash"_s, &dash), QString());
    const QString here = u"IP:127.0.0.1"_s;
    const QString good = makeCertificate(u"good"_s, here, 2);
    const QString elsewhere = makeCertificate(u"elsewhere"_s, u"DNS:video.example"_s, 2);
    const QString old = makeCertificate(u"old"_s, here, 0);
    QVERIFY(!good.isEmpty() && !elsewhere.isEmpty() && !old.isEmpty());
    // It holds to the end of the second in which it was made.
    const qint64 second = QDateTime::currentSecsSinceEpoch();
    QTRY_VERIFY(QDateTime::currentSecsSinceEpoch() > second);
    QVERIFY(openssl(QStringList{u"req"_s, u"-x509"_s, u"-days"_s, u"2"_s, u"-subj"_s, u"/CN=127.0.0.1"_s,
                                u"-addext"_s, u"subjectAltName="_s + here, u"-out"_s, u"stranger.crt"_s}
                    + newKey(u"stranger.key"_s)));
    QFile stranger(certificates().filePath(u"stranger.crt"_s));
    QFile strangersKey(certificates().filePath(u"stranger.key"_s));
    QVERIFY(stranger.open(QIODevice::Append) && strangersKey.open(QIODevice::ReadOnly));
    stranger.write(strangersKey.readAll());
    stranger.close();
    QVERIFY(m_good.startWeb(m_folder.path(), good));
    QVERIFY(m_elsewhere.startWeb(m_folder.path(), elsewhere));
    QVERIFY(m_old.startWeb(m_folder.path(), old));
    QVERIFY(m_stranger.startWeb(m_folder.path(), stranger.fileName()));
    add(u"a film"_s, m_good.address(u"plain/clip.mp4"_s), true);
    add(u"hls"_s, m_good.address(u"plain/"_s + hls), true);
    add(u"dash"_s, m_good.address(u"plain/"_s + dash), true);
    add(u"for another host"_s, m_elsewhere.address(u"plain/clip.mp4"_s), false);
    add(u"over"_s, m_old.address(u"plain/clip.mp4"_s), false);
    add(u"by itself"_s, m_stranger.address(u"plain/clip.mp4"_s), false);
    add(u"hls by itself"_s, m_stranger.address(u"plain/"_s + hls), false);
    add(u"dash by itself"_s, m_stranger.address(u"plain/"_s + dash), false);
}

void TlsTest::vouchedFor_data()
{
    QTest::addColumn<QString>("name");
    for (const QString &name : std::as_const(m_trusted))
        QTest::newRow(qPrintable(name)) << name;
}

void TlsTest::vouchedFor()
{
    QFETCH(QString, name);
    Playback &playback = *m_playbacks.at(name);
    QVERIFY2(playback.waitUntilOver(Patience), qPrintable(playback.story()));
    QVERIFY2(playback.events == QStringList({u"playing"_s, u"end"_s}), qPrintable(playback.story()));
}

void TlsTest::notVouchedFor_data()
{
    QTest::addColumn<QString>("name");
    for (const QString &name : std::as_const(m_refused))
        QTest::newRow(qPrintable(name)) << name;
}

void TlsTest::notVouchedFor()
{
    QFETCH(QString, name);
    Playback &playback = *m_playbacks.at(name);
    QVERIFY2(playback.waitUntilOver(Patience), qPrintable(playback.story()));
    QVERIFY2(playback.code == 301 && playback.frames == 0, qPrintable(playback.story()));
}

void TlsTest::nothingIsAskedOfStrangers()
{
    for (const MediaServer *server : {&m_elsewhere, &m_old, &m_stranger})
        QCOMPARE(server->requests(), QStringList());
    QVERIFY(!m_good.requests().isEmpty());
}

// What this system trusts is one file, which is another one for this process.
int main(int argc, char **argv)
{
    if (!makeAuthority() || !mounts::enterNamespace({})
        || !mounts::cover(QFile::encodeName(SystemTrust),
                          QFile::encodeName(certificates().filePath(u"authority.pem"_s))))
        qFatal("the process cannot have an authority of its own");
    QApplication application(argc, argv);
    TlsTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "media_tls.moc"

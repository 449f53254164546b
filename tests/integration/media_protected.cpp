// SPDX-License-Identifier: GPL-3.0-or-later
#include "streamclips.h"
#include "support/mediaserver.h"
#include "support/playback.h"

#include <QUrl>
#include <QtEndian>

#include <map>
#include <memory>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int Patience = 60000; // ms; a loaded machine
const QString Key = QStringLiteral("76a6c65c5ea762046bd749a2e632ccbb");

QByteArray contentsOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool write(const QString &path, const QByteArray &contents)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(contents) == contents.size();
}

// The data of a licence server, as a box at the end of the "moov" box, which is the file's last one.
QByteArray withLicenceData(QByteArray mp4)
{
    const QByteArray licence = QByteArray::fromHex("000000287073736800000000edef8ba979d64acea3c827dcd51d21ed")
        + "\0\0\0\x08licence!"_ba;
    const qsizetype moov = mp4.lastIndexOf("moov") - 4;
    const quint32 size = qFromBigEndian<quint32>(mp4.constData() + moov);
    qToBigEndian(quint32(size + quint32(licence.size())), mp4.data() + moov);
    return mp4 + licence;
}

} // namespace

// Videos that are locked: who has no key is told so, and who has it watches.
class ProtectedTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void lockedVideos_data();
    void lockedVideos();
    void aKeyThatAnybodyMayHave();

private:
    void makeFiles();
    void makeStreams();
    [[nodiscard]] QString file(const QString &name) const
    {
        return QUrl::fromLocalFile(m_folder.filePath(name)).toString();
    }
    [[nodiscard]] QString web(const QString &path) const { return m_server.address(u"plain/"_s + path); }

    QTemporaryDir m_folder;
    MediaServer m_server;
    QStringList m_names;
    std::map<QString, std::unique_ptr<Playback>> m_playbacks;
};

void ProtectedTest::makeFiles()
{
    using namespace streamclips;
    const QStringList scheme{u"-encryption_scheme"_s, u"cenc-aes-ctr"_s,
                             u"-encryption_key"_s,    Key,
                             u"-encryption_kid"_s,    u"112233445566778899aabbccddeeff00"_s};
    QCOMPARE(TestClips::make(m_folder.filePath(u"cenc.mp4"_s), small(h264() + scheme)), QString());
    QVERIFY(write(m_folder.filePath(u"licence.mp4"_s),
                  withLicenceData(contentsOf(m_folder.filePath(u"cenc.mp4"_s)))));
    QCOMPARE(TestClips::make(
                 m_folder.filePath(u"fragments.mp4"_s),
                 small(h264() + scheme
                       + QStringList{u"-movflags"_s, u"frag_keyframe+empty_moov+default_base_moof"_s})),
             QString());
    TestClips::Clip sound = small(scheme);
    sound.source.clear();
    QCOMPARE(TestClips::make(m_folder.filePath(u"sound.m4a"_s), sound), QString());
}

void ProtectedTest::makeStreams()
{
    using namespace streamclips;
    QString name;
    QCOMPARE(makeAdaptive(m_folder.path(), u"hls-plain"_s, &name), QString());
    QCOMPARE(makeAdaptive(m_folder.path(), u"hls-sample"_s, &name), QString());
    const QString playlist = m_folder.filePath(name);
    QVERIFY(
        write(playlist,
              contentsOf(playlist).replace(
                  "#EXTINF",
                  "#EXT-X-KEY:METHOD=SAMPLE-AES,URI=\"skd://licence\",KEYFORMAT=\"com.example\"\n#EXTINF")));
    QVERIFY(write(m_folder.filePath(u"film.key"_s), QByteArray::fromHex(Key.toLatin1())));
    QVERIFY(write(m_folder.filePath(u"key-info"_s),
                  "../film.key\n" + QFile::encodeName(m_folder.filePath(u"film.key"_s)) + '\n'));
    const QStringList withKey{u"-hls_key_info_file"_s, m_folder.filePath(u"key-info"_s)};
    QCOMPARE(makeAdaptive(m_folder.path(), u"hls-key"_s, &name, withKey), QString());
    QCOMPARE(makeAdaptive(m_folder.path(), u"hls-lost-key"_s, &name, withKey), QString());
    const QString lost = m_folder.filePath(name);
    QVERIFY(write(lost, contentsOf(lost).replace("../film.key", "../lost.key")));
    QCOMPARE(makeAdaptive(m_folder.path(), u"dash-cenc"_s, &name,
                          {u"-format_options"_s,
                           u"encryption_scheme=cenc-aes-ctr:encryption_key=%1:encryption_kid=%1"_s.arg(Key)}),
             QString());
    const QString manifest = m_folder.filePath(name);
    QVERIFY(write(manifest,
                  contentsOf(manifest).replace(
                      "<Representation",
                      "<ContentProtection schemeIdUri=\"urn:mpeg:dash:mp4protection:2011\" value=\"cenc\"/>"
                      "<Representation")));
}

void ProtectedTest::initTestCase()
{
    makeFiles();
    makeStreams();
    QVERIFY(m_server.startWeb(m_folder.path()));
    const QList<std::pair<QString, QString>> locked{
        {u"a file"_s, file(u"cenc.mp4"_s)},
        {u"a file with licence data"_s, file(u"licence.mp4"_s)},
        {u"a file of fragments"_s, file(u"fragments.mp4"_s)},
        {u"a file of sound"_s, file(u"sound.m4a"_s)},
        {u"a file of a server"_s, web(u"cenc.mp4"_s)},
        {u"hls whose samples are locked"_s, web(u"hls-sample/film.m3u8"_s)},
        {u"hls whose key is not given out"_s, web(u"hls-lost-key/film.m3u8"_s)},
        {u"dash"_s, web(u"dash-cenc/film.mpd"_s)},
    };
    for (const auto &[name, address] : locked) {
        m_names.append(name);
        m_playbacks[name] = std::make_unique<Playback>(address);
    }
}

void ProtectedTest::lockedVideos_data()
{
    QTest::addColumn<QString>("name");
    for (const QString &name : std::as_const(m_names))
        QTest::newRow(qPrintable(name)) << name;
}

void ProtectedTest::lockedVideos()
{
    QFETCH(QString, name);
    Playback &playback = *m_playbacks.at(name);
    QVERIFY2(playback.waitUntilOver(Patience), qPrintable(playback.story()));
    qInfo("%s", qPrintable(playback.story()));
    QVERIFY2(playback.code >= 311 && playback.code <= 313, qPrintable(playback.story()));
    QVERIFY2(playback.frames == 0, qPrintable(playback.story()));
}

void ProtectedTest::aKeyThatAnybodyMayHave()
{
    Playback playback(web(u"hls-key/film.m3u8"_s));
    QVERIFY2(playback.waitUntilOver(Patience), qPrintable(playback.story()));
    QVERIFY2(playback.code == 0 && playback.frames > 50, qPrintable(playback.story()));
}

QTEST_MAIN(ProtectedTest)
#include "media_protected.moc"

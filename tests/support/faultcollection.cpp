// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/faultcollection.h"

#include "support/testclips.h"

#include <QDir>
#include <QFile>
#include <QRandomGenerator>
#include <QtEndian>

using namespace Qt::Literals::StringLiterals;

namespace faultcollection {

namespace {

const QStringList Containers{u"mp4"_s, u"mkv"_s, u"webm"_s, u"ts"_s, u"avi"_s, u"ogg"_s};
constexpr int Flips = 4; // damaged copies of each container

class Maker
{
public:
    Maker(const QString &folder, QList<File> *files) : m_folder(folder), m_files(files) { }

    void containers();
    void pictures();
    void times();
    void contents();
    void playlists();
    [[nodiscard]] QString error() const { return m_error; }

private:
    [[nodiscard]] QByteArray clip(const QString &name, const QStringList &options, int width = 160,
                                  int height = 120);
    void write(const QString &name, const QByteArray &contents, bool mustPlay = false, bool mayPlay = true);
    void add(const QString &name, bool mustPlay = false, bool mayPlay = true)
    {
        m_files->append({name, mustPlay, mayPlay});
    }

    QDir m_folder;
    QList<File> *m_files;
    QString m_error;
};

QStringList h264()
{
    return {u"-c:v"_s, u"libx264"_s, u"-preset"_s, u"ultrafast"_s, u"-g"_s, u"10"_s};
}

QStringList codecsOf(const QString &container)
{
    if (container == u"webm")
        return {u"-c:v"_s, u"libvpx"_s, u"-deadline"_s, u"realtime"_s, u"-c:a"_s, u"libvorbis"_s};
    if (container == u"ogg")
        return {u"-c:v"_s, u"libtheora"_s, u"-c:a"_s, u"libvorbis"_s};
    if (container == u"avi")
        return {u"-c:v"_s, u"mpeg4"_s, u"-c:a"_s, u"mp3"_s};
    return h264() + QStringList{u"-c:a"_s, u"aac"_s};
}

QByteArray flipped(QByteArray data, quint32 seed)
{
    QRandomGenerator random(seed);
    const int count = 4 + int(data.size() / 500);
    for (int i = 0; i < count; ++i) {
        // Half of them in the head, where what describes the rest stands.
        const qsizetype range = i % 2 == 0 ? std::min<qsizetype>(data.size(), 1500) : data.size();
        const qsizetype at = random.bounded(qint64(range));
        data[at] = char(data.at(at) ^ (1 << random.bounded(8)));
    }
    return data;
}

QByteArray box(const char *type, const QByteArray &contents)
{
    QByteArray size(4, '\0');
    qToBigEndian(quint32(contents.size() + 8), size.data());
    return size + type + contents;
}

QByteArray patched(QByteArray data, const QByteArray &after, qsizetype offset, const QByteArray &value)
{
    for (qsizetype at = data.indexOf(after); at >= 0; at = data.indexOf(after, at + 1))
        data.replace(at + offset, value.size(), value);
    return data;
}

QByteArray Maker::clip(const QString &name, const QStringList &options, int width, int height)
{
    TestClips::Clip clip;
    clip.width = width;
    clip.height = height;
    clip.seconds = 1;
    clip.options = options;
    const QString failure = TestClips::make(m_folder.filePath(name), clip);
    QFile file(m_folder.filePath(name));
    if (!failure.isEmpty() || !file.open(QIODevice::ReadOnly)) {
        m_error += name + u": "_s + failure;
        return {};
    }
    return file.readAll();
}

void Maker::write(const QString &name, const QByteArray &contents, bool mustPlay, bool mayPlay)
{
    QFile file(m_folder.filePath(name));
    if (!file.open(QIODevice::WriteOnly) || file.write(contents) != contents.size())
        m_error += name;
    add(name, mustPlay, mayPlay);
}

void Maker::containers()
{
    for (const QString &container : Containers) {
        const QByteArray whole = clip(u"whole."_s + container, codecsOf(container));
        add(u"whole."_s + container, true);
        for (int tenth = 1; tenth <= 9; ++tenth) {
            // The index of an mp4 stands at its end: without it nothing of the rest can be read.
            const bool plays = container != u"mp4";
            write(u"cut%1.%2"_s.arg(tenth).arg(container), whole.left(whole.size() * tenth / 10),
                  plays && tenth >= 6, plays);
        }
        for (int flip = 0; flip < Flips; ++flip)
            write(u"flipped%1.%2"_s.arg(flip).arg(container), flipped(whole, quint32(4711 + flip)));
        write(u"empty."_s + container, {}, false, false);
        write(u"noise."_s + container, flipped(QByteArray(20000, 'x'), 1), false, false);
        write(u"zeros."_s + container, QByteArray(20000, '\0'), false, false);
        const QString other = Containers.at((Containers.indexOf(container) + 1) % Containers.size());
        write(u"really-%1.%2"_s.arg(container, other), whole, true);
    }
    const QStringList first = codecsOf(u"mp4"_s) + QStringList{u"-movflags"_s, u"faststart"_s};
    const QByteArray whole = clip(u"head-first.mp4"_s, first);
    for (int tenth = 1; tenth <= 9; ++tenth)
        write(u"head-first-cut%1.mp4"_s.arg(tenth), whole.left(whole.size() * tenth / 10));
}

void Maker::pictures()
{
    (void)clip(u"very-wide.mp4"_s, h264(), 16384, 16);
    add(u"very-wide.mp4"_s);
    (void)clip(u"very-high.mkv"_s, h264(), 16, 16384);
    add(u"very-high.mkv"_s);
    (void)clip(u"one-dot.mkv"_s,
               {u"-vf"_s, u"crop=1:1:0:0:exact=1"_s, u"-c:v"_s, u"ffv1"_s, u"-pix_fmt"_s, u"gray"_s});
    add(u"one-dot.mkv"_s);
    const QByteArray raw = clip(u"raw.avi"_s, {u"-c:v"_s, u"rawvideo"_s, u"-pix_fmt"_s, u"bgr24"_s}, 16, 16);
    const QByteArray nothing(8, '\0');
    // The sizes in the stream format, after its own size of 40 bytes, and in the main header.
    write(u"no-size.avi"_s, patched(raw, QByteArray("strf"), 12, nothing));
    write(u"16384-claimed.avi"_s,
          patched(raw, QByteArray("strf"), 12, QByteArray::fromHex("0040000000400000")));
    write(u"2147483647-claimed.avi"_s,
          patched(raw, QByteArray("strf"), 12, QByteArray::fromHex("ffffff7fffffff7f")));
    const QByteArray mp4 = clip(u"plain.mp4"_s, h264());
    write(u"no-size.mp4"_s, patched(mp4, QByteArray("avc1"), 28, QByteArray(4, '\0')));
    write(u"65535-claimed.mp4"_s, patched(mp4, QByteArray("avc1"), 28, QByteArray(4, '\xff')));
}

void Maker::times()
{
    const QStringList base = h264();
    const QStringList raw{u"-copyts"_s, u"-avoid_negative_ts"_s, u"disabled"_s};
    const auto shifted = [&](const QString &name, const QString &offset) {
        (void)clip(name, base + raw + QStringList{u"-output_ts_offset"_s, offset});
        add(name);
    };
    shifted(u"before-zero.mkv"_s, u"-0.5"_s);
    shifted(u"before-zero.mp4"_s, u"-0.5"_s);
    shifted(u"far-away.mkv"_s, u"2000000"_s);
    shifted(u"far-away.ts"_s, u"90000"_s);
    const QByteArray mp4 = clip(u"timed.mp4"_s, base);
    // The durations of the movie and of its tracks: as long as a number can be.
    write(u"endless.mp4"_s, patched(mp4, QByteArray("mvhd"), 20, QByteArray(4, '\xff')));
    write(u"no-time-scale.mp4"_s, patched(mp4, QByteArray("mdhd"), 16, QByteArray(4, '\0')));
    write(u"huge-steps.mp4"_s, patched(mp4, QByteArray("stts"), 16, QByteArray::fromHex("7fffffff")));
    write(u"huge-samples.mp4"_s, patched(mp4, QByteArray("stsz"), 20, QByteArray(8, '\xff')));
    write(u"many-samples.mp4"_s, patched(mp4, QByteArray("stsz"), 12, QByteArray(4, '\xff')));
    write(u"far-chunks.mp4"_s, patched(mp4, QByteArray("stco"), 12, QByteArray::fromHex("fffffff0")));
    (void)clip(u"unknown-length.mkv"_s, base + QStringList{u"-live"_s, u"1"_s});
    add(u"unknown-length.mkv"_s, true);
}

void Maker::contents()
{
    const QByteArray type = box("ftyp", QByteArray("isom\0\0\2\0isomiso2", 16));
    QByteArray header(100, '\0');
    qToBigEndian(quint32(1000), header.data() + 12);
    write(u"no-streams.mp4"_s, type + box("moov", box("mvhd", header)), false, false);
    write(u"head-alone.mp4"_s, type, false, false);
    QByteArray nested = "x";
    for (int depth = 0; depth < 2000; ++depth)
        nested = box("moov", nested);
    write(u"nested.mp4"_s, type + nested, false, false);
    write(u"diary.mp4"_s, QByteArray("Dear diary, today nothing moved.\n").repeated(300), false, false);

    QByteArray bomb;
    for (int cue = 1; cue <= 20000; ++cue)
        bomb += QByteArray::number(cue) + "\n00:00:00,000 --> 00:00:01,000\n<b><i><u>"
            + QByteArray("<font color=red>boom").repeated(3) + "\n\n";
    QFile subtitles(m_folder.filePath(u"bomb.srt"_s));
    if (!subtitles.open(QIODevice::WriteOnly) || subtitles.write(bomb) != bomb.size())
        m_error += u"bomb.srt"_s;
    subtitles.close();
    TestClips::Clip clip;
    clip.width = 160;
    clip.height = 120;
    clip.seconds = 1;
    clip.sound = false;
    clip.options
        = QStringList{u"-i"_s,  subtitles.fileName(), u"-map"_s,   u"0"_s, u"-map"_s, u"1"_s, u"-c:s"_s,
                      u"srt"_s, u"-pix_fmt"_s,        u"yuv420p"_s}
        + h264();
    m_error += TestClips::make(m_folder.filePath(u"subtitle-bomb.mkv"_s), clip);
    add(u"subtitle-bomb.mkv"_s, true);
    clip.source.clear();
    clip.options = {u"-i"_s, subtitles.fileName(), u"-c:s"_s, u"srt"_s};
    m_error += TestClips::make(m_folder.filePath(u"subtitles-alone.mkv"_s), clip);
    add(u"subtitles-alone.mkv"_s, false, false);
}

void Maker::playlists()
{
    const QByteArray head("#EXTM3U\n#EXT-X-VERSION:3\n#EXT-X-TARGETDURATION:2\n");
    write(u"myself.m3u8"_s, head + "#EXTINF:2,\nmyself.m3u8\n#EXT-X-ENDLIST\n", false, false);
    write(u"my-own-variant.m3u8"_s, "#EXTM3U\n#EXT-X-STREAM-INF:BANDWIDTH=1000\nmy-own-variant.m3u8\n", false,
          false);
    write(u"ping.m3u8"_s, "#EXTM3U\n#EXT-X-STREAM-INF:BANDWIDTH=1000\npong.m3u8\n", false, false);
    write(u"pong.m3u8"_s, "#EXTM3U\n#EXT-X-STREAM-INF:BANDWIDTH=1000\nping.m3u8\n", false, false);
    write(u"nothing.m3u8"_s, head + "#EXT-X-ENDLIST\n", false, false);
    write(u"many.m3u8"_s, head + QByteArray("#EXTINF:0.001,\nno.ts\n").repeated(20000) + "#EXT-X-ENDLIST\n",
          false, false);
    write(u"devices.m3u8"_s, head + "#EXTINF:2,\nfile:///dev/zero\n#EXT-X-ENDLIST\n", false, false);
    write(u"list.m3u"_s, "#EXTM3U\nlist.m3u\n", false, false);
    write(u"empty.mpd"_s,
          "<?xml version=\"1.0\"?><MPD xmlns=\"urn:mpeg:dash:schema:mpd:2011\" type=\"static\"/>", false,
          false);
    QByteArray laughs = "<?xml version=\"1.0\"?><!DOCTYPE MPD [<!ENTITY a \"ha\">";
    for (char name = 'b'; name <= 'z'; ++name)
        laughs += QByteArray("<!ENTITY ") + name + " \""
            + ('&' + QByteArray(1, char(name - 1)) + ';').repeated(10) + "\">";
    write(u"laughs.mpd"_s,
          laughs
              + "]><MPD xmlns=\"urn:mpeg:dash:schema:mpd:2011\" type=\"static\"><Period id=\"&z;\"/></MPD>",
          false, false);
}

} // namespace

QString make(const QString &folder, QList<File> *files)
{
    Maker maker(folder, files);
    maker.containers();
    maker.pictures();
    maker.times();
    maker.contents();
    maker.playlists();
    return maker.error();
}

} // namespace faultcollection

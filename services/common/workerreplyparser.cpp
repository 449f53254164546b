// SPDX-License-Identifier: GPL-3.0-or-later
#include "workerreplyparser.h"

#include <QStringDecoder>
#include <QTimeZone>

#include <algorithm>
#include <bitset>
#include <cstring>

using namespace WorkerProtocol;

namespace {

constexpr qint64 LongestDurationMs = 1000LL * 3600 * 1000; // a thousand hours
constexpr int BytesPerPixel = 4;

bool readNumber(QByteArrayView value, qint64 minimum, qint64 maximum, qint64 &number)
{
    if (value.size() != sizeof number)
        return false;
    std::memcpy(&number, value.data(), sizeof number);
    return number >= minimum && number <= maximum;
}

bool readInt(QByteArrayView value, int maximum, int &number)
{
    qint64 wide = 0;
    if (!readNumber(value, 0, maximum, wide))
        return false;
    number = static_cast<int>(wide);
    return true;
}

MediaReply::Status statusOf(std::uint32_t status)
{
    switch (status) {
    case Ok:
        return MediaReply::Status::Ok;
    case NotMedia:
        return MediaReply::Status::NotMedia;
    case NoPicture:
        return MediaReply::Status::NoPicture;
    case OutOfTime:
        return MediaReply::Status::TimedOut;
    default:
        return MediaReply::Status::Unreadable;
    }
}

} // namespace

WorkerReplyParser::WorkerReplyParser(const MediaRequest &request) : m_frameWanted(request.wantFrame) { }

WorkerReplyParser::State WorkerReplyParser::feed(const QByteArray &bytes)
{
    m_bytes += bytes;
    if (!m_headerRead && m_bytes.size() >= qsizetype(sizeof m_header) && !readHeader())
        return State::Invalid;
    if (!m_headerRead || m_bytes.size() < expectedBytes())
        return State::Incomplete;
    const bool valid = m_bytes.size() == expectedBytes() && readFields() && readFrame();
    m_bytes.clear();
    return valid ? State::Complete : State::Invalid;
}

qsizetype WorkerReplyParser::expectedBytes() const
{
    return qsizetype(sizeof m_header) + m_header.metadataBytes
        + qsizetype(m_header.frameWidth) * m_header.frameHeight * BytesPerPixel;
}

bool WorkerReplyParser::readHeader()
{
    std::memcpy(&m_header, m_bytes.constData(), sizeof m_header);
    m_headerRead = true;
    const bool empty = m_header.frameWidth == 0 && m_header.frameHeight == 0;
    const bool frame = m_frameWanted && m_header.status == Ok && m_header.frameWidth > 0
        && m_header.frameHeight > 0 && m_header.frameWidth <= MaximumSide
        && m_header.frameHeight <= MaximumSide
        && quint64(m_header.frameWidth) * m_header.frameHeight <= MaximumPixels;
    if (m_header.magic != ReplyMagic || m_header.status > OutOfTime
        || m_header.metadataBytes > MaximumMetadataBytes || !(empty || frame)
        || (m_frameWanted && m_header.status == Ok && empty))
        return false;
    m_reply.status = statusOf(m_header.status);
    m_bytes.reserve(expectedBytes());
    return true;
}

bool WorkerReplyParser::readFields()
{
    QByteArrayView rest = QByteArrayView(m_bytes).sliced(sizeof m_header, m_header.metadataBytes);
    std::bitset<size_t(Field::Last) + 1> seen;
    while (!rest.isEmpty()) {
        FieldHeader header;
        if (rest.size() < qsizetype(sizeof header))
            return false;
        std::memcpy(&header, rest.data(), sizeof header);
        rest = rest.sliced(sizeof header);
        if (header.field == 0 || header.field > size_t(Field::Last) || seen.test(header.field)
            || header.length > rest.size())
            return false;
        seen.set(header.field);
        if (!readField(Field(header.field), rest.first(header.length)))
            return false;
        rest = rest.sliced(header.length);
    }
    return true;
}

bool WorkerReplyParser::readField(Field field, QByteArrayView value)
{
    qint64 number = 0;
    switch (field) {
    case Field::DurationMs:
        return readNumber(value, 0, LongestDurationMs, m_reply.durationMs);
    case Field::Streams:
        if (!readNumber(value, 0, HasVideo | HasAudio, number))
            return false;
        m_reply.hasVideo = number & HasVideo;
        m_reply.hasAudio = number & HasAudio;
        return true;
    case Field::Width:
        return readInt(value, std::numeric_limits<int>::max(), m_reply.width);
    case Field::Height:
        return readInt(value, std::numeric_limits<int>::max(), m_reply.height);
    case Field::MimeType:
        return readText(value, 128, m_reply.mimeType);
    case Field::Title:
        return readText(value, MaximumTextBytes, m_reply.title);
    case Field::ShowName:
        return readText(value, MaximumTextBytes, m_reply.showName);
    case Field::Season:
        return readInt(value, 0xffff, m_reply.season);
    case Field::Episode:
        return readInt(value, 0xffff, m_reply.episode);
    case Field::Synopsis:
        return readText(value, MaximumSynopsisBytes, m_reply.synopsis);
    case Field::CameraMake:
        return readText(value, MaximumTextBytes, m_reply.cameraMake);
    case Field::CameraModel:
        return readText(value, MaximumTextBytes, m_reply.cameraModel);
    case Field::CreatedMs:
        // From year 1 to year 9999.
        if (!readNumber(value, -62135596800000, 253402300799999, number))
            return false;
        m_reply.created = QDateTime::fromMSecsSinceEpoch(number, QTimeZone::utc()).toUTC();
        return true;
    case Field::Error:
        return readText(value, MaximumTextBytes, m_reply.error);
    default:
        return readStreamField(field, value);
    }
}

bool WorkerReplyParser::readStreamField(Field field, QByteArrayView value)
{
    switch (field) {
    case Field::FrameRateMilli:
        return readInt(value, int(MaximumFrameRateMilli), m_reply.frameRateMilli);
    case Field::BitRate:
        return readNumber(value, 0, MaximumBitRate, m_reply.bitRate);
    case Field::VideoCodec:
        return readText(value, 64, m_reply.videoCodec);
    case Field::AudioCodecs:
        return readList(value, m_reply.audioCodecs);
    case Field::AudioTracks:
        return readInt(value, MaximumTracks, m_reply.audioTracks);
    case Field::AudioLanguages:
        return readList(value, m_reply.audioLanguages);
    case Field::SubtitleTracks:
        return readInt(value, MaximumTracks, m_reply.subtitleTracks);
    case Field::SubtitleLanguages:
        return readList(value, m_reply.subtitleLanguages);
    default:
        return false;
    }
}

bool WorkerReplyParser::readList(QByteArrayView value, QStringList &list)
{
    QString text;
    if (!readText(value, MaximumTextBytes, text))
        return false;
    list = text.split(u',', Qt::SkipEmptyParts);
    return true;
}

// Line breaks and tabs become blanks, other controls go: these texts end up in labels, in the store and in
// the log.
bool WorkerReplyParser::readText(QByteArrayView value, qsizetype maximum, QString &text)
{
    QStringDecoder decoder(QStringDecoder::Utf8);
    text = decoder.decode(value);
    if (value.size() > maximum || decoder.hasError())
        return false;
    for (QChar &character : text) {
        if (character == u'\n' || character == u'\t' || character == u'\r')
            character = u' ';
    }
    text.removeIf([](QChar character) { return character.category() == QChar::Other_Control; });
    text = text.trimmed();
    return true;
}

bool WorkerReplyParser::readFrame()
{
    if (m_header.frameWidth == 0)
        return true;
    const int width = static_cast<int>(m_header.frameWidth);
    const int height = static_cast<int>(m_header.frameHeight);
    // The answer's own bytes become the picture's: they are not copied again.
    auto *const owner = new QByteArray(std::move(m_bytes));
    const auto *pixels
        = reinterpret_cast<const uchar *>(owner->constData()) + sizeof m_header + m_header.metadataBytes;
    m_bytes.clear();
    const auto release = [](void *bytes) { delete static_cast<QByteArray *>(bytes); };
    if (reinterpret_cast<quintptr>(pixels) % alignof(quint32) != 0) {
        const QImage view(pixels, width, height, width * BytesPerPixel, QImage::Format_RGB32);
        m_reply.frame = view.copy();
        release(owner);
    } else {
        m_reply.frame
            = QImage(pixels, width, height, width * BytesPerPixel, QImage::Format_RGB32, release, owner);
    }
    return !m_reply.frame.isNull();
}

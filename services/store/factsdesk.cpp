// SPDX-License-Identifier: GPL-3.0-or-later
#include "factsdesk.h"

#include "mediareader.h"

#include <QDBusConnection>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace {

void send(const QDBusMessage &message)
{
    QDBusConnection::sessionBus().send(message);
}

QVariantMap factsOf(const MediaReply &reply)
{
    QVariantMap facts;
    const auto add = [&facts](const QString &name, const QVariant &value, bool told) {
        if (told)
            facts.insert(name, value);
    };
    add(u"width"_s, reply.width, reply.hasVideo && reply.width > 0);
    add(u"height"_s, reply.height, reply.hasVideo && reply.height > 0);
    add(u"frame-rate"_s, reply.frameRateMilli / 1000.0, reply.frameRateMilli > 0);
    add(u"bit-rate"_s, reply.bitRate, reply.bitRate > 0);
    add(u"video-codec"_s, reply.videoCodec, !reply.videoCodec.isEmpty());
    add(u"audio-codecs"_s, reply.audioCodecs, !reply.audioCodecs.isEmpty());
    add(u"audio-tracks"_s, reply.audioTracks, true);
    add(u"audio-languages"_s, reply.audioLanguages, !reply.audioLanguages.isEmpty());
    add(u"subtitle-tracks"_s, reply.subtitleTracks, true);
    add(u"subtitle-languages"_s, reply.subtitleLanguages, !reply.subtitleLanguages.isEmpty());
    return facts;
}

} // namespace

FactsDesk::FactsDesk(MediaReader *reader, QObject *parent) : QObject(parent), m_reader(reader)
{
    connect(reader, &MediaReader::finished, this, &FactsDesk::answer);
}

FactsDesk::~FactsDesk() = default;

void FactsDesk::ask(const QString &path, const QDBusMessage &question)
{
    if (m_open == mostOpen) {
        send(question.createErrorReply(QDBusError::LimitsExceeded, u"too many questions wait"_s));
        return;
    }
    ++m_open;
    Reading &reading = m_readings[path];
    reading.questions.append(question);
    if (reading.request == 0)
        reading.request = m_reader->readStreams(path);
}

void FactsDesk::answer(int request, const MediaReply &reply)
{
    const auto found = std::find_if(m_readings.begin(), m_readings.end(),
                                    [request](const Reading &reading) { return reading.request == request; });
    if (found == m_readings.end())
        return;
    const QList<QDBusMessage> questions = found->questions;
    m_readings.erase(found);
    m_open -= int(questions.size());
    for (const QDBusMessage &question : questions) {
        if (reply.status == MediaReply::Status::Ok)
            send(question.createReply(factsOf(reply)));
        else
            send(question.createErrorReply(QDBusError::Failed, u"the file cannot be read: "_s + reply.error));
    }
}

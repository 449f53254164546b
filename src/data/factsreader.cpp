// SPDX-License-Identifier: GPL-3.0-or-later
#include "factsreader.h"

#include "datalog.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

using namespace Qt::Literals::StringLiterals;

namespace {

// A file may have to wait for others that are read.
constexpr int answerTimeout = 30000; // ms

VideoFacts factsOf(const QVariantMap &values)
{
    VideoFacts facts;
    facts.width = values.value(u"width"_s).toInt();
    facts.height = values.value(u"height"_s).toInt();
    facts.frameRate = values.value(u"frame-rate"_s).toDouble();
    facts.bitRate = values.value(u"bit-rate"_s).toLongLong();
    facts.videoCodec = values.value(u"video-codec"_s).toString();
    facts.audioCodecs = values.value(u"audio-codecs"_s).toStringList();
    facts.audioTracks = values.value(u"audio-tracks"_s).toInt();
    facts.audioLanguages = values.value(u"audio-languages"_s).toStringList();
    facts.subtitleTracks = values.value(u"subtitle-tracks"_s).toInt();
    facts.subtitleLanguages = values.value(u"subtitle-languages"_s).toStringList();
    return facts;
}

} // namespace

FactsReader::FactsReader(QObject *parent) : QObject(parent) { }

int FactsReader::read(const QString &urn)
{
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (urn.isEmpty() || !bus.isConnected())
        return 0;
    const QString service = u"com.harrow.Kestrel.Store"_s;
    QDBusMessage question
        = QDBusMessage::createMethodCall(service, u"/com/harrow/Kestrel/Store"_s, service, u"Facts"_s);
    question << urn;
    m_lastId = m_lastId == std::numeric_limits<int>::max() ? 1 : m_lastId + 1;
    const int id = m_lastId;
    auto *watcher = new QDBusPendingCallWatcher(bus.asyncCall(question, answerTimeout), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, id](QDBusPendingCallWatcher *call) {
        call->deleteLater();
        const QDBusPendingReply<QVariantMap> reply = *call;
        if (reply.isError())
            qCDebug(lcData) << "no facts of a video:" << reply.error().message();
        Q_EMIT factsRead(reply.isError() ? VideoFacts() : factsOf(reply.value()), id);
    });
    return id;
}

// SPDX-License-Identifier: GPL-3.0-or-later
#include "provider.h"

#include "plaintext.h"
#include "provideranswer.h"
#include "relatedlog.h"
#include "webfetch.h"
#include "webpicture.h"

#include <QUrlQuery>

#include <algorithm>
#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace {

void addText(QUrlQuery &query, const QString &key, const QString &text)
{
    if (!text.isEmpty())
        query.addQueryItem(key, QString::fromLatin1(QUrl::toPercentEncoding(text)));
}

// Its title, never where it lies: without one, the name of the file; without that, nothing.
QUrl questionFor(const QUrl &address, const RelatedVideo &video)
{
    if (video.title.trimmed().isEmpty() && video.fileName.isEmpty())
        return {};
    const QString title = plainText(shownTitle(video), Provider::longestText);
    if (title.isEmpty())
        return {};
    QUrlQuery query(address);
    addText(query, u"title"_s, title);
    addText(query, u"series"_s, plainText(video.series, Provider::longestText));
    if (video.episode >= 0)
        query.addQueryItem(u"episode"_s, QString::number(video.episode));
    QUrl url = address;
    url.setQuery(query);
    url.setFragment({});
    return url;
}

} // namespace

Provider::Provider(QObject *parent) : QObject(parent)
{
    // Reading takes its time, and a picture may be large meanwhile.
    m_readers.setMaxThreadCount(1);
}

Provider::~Provider()
{
    cancelAll();
    m_readers.waitForDone();
}

void Provider::cancelAll()
{
    const auto fetches = findChildren<WebFetch *>(Qt::FindDirectChildrenOnly);
    for (WebFetch *fetch : fetches)
        fetch->cancel();
    m_question.clear();
    m_isAsking = false;
    m_readers.clear();
    ++m_round;
    ++m_pictureRound;
}

void Provider::setAddress(const QUrl &address)
{
    const QUrl usable = isWebAddress(address) ? address : QUrl();
    if (usable.isEmpty() && !address.isEmpty())
        qCWarning(relatedLog).noquote() << "no address of a provider:" << address.toDisplayString();
    if (usable == m_address)
        return;
    m_address = usable;
    cancelAll();
    m_rest = {};
    m_hasFailed = false;
    if (!std::exchange(m_videos, {}).isEmpty())
        Q_EMIT changed();
}

void Provider::forget()
{
    if (m_question)
        m_question->cancel();
    m_question.clear();
    m_isAsking = false;
    ++m_round;
    m_videos.clear();
    m_hasFailed = false;
}

void Provider::look(const RelatedVideo &video)
{
    forget();
    if (m_address.isEmpty())
        return;
    const QUrl url = questionFor(m_address, video);
    if (url.isEmpty())
        return;
    m_hasFailed = !m_rest.hasExpired();
    if (m_hasFailed)
        return;
    m_isAsking = true;
    m_question = new WebFetch(m_network, url, "application/json", {largestAnswer, m_patience}, this);
    connect(m_question, &WebFetch::finished, this, [this] {
        WebFetch *answer = std::exchange(m_question, nullptr);
        answer->deleteLater();
        take(*answer);
    });
}

void Provider::take(const WebFetch &answer)
{
    m_rest = QDeadlineTimer(std::min(answer.restSeconds(), longestRest) * 1000);
    if (!answer.error().isEmpty())
        fail(answer.error());
    else if (answer.status() == 204)
        give(QList<RelatedVideo>());
    else if (answer.status() == 200)
        read(answer.body(), answer.from());
    else
        give(std::nullopt);
}

void Provider::read(const QByteArray &body, const QUrl &from)
{
    m_readers.start([this, body, from, round = m_round] {
        const auto videos = providerVideos(body, from);
        const auto take = [this, videos, round] {
            if (round == m_round)
                give(videos);
        };
        QMetaObject::invokeMethod(this, take, Qt::QueuedConnection);
    });
}

void Provider::give(const std::optional<QList<RelatedVideo>> &videos)
{
    if (!videos) {
        fail(u"the answer is not understood"_s);
        return;
    }
    m_isAsking = false;
    m_videos = *videos;
    Q_EMIT changed();
}

void Provider::fail(const QString &reason)
{
    m_isAsking = false;
    m_hasFailed = true;
    qCWarning(relatedLog).noquote() << "nothing from the provider:" << reason;
    Q_EMIT failed(reason);
}

void Provider::fetchPicture(const RelatedVideo &video)
{
    const QUrl url(video.picture);
    if (m_address.isEmpty() || !isWebAddress(url))
        return;
    auto *fetch = new WebFetch(m_network, url, "image/jpeg, image/png", {largestPicture, m_patience}, this);
    connect(fetch, &WebFetch::finished, this, [this, fetch, of = video.url] {
        fetch->deleteLater();
        if (fetch->error().isEmpty() && fetch->status() == 200)
            readPicture(of, fetch->body());
    });
}

void Provider::readPicture(const QString &url, const QByteArray &body)
{
    m_readers.start([this, url, body, round = m_pictureRound] {
        const QImage image = webPicture(body);
        const auto give = [this, url, image, round] {
            if (round == m_pictureRound && !image.isNull())
                Q_EMIT pictureCame(url, image);
        };
        QMetaObject::invokeMethod(this, give, Qt::QueuedConnection);
    });
}

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "relatedvideo.h"

#include <QDeadlineTimer>
#include <QImage>
#include <QNetworkAccessManager>
#include <QObject>
#include <QPointer>
#include <QThreadPool>
#include <QUrl>

#include <optional>

class WebFetch;

// Asks a server for videos that go with one. Without an address nothing is sent, to nobody.
class Provider : public QObject
{
    Q_OBJECT

public:
    explicit Provider(QObject *parent = nullptr);
    ~Provider() override;

    // What is no address on the web is none. Another address: the list goes, and so does all that is under
    // way.
    void setAddress(const QUrl &address);
    // Tests: how long an answer may take.
    void setPatience(int ms) { m_patience = ms; }

    // Asks for what goes with this video; the list of the one before is forgotten. Nothing is asked about a
    // video of which nothing but its place is known.
    void look(const RelatedVideo &video);
    // The list and the question that is under way, without a word.
    void forget();
    // A question is under way, or its answer is being read.
    [[nodiscard]] bool isAsking() const { return m_isAsking; }
    // The last question had no answer, or was not asked because the server wants to be left alone.
    [[nodiscard]] bool hasFailed() const { return m_hasFailed; }
    // Fetches the picture of an entry; pictureCame() when it is one.
    void fetchPicture(const RelatedVideo &video);
    [[nodiscard]] const QList<RelatedVideo> &videos() const { return m_videos; }

    static constexpr qint64 largestAnswer = 1'000'000; // bytes
    static constexpr qint64 largestPicture = 4'000'000;
    static constexpr qsizetype longestText = 200; // characters of a title that is told
    static constexpr qint64 longestRest = 3600; // seconds

Q_SIGNALS:
    // The list.
    void changed();
    void pictureCame(QString url, QImage image);
    // Why there is nothing from the server; English, for the log.
    void failed(QString reason);

private:
    void take(const WebFetch &answer);
    void read(const QByteArray &body, const QUrl &from);
    void give(const std::optional<QList<RelatedVideo>> &videos);
    void fail(const QString &reason);
    void readPicture(const QString &url, const QByteArray &body);
    void cancelAll();

    QNetworkAccessManager m_network;
    QUrl m_address;
    int m_patience = 10'000;
    QPointer<WebFetch> m_question;
    bool m_isAsking = false;
    QList<RelatedVideo> m_videos;
    bool m_hasFailed = false;
    QDeadlineTimer m_rest;
    // What was read for an earlier question, or for the pictures of an earlier provider, is not wanted any
    // more.
    quint64 m_round = 0;
    quint64 m_pictureRound = 0;
    QThreadPool m_readers;
};

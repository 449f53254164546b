// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QNetworkReply>
#include <QObject>
#include <QPointer>
#include <QTimer>
#include <QUrl>

class QNetworkAccessManager;

// One GET to a stranger's server, which is told what is asked for and nothing about who asks. Its answer is
// taken piece by piece, and no longer when it is too large or takes too long. finished() comes once.
class WebFetch : public QObject
{
    Q_OBJECT

public:
    struct Limits
    {
        qint64 bytes; // of the answer
        int ms; // from the question to the last byte of the answer, redirects included
    };
    // `accept`: the kinds of content that are asked for.
    WebFetch(QNetworkAccessManager &network, const QUrl &url, const QByteArray &accept, Limits limits,
             QObject *parent);
    ~WebFetch() override;

    // finished() does not come, and the object goes by itself.
    void cancel();

    // After finished(). Why there is no answer, in English for the log, without the address; empty: it is
    // here.
    [[nodiscard]] QString error() const { return m_error; }
    // Of HTTP; 0: it did not come to that.
    [[nodiscard]] int status() const { return m_status; }
    [[nodiscard]] const QByteArray &body() const { return m_body; }
    // Where it came from in the end.
    [[nodiscard]] QUrl from() const { return m_reply ? m_reply->url() : QUrl(); }
    // For how many seconds the server wants to be left alone; 0: it did not say.
    [[nodiscard]] qint64 restSeconds() const;

    static constexpr int mostRedirects = 3;

Q_SIGNALS:
    void finished();

private:
    void checkSize();
    void take();
    void giveUp(const QString &reason);
    void end();

    QPointer<QNetworkReply> m_reply;
    QTimer m_patience;
    qint64 m_largest;
    QByteArray m_body;
    QString m_error;
    int m_status = 0;
};

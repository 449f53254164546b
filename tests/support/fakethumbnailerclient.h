// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/thumbs/thumbnailerclient.h"

// A thumbnailer whose answers the test gives: records what was asked, and answers when it is told to, or
// never.
//
//     FakeThumbnailerClient::install();            // before the class under test calls
//     ThumbnailerClient::create()
//     ... the class under test asks ...
//     auto *client = FakeThumbnailerClient::last();
//     QCOMPARE(client->requests.size(), 1);
//     client->answer(url, u"/tmp/x.jpeg"_s);       // or client->fail(url, u"broken"_s)
//
// Of one process-wide registration; last() is null once the newest client was deleted.
class FakeThumbnailerClient : public ThumbnailerClient
{
public:
    struct Request
    {
        QList<QUrl> urls;
        QStringList mimeTypes;
        QString flavor;
    };

    FakeThumbnailerClient() { newest() = this; }
    ~FakeThumbnailerClient() override
    {
        if (newest() == this)
            newest() = nullptr;
    }

    void request(const QList<QUrl> &urls, const QStringList &mimeTypes, const QString &flavor) override
    {
        requests.append({urls, mimeTypes, flavor});
        outstanding += urls;
    }
    void cancel() override
    {
        ++cancels;
        outstanding.clear();
    }
    void remove(const QList<QUrl> &urls) override { removed += urls; }

    // Announced as the service would, whether it is still asked for or not: work that was begun is reported
    // after a cancel.
    void answer(const QUrl &url, const QString &thumbnailPath)
    {
        outstanding.removeAll(url);
        Q_EMIT thumbnail(url, QUrl::fromLocalFile(thumbnailPath));
    }
    void fail(const QUrl &url, const QString &message)
    {
        outstanding.removeAll(url);
        Q_EMIT error(message, url);
    }

    static void install()
    {
        setFactory(
            []() -> std::unique_ptr<ThumbnailerClient> { return std::make_unique<FakeThumbnailerClient>(); });
    }
    static FakeThumbnailerClient *last() { return newest(); }

    QList<Request> requests; // in order
    QList<QUrl> outstanding; // asked for, not answered, not cancelled
    QList<QUrl> removed;
    int cancels = 0;

private:
    static FakeThumbnailerClient *&newest()
    {
        static FakeThumbnailerClient *client = nullptr;
        return client;
    }
};

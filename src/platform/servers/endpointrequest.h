// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "serverdriver.h"
#include "sparqljsonparser.h"
#include "standarddialect.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QObject>
#include <QScopedPointer>
#include <QTimer>

#include <memory>

class EndpointLink;

// One statement on its way over HTTP, until its answer is complete: logged in for, redirected and paged as
// needed. Deleting it aborts what is under way.
class EndpointRequest : public QObject
{
    Q_OBJECT

public:
    EndpointRequest(EndpointLink &link, const StandardStatement &statement, bool isUpdate, QObject *parent);
    ~EndpointRequest() override;

    // What became of it, when finished() was emitted.
    [[nodiscard]] ServerDriver::Answer takeAnswer() { return std::move(m_answer); }

Q_SIGNALS:
    void finished();

private:
    using Ending = ServerDriver::Ending;

    void send();
    void sendUpdate(const QUrl &address);
    void sendQuery(const QUrl &address);
    void watch();
    void dropReply();

    void readSome();
    [[nodiscard]] bool takeSlice();
    void readLater();
    void silent();
    [[nodiscard]] int status() const; // of HTTP; 0 before the headers are there
    [[nodiscard]] bool isTaken() const;

    void complete();
    void answered();
    void parsed();
    void askedForLogin();
    void redirected(int status);
    void refused(int status);
    void notAnswered();

    [[nodiscard]] QString textToSend() const;
    [[nodiscard]] bool isCutOff(int rows) const;
    [[nodiscard]] bool pageOn(int rowsAtOnce, RowTable rows);
    [[nodiscard]] QString serversWords() const;
    void end(Ending ending, const QString &error = {}, std::chrono::milliseconds retryAfter = {});

    EndpointLink &m_link;
    StandardStatement m_statement;
    bool m_isUpdate;
    std::unique_ptr<QNetworkAccessManager> m_updateNetwork;
    std::unique_ptr<QNetworkReply, QScopedPointerDeleteLater> m_reply;
    std::unique_ptr<SparqlJsonParser> m_parser;
    QTimer m_silence;
    QTimer m_slice;
    QByteArray m_words; // what a server says in place of rows, its beginning
    RowTable m_rows; // of the pages before
    QString m_pageAfter; // empty: the first page
    int m_pageRows = 0; // 0: the whole answer at once
    int m_rowsBefore = 0;
    int m_redirects = 0;
    bool m_wasSent = false;
    bool m_hasBytes = false;
    bool m_hasEnded = false; // the reply has, not all of it is read yet
    ServerDriver::Answer m_answer;
};

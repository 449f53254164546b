// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QJsonObject>
#include <QProcess>
#include <QString>

// A real Virtuoso server in a temporary folder, on free ports of 127.0.0.1 and in a session of
// virtuososerver.py, which says more of it. Ended with this object. Everything here blocks until it is done.
class VirtuosoServer
{
public:
    VirtuosoServer() = default;
    ~VirtuosoServer() { end(); }
    Q_DISABLE_COPY_MOVE(VirtuosoServer)

    // Until both ports answer; takes seconds. False and a warning when it does not start.
    [[nodiscard]] bool start();
    // The graph then holds these `videos` and nothing else: 10,000 in about a second. They last.
    bool fill(const QString &graph, int videos);
    // Adds an N-Triples file to a graph.
    bool load(const QString &file, const QString &graph);
    // One statement as the administrator; SPARQL when it begins so. What the server's own client writes.
    QString sql(const QString &statement);

    void kill(); // SIGKILL; what was acknowledged is there again after restart()
    bool restart(); // on the same ports and data
    // Answers nothing until thaw(), and keeps its connections.
    void freeze();
    void thaw();
    // Ends what the server still works on for nobody: that a client is gone it notices only when it answers.
    void endTransactions();
    void end();

    [[nodiscard]] QString sqlAddress() const { return fact("sql"); } // host:port
    [[nodiscard]] QString httpAddress() const { return fact("http"); } // host:port
    [[nodiscard]] QString user() const { return fact("user"); } // may read and write
    [[nodiscard]] QString reader() const { return fact("reader"); } // may only read; the same password
    [[nodiscard]] QString password() const { return fact("password"); }
    [[nodiscard]] qint64 processId() const;

private:
    [[nodiscard]] QString fact(const char *name) const
    {
        return m_facts.value(QLatin1StringView(name)).toString();
    }
    QJsonObject command(const QString &line);
    QJsonObject answer();

    QProcess m_session;
    QJsonObject m_facts;
};

// The number of the video in the shape that fill() gives it.
[[nodiscard]] QString virtuosoVideo(int number);

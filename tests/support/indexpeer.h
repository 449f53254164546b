// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gio/gio.h>
#include <libtracker-sparql/tracker-sparql.h>

#include <QHash>
#include <QList>
#include <QObject>
#include <QString>
#include <QTemporaryDir>

// Stands where the desktop's file index stands on the session bus: real databases behind real endpoints, with
// the rows that the test writes, and a status that the test sets. It can also be a bad peer.
class IndexPeer
{
public:
    static constexpr char legacyName[] = "org.freedesktop.Tracker3.Miner.Files";
    static constexpr char newName[] = "org.freedesktop.LocalSearch3";
    static constexpr char endpointPath[] = "/org/freedesktop/Tracker3/Endpoint";

    IndexPeer();
    ~IndexPeer();

    bool own(const char *name);
    void release(const char *name);
    void setStatus(const QString &status);
    // Serves another database; announced as an object that came.
    bool addEndpoint(const char *path);
    void removeEndpoint(const char *path);
    // An object that looks like an endpoint and never answers a question.
    bool addDeafEndpoint();
    // Answers every question with a row count that it never sends.
    bool addStallingEndpoint();

    // Says that it has so many files, and answers questions about them without rows, the first one late.
    bool addSlowEndpoint(int files, int delayMs);

    // A file that the index knows, with its state as it is now; read when it is a video with a duration.
    bool put(const char *endpoint, const QString &path, const QString &properties = {});
    bool update(const char *endpoint, const QString &text);
    // What the index writes when a file went.
    bool drop(const char *endpoint, const QString &path);
    [[nodiscard]] int questions() const { return m_questions; }

private:
    struct Served
    {
        TrackerSparqlConnection *database = nullptr;
        TrackerEndpointDBus *endpoint = nullptr;
    };
    static void called(GDBusConnection *, const char *, const char *, const char *, const char *method,
                       GVariant *, GDBusMethodInvocation *invocation, gpointer self);
    void answer(GDBusMethodInvocation *invocation, const QByteArray &rows);
    bool exportObject(const char *path, const char *xml);
    void announce(const char *path, bool added);

    QTemporaryDir m_folder;
    GDBusConnection *m_bus = nullptr;
    QHash<QByteArray, Served> m_served;
    QList<guint> m_objects;
    QList<GDBusMethodInvocation *> m_unanswered;
    QByteArray m_status = "Idle";
    bool m_stalls = false;
    int m_files = -1; // as a slow endpoint says
    int m_delayMs = 0;
    QObject m_alive; // for what is answered later
    int m_questions = 0;
    int m_count = 0;
    QList<int> m_pipes;
};

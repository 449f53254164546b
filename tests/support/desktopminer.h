// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gio/gio.h>
#include <libtracker-sparql/tracker-sparql.h>

#include <QProcess>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

// The desktop's real file index in a session and home of a test. It follows the user's Videos and Pictures.
class DesktopMiner
{
public:
    // The environment of the session; writes the settings of the index and the names of the user's folders.
    explicit DesktopMiner(const QProcessEnvironment &session);
    ~DesktopMiner();

    // False where it is not installed or does not come up.
    bool start();
    void stop();
    // Forgets all that it knows; not while it runs.
    bool reset();
    // It has nothing to do, knows these videos with their durations, and no others.
    bool waitFor(QStringList fileNames);
    // All that it knows of files, for the log of a test that failed.
    [[nodiscard]] QString describe();

private:
    [[nodiscard]] QString status();
    [[nodiscard]] QStringList videos();
    void hurry();
    void touchUnread();
    [[nodiscard]] uint processOf(const char *name);
    [[nodiscard]] QStringList rows(const char *query);

    QProcessEnvironment m_environment;
    QProcess m_process;
    GDBusConnection *m_bus = nullptr;
    TrackerSparqlConnection *m_index = nullptr;
};

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/servers/librarysnapshot.h"

#include <QFutureWatcher>
#include <QObject>
#include <QTimer>

#include <memory>

class ChangePoll;
class RowTable;
class TrackerInterface;

namespace toolkit {
class ApplicationWindow;
}

// What a library on a server needs beside its driver: changes are looked for while somebody looks, a list
// that could not be loaded is asked for again, and the program hears whether the server can be reached.
class ServerLibrary : public QObject
{
    Q_OBJECT

public:
    // Before anything that reads the library: becomes the source of its changes. `driver`: "QSPARQL_ENDPOINT"
    // or "QVIRTUOSO".
    explicit ServerLibrary(const QString &driver, QObject *parent = nullptr);
    ~ServerLibrary() override;

    void follow(TrackerInterface *store);
    void follow(toolkit::ApplicationWindow *window);

    [[nodiscard]] bool isReachable() const { return m_isReachable; }
    [[nodiscard]] ChangePoll *poll() const { return m_poll; }

public Q_SLOTS:
    // Off: nobody sees the window, whatever stands in it.
    void setDisplayOn(bool on);

Q_SIGNALS:
    void reachableChanged(bool reachable);

private:
    void listLoaded(const std::shared_ptr<const RowTable> &table);
    void takeSnapshot();
    void listFailed();
    void askForListAgain();
    void propertyStored(const QString &urn, const QString &property);
    void updateVisible();
    void updateReachable();

    ChangePoll *m_poll;
    TrackerInterface *m_store = nullptr;
    QTimer m_retry{this};
    QFutureWatcher<LibrarySnapshot> m_snapshot; // of the list that was loaded last
    bool m_awaitsSnapshot = false;
    bool m_hasList = false;
    bool m_listFailed = false; // before any was loaded
    bool m_isReachable = true;
    bool m_windowOnDisplay = false;
    bool m_displayOn = true;
};

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "desktopindex.h"
#include "gref.h"
#include "toldfile.h"

#include <gio/gio.h>

#include <QHash>
#include <QObject>
#include <QSet>
#include <QStringList>
#include <QTimer>

class IndexEndpoint;

// Tells what the desktop's file index knows of videos: all of it when it has finished reading the folders,
// and then what changes. It says when there is nothing to wait for, so that the folders can be looked at.
class IndexMirror : public QObject
{
    Q_OBJECT

public:
    // `patienceMs`: how long an endpoint may owe an answer.
    explicit IndexMirror(const QDBusConnection &bus, int patienceMs = defaultPatienceMs,
                         QObject *parent = nullptr);
    ~IndexMirror() override;
    static constexpr int defaultPatienceMs = 10000;

    // Tells all that is known; the first time it looks for the index.
    void tellAll();

public Q_SLOTS:
    // File systems were mounted or unmounted.
    void onMountsChanged();

Q_SIGNALS:
    void told(const QList<ToldFile> &files);
    // Files that the index let go of; they may still be there.
    void dropped(const QStringList &paths);
    // Everything that the index knows has been told: these files.
    void toldAll(const QSet<QString> &paths);
    // The index does not say, or not any more, what it knows.
    void silent();
    // After tellAll(): all was told, or will not be soon.
    void settled();

private:
    void busReady(GAsyncResult *result);
    void update();
    void open(const QString &path);
    void endpointDone();
    void drop(const QString &path);
    void settle();
    [[nodiscard]] bool isOwed() const;

    DesktopIndex m_index;
    int m_patienceMs;
    GRef<GDBusConnection> m_bus;
    GRef<GCancellable> m_cancellable;
    QHash<QString, IndexEndpoint *> m_endpoints; // by object path
    QSet<QString> m_told; // paths, since the last question for all
    QTimer m_retryTimer;
    QTimer m_waitTimer;
    QString m_owner;
    int m_failures = 0; // of this owner
    bool m_isWhole = true; // no endpoint failed
    bool m_settled = true;
    bool m_started = false;
    bool m_hasToldAll = false; // since tellAll()
};

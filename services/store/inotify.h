// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QHash>
#include <QObject>
#include <QSocketNotifier>
#include <QString>
#include <QStringList>
#include <QTimer>

#include <memory>

// The kernel's events about folders, by path. Watches follow their folders when those are renamed. Belongs to
// the thread that made it.
class Inotify : public QObject
{
    Q_OBJECT

public:
    explicit Inotify(QObject *parent = nullptr);
    ~Inotify() override;

    enum class Watch { Made, Unreachable, Exhausted };
    Watch watch(const QString &folder);
    // The folder and all below it.
    void unwatch(const QString &folder);
    [[nodiscard]] bool isWatched(const QString &folder) const { return m_watches.contains(folder); }

Q_SIGNALS:
    void created(const QString &path, bool isFolder);
    void written(const QString &path);
    // Within the watched folders; the watches below a folder have moved already.
    void moved(const QString &from, const QString &to, bool isFolder);
    void movedIn(const QString &path, bool isFolder);
    // Deleted, or moved to where nothing is watched.
    void gone(const QString &path, bool isFolder);
    // A watched folder itself was deleted, moved or unmounted, as seen from itself.
    void folderLost(const QString &folder, bool unmounted);
    void overflowed();

private:
    struct Departure
    {
        quint32 cookie = 0;
        QString path;
        bool isFolder = false;
    };

    void readEvents();
    void handle(int descriptor, quint32 mask, quint32 cookie, const QString &name);
    void settleDeparture();
    void arrive(quint32 cookie, const QString &path, bool isFolder);
    void renameWatches(const QString &from, const QString &to);

    int m_descriptor = -1;
    std::unique_ptr<QSocketNotifier> m_notifier;
    QHash<int, QString> m_folders;
    QHash<QString, int> m_watches;
    Departure m_departure; // a move whose second half has not come yet
    QTimer m_departureTimer;
};

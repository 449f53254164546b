// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QFileSystemWatcher>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QTimer>

namespace toolkit {

// Watches a theme file and the icons beside it, however an editor writes them: in place, in pieces, or as a
// new file that takes the old one's name.
class ThemeWatcher : public QObject
{
    Q_OBJECT

public:
    explicit ThemeWatcher(QObject *parent = nullptr);

    // In place of what was watched before.
    void watch(const QString &themeFile, const QString &iconFolder);

Q_SIGNALS:
    // A moment after the last of several changes.
    void changed();

private:
    void watchAnew();
    [[nodiscard]] QStringList watchedFiles() const;
    [[nodiscard]] QByteArray fingerprint() const;

    QFileSystemWatcher m_watcher;
    QTimer m_settled;
    QString m_themeFile;
    QString m_iconFolder;
    QByteArray m_fingerprint; // what the files were when they were told of last
};

} // namespace toolkit

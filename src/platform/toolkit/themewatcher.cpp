// SPDX-License-Identifier: GPL-3.0-or-later
#include "themewatcher.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>

using namespace Qt::Literals::StringLiterals;

namespace toolkit {

namespace {

constexpr int settledAfter = 50; // ms

} // namespace

ThemeWatcher::ThemeWatcher(QObject *parent) : QObject(parent)
{
    m_settled.setSingleShot(true);
    m_settled.setInterval(settledAfter);
    connect(&m_watcher, &QFileSystemWatcher::fileChanged, &m_settled, qOverload<>(&QTimer::start));
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, &m_settled, qOverload<>(&QTimer::start));
    connect(&m_settled, &QTimer::timeout, this, [this] {
        watchAnew();
        // The folder tells of its other files, too.
        if (const QByteArray now = fingerprint(); now != m_fingerprint) {
            m_fingerprint = now;
            Q_EMIT changed();
        }
    });
}

void ThemeWatcher::watch(const QString &themeFile, const QString &iconFolder)
{
    m_themeFile = themeFile;
    m_iconFolder = iconFolder;
    m_settled.stop();
    if (const QStringList old = m_watcher.files() + m_watcher.directories(); !old.isEmpty())
        m_watcher.removePaths(old);
    watchAnew();
    m_fingerprint = fingerprint();
}

QStringList ThemeWatcher::watchedFiles() const
{
    QStringList files{m_themeFile};
    const QDir icons(m_iconFolder);
    for (const QString &icon : icons.entryList({u"*.svg"_s}, QDir::Files))
        files.append(icons.filePath(icon));
    return files;
}

// Of the contents: two saves in a row may have the same size and time.
QByteArray ThemeWatcher::fingerprint() const
{
    QCryptographicHash hash(QCryptographicHash::Sha1);
    for (const QString &path : watchedFiles()) {
        hash.addData(path.toUtf8());
        if (QFile file(path); file.open(QIODevice::ReadOnly))
            hash.addData(&file);
    }
    return hash.result();
}

// A file that was replaced is another one to the watcher; its folder tells when there is one by that name
// again.
void ThemeWatcher::watchAnew()
{
    if (m_themeFile.isEmpty())
        return;
    QStringList paths = watchedFiles();
    paths.append({QFileInfo(m_themeFile).absolutePath(), m_iconFolder});
    const QStringList watched = m_watcher.files() + m_watcher.directories();
    paths.removeIf([&](const QString &path) { return watched.contains(path) || !QFileInfo::exists(path); });
    if (!paths.isEmpty())
        m_watcher.addPaths(paths);
}

} // namespace toolkit

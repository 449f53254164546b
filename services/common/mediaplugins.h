// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QProcess>
#include <QString>

#include <memory>

class QTemporaryDir;

// The folder with the plug-ins that workers may load (links to the installed ones) and a registry of just
// these. It stands in the cache and is made again when the installed plug-ins change. Making it loads every
// one of them once (a part of a second), in a process of its own; no media file is touched.
class MediaPlugins : public QObject
{
    Q_OBJECT

public:
    explicit MediaPlugins(const QString &workerProgram, QObject *parent = nullptr);
    ~MediaPlugins() override;

    // Ends in ready() or failed(), from the event loop. May be called again after either.
    void ensure();
    [[nodiscard]] bool isReady() const { return m_ready; }
    [[nodiscard]] QString folder() const { return m_folder; }

Q_SIGNALS:
    void ready();
    void failed(const QString &reason);

private:
    void choose();
    void link() const;
    void write();
    void written();

    QString m_workerProgram;
    QString m_folder;
    bool m_ready = false;
    bool m_underWay = false;
    std::unique_ptr<QTemporaryDir> m_temporary;
    QProcess m_writer;
};

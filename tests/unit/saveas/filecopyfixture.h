// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/saveas/copyworker.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <memory>

// A folder with a film in it, and one to copy it to.
class FileCopyFixture
{
public:
    FileCopyFixture()
    {
        QDir(root.path()).mkdir(QStringLiteral("from"));
        QDir(root.path()).mkdir(QStringLiteral("to"));
    }

    [[nodiscard]] QByteArray path(const QByteArray &name) const
    {
        return QFile::encodeName(root.path()) + '/' + name;
    }
    [[nodiscard]] bool make(const QByteArray &name, const QByteArray &content = "film") const
    {
        QFile file(QFile::decodeName(path(name)));
        return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(content) == content.size();
    }
    // Of holes only: large, and quickly made.
    [[nodiscard]] bool makeSparse(const QByteArray &name, qint64 size) const
    {
        QFile file(QFile::decodeName(path(name)));
        return file.open(QIODevice::WriteOnly) && file.resize(size);
    }
    [[nodiscard]] QByteArray read(const QByteArray &name) const
    {
        QFile file(QFile::decodeName(path(name)));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("not there");
    }
    [[nodiscard]] QStringList entries(const QString &folder = QStringLiteral("to")) const
    {
        return QDir(root.filePath(folder))
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    }
    [[nodiscard]] FileCopy::Request request(const QByteArray &source = "from/a.mp4",
                                            const QByteArray &name = "b.mp4") const
    {
        return {path(source), path("to"), name};
    }
    // The whole way on this thread, with something that happens when the copy begins.
    [[nodiscard]] static CopyOutcome run(const FileCopy::Request &request,
                                         const std::function<void()> &meanwhile = {})
    {
        CopyJob job(request);
        CopyOutcome result;
        bool begun = false;
        job.progress = [&](qint64, qint64) {
            if (!std::exchange(begun, true) && meanwhile)
                meanwhile();
        };
        job.ended = [&result](const CopyOutcome &outcome) { result = outcome; };
        runCopy(job);
        return result;
    }

    QTemporaryDir root;
};

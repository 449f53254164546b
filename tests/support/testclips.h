// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

// Small real media files, made by ffmpeg when a test asks for them.
namespace TestClips {

struct Clip
{
    int width = 320;
    int height = 180;
    int seconds = 2;
    QString source = QStringLiteral("testsrc2"); // a video source of ffmpeg, or empty for none
    bool sound = true;
    QStringList options = {}; // of the output, before its name
};

// Makes `path` (the suffix chooses the container); the message when that failed, else empty.
[[nodiscard]] QString make(const QString &path, const Clip &clip);

} // namespace TestClips

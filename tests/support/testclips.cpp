// SPDX-License-Identifier: GPL-3.0-or-later
#include "testclips.h"

#include <QProcess>

using namespace Qt::Literals::StringLiterals;

QString TestClips::make(const QString &path, const Clip &clip)
{
    QStringList arguments = {u"-v"_s, u"error"_s, u"-nostdin"_s, u"-y"_s};
    if (!clip.source.isEmpty()) {
        const QString separator = clip.source.contains(u'=') ? u":"_s : u"="_s;
        arguments << u"-f"_s << u"lavfi"_s << u"-i"_s
                  << u"%1%2size=%3x%4:rate=25:duration=%5"_s.arg(clip.source, separator)
                         .arg(clip.width)
                         .arg(clip.height)
                         .arg(clip.seconds);
    }
    if (clip.sound)
        arguments << u"-f"_s << u"lavfi"_s << u"-i"_s
                  << u"sine=frequency=440:duration=%1"_s.arg(clip.seconds);
    if (!clip.source.isEmpty() && !clip.options.contains(u"-pix_fmt"_s))
        arguments << u"-pix_fmt"_s << u"yuv420p"_s;
    arguments << clip.options << path;

    QProcess ffmpeg;
    ffmpeg.setProcessChannelMode(QProcess::MergedChannels);
    ffmpeg.start(u"ffmpeg"_s, arguments);
    if (!ffmpeg.waitForFinished(60000) || ffmpeg.exitStatus() != QProcess::NormalExit
        || ffmpeg.exitCode() != 0)
        return u"ffmpeg: "_s + ffmpeg.errorString() + QString::fromUtf8(ffmpeg.readAll());
    return {};
}

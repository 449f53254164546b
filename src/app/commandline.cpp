// SPDX-License-Identifier: GPL-3.0-or-later
#include "commandline.h"

#include "data/videoconstants.h"

#include <QDir>
#include <QFileInfo>
#include <QUrl>

using namespace Qt::Literals::StringLiterals;

namespace {

// A path by hand: QFileInfo takes a name with a colon in front for a resource of the program.
QString absolutePath(const QString &path)
{
    return QDir::cleanPath(path.startsWith(u'/') ? path : QDir::currentPath() + u'/' + path);
}

QString startAddress(QString argument)
{
    if (argument.startsWith(FILE_URL_PREFIX))
        argument.remove(FILE_URL_PREFIX);
    for (const QString &prefix : {URN_PREFIX, HTTP_PREFIX, RTSP_PREFIX, MMS_PREFIX}) {
        if (argument.startsWith(prefix))
            return argument;
    }
    // In this order, so that the "%" that comes in with "%23" is left alone.
    argument.replace(u'%', "%25"_L1);
    argument.replace(u'#', "%23"_L1);
    QUrl url = QUrl::fromEncoded(argument.toUtf8());
    // "12:30.mp4" or "Film: end.mp4" looks like a scheme, a folder behind two slashes like a host: refused or
    // made lower case. As an absolute path it is a name.
    if (!argument.isEmpty() && (!url.isValid() || !url.scheme().isEmpty() || !url.authority().isEmpty()))
        url = QUrl::fromEncoded(absolutePath(argument).toUtf8());
    return FILE_URL_PREFIX + QFileInfo(QString::fromUtf8(url.toEncoded())).absoluteFilePath();
}

} // namespace

CommandLine parseCommandLine(const QStringList &arguments)
{
    CommandLine result;
    if (arguments.size() >= 2 && !arguments.at(1).startsWith(u'-'))
        result.startAddress = startAddress(arguments.at(1));
    for (qsizetype i = 1; i < arguments.size(); ++i) {
        if (arguments.at(i) == "-servicefw"_L1)
            result.serviceFramework = true;
        else if (arguments.at(i) == "-trackerconnectionmode"_L1 && i + 1 < arguments.size())
            result.trackerModes.append(arguments.at(++i));
    }
    return result;
}

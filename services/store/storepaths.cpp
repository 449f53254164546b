// SPDX-License-Identifier: GPL-3.0-or-later
#include "storepaths.h"

#include "storelog.h"

#include "platform/sparql/fileuri.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>

#include <sys/stat.h>

#include <cerrno>
#include <cstring>

using namespace Qt::Literals::StringLiterals;

StorePaths StorePaths::ofUser()
{
    const QString data
        = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + u"/kestrel"_s;
    const QString runtime = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    return {data + u"/store"_s, data + u"/journal.jsonl"_s, data + u"/store.lock"_s, runtime + u"/kestrel"_s};
}

bool StorePaths::prepare() const
{
    const QString data = QFileInfo(journal).path();
    if (!QDir().mkpath(data) || !QDir().mkpath(QFileInfo(socketFolder).path())) {
        qCWarning(lcStore, "cannot make %s", qUtf8Printable(data));
        return false;
    }
    const QByteArray folder = QFile::encodeName(socketFolder);
    if (::mkdir(folder.constData(), 0700) != 0 && errno != EEXIST) {
        qCWarning(lcStore, "cannot make %s: %s", folder.constData(), std::strerror(errno));
        return false;
    }
    // Whoever made it before: nobody else may reach the socket.
    if (::chmod(folder.constData(), 0700) != 0) {
        qCWarning(lcStore, "cannot close %s to others: %s", folder.constData(), std::strerror(errno));
        return false;
    }
    return true;
}

QString localPathOf(const QString &url)
{
    const QLatin1StringView scheme = "file://"_L1;
    if (!url.startsWith(scheme))
        return {};
    return QFile::decodeName(QByteArray::fromPercentEncoding(url.mid(scheme.size()).toUtf8()));
}

QString urlOf(const QString &path)
{
    return fileUriFromPath(QFile::encodeName(path));
}

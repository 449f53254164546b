// SPDX-License-Identifier: GPL-3.0-or-later
#include "extensionfolders.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QMap>
#include <QStandardPaths>

#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace extensionfolders {

QStringList descriptions()
{
    QStringList folders = QStandardPaths::standardLocations(QStandardPaths::GenericDataLocation);
    folders.append(QDir::cleanPath(QCoreApplication::applicationDirPath() + u"/" KESTREL_DATA_FROM_BIN ""_s));
    for (QString &folder : folders)
        folder += u"/kestrel/extensions"_s;
    folders.removeDuplicates();
    return folders;
}

QStringList libraries(const QString &descriptionPath)
{
    const QString own = QFileInfo(descriptionPath).absolutePath();
    return {own, QDir::cleanPath(own + u"/" KESTREL_EXTENSIONS_FROM_DESCRIPTIONS ""_s),
            QDir::cleanPath(QCoreApplication::applicationDirPath() + u"/" KESTREL_EXTENSIONS_FROM_BIN ""_s)};
}

QStringList find(const QStringList &folders)
{
    QMap<QString, QStringList> paths;
    for (const QString &folder : folders) {
        const QDir dir(folder);
        for (const QString &name :
             dir.entryList({u"*.desktop"_s}, QDir::Files | QDir::System | QDir::Hidden)) {
            paths[name].append(dir.absoluteFilePath(name));
        }
    }
    QStringList all;
    for (const QStringList &ofOneName : std::as_const(paths))
        all += ofOneName;
    return all;
}

} // namespace extensionfolders

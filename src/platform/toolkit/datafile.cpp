// SPDX-License-Identifier: GPL-3.0-or-later
#include "datafile.h"

#include <QCoreApplication>
#include <QFileInfo>

using namespace Qt::Literals::StringLiterals;

namespace toolkit {

QString installedDataFolder()
{
    return QCoreApplication::applicationDirPath() + u"/" KESTREL_DATA_FROM_BIN "/kestrel"_s;
}

QString dataFile(const QString &name)
{
    const QString installed = installedDataFolder() + u'/' + name;
    return QFileInfo(installed).isFile() ? installed : u":/"_s + name;
}

} // namespace toolkit

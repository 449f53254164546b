// SPDX-License-Identifier: GPL-3.0-or-later
#include "ownprograms.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QStringList>

using namespace Qt::Literals::StringLiterals;

namespace {

// Folders from that of the executable on.
QString firstIn(const QStringList &folders, const QString &program)
{
    const QString here = QCoreApplication::applicationDirPath();
    for (const QString &folder : folders) {
        const QFileInfo file(here + folder + u'/' + program);
        if (file.isFile() && file.isExecutable())
            return file.canonicalFilePath();
    }
    return {};
}

} // namespace

QString overridingProgram(const QString &program)
{
    const QString variable = program.toUpper().replace(u'-', u'_') + u"_PROGRAM"_s;
    return qEnvironmentVariable(variable.toLatin1().constData());
}

QString installedProgram(const QString &program)
{
    return firstIn({QString(), u"/" KESTREL_LIBEXEC_FROM_BIN ""_s}, program);
}

QString helperProgram(const QString &program)
{
    for (const QString &path :
         {overridingProgram(program), installedProgram(program), firstIn({u"/../bin"_s}, program)}) {
        if (!path.isEmpty())
            return path;
    }
    return QStringLiteral(KESTREL_LIBEXEC_DIR "/") + program;
}

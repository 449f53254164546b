// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

// What a description file says of an extension. The file has the syntax of a desktop entry:
//
//     [Kestrel Extension]
//     Name=Related videos
//     Name[de]=Ähnliche Videos
//     Interface=com.harrow.Kestrel.extensions.PlayerInterface/1.0
//     Library=related.so
struct ExtensionDescription
{
    QString file; // its name without folder
    QString path;
    QString name; // in the reader's language, cut when it is no name; the file's name when there is none
    QString interfaceName; // with the version
    QString library; // as it is written: a file name, or an absolute path
    bool hidden = false; // this file is there to hide one of the system's
    QString fault; // English; empty: it can be used

    // Never waits: what is no ordinary file, or larger than a description can be, is a fault.
    [[nodiscard]] static ExtensionDescription read(const QString &path);

    // Where the library is: in the first of the folders that has it, unless its path is written out. Empty
    // when it is nowhere.
    [[nodiscard]] QString libraryPath(const QStringList &folders) const;
};

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

// What of a new file must be on the disk, and not in the kernel's memory only, before its writing is done.
enum class OnDisk {
    Nothing, // after a power failure it may be empty, or the one before: for what can be done without
    Contents, // after a power failure it is the one before or the new one, whole
    ContentsAndName, // after a power failure it is the new one
};

// Puts a small file in the place of the one before, or where none was, and makes the folder for it. Whoever
// reads it at the same time, or after a crash of the program, finds the one before or the new one, never a
// part. Readable by the user only. Waits for the disk.
//
// 0, or the error number of the step that failed: the file is then as it was, unless that was the last step,
// in which its name is synchronised.
[[nodiscard]] int replaceFile(const QString &path, const QByteArray &contents, OnDisk onDisk);

// Removes what replaceFile() left behind in the folder when its program was ended in the middle of it, of the
// files whose names begin with `names`. A replacement that is under way is not disturbed.
void removeUnfinished(const QString &folder, const QString &names = {});

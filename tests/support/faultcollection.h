// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

// Files that no camera writes: what lies on people's disks after full cards, broken downloads and worse.
namespace faultcollection {

struct File
{
    QString name; // within the folder
    bool mustPlay = false; // there is nothing wrong with it, or enough of it is right
    bool mayPlay = true;
};

// Makes all of them in `folder`, from clips of every container; the message when that failed.
[[nodiscard]] QString make(const QString &folder, QList<File> *files);

} // namespace faultcollection

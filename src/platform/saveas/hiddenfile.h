// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "descriptor.h"

#include <QByteArray>

// A new file in a folder that has no name there until it is whole: a program that is killed leaves nothing.
// Where the file system cannot do that, it has a hidden name, which removeLeftovers() of any later time finds
// again. Functions answer 0 or an error number.
class HiddenFile
{
public:
    // The folder stays open at least as long.
    explicit HiddenFile(int folder) : m_folder(folder) { }
    ~HiddenFile(); // what was not given a name is gone
    Q_DISABLE_COPY_MOVE(HiddenFile)

    enum class Kind { Unnamed, Hidden };
    // The best of them that works, from this one on.
    [[nodiscard]] int create(Kind first = Kind::Unnamed);
    [[nodiscard]] int descriptor() const { return m_file.get(); }
    [[nodiscard]] Kind kind() const { return m_hiddenName.isEmpty() ? Kind::Unnamed : Kind::Hidden; }

    // Gives it its name; EEXIST when something has it.
    [[nodiscard]] int publish(const QByteArray &name);
    // Gives it a name in place of the file or link that has it.
    [[nodiscard]] int replace(const QByteArray &name);

    // Hidden files of programs that were killed. Those that are being written stay.
    static void removeLeftovers(int folder);

private:
    [[nodiscard]] int createHidden();
    [[nodiscard]] int nameHidden();
    [[nodiscard]] int publishHidden(const QByteArray &name);

    int m_folder;
    Descriptor m_file;
    QByteArray m_hiddenName;
};

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QtGlobal>

#include <functional>

// Brings the bytes of one open file into another, empty one, in the best way that the file systems of both
// know. The ways are tried in order; each goes on where the one before found out that it does not work.
class ByteCopier
{
public:
    enum class Way {
        Reflink, // both share the blocks until one is written to
        CopyRange, // within the kernel, or on the server
        SendFile, // within the kernel
        ReadWrite, // everywhere
    };
    [[nodiscard]] static QList<Way> allWays();

    ByteCopier(int source, int target, const QList<Way> &ways = allWays());

    // All at once, when that is among the ways and works; otherwise it is among them no longer.
    [[nodiscard]] bool reflink(qint64 size);

    // Asked before every step, which takes at most a few milliseconds where the disk does not stall.
    using GoOn = std::function<bool(qint64 copied)>;
    // Copies `size` bytes, or fewer when the source ends before. 0, or the error number; ECANCELED when it
    // was not to go on.
    [[nodiscard]] int copy(qint64 size, const GoOn &goOn);
    [[nodiscard]] qint64 copied() const { return m_copied; }
    // The one that worked in the end.
    [[nodiscard]] Way way() const { return m_ways.first(); }

private:
    [[nodiscard]] qint64 step(qint64 length) const;
    [[nodiscard]] qint64 readAndWrite(qint64 length) const;
    bool nextWay();
    void writeBack();

    int m_source;
    int m_target;
    QList<Way> m_ways;
    qint64 m_copied = 0;
    qint64 m_sentToDisk = 0;
};

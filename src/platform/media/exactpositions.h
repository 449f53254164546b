// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "videoframe.h"

#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

// Positions are kept elsewhere in whole seconds. This remembers, for the addresses paused last, the exact
// time of the paused frame, so that a video that is played from the second of its pause goes on at that very
// frame.
class ExactPositions
{
public:
    // The memory that all back ends share; read from and written to a small file in the user's cache.
    [[nodiscard]] static ExactPositions &shared();

    ExactPositions() = default;
    explicit ExactPositions(const QString &fileName);

    void remember(const QString &uri, MediaTime position);
    // The remembered time when it lies within that second; else the second's start.
    [[nodiscard]] MediaTime at(const QString &uri, uint second) const;

    // The addresses, paused last first.
    [[nodiscard]] QStringList recent() const { return {m_order.rbegin(), m_order.rend()}; }
    // The file's contents, to be written by whoever may wait for a disk.
    [[nodiscard]] QByteArray serialized() const;
    [[nodiscard]] QString fileName() const { return m_fileName; }

    static constexpr int Capacity = 256;

private:
    void load();
    QString m_fileName;
    QHash<QString, qint64> m_positions; // by address, in ns
    QList<QString> m_order; // least recently paused first
};

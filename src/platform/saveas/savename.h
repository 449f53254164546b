// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>

// The name of a copy: what the person types, and what becomes of it on the disk.
class SaveName
{
public:
    enum class Fault { None, Empty, Invalid, TooLong };

    // Name and extension as they stand in an address, "my%20film" and "mp4".
    SaveName() = default;
    SaveName(const QString &encodedName, const QString &encodedExtension);

    [[nodiscard]] QString proposed() const { return m_proposed; }
    [[nodiscard]] QString extension() const { return m_extension; } // without its dot; may be empty
    // Of what was typed, without the extension, which is kept.
    [[nodiscard]] Fault check(const QString &typed) const;
    // The name on the disk. What nobody touched is in the bytes that it was in, text or not.
    [[nodiscard]] QByteArray fileName(const QString &typed) const;
    // As a person reads it.
    [[nodiscard]] QString shownName(const QString &typed) const;

    // What an address' percent signs stand for; one that stands for nothing is itself.
    [[nodiscard]] static QByteArray decoded(const QString &encoded);

private:
    QByteArray m_proposedBytes;
    QByteArray m_extensionBytes;
    QString m_proposed;
    QString m_extension;
};

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QString>

// Keeps the session from being counted as idle (dimmed, blanked, locked, suspended) while it is inhibited.
// The end of the program ends that, too.
class IdleInhibitor : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;
    // What counts is the last call, in whatever order the services answer. `reason` is shown to the person.
    virtual void setInhibited(bool inhibited, const QString &reason) = 0;
    // As it was asked for.
    [[nodiscard]] virtual bool isInhibited() const = 0;
    [[nodiscard]] static IdleInhibitor *create(QObject *parent);
};

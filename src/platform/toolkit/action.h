// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAction>

namespace toolkit {

// An action that says where it is offered, and how grave it is. A plain QAction is offered everywhere.
class Action : public QAction
{
    Q_OBJECT

public:
    enum Location {
        NoLocation = 0,
        ApplicationMenuLocation = 1,
        ObjectMenuLocation = 2,
        ToolBarLocation = 4,
        EveryLocation = 0xff,
    };
    Q_DECLARE_FLAGS(Locations, Location)

    explicit Action(QObject *parent = nullptr) : QAction(parent) { }

    void setLocation(Locations locations) { m_locations = locations; }
    [[nodiscard]] Locations location() const { return m_locations; }
    // Takes something away for good: its words are in the colour of danger.
    void setDestructive(bool destructive) { m_destructive = destructive; }
    [[nodiscard]] bool isDestructive() const { return m_destructive; }

    [[nodiscard]] static bool isOfferedAt(const QAction *action, Location location);
    [[nodiscard]] static bool isDestructive(const QAction *action);

private:
    Locations m_locations = EveryLocation;
    bool m_destructive = false;
};

Q_DECLARE_OPERATORS_FOR_FLAGS(Action::Locations)

} // namespace toolkit

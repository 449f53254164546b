// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

// Tells when the window manager of a handset opens its quick launch bar over the program, which it marks with
// a property of the program's window. Window managers without one, and other window systems, never do.
class WindowEventListener : public QObject
{
    Q_OBJECT

public:
    // Takes the place of the listener before: one at a time is told.
    explicit WindowEventListener(QObject *parent = nullptr);
    ~WindowEventListener() override;

Q_SIGNALS:
    // Closed when the property goes; a value of 0 tells nothing.
    void QLBOpens(bool open);

private:
    friend class QuickLaunchBarFilter;
    static WindowEventListener *s_current;
};

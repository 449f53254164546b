// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QString>

// The store library swallows I/O errors: all that is heard of them is a line in its log. This object hears
// those lines.
class LibraryLog : public QObject
{
    Q_OBJECT

public:
    // Lives as long as the process; the first call begins to listen.
    static LibraryLog *instance();

    // The database file itself is damaged, rather than its disk full or out of reach.
    [[nodiscard]] static bool tellsDamage(const QString &message);

Q_SIGNALS:
    // A critical message, or a warning about I/O. Delivered through the event loop, from whichever thread it
    // came.
    void trouble(const QString &message);

private:
    LibraryLog();
};

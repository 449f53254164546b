// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

namespace toolkit {

// Hears from the application that catalogs were exchanged, and says so when the last of them is there.
class LanguageWatch : public QObject
{
    Q_OBJECT

public:
    // The application's, which must be there.
    [[nodiscard]] static LanguageWatch *instance();

    bool eventFilter(QObject *watched, QEvent *event) override;

Q_SIGNALS:
    void changed();

private:
    explicit LanguageWatch(QObject *application);

    bool m_due = false;
};

} // namespace toolkit

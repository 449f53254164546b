// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QString>

namespace toolkit {

// The device's feedback service (org.sigxcpu.Feedback on the session bus), through which a touch is felt, or
// heard, the way the person has set it. It is told of events and never waited for. Where there is none,
// nothing is felt.
class FeedbackService : public QObject
{
    Q_OBJECT

public:
    // Belongs to the application.
    [[nodiscard]] static FeedbackService *instance();

    // One of the service's event names. Lost while the service is away.
    void trigger(const QString &event);
    [[nodiscard]] bool isPresent() const { return m_present; }

private:
    FeedbackService();
    void ask();

    bool m_present = false;
};

} // namespace toolkit

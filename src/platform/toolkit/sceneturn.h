// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QVariantAnimation>

namespace toolkit {

// The turning of a scene: every started() is followed by one finished(), also when the turn is interrupted by
// the next or when nothing is to be seen of it.
class SceneTurn : public QObject
{
    Q_OBJECT

public:
    explicit SceneTurn(QObject *parent = nullptr);

    [[nodiscard]] bool isRunning() const { return m_open; }
    [[nodiscard]] qreal rotation() const { return m_rotation; }
    // At rest: follows without a turn.
    void setRotation(qreal rotation);

    // Begins a turn; false when a receiver of started() began another one, which then goes on alone.
    [[nodiscard]] bool begin();
    // From the rotation that is seen now; 0 ms is at once.
    void turnTo(int rotation, int milliseconds);
    void finish();

Q_SIGNALS:
    void started();
    void finished();
    void rotationChanged(qreal rotation);

private:
    QVariantAnimation m_animation;
    qreal m_rotation = 0;
    qreal m_from = 0;
    qreal m_to = 0;
    int m_serial = 0;
    bool m_open = false;
};

} // namespace toolkit

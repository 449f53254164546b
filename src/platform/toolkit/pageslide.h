// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QPointF>
#include <QVariantAnimation>

namespace toolkit {

class ApplicationPage;

// One page slides over the other, or off it. Both are laid out and shown by the caller; the slide only moves
// them.
class PageSlide : public QObject
{
    Q_OBJECT

public:
    enum class Direction { Onto, Off };

    explicit PageSlide(QObject *parent = nullptr);

    // The pages begin where they are seen now, so that a slide can take over from another one. `width` is the
    // scene's, negative in a mirrored one.
    void start(ApplicationPage *incoming, ApplicationPage *outgoing, Direction direction, qreal width,
               int milliseconds);
    // To the end, at once. finished() in any case.
    void finish();
    // Like finish() for everything but the places of the pages, for the next slide to go on from.
    void interrupt();
    // Of a page that is about to be deleted.
    void drop(const ApplicationPage *page);

    [[nodiscard]] bool isRunning() const { return m_running; }
    [[nodiscard]] ApplicationPage *incoming() const { return m_incoming; }
    [[nodiscard]] ApplicationPage *outgoing() const { return m_outgoing; }

Q_SIGNALS:
    // Either page may be null: deleted meanwhile, or none.
    void finished(toolkit::ApplicationPage *incoming, toolkit::ApplicationPage *outgoing);

private:
    void move(qreal progress);
    void end();

    QVariantAnimation m_animation;
    ApplicationPage *m_incoming = nullptr;
    ApplicationPage *m_outgoing = nullptr;
    qreal m_incomingFrom = 0;
    qreal m_outgoingFrom = 0;
    qreal m_outgoingTo = 0;
    bool m_running = false;
};

} // namespace toolkit

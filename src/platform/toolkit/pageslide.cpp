// SPDX-License-Identifier: GPL-3.0-or-later
#include "pageslide.h"

#include "applicationpage.h"

#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace toolkit {

namespace {

constexpr qreal follow = -0.3; // how far the page beneath goes along

} // namespace

PageSlide::PageSlide(QObject *parent) : QObject(parent)
{
    m_animation.setParent(this);
    m_animation.setObjectName(u"slide"_s);
    m_animation.setStartValue(0.0);
    m_animation.setEndValue(1.0);
    m_animation.setEasingCurve(QEasingCurve::OutCubic);
    connect(&m_animation, &QVariantAnimation::valueChanged, this, [this](const QVariant &value) {
        if (m_running)
            move(value.toReal());
    });
    connect(&m_animation, &QVariantAnimation::finished, this, &PageSlide::finish);
}

void PageSlide::start(ApplicationPage *incoming, ApplicationPage *outgoing, Direction direction, qreal width,
                      int milliseconds)
{
    m_incoming = incoming;
    m_outgoing = outgoing;
    m_running = true;
    m_outgoingTo = direction == Direction::Onto ? width * follow : width;
    m_outgoingFrom = outgoing != nullptr ? outgoing->x() : 0;
    m_incomingFrom = incoming != nullptr ? incoming->x() : 0;
    if (milliseconds <= 0) {
        finish();
        return;
    }
    m_animation.setDuration(milliseconds);
    m_animation.start();
}

void PageSlide::move(qreal progress)
{
    if (m_incoming != nullptr)
        m_incoming->setX(m_incomingFrom * (1 - progress));
    if (m_outgoing != nullptr)
        m_outgoing->setX(m_outgoingFrom + (m_outgoingTo - m_outgoingFrom) * progress);
}

void PageSlide::finish()
{
    if (!m_running)
        return;
    move(1);
    end();
}

void PageSlide::interrupt()
{
    if (m_running)
        end();
}

void PageSlide::end()
{
    m_running = false;
    m_animation.stop();
    Q_EMIT finished(std::exchange(m_incoming, nullptr), std::exchange(m_outgoing, nullptr));
}

void PageSlide::drop(const ApplicationPage *page)
{
    if (m_incoming == page)
        m_incoming = nullptr;
    if (m_outgoing == page)
        m_outgoing = nullptr;
}

} // namespace toolkit

// SPDX-License-Identifier: GPL-3.0-or-later
#include "widgetcontroller.h"

#include "feedbackservice.h"

#include <QPainter>

using namespace Qt::Literals::StringLiterals;

namespace toolkit {

Feedback::Feedback(const QString &name) : m_name(name)
{
    (void)FeedbackService::instance(); // known before the first touch
}

// A press that comes to nothing is let go of all the same.
void Feedback::play() const
{
    if (!m_name.isEmpty())
        FeedbackService::instance()->trigger(m_name == "press"_L1 ? u"button-pressed"_s
                                                                  : u"button-released"_s);
}

void WidgetView::drawBackground(QPainter *painter, const QRectF &rect) const
{
    Q_UNUSED(painter)
    Q_UNUSED(rect)
}

WidgetController::WidgetController(WidgetModel *model, WidgetView *view, WidgetStyle *style,
                                   QGraphicsItem *parent)
    : Widget(parent),
      m_model(model),
      m_view(view),
      m_styleObject(style)
{
    for (QObject *part : std::initializer_list<QObject *>{model, view, style}) {
        if (part != nullptr)
            part->setParent(this);
    }
}

WidgetController::~WidgetController() = default;

void WidgetController::paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget)
{
    Q_UNUSED(option)
    Q_UNUSED(widget)
    if (m_view != nullptr)
        m_view->drawBackground(painter, rect());
}

} // namespace toolkit

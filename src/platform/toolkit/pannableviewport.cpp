// SPDX-License-Identifier: GPL-3.0-or-later
#include "pannableviewport.h"

#include "contentfold.h"
#include "contentlayout.h"
#include "edgefade.h"
#include "pangesture.h"
#include "panscroller.h"
#include "scrollindicator.h"
#include "theme.h"

#include <QElapsedTimer>
#include <QGraphicsScene>
#include <QGraphicsSceneMouseEvent>
#include <QGraphicsSceneWheelEvent>
#include <QGraphicsView>
#include <QKeyEvent>
#include <QPointer>

#include <cmath>

using namespace Qt::Literals::StringLiterals;

namespace toolkit {

namespace {

constexpr qreal keyStep = 80;
constexpr qreal wheelStep = 120; // for one notch
constexpr qint64 wheelPause = 300; // a pull by wheel begins after this many milliseconds without one

} // namespace

class PannableViewport::Private
{
public:
    explicit Private(PannableViewport *viewport)
        : q(viewport),
          scroller(viewport),
          gesture(viewport, &scroller),
          fade(new EdgeFade(viewport)),
          indicator(new ScrollIndicator(viewport))
    {
    }

    void arrange();
    void placeContent();
    void updateIndicator();
    [[nodiscard]] qreal snapped(qreal y) const;
    bool mouse(QEvent *event);

    PannableViewport *q;
    PanScroller scroller;
    PanGesture gesture;
    EdgeFade *fade;
    ScrollIndicator *indicator;
    ContentLayout *layout = nullptr;
    QPointer<Widget> widget;
    bool pannable = true;
    ContentFold fold;
    qreal foldedOffset = 0;
    QElapsedTimer sinceWheel;
};

void PannableViewport::Private::arrange()
{
    const QSizeF size = q->size();
    if (widget == nullptr)
        return;
    qreal height = size.height();
    if (pannable)
        height
            = qMax(height, widget->effectiveSizeHint(Qt::PreferredSize, QSizeF(size.width(), -1)).height());
    widget->setGeometry(QRectF(0, widget->y(), size.width(), height));
    scroller.setMetrics(size.width(), size.height(), height + fold.height(widget));
    placeContent();
}

void PannableViewport::Private::placeContent()
{
    if (widget != nullptr) {
        const qreal scrolled = snapped(scroller.position());
        const qreal before = foldedOffset;
        foldedOffset = fold.offset(widget, scrolled);
        widget->setPos(0, foldedOffset - scrolled);
        if (foldedOffset != before)
            Q_EMIT q->foldedOffsetChanged(foldedOffset);
    }
    updateIndicator();
}

// Whole pixels of the screen: texts that move by fractions shiver.
qreal PannableViewport::Private::snapped(qreal y) const
{
    const QList<QGraphicsView *> views
        = q->scene() != nullptr ? q->scene()->views() : QList<QGraphicsView *>();
    if (views.isEmpty())
        return y;
    const QTransform transform = views.first()->transform();
    const qreal scale = std::hypot(transform.m11(), transform.m12()) * views.first()->devicePixelRatioF();
    return scale > 0 ? std::round(y * scale) / scale : y;
}

void PannableViewport::Private::updateIndicator()
{
    const Style &style = q->style();
    const qreal height = widget != nullptr && pannable ? widget->size().height() + fold.height(widget) : 0;
    fade->setEdges(q->rect(), pannable ? scroller.position() : 0,
                   pannable ? scroller.maximum() - scroller.position() : 0);
    indicator->setBar(ScrollIndicator::barFor(
                          q->size(), height, scroller.position(), style.number(u"indicatorWidth"_s, 4),
                          style.number(u"indicatorMargin"_s, 4), q->layoutDirection() == Qt::RightToLeft),
                      style.color(u"indicator"_s, QColor(255, 255, 255, 72)));
}

bool PannableViewport::Private::mouse(QEvent *event)
{
    const bool taken = gesture.mouse(event);
    const bool isPress = event->type() == QEvent::GraphicsSceneMousePress
        || event->type() == QEvent::GraphicsSceneMouseDoubleClick;
    if (taken && isPress)
        indicator->wake(); // a press that stopped the movement
    return taken;
}

PannableViewport::PannableViewport(QGraphicsItem *parent) : Widget(parent), d(std::make_unique<Private>(this))
{
    setStyleName(u"PannableViewport"_s);
    setFlag(ItemClipsChildrenToShape);
    setFiltersChildEvents(true);
    d->layout = new ContentLayout(this, [this] { d->arrange(); });
    setLayout(d->layout);
    connect(&d->scroller, &PanScroller::moved, this, [this] {
        d->placeContent();
        d->indicator->wake();
    });
    connect(&d->scroller, &PanScroller::positionChanged, this, [this](qreal y) {
        Q_EMIT positionChanged({0, y});
    });
    connect(&d->scroller, &PanScroller::panningStarted, this, &PannableViewport::panningStarted);
    connect(&d->scroller, &PanScroller::panningStopped, this, &PannableViewport::panningStopped);
    connect(this, &Widget::displayEntered, d->indicator, &ScrollIndicator::wake);
}

PannableViewport::~PannableViewport()
{
    d->scroller.disconnect(this);
    // The content goes while its viewport is still whole: a layout that is due lays it out on the way, and a
    // list in it then asks the viewport.
    d->layout->setItem(nullptr);
    Widget *content = d->widget;
    d->widget = nullptr;
    if (content != nullptr && content->parentItem() == this)
        delete content;
}

void PannableViewport::setWidget(Widget *widget)
{
    if (d->widget != nullptr && d->widget->parentItem() == this)
        d->widget->setParentItem(nullptr);
    d->widget = widget;
    if (widget != nullptr)
        widget->setParentItem(this);
    d->layout->setItem(widget);
    setPosition({});
}

Widget *PannableViewport::widget() const
{
    return d->widget;
}

void PannableViewport::setPannable(bool pannable)
{
    if (d->pannable == pannable)
        return;
    d->pannable = pannable;
    d->gesture.setEnabled(pannable);
    if (!pannable)
        d->scroller.setPosition(0);
    d->arrange();
}

void PannableViewport::setGround(const QColor &ground)
{
    d->fade->setGround(ground);
}

bool PannableViewport::isPannable() const
{
    return d->pannable;
}

QPointF PannableViewport::position() const
{
    return {0, d->scroller.position()};
}

void PannableViewport::setPosition(const QPointF &position)
{
    d->scroller.setPosition(position.y());
}

QRectF PannableViewport::range() const
{
    return {0, 0, 0, d->scroller.maximum()};
}

void PannableViewport::setFoldedHeight(QGraphicsWidget *widget, qreal height)
{
    if (d->fold.set(widget, height))
        d->arrange();
}

qreal PannableViewport::foldedOffset(const QGraphicsWidget *widget) const
{
    return d->fold.isOf(widget) ? d->foldedOffset : 0;
}

bool PannableViewport::isPanning() const
{
    return d->scroller.isPanning();
}

void PannableViewport::ensureVisible(const QRectF &wanted)
{
    // Clear of where the content runs out, if there is room for that.
    const qreal depth = std::min(d->fade->depth(), std::max(0.0, (size().height() - wanted.height()) / 2));
    const QRectF rectangle = wanted.adjusted(0, -depth, 0, depth);
    const qreal top = d->scroller.target();
    const qreal bottom = top + size().height();
    if (rectangle.top() < top || rectangle.height() > size().height())
        d->scroller.scrollTo(rectangle.top(), false);
    else if (rectangle.bottom() > bottom)
        d->scroller.scrollTo(rectangle.bottom() - size().height(), false);
}

bool PannableViewport::scrollByKey(const QKeyEvent *event)
{
    if (!d->pannable)
        return false;
    const qreal from = d->scroller.target();
    const qreal page = qMax(keyStep, size().height() - keyStep);
    switch (event->key()) {
    case Qt::Key_Up:
        d->scroller.scrollTo(from - keyStep, true);
        return true;
    case Qt::Key_Down:
        d->scroller.scrollTo(from + keyStep, true);
        return true;
    case Qt::Key_PageUp:
        d->scroller.scrollTo(from - page, true);
        return true;
    case Qt::Key_PageDown:
        d->scroller.scrollTo(from + page, true);
        return true;
    case Qt::Key_Home:
        d->scroller.scrollTo(0, true);
        return true;
    case Qt::Key_End:
        d->scroller.scrollTo(d->scroller.maximum(), true);
        return true;
    default:
        return false;
    }
}

bool PannableViewport::event(QEvent *event)
{
    // Other events come also while the viewport is being made.
    const bool isScroll = event->type() == QEvent::ScrollPrepare || event->type() == QEvent::Scroll;
    return isScroll ? d->scroller.scrollEvent(event) : Widget::event(event);
}

bool PannableViewport::sceneEventFilter(QGraphicsItem *watched, QEvent *event)
{
    return d->mouse(event) || Widget::sceneEventFilter(watched, event);
}

void PannableViewport::mousePressEvent(QGraphicsSceneMouseEvent *event)
{
    d->mouse(event);
    // Empty places pan too.
    event->setAccepted(d->pannable && event->button() == Qt::LeftButton);
}

void PannableViewport::mouseMoveEvent(QGraphicsSceneMouseEvent *event)
{
    d->mouse(event);
}

void PannableViewport::mouseReleaseEvent(QGraphicsSceneMouseEvent *event)
{
    d->mouse(event);
}

void PannableViewport::ungrabMouseEvent(QEvent *)
{
    d->gesture.lost();
}

void PannableViewport::wheelEvent(QGraphicsSceneWheelEvent *event)
{
    if (!d->pannable || event->orientation() != Qt::Vertical) {
        event->ignore();
        return;
    }
    const bool paused = !d->sinceWheel.isValid() || d->sinceWheel.elapsed() > wheelPause;
    d->sinceWheel.start();
    if (event->delta() > 0 && d->scroller.position() <= 0) {
        if (paused)
            d->scroller.pull();
        return;
    }
    d->scroller.scrollTo(d->scroller.target() - event->delta() / 120.0 * wheelStep, true);
}

void PannableViewport::resizeEvent(QGraphicsSceneResizeEvent *event)
{
    Widget::resizeEvent(event);
    d->arrange();
}

} // namespace toolkit

// SPDX-License-Identifier: GPL-3.0-or-later
#include "extensionframe.h"

#include "hostlook.h"

#include <QGraphicsLayout>
#include <QGraphicsScene>
#include <QPainterPath>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace {

qreal possible(qreal length)
{
    return std::isfinite(length) ? std::clamp(length, 0.0, ExtensionFrame::HighestContent) : 0;
}

// Of one widget, which is as wide as the page and as high as it wants to be there. Its height is asked for
// the width whether or not its size policy says that it depends on it. Hidden it takes no room.
class OneWidgetLayout : public QGraphicsLayout
{
public:
    OneWidgetLayout(QGraphicsLayoutItem *parent, QGraphicsWidget *widget)
        : QGraphicsLayout(parent),
          m_widget(widget)
    {
        setContentsMargins(0, 0, 0, 0);
        addChildLayoutItem(widget);
    }

    ~OneWidgetLayout() override
    {
        if (m_widget)
            m_widget->setParentLayoutItem(nullptr);
    }

    [[nodiscard]] int count() const override { return m_widget ? 1 : 0; }
    [[nodiscard]] QGraphicsLayoutItem *itemAt(int) const override { return m_widget; }
    void removeAt(int) override
    {
        m_widget->setParentLayoutItem(nullptr);
        m_widget = nullptr;
        invalidate();
    }

    void setGeometry(const QRectF &rect) override
    {
        QGraphicsLayout::setGeometry(rect);
        if (m_widget)
            m_widget->setGeometry(contentsRect());
    }

protected:
    [[nodiscard]] QSizeF sizeHint(Qt::SizeHint which, const QSizeF &constraint) const override
    {
        if (!m_widget)
            return {0, 0};
        const QSizeF hint = m_widget->effectiveSizeHint(which, constraint);
        const bool isHidden = !m_widget->isVisibleTo(m_widget->parentItem());
        return {which == Qt::MinimumSize ? 0 : possible(hint.width()),
                isHidden ? 0 : possible(hint.height())};
    }

private:
    QGraphicsWidget *m_widget; // takes itself out when it is deleted
};

} // namespace

// Stands above all of the content, so that it is painted when that has been; nothing is seen or hit of it.
class ExtensionFrame::PaintingEnd : public QGraphicsItem
{
public:
    explicit PaintingEnd(ExtensionFrame *frame) : QGraphicsItem(frame), m_frame(frame)
    {
        setZValue(std::numeric_limits<qreal>::max());
        setAcceptedMouseButtons(Qt::NoButton);
    }

    void frameResized() { prepareGeometryChange(); }
    [[nodiscard]] QRectF boundingRect() const override { return m_frame->rect(); }
    [[nodiscard]] QPainterPath shape() const override { return {}; }
    // The shape of what is clipped counts for neither.
    [[nodiscard]] bool contains(const QPointF &) const override { return false; }
    [[nodiscard]] bool collidesWithPath(const QPainterPath &, Qt::ItemSelectionMode) const override
    {
        return false;
    }
    void paint(QPainter *, const QStyleOptionGraphicsItem *, QWidget *) override
    {
        Q_EMIT m_frame->painted(m_frame->m_clock() - m_frame->m_paintingBegan);
    }

private:
    ExtensionFrame *m_frame;
};

ExtensionFrame::ExtensionFrame(QGraphicsWidget *content, Place place, ExtensionClock clock)
    : m_content(content),
      m_place(place),
      m_clock(std::move(clock))
{
    setFlag(ItemClipsChildrenToShape);
    // A page of its own is its to fill.
    if (place == Place::OwnPage)
        setSizePolicy(content->sizePolicy());
    keepHostLook(this);
    content->setParentItem(this);
    setLayout(new OneWidgetLayout(this, content));
    if (m_clock)
        m_paintingEnd = new PaintingEnd(this);
    connect(content, &QObject::destroyed, this, &ExtensionFrame::contentDeleted);
    connect(content, &QGraphicsWidget::visibleChanged, this, [this] { layout()->invalidate(); });
}

// Before the content.
void ExtensionFrame::paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget)
{
    QGraphicsWidget::paint(painter, option, widget);
    if (m_clock)
        m_paintingBegan = m_clock();
}

void ExtensionFrame::resizeEvent(QGraphicsSceneResizeEvent *event)
{
    QGraphicsWidget::resizeEvent(event);
    if (m_paintingEnd)
        m_paintingEnd->frameResized();
}

const ExtensionFrame *ExtensionFrame::around(const QGraphicsWidget *widget)
{
    for (; widget; widget = widget->parentWidget()) {
        if (const auto *frame = qobject_cast<const ExtensionFrame *>(widget))
            return frame;
    }
    return nullptr;
}

ExtensionFrame::~ExtensionFrame()
{
    if (!m_content || m_content->parentItem() != this)
        return;
    disconnect(m_content, nullptr, this, nullptr);
    setLayout(nullptr);
    m_content->setParentItem(nullptr);
    if (m_content->scene())
        m_content->scene()->removeItem(m_content);
}

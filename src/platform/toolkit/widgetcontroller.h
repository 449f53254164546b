// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "widget.h"

#include <QString>

namespace toolkit {

// A feedback that a widget gives when it is touched: "press", "release" or "cancel". It is felt where the
// device can; what is seen of it the widget paints, within a frame.
class Feedback
{
public:
    Feedback() = default;
    explicit Feedback(const QString &name);
    [[nodiscard]] QString name() const { return m_name; }
    void play() const;

private:
    QString m_name;
};

// The state of a widget that its view shows.
class WidgetModel : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;
};

// The style object of a widget class: attributes beyond the theme's.
class WidgetStyle : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;
};

// Paints a controller from its model and style.
class WidgetView : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;
    virtual void drawBackground(QPainter *painter, const QRectF &rect) const;
};

// A widget that is split into controller, model, view and style. Owns the three.
class WidgetController : public Widget
{
    Q_OBJECT

public:
    WidgetController(WidgetModel *model, WidgetView *view, WidgetStyle *style,
                     QGraphicsItem *parent = nullptr);
    ~WidgetController() override;

    [[nodiscard]] WidgetModel *model() const { return m_model; }
    [[nodiscard]] WidgetView *view() const { return m_view; }
    [[nodiscard]] WidgetStyle *styleObject() const { return m_styleObject; }

protected:
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget) override;

private:
    WidgetModel *m_model;
    WidgetView *m_view;
    WidgetStyle *m_styleObject;
};

} // namespace toolkit

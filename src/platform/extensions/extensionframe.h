// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "extensionclock.h"

#include <QGraphicsWidget>
#include <QPointer>

// Where an extension's widget stands: on the page that hosts extensions, or on a page of its own. It gives
// the widget the colours and the font of the program, takes no size from it that no page has, and lets go of
// it when it is deleted itself: the widget is the extension's.
class ExtensionFrame : public QGraphicsWidget
{
    Q_OBJECT

public:
    enum class Place { SharedPage, OwnPage };

    // With a clock, painting what is in it is timed.
    explicit ExtensionFrame(QGraphicsWidget *content, Place place = Place::SharedPage,
                            ExtensionClock clock = {});
    ~ExtensionFrame() override;

    [[nodiscard]] Place place() const { return m_place; }
    // Null when the extension deleted it.
    [[nodiscard]] QGraphicsWidget *content() const { return m_content; }
    // The frame that a widget stands in, itself or deeper; null for none.
    [[nodiscard]] static const ExtensionFrame *around(const QGraphicsWidget *widget);

    // Higher is no page's content.
    static constexpr qreal HighestContent = 100'000; // logical pixels

Q_SIGNALS:
    void contentDeleted();
    // How long the content took.
    void painted(qint64 ms);

protected:
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget) override;
    void resizeEvent(QGraphicsSceneResizeEvent *event) override;

private:
    class PaintingEnd;

    QPointer<QGraphicsWidget> m_content;
    Place m_place;
    ExtensionClock m_clock;
    qint64 m_paintingBegan = 0;
    PaintingEnd *m_paintingEnd = nullptr; // null: it is not timed
};

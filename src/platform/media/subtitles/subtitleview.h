// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "subtitlecue.h"

#include <platform/toolkit/widget.h>

#include <QImage>
#include <QMarginsF>
#include <QPointer>

class MediaBackend;

// The subtitles of what plays, over its picture: sharp at the device's own pixels, outlined, in whatever
// script. Below the picture where there is room for them, else within its lower edge; above what the margins
// keep free. Takes no touch.
class SubtitleView : public toolkit::Widget
{
    Q_OBJECT

public:
    explicit SubtitleView(QGraphicsItem *parent = nullptr);
    ~SubtitleView() override;

    void setBackend(MediaBackend *backend); // null: none
    // Of the picture as it should be seen; empty: there is none.
    void setPicture(const QSizeF &size, bool fill);
    // What something else stands on.
    void setTaken(const QMarginsF &margins);

    [[nodiscard]] QString shownText() const;
    // Where the words are, in its coordinates; empty: there are none.
    [[nodiscard]] QRectF textRect() const;
    [[nodiscard]] QString accessibleName() const override { return shownText(); }
    [[nodiscard]] QAccessible::Role accessibleRole() const override
    {
        return m_texts.isEmpty() ? QAccessible::NoRole : QAccessible::StaticText;
    }

protected:
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget) override;
    void resizeEvent(QGraphicsSceneResizeEvent *event) override;
    void applyStyle() override;

private:
    struct Block
    {
        QRectF place;
        QImage image; // in device pixels
    };
    void show();
    [[nodiscard]] QRectF pictureRect() const;
    [[nodiscard]] QFont fontOf(const QRectF &picture) const;
    void render(qreal scale);
    [[nodiscard]] QRectF placed(const QSizeF &size, bool above, const QRectF &picture) const;

    QPointer<MediaBackend> m_backend;
    QList<SubtitleText> m_texts;
    QList<Block> m_blocks;
    QSizeF m_picture;
    QMarginsF m_taken;
    qreal m_scale = 1;
    qreal m_renderedScale = 0; // device pixels a logical one; 0: to be rendered
    bool m_fill = false;
};

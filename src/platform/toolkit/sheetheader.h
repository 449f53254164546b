// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "widget.h"

namespace toolkit {

class Button;
class Label;

// The head of a sheet. With actions it is a bar: the negative one where lines begin, the positive one, bold,
// where they end, the title between them. Without, it is the title in up to two lines below the mark that a
// finger drags at.
class SheetHeader : public Widget
{
    Q_OBJECT

public:
    explicit SheetHeader(QGraphicsItem *parent = nullptr);

    void setTitle(const QString &title); // plain text
    [[nodiscard]] QString title() const;
    void setNegativeAction(const QString &text); // empty: none
    void setPositiveAction(const QString &text);
    [[nodiscard]] Button *negativeButton() const { return m_negative; }
    [[nodiscard]] Button *positiveButton() const { return m_positive; }
    void setBackVisible(bool visible);
    [[nodiscard]] bool isBackVisible() const;
    void setDragMark(bool visible);
    [[nodiscard]] bool hasActions() const;
    [[nodiscard]] qreal heightFor(qreal width) const;

Q_SIGNALS:
    void negativeClicked();
    void positiveClicked();
    void backClicked();

protected:
    void applyStyle() override;
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget) override;
    void resizeEvent(QGraphicsSceneResizeEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void setAction(Button *button, const QString &text);
    void styleParts();
    void arrange();
    void arrangeBar();
    void arrangeTitle();
    [[nodiscard]] qreal markHeight() const;
    [[nodiscard]] qreal titleWidth(qreal width) const;
    [[nodiscard]] QRectF mirrored(const QRectF &place) const;

    Label *m_title;
    Button *m_negative;
    Button *m_positive;
    Button *m_back;
    bool m_dragMark = true;
};

} // namespace toolkit

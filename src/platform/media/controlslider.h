// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <platform/toolkit/accessiblevalue.h>
#include <platform/toolkit/widget.h>

#include <functional>
#include <optional>

// A part of a line from 0 to 1.
struct LinePart
{
    qreal start = 0;
    qreal end = 0;

    [[nodiscard]] bool operator==(const LinePart &) const = default;
};

// A line with a knob upon it, in a band that is high enough for a finger. Pressing anywhere in the band takes
// the knob there. From right to left in languages that are written so. With the keyboard's focus the knob has
// a ring; the keys themselves are the page's.
class ControlSlider : public toolkit::Widget, public toolkit::ValueControl
{
    Q_OBJECT

public:
    explicit ControlSlider(QGraphicsItem *parent = nullptr);
    ~ControlSlider() override;

    // Of the whole, 0 to 1. Nothing happens while a finger holds the knob.
    void setValue(qreal value);
    [[nodiscard]] qreal value() const { return m_value; }
    [[nodiscard]] bool isHeld() const { return m_held; }
    void setMetrics(qreal lineHeight, qreal knobSize);
    void setColors(const QColor &track, const QColor &filled);
    // False: there is nothing to take hold of.
    void setKnobShown(bool shown);
    void setFocusColor(const QColor &color) { m_focusColor = color; }
    // Places of the whole, 0 to 1, where the line is parted.
    void setMarks(const QList<qreal> &marks);
    [[nodiscard]] QList<qreal> marks() const { return m_marks; }
    // A part that is set off from the rest by a band, and by a bar at each of its ends.
    void setSection(const std::optional<LinePart> &section);
    [[nodiscard]] const std::optional<LinePart> &section() const { return m_section; }
    void setSectionColors(const QColor &band, const QColor &ends);
    // The further a finger that drags goes away from the line, the less the knob moves with it.
    void setRefining(bool refining) { m_refining = refining; }
    // Of the knob's middle, in the slider.
    [[nodiscard]] qreal knobPosition() const;

    // For assistive technology: what the whole and a step stand for, the value in words, which are made when
    // somebody asks for them, and that they are others now.
    void setScale(qreal whole, qreal step);
    void setWords(const std::function<QString()> &words) { m_words = words; }
    void tellValue();
    [[nodiscard]] QAccessible::Role accessibleRole() const override { return QAccessible::Slider; }
    [[nodiscard]] QAccessibleInterface *createAccessible() override;
    [[nodiscard]] qreal currentValue() const override { return m_value * m_whole; }
    [[nodiscard]] qreal maximumValue() const override { return m_whole; }
    [[nodiscard]] qreal valueStep() const override { return m_step; }
    [[nodiscard]] QString valueText() const override;
    void changeValue(qreal value) override;

Q_SIGNALS:
    void pressed();
    void dragged(qreal value);
    void released(qreal value);
    void cancelled(); // the finger was taken away

protected:
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget) override;
    void mousePressEvent(QGraphicsSceneMouseEvent *event) override;
    void mouseMoveEvent(QGraphicsSceneMouseEvent *event) override;
    void mouseReleaseEvent(QGraphicsSceneMouseEvent *event) override;
    void ungrabMouseEvent(QEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;

private:
    [[nodiscard]] bool isMirrored() const { return layoutDirection() == Qt::RightToLeft; }
    [[nodiscard]] qreal valueAt(qreal x) const;
    [[nodiscard]] qreal onLine(qreal x) const;
    [[nodiscard]] qreal placeOf(qreal value) const;
    void paintSection(QPainter *painter) const;
    void paintSectionEnds(QPainter *painter) const;
    void paintLine(QPainter *painter, const QRectF &line) const;
    void cancel();
    void moveTo(qreal value);

    QColor m_track;
    QColor m_filled;
    qreal m_value = 0;
    qreal m_lineHeight = 6;
    qreal m_knobSize = 26;
    bool m_held = false;
    bool m_refining = false;
    bool m_keyboardFocus = false;
    bool m_knobShown = true;
    QColor m_focusColor;
    QList<qreal> m_marks;
    std::optional<LinePart> m_section;
    QColor m_sectionBand;
    QColor m_sectionEnds;
    QPointF m_finger; // where it was last
    qreal m_whole = 1;
    qreal m_step = 0.05;
    std::function<QString()> m_words;
};

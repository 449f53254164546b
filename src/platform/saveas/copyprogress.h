// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/toolkit/accessiblevalue.h"
#include "platform/toolkit/widget.h"

// How much of a copy is done: a bar that grows in the direction in which people read.
class CopyProgress : public toolkit::Widget, public toolkit::ValueControl
{
    Q_OBJECT

public:
    explicit CopyProgress(QGraphicsItem *parent = nullptr);

    void setFraction(qreal fraction); // 0 to 1
    [[nodiscard]] qreal fraction() const { return m_fraction; }
    // The same in words.
    void setWords(const QString &words) { m_words = words; }

    [[nodiscard]] QAccessible::Role accessibleRole() const override { return QAccessible::ProgressBar; }
    [[nodiscard]] QAccessibleInterface *createAccessible() override;
    // In whole percent, so that readers are not told of every step.
    [[nodiscard]] qreal currentValue() const override { return m_percent; }
    [[nodiscard]] qreal maximumValue() const override { return 100; }
    [[nodiscard]] qreal valueStep() const override { return 1; }
    [[nodiscard]] QString valueText() const override { return m_words; }
    void changeValue(qreal value) override;

protected:
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget) override;

private:
    qreal m_fraction = 0;
    int m_percent = 0;
    QString m_words;
};

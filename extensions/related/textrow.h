// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "touchrow.h"

// Words alone: a heading, a message, or something to tap.
class TextRow : public TouchRow
{
    Q_OBJECT

public:
    enum class Kind { Title, Heading, Message, Button };

    TextRow(Kind kind, const QString &text, QGraphicsItem *parent = nullptr);

    [[nodiscard]] qreal heightAt(qreal width) const override;
    [[nodiscard]] QString spoken() const override { return m_text; }
    [[nodiscard]] QAccessible::Role accessibleRole() const override;

protected:
    void paintContent(QPainter *painter, const QRectF &rect) override;

private:
    [[nodiscard]] QFont shownFont() const;
    [[nodiscard]] qreal space() const;

    Kind m_kind;
    QString m_text;
};

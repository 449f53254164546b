// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <platform/toolkit/button.h>
#include <platform/toolkit/label.h>

namespace toolkit {
class Layout;
class LinearLayoutPolicy;
} // namespace toolkit

// A row of the options: what it is about, and below it what holds or more of it. One of several that exclude
// each other has a mark where it is the one.
class OptionRow : public toolkit::Button
{
    Q_OBJECT

public:
    // A command stands among choices, and its words begin where theirs do.
    enum class Kind { Way, Choice, Command };

    OptionRow(Kind kind, const QString &title, const QString &value, bool chosen = false);
    [[nodiscard]] bool isChosen() const { return m_chosen; }
    [[nodiscard]] QString value() const { return m_value; }
    [[nodiscard]] QString accessibleName() const override;
    [[nodiscard]] QAccessible::Role accessibleRole() const override
    {
        return m_kind == Kind::Choice ? QAccessible::RadioButton : QAccessible::Button;
    }

protected:
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget) override;
    void applyStyle() override;

private:
    [[nodiscard]] qreal markWidth() const;
    void paintLine(QPainter *painter, const QRectF &place, const QFont &font, const QColor &color,
                   const QString &text) const;

    Kind m_kind;
    QString m_value;
    bool m_chosen;
};

// A quantity, and the buttons that change it by steps.
class OptionSteps : public toolkit::Widget
{
    Q_OBJECT

public:
    explicit OptionSteps(const QString &title);
    void setValue(const QString &value);
    [[nodiscard]] QString text() const { return m_label->text(); }
    [[nodiscard]] const QList<toolkit::Button *> &steps() const { return m_steps; }
    // `name` is what assistive technology says.
    toolkit::Button *addStep(const QString &text, const QString &name);

private:
    void beginRow();

    QString m_title;
    toolkit::Label *m_label;
    toolkit::LinearLayoutPolicy *m_column;
    toolkit::LinearLayoutPolicy *m_row = nullptr; // the last one
    QList<toolkit::Button *> m_steps;
};

// One below the other.
class OptionColumn : public toolkit::Widget
{
    Q_OBJECT

public:
    OptionColumn();
    void add(toolkit::Widget *row);
    // After the last row: what they leave over of the height stays below them.
    void end();
    [[nodiscard]] const QList<toolkit::Widget *> &rows() const { return m_rows; }

private:
    toolkit::LinearLayoutPolicy *m_policy;
    QList<toolkit::Widget *> m_rows;
};

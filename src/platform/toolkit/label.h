// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "textlayouter.h"
#include "widget.h"

#include <QTextOption>

#include <memory>

namespace toolkit {

// Text: plain, or rich with an embedded style block and custom elements (<highlight>). Wraps, elides at the
// end.
class Label : public Widget
{
    Q_OBJECT

public:
    explicit Label(QGraphicsItem *parent = nullptr);
    explicit Label(const QString &text, QGraphicsItem *parent = nullptr);
    ~Label() override;

    void setText(const QString &text);
    [[nodiscard]] QString text() const;
    void setTextFormat(Qt::TextFormat format); // AutoText, PlainText, RichText
    [[nodiscard]] Qt::TextFormat textFormat() const;
    void setAlignment(Qt::Alignment alignment);
    [[nodiscard]] Qt::Alignment alignment() const;
    void setWordWrap(bool wrap);
    [[nodiscard]] bool wordWrap() const;
    void setWrapMode(QTextOption::WrapMode mode);
    void setTextElide(bool elide);
    void setColor(const QColor &color);
    [[nodiscard]] bool isElided() const;
    [[nodiscard]] int lineCount() const;
    [[nodiscard]] QStringList shownLines() const;
    // The whole text without its markup, unless another name was set.
    [[nodiscard]] QString accessibleName() const override;
    [[nodiscard]] QAccessible::Role accessibleRole() const override;

protected:
    void applyStyle() override;
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget) override;
    QSizeF sizeHint(Qt::SizeHint which, const QSizeF &constraint) const override;

private:
    [[nodiscard]] const FormattedText &formattedText() const;
    [[nodiscard]] TextLayouter::Settings layoutSettings(qreal width) const;
    void layOut() const;
    void paintIcon(QPainter *painter, const QString &iconId, qreal size) const;

    class Private;
    std::unique_ptr<Private> d;
};

} // namespace toolkit

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "widget.h"

#include <QPixmap>

namespace toolkit {

// A picture: a pixmap that covers the widget (aspect kept, centred, rounded by the style), or an icon of the
// theme.
class ImageWidget : public Widget
{
    Q_OBJECT

public:
    explicit ImageWidget(QGraphicsItem *parent = nullptr);
    explicit ImageWidget(const QString &imageId, QGraphicsItem *parent = nullptr);
    ~ImageWidget() override;

    void setPixmap(const QPixmap &pixmap);
    [[nodiscard]] QPixmap pixmap() const { return m_pixmap; }
    void setImage(const QString &imageId);
    [[nodiscard]] QString imageId() const { return m_imageId; }
    // A picture without a name says nothing.
    [[nodiscard]] QAccessible::Role accessibleRole() const override
    {
        return accessibleName().isEmpty() ? QAccessible::NoRole : QAccessible::Graphic;
    }

protected:
    void applyStyle() override;
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget) override;
    QSizeF sizeHint(Qt::SizeHint which, const QSizeF &constraint) const override;

private:
    QPixmap m_pixmap;
    QPixmap m_shown; // as it was last painted: scaled, cut and rounded
    QString m_imageId;
};

} // namespace toolkit

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <platform/toolkit/imagewidget.h>

// The picture of a video in the shape of a screen: as wide as it is given room for, or of a width of its own.
class PreviewImage : public toolkit::ImageWidget
{
    Q_OBJECT

public:
    explicit PreviewImage(QGraphicsItem *parent = nullptr);

    // 0: as wide as there is room.
    void setOwnWidth(qreal width);
    [[nodiscard]] static qreal heightFor(qreal width);

protected:
    QSizeF sizeHint(Qt::SizeHint which, const QSizeF &constraint) const override;

private:
    qreal m_ownWidth = 0;
};

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QPointer>
#include <QPropertyAnimation>
#include <QRectF>
#include <QSizeF>

class QGraphicsWidget;

namespace toolkit {

class Banner;

// Where banners stand: as low in the scene as what is kept free of them allows, one at a time, fading in.
class BannerPlace
{
public:
    explicit BannerPlace(QGraphicsWidget *root);
    ~BannerPlace();

    // The newest wins: one that is still there goes at once. One that is dismissed fades and is deleted.
    void show(Banner *banner, const QSizeF &scene, const QList<QRectF> &keptFree, bool onDisplay);
    void arrange(const QSizeF &scene, const QList<QRectF> &keptFree);
    [[nodiscard]] Banner *banner() const;

private:
    void leave();

    QGraphicsWidget *m_root;
    QPointer<Banner> m_banner;
    QPropertyAnimation m_fade;
};

} // namespace toolkit

// SPDX-License-Identifier: GPL-3.0-or-later
#include "bannerplace.h"

#include "banner.h"
#include "bannerroom.h"
#include "scenemanager.h"
#include "theme.h"

#include <QEasingCurve>
#include <QGraphicsWidget>

namespace toolkit {

namespace {

constexpr int fadeMilliseconds = 160;

} // namespace

BannerPlace::BannerPlace(QGraphicsWidget *root) : m_root(root)
{
    m_fade.setPropertyName("opacity");
}

BannerPlace::~BannerPlace() = default;

void BannerPlace::show(Banner *banner, const QSizeF &scene, const QList<QRectF> &keptFree, bool onDisplay)
{
    if (banner == nullptr || banner == m_banner)
        return;
    m_fade.stop();
    if (m_banner != nullptr) {
        m_banner->hide();
        m_banner->deleteLater();
    }
    m_banner = banner;
    banner->setParentItem(m_root);
    banner->setZValue(SceneManager::BannerLayer);
    arrange(scene, keptFree);
    banner->show();
    QObject::connect(banner, &Banner::dismissed, banner, [this, banner] {
        if (banner == m_banner)
            leave();
        else
            banner->deleteLater();
    });
    m_fade.setTargetObject(banner);
    m_fade.setStartValue(0.0);
    m_fade.setEndValue(1.0);
    m_fade.setEasingCurve(QEasingCurve::OutCubic);
    m_fade.setDuration(Theme::instance()->motion(fadeMilliseconds));
    if (onDisplay)
        m_fade.start();
}

void BannerPlace::leave()
{
    Banner *banner = m_banner;
    m_banner = nullptr;
    m_fade.stop();
    m_fade.setTargetObject(nullptr);
    const int milliseconds = Theme::instance()->motion(fadeMilliseconds);
    if (milliseconds == 0) {
        banner->hide();
        banner->deleteLater();
        return;
    }
    auto *fade = new QPropertyAnimation(banner, "opacity", banner);
    fade->setDuration(milliseconds);
    fade->setEasingCurve(QEasingCurve::InCubic);
    fade->setEndValue(0.0);
    QObject::connect(fade, &QPropertyAnimation::finished, banner, &QObject::deleteLater);
    fade->start();
}

void BannerPlace::arrange(const QSizeF &scene, const QList<QRectF> &keptFree)
{
    if (m_banner == nullptr)
        return;
    const BannerRoom room(scene, keptFree);
    // No wider than it wishes to be: asked with a width, it answers for that width.
    const qreal wish = m_banner->effectiveSizeHint(Qt::PreferredSize).width();
    const qreal width = qMin(wish, room.widest());
    m_banner->setGeometry(
        room.place({width, m_banner->effectiveSizeHint(Qt::PreferredSize, {width, -1}).height()}));
}

Banner *BannerPlace::banner() const
{
    return m_banner;
}

} // namespace toolkit

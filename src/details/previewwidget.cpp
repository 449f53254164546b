// SPDX-License-Identifier: GPL-3.0-or-later
#include "previewwidget.h"

#include "videodetailscontainer.h"

#include <data/thumbnailhelper.h>
#include <platform/toolkit/layout.h>
#include <platform/toolkit/theme.h>

#include <algorithm>
#include <cmath>

using namespace Qt::Literals::StringLiterals;

namespace {

const QString &policyStyle()
{
    static const QString name = u"KestrelDetailsPreviewPolicy"_s;
    return name;
}

} // namespace

PreviewWidget::PreviewWidget(ThumbnailHelper *thumbnails, QGraphicsItem *parent)
    : toolkit::Widget(parent),
      m_image(new PreviewImage(this)),
      m_thumbnails(thumbnails),
      m_details(new VideoDetailsContainer(this))
{
    auto *layout = new toolkit::Layout;
    auto *landscape = new toolkit::LinearLayoutPolicy(layout, Qt::Horizontal);
    landscape->setStyleName(policyStyle());
    layout->setLandscapePolicy(landscape);
    auto *portrait = new toolkit::LinearLayoutPolicy(layout, Qt::Vertical);
    portrait->setStyleName(policyStyle());
    layout->setPortraitPolicy(portrait);
    for (toolkit::LinearLayoutPolicy *policy : {landscape, portrait}) {
        policy->addItem(m_image);
        policy->addItem(m_details);
    }
    setLayout(layout);
    QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Preferred);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
    setStyleName(u"KestrelDetailsPreview"_s);
}

PreviewWidget::~PreviewWidget() = default;

void PreviewWidget::setDetails(const VideoDetails &details)
{
    m_details->setDetails(details);
}

void PreviewWidget::showPlaceholder()
{
    if (!m_image)
        return;
    m_picture = m_thumbnails->placeHolder(ThumbnailHelper::pictureSize);
    m_image->setPixmap(m_picture);
}

void PreviewWidget::setThumbnail(const QString &path)
{
    QPixmap picture(path);
    if (picture.isNull())
        picture = m_thumbnails->placeHolder(ThumbnailHelper::pictureSize);
    m_picture = picture;
    if (m_image)
        m_image->setPixmap(m_picture);
}

void PreviewWidget::applyStyle()
{
    toolkit::Widget::applyStyle();
    shapeImage();
}

void PreviewWidget::resizeEvent(QGraphicsSceneResizeEvent *event)
{
    toolkit::Widget::resizeEvent(event);
    shapeImage();
}

void PreviewWidget::shapeImage()
{
    if (m_image)
        m_image->setOwnWidth(imageWidthBeside(size().width()));
}

qreal PreviewWidget::imageWidthBeside(qreal width) const
{
    if (screenOrientation() != Qt::Horizontal)
        return 0;
    const toolkit::Style policy = toolkit::Theme::instance()->style(policyStyle(), Qt::Horizontal);
    const qreal room = width - policy.margins.left() - policy.margins.right() - policy.spacing;
    return std::max(1.0, std::floor(room * style().number(u"pictureShare"_s, 0.5)));
}

// A row does not ask its items how high they are at the width that they get.
QSizeF PreviewWidget::sizeHint(Qt::SizeHint which, const QSizeF &constraint) const
{
    const QSizeF hint = toolkit::Widget::sizeHint(which, constraint);
    if (screenOrientation() != Qt::Horizontal || constraint.width() < 0 || which == Qt::MaximumSize)
        return hint;
    const toolkit::Style policy = toolkit::Theme::instance()->style(policyStyle(), Qt::Horizontal);
    const qreal imageWidth = imageWidthBeside(constraint.width());
    const qreal rest
        = constraint.width() - policy.margins.left() - policy.margins.right() - policy.spacing - imageWidth;
    const qreal details = m_details->effectiveSizeHint(which, QSizeF(std::max(0.0, rest), -1)).height();
    const qreal height = std::max(PreviewImage::heightFor(imageWidth), details) + policy.margins.top()
        + policy.margins.bottom();
    return {constraint.width(), height};
}

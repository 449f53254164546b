// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "previewimage.h"

#include <data/videodetails.h>
#include <platform/toolkit/widget.h>

#include <QPixmap>
#include <QPointer>

namespace toolkit {
class LinearLayoutPolicy;
}

class ThumbnailHelper;
class VideoDetailsContainer;

// The picture of a video with its details: below it, and in landscape beside it.
class PreviewWidget : public toolkit::Widget
{
    Q_OBJECT

public:
    // The helper outlives the widget.
    explicit PreviewWidget(ThumbnailHelper *thumbnails, QGraphicsItem *parent = nullptr);
    ~PreviewWidget() override;

    void setDetails(const VideoDetails &details);
    void showPlaceholder();
    // A file that is no picture shows the placeholder's.
    void setThumbnail(const QString &path);

    [[nodiscard]] PreviewImage *image() const { return m_image; }
    [[nodiscard]] VideoDetailsContainer *detailsContainer() const { return m_details; }

protected:
    void applyStyle() override;
    void resizeEvent(QGraphicsSceneResizeEvent *event) override;
    QSizeF sizeHint(Qt::SizeHint which, const QSizeF &constraint) const override;

private:
    // In landscape; 0 in portrait.
    [[nodiscard]] qreal imageWidthBeside(qreal width) const;
    void shapeImage();

    QPointer<PreviewImage> m_image;
    QPixmap m_picture;
    ThumbnailHelper *m_thumbnails;
    VideoDetailsContainer *m_details;
};

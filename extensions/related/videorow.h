// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "relatedvideo.h"
#include "touchrow.h"

class Pictures;
class RelatedTexts;

// A video as the library shows its own: picture with the time, title, and what remains of one that was begun.
class VideoRow : public TouchRow
{
    Q_OBJECT

public:
    VideoRow(const RelatedVideo &video, const RelatedTexts &texts, Pictures &pictures,
             QGraphicsItem *parent = nullptr);

    [[nodiscard]] qreal heightAt(qreal width) const override;
    [[nodiscard]] QString spoken() const override;
    [[nodiscard]] const RelatedVideo &video() const { return m_video; }

protected:
    void paintContent(QPainter *painter, const QRectF &rect) override;

private:
    [[nodiscard]] bool isBegun() const;
    // Below the title; empty for most.
    [[nodiscard]] QString remark() const;
    void paintPicture(QPainter *painter, const QRectF &place);
    void paintTime(QPainter *painter, const QRectF &place) const;
    void paintProgress(QPainter *painter, const QRectF &place) const;

    RelatedVideo m_video;
    const RelatedTexts &m_texts;
    Pictures &m_pictures;
};

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "glpicture.h"
#include "pictureconverter.h"
#include "videoframe.h"

#include <QPixmap>
#include <QPointer>
#include <QRectF>
#include <QString>

class MediaBackend;
class QGraphicsWidget;
class QPainter;

namespace toolkit {
class GlViewport;
}

// The picture of a video widget: black, the frame of the back end upon it, the still over both. Tells the
// back end the size and turn in device pixels in which it wants its frames, so that they are painted without
// scaling. Where the window is painted by OpenGL it asks for the planes of the decoder and draws them by a
// shader; when that fails the window is told, and meanwhile the processor makes a picture of them.
class VideoSurface
{
public:
    explicit VideoSurface(QGraphicsWidget *item);

    void setBackend(MediaBackend *backend);
    void showFrame(); // the back end has a new one
    void paint(QPainter *painter);
    void clear();

    // False: sound alone; a mark stands in for the picture.
    void setHasPicture(bool has);
    // The middle is covered: the mark that stands in for the picture makes room there.
    void setMiddleCovered(bool covered);
    void setFillMode(bool fill);
    [[nodiscard]] bool fillMode() const { return m_fill; }
    void setStill(const QString &path);
    [[nodiscard]] QString still() const { return m_stillPath; }
    // Where in the window the picture is to be; invalid: in its item. The item shows nothing outside itself,
    // so that a rectangle beyond the screen hides the picture.
    void setRenderRectangle(const QRectF &rectangle);
    void setRectangleOverride(bool on);

private:
    [[nodiscard]] bool isPictureHidden() const;
    [[nodiscard]] const VideoFrame &turnedStill();
    void paintFrame(QPainter *painter, const VideoFrame &frame) const;
    void paintPlanes(QPainter *painter);
    [[nodiscard]] bool drawPlanes(QPainter *painter, toolkit::GlViewport *viewport);
    [[nodiscard]] toolkit::GlViewport *glViewport() const;
    void paintSoundMark(QPainter *painter) const;
    static void paintNote(QPainter *painter);
    void followDevice(const QPainter *painter);
    void sendOutput();
    void forgetFrame();

    QGraphicsWidget *m_item;
    QPointer<MediaBackend> m_backend;
    VideoFrame m_frame;
    GlPicture m_glPicture;
    PictureConverter m_converter;
    VideoFrame m_converted; // of the planes of m_frame
    std::shared_ptr<const PlanarPicture> m_convertedPlanes;
    bool m_planesWanted = false;
    QImage m_still;
    VideoFrame m_turnedStill; // for the turn of the device
    QString m_stillPath;
    QRectF m_renderRectangle;
    QSize m_deviceSize;
    int m_rotation = 0;
    bool m_soundOnly = false;
    bool m_middleCovered = false;
    bool m_fill = false;
    bool m_override = false;
};

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "planarpicture.h"

#include <QByteArray>
#include <QPointer>
#include <QRectF>
#include <QString>

#include <map>
#include <memory>

class QOpenGLContext;
class QOpenGLShaderProgram;
class QOpenGLWidget;
class QPainter;

// Draws a decoder's planes by a shader, which makes their colours: a matrix of its own, or the same table
// that the processor uses. Where it lies and how it is turned is a matter of its four corners.
class GlPicture
{
public:
    // The tail is added to the shader that makes colours.
    explicit GlPicture(const QByteArray &fragmentTail = {});
    ~GlPicture();
    Q_DISABLE_COPY_MOVE(GlPicture)

    // Whether the context that is current has what such a picture needs: more than eight bits take textures
    // of 16, other colours than a screen's a texture of three dimensions.
    [[nodiscard]] static bool canDraw(const PlanarPicture &picture);

    // The painter is that of the viewport, whose context is current. The whole picture lies in `target`, the
    // part in `visible` is drawn; both in the painter's coordinates. False: it cannot be; error() tells why,
    // and it is not worth trying again.
    [[nodiscard]] bool draw(QPainter *painter, QOpenGLWidget *viewport,
                            const std::shared_ptr<const PlanarPicture> &picture, const QRectF &target,
                            const QRectF &visible);
    [[nodiscard]] QString error() const { return m_error; }

private:
    [[nodiscard]] bool prepare(QOpenGLWidget *viewport);
    [[nodiscard]] QOpenGLShaderProgram *program(const PlanarPicture &picture);
    [[nodiscard]] bool upload(const PlanarPicture &picture);
    void setFilters(const PlanarPicture &picture, bool muchSmaller);
    [[nodiscard]] bool succeeded(const char *step);
    void uploadMap(const PictureColours &colours);
    void setColours(QOpenGLShaderProgram *program, const PlanarPicture &picture) const;
    [[nodiscard]] bool drawCorners(QPainter *painter, QOpenGLShaderProgram *program,
                                   const PlanarPicture &picture, const QRectF &target, const QRectF &visible);
    void release();

    QByteArray m_fragmentTail;
    QPointer<QOpenGLWidget> m_viewport;
    QPointer<QOpenGLContext> m_context;
    std::map<int, std::unique_ptr<QOpenGLShaderProgram>> m_programs; // by the features they have
    std::weak_ptr<const PlanarPicture> m_uploaded; // the decoder gets its memory back when it is not shown
    bool m_hasLevels = false; // textures of half the size, and so on, are made
    QMetaObject::Connection m_going;
    std::unique_ptr<PictureColours> m_mapped; // whose table is uploaded
    unsigned m_textures[4] = {}; // Y', Cb or both, Cr, the table
    QString m_error;
};

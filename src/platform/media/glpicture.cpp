// SPDX-License-Identifier: GPL-3.0-or-later
#include "glpicture.h"

#include "colourmap.h"
#include "glshader.h"

#include <QMatrix4x4>
#include <QOpenGLContext>
#include <QOpenGLExtraFunctions>
#include <QOpenGLShaderProgram>
#include <QOpenGLWidget>
#include <QPainter>

using namespace Qt::Literals::StringLiterals;

namespace {

// Not in every header.
constexpr GLenum Red16 = 0x822A;
constexpr GLenum RedGreen16 = 0x822C;
constexpr GLenum ContextLost = 0x0507;

constexpr int MapTexture = 3;
constexpr double CodesOfByte = 1020; // a full byte as a code of ten bits
constexpr double CodesOfWord = 65535;

bool hasNewTextures(
    QOpenGLContext *context) // of one and two channels, of three dimensions, of rows with gaps
{
    return context->format().majorVersion() >= 3;
}

bool hasDeepTextures(QOpenGLContext *context)
{
    return hasNewTextures(context)
        && (!context->isOpenGLES() || context->hasExtension("GL_EXT_texture_norm16"));
}

// Half the pixels or fewer would show one of them and leave out the next.
bool isMuchSmaller(const QRectF &onDevice, const QSize &picture)
{
    return onDevice.width() * 2 < picture.width() || onDevice.height() * 2 < picture.height();
}

size_t planes(const PlanarPicture &picture)
{
    return picture.sharesChromaPlane() ? 2 : 3;
}

// What others left behind. A context that is lost may answer with an error for ever.
void forgetErrors(QOpenGLFunctions *gl)
{
    constexpr int MostFlags = 16;
    for (int i = 0; i < MostFlags && gl->glGetError() != GL_NO_ERROR; ++i) { }
}

bool linked(QOpenGLShaderProgram *program)
{
    program->bindAttributeLocation("corner", glshader::CornerAttribute);
    program->bindAttributeLocation("place", glshader::PlaceAttribute);
    return program->link();
}

// The corner (0 or 1, 0 or 1) of the picture as it is seen, in the picture as it is coded.
QPointF codedPlace(QPointF seen, const PlanarPicture &picture)
{
    for (int quarter = 0; quarter < picture.quarters; ++quarter)
        seen = {seen.y(), 1 - seen.x()};
    return picture.mirrored ? QPointF(1 - seen.x(), seen.y()) : seen;
}

} // namespace

GlPicture::GlPicture(const QByteArray &fragmentTail) : m_fragmentTail(fragmentTail) { }

GlPicture::~GlPicture()
{
    release();
}

bool GlPicture::canDraw(const PlanarPicture &picture)
{
    QOpenGLContext *context = QOpenGLContext::currentContext();
    if (context == nullptr)
        return false;
    GLint largest = 0;
    context->functions()->glGetIntegerv(GL_MAX_TEXTURE_SIZE, &largest);
    return picture.size.width() <= largest && picture.size.height() <= largest
        && (picture.sampleBytes == 1 || hasDeepTextures(context))
        && (picture.colours.isPlain() || hasNewTextures(context));
}

bool GlPicture::draw(QPainter *painter, QOpenGLWidget *viewport,
                     const std::shared_ptr<const PlanarPicture> &picture, const QRectF &target,
                     const QRectF &visible)
{
    const QTransform toDevice = painter->deviceTransform();
    painter->beginNativePainting();
    bool drawn = prepare(viewport);
    forgetErrors(m_context->functions());
    QOpenGLShaderProgram *shader = drawn ? program(*picture) : nullptr;
    if (shader != nullptr && m_uploaded.lock() != picture) {
        drawn = upload(*picture);
        m_uploaded = picture;
        m_hasLevels = false;
    }
    if (shader != nullptr && drawn) {
        setFilters(*picture, isMuchSmaller(toDevice.mapRect(target), picture->size));
        drawn = drawCorners(painter, shader, *picture, target, visible);
    }
    if (!drawn)
        m_uploaded.reset();
    painter->endNativePainting();
    return shader != nullptr && drawn;
}

void GlPicture::setFilters(const PlanarPicture &picture, bool muchSmaller)
{
    QOpenGLFunctions *gl = m_context->functions();
    const bool levels = muchSmaller && hasNewTextures(m_context);
    for (size_t plane = 0; plane < planes(picture); ++plane) {
        gl->glBindTexture(GL_TEXTURE_2D, m_textures[plane]);
        gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER,
                            levels ? GL_LINEAR_MIPMAP_LINEAR : GL_LINEAR);
        if (levels && !m_hasLevels)
            gl->glGenerateMipmap(GL_TEXTURE_2D);
    }
    m_hasLevels = m_hasLevels || levels;
}

// What belonged to another context went with it.
bool GlPicture::prepare(QOpenGLWidget *viewport)
{
    QOpenGLContext *context = QOpenGLContext::currentContext();
    if (context == m_context)
        return context->isValid();
    release();
    m_viewport = viewport;
    m_context = context;
    m_going = QObject::connect(context, &QOpenGLContext::aboutToBeDestroyed, viewport, [this] { release(); });
    viewport->makeCurrent(); // letting go of the other took it away
    context->functions()->glGenTextures(4, m_textures);
    return true;
}

QOpenGLShaderProgram *GlPicture::program(const PlanarPicture &picture)
{
    const bool modern = hasNewTextures(m_context);
    const int features = (picture.sharesChromaPlane() ? glshader::SharedChroma : 0)
        | (picture.colours.isPlain() ? 0 : glshader::ColourTable) | (modern ? 0 : glshader::OldTextures)
        | (m_context->isOpenGLES() && modern ? glshader::NewWords : 0);
    std::unique_ptr<QOpenGLShaderProgram> &program = m_programs[features];
    if (!program) {
        program = std::make_unique<QOpenGLShaderProgram>();
        if (!program->addShaderFromSourceCode(QOpenGLShader::Vertex, glshader::vertexSource(features))
            || !program->addShaderFromSourceCode(QOpenGLShader::Fragment,
                                                 glshader::fragmentSource(features) + m_fragmentTail)
            || !linked(program.get())) {
            m_error = u"shader: "_s + program->log().simplified();
            program.reset();
        }
    }
    return program.get();
}

bool GlPicture::upload(const PlanarPicture &picture)
{
    QOpenGLFunctions *gl = m_context->functions();
    const bool modern = hasNewTextures(m_context);
    const bool deep = picture.sampleBytes == 2;
    gl->glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    for (size_t plane = 0; plane < planes(picture); ++plane) {
        const PlanarPicture::Component &component = picture.components[plane];
        const QSize size = plane == 0 ? picture.size : picture.chromaSize();
        const bool pair = component.step == 2;
        const GLenum format = modern ? (pair ? GL_RG : GL_RED) : (pair ? GL_LUMINANCE_ALPHA : GL_LUMINANCE);
        const GLenum inside = !modern ? format
            : deep                    ? (pair ? RedGreen16 : Red16)
                                      : GLenum(pair ? GL_RG8 : GL_R8);
        const int pixelBytes = component.step * picture.sampleBytes;
        const auto *data = reinterpret_cast<const char *>(component.data);
        QByteArray packed;
        if (modern) {
            gl->glPixelStorei(GL_UNPACK_ROW_LENGTH, component.stride / pixelBytes);
        } else {
            for (int row = 0; row < size.height(); ++row)
                packed.append(data + qsizetype(row) * component.stride, qsizetype(size.width()) * pixelBytes);
            data = packed.constData();
        }
        gl->glBindTexture(GL_TEXTURE_2D, m_textures[plane]);
        gl->glTexImage2D(GL_TEXTURE_2D, 0, GLint(inside), size.width(), size.height(), 0, format,
                         deep ? GL_UNSIGNED_SHORT : GL_UNSIGNED_BYTE, data);
        for (const GLenum axis : {GL_TEXTURE_WRAP_S, GL_TEXTURE_WRAP_T})
            gl->glTexParameteri(GL_TEXTURE_2D, axis, GL_CLAMP_TO_EDGE);
        gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    }
    if (modern)
        gl->glPixelStorei(GL_UNPACK_ROW_LENGTH, 0);
    if (!picture.colours.isPlain())
        uploadMap(picture.colours);
    gl->glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
    return succeeded("textures");
}

bool GlPicture::succeeded(const char *step)
{
    const GLenum fault = m_context->functions()->glGetError();
    if (fault != GL_NO_ERROR)
        m_error = fault == ContextLost
            ? u"the OpenGL context is lost"_s
            : u"%1: OpenGL error 0x%2"_s.arg(QLatin1StringView(step)).arg(fault, 0, 16);
    return fault == GL_NO_ERROR;
}

void GlPicture::uploadMap(const PictureColours &colours)
{
    if (m_mapped && *m_mapped == colours)
        return;
    const auto map = ColourMap::of(colours);
    constexpr size_t Values = size_t(ColourMap::LumaNodes) * ColourMap::ChromaNodes * ColourMap::ChromaNodes
        * ColourMap::Channels;
    std::vector<float> values(Values);
    for (size_t i = 0; i < Values; i += ColourMap::Channels) {
        for (size_t channel = 0; channel < 3; ++channel) // blue comes first in the table
            values[i + channel] = float(map->nodes()[i + 2 - channel]) / (255.0F * ColourMap::Scale);
    }
    QOpenGLExtraFunctions *gl = m_context->extraFunctions();
    gl->glBindTexture(GL_TEXTURE_3D, m_textures[MapTexture]);
    gl->glTexImage3D(GL_TEXTURE_3D, 0, GL_RGBA16F, ColourMap::LumaNodes, ColourMap::ChromaNodes,
                     ColourMap::ChromaNodes, 0, GL_RGBA, GL_FLOAT, values.data());
    for (const GLenum axis : {GL_TEXTURE_WRAP_S, GL_TEXTURE_WRAP_T, GL_TEXTURE_WRAP_R})
        gl->glTexParameteri(GL_TEXTURE_3D, axis, GL_CLAMP_TO_EDGE);
    for (const GLenum filter : {GL_TEXTURE_MIN_FILTER, GL_TEXTURE_MAG_FILTER})
        gl->glTexParameteri(GL_TEXTURE_3D, filter, GL_LINEAR);
    gl->glBindTexture(GL_TEXTURE_3D, 0);
    m_mapped = std::make_unique<PictureColours>(colours);
}

void GlPicture::setColours(QOpenGLShaderProgram *program, const PlanarPicture &picture) const
{
    const double codes
        = picture.sampleBytes == 1 ? CodesOfByte : CodesOfWord / (1 << (picture.lowBit + picture.depth - 10));
    program->setUniformValue("codes", float(codes));
    // From a place in the picture to one among the chroma samples: these may reach beyond its edge, and lie
    // upon the first of their pixels.
    const QSize chroma = picture.chromaSize();
    const auto scale
        = [](int luma, int shift, int samples) { return float(double(luma) / (1 << shift) / samples); };
    const auto offset = [](bool atFirst, int shift, int samples) {
        return float(atFirst ? (0.5 - 0.5 / (1 << shift)) / samples : 0);
    };
    program->setUniformValue("chromaScale",
                             QVector2D(scale(picture.size.width(), picture.chromaShiftX, chroma.width()),
                                       scale(picture.size.height(), picture.chromaShiftY, chroma.height())));
    program->setUniformValue("chromaOffset",
                             QVector2D(offset(picture.chromaAtLeft, picture.chromaShiftX, chroma.width()),
                                       offset(picture.chromaAtTop, picture.chromaShiftY, chroma.height())));
    // codedRgb() is linear: its columns are what one code adds.
    const Rgb origin = codedRgb({0, 0, 0}, picture.colours);
    QMatrix4x4 matrix;
    for (int column = 0; column < 3; ++column) {
        YCbCr one{0, 0, 0};
        one[size_t(column)] = 1;
        const Rgb rgb = codedRgb(one, picture.colours);
        for (int row = 0; row < 3; ++row)
            matrix(row, column) = float(rgb[size_t(row)] - origin[size_t(row)]);
    }
    matrix.setColumn(3, QVector4D(float(origin[0]), float(origin[1]), float(origin[2]), 1));
    program->setUniformValue("colours", matrix);
    for (int unit = 0; unit < 4; ++unit)
        program->setUniformValue(glshader::TextureNames[unit], unit);
}

bool GlPicture::drawCorners(QPainter *painter, QOpenGLShaderProgram *program, const PlanarPicture &picture,
                            const QRectF &target, const QRectF &visible)
{
    QOpenGLFunctions *gl = m_context->functions();
    const QTransform toDevice = painter->deviceTransform();
    const QSizeF device = QSizeF(m_viewport->size()) * m_viewport->devicePixelRatioF();
    float corners[8];
    float places[8];
    int i = 0;
    for (const QPointF &corner :
         {visible.topLeft(), visible.topRight(), visible.bottomLeft(), visible.bottomRight()}) {
        const QPointF pixel = toDevice.map(corner);
        const QPointF place = codedPlace(
            {(corner.x() - target.x()) / target.width(), (corner.y() - target.y()) / target.height()},
            picture);
        corners[i] = float(2 * pixel.x() / device.width() - 1);
        places[i++] = float(place.x());
        corners[i] = float(1 - 2 * pixel.y() / device.height());
        places[i++] = float(place.y());
    }
    if (painter->hasClipping()) {
        const QRect clip = toDevice.mapRect(painter->clipBoundingRect()).toRect();
        gl->glEnable(GL_SCISSOR_TEST);
        gl->glScissor(clip.x(), int(device.height()) - clip.y() - clip.height(), clip.width(), clip.height());
    }
    program->bind();
    setColours(program, picture);
    program->setUniformValue("opacity", float(painter->opacity()));
    for (int unit = 0; unit < 4; ++unit) {
        gl->glActiveTexture(GLenum(GL_TEXTURE0 + unit));
        gl->glBindTexture(unit == MapTexture && m_mapped ? GL_TEXTURE_3D : GL_TEXTURE_2D,
                          unit == MapTexture && !m_mapped ? 0 : m_textures[unit]);
    }
    gl->glEnable(GL_BLEND);
    gl->glBlendFunc(GL_ONE, GL_ONE_MINUS_SRC_ALPHA);
    gl->glBindBuffer(GL_ARRAY_BUFFER, 0);
    program->enableAttributeArray(glshader::CornerAttribute);
    program->enableAttributeArray(glshader::PlaceAttribute);
    program->setAttributeArray(glshader::CornerAttribute, corners, 2);
    program->setAttributeArray(glshader::PlaceAttribute, places, 2);
    gl->glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
    program->disableAttributeArray(glshader::CornerAttribute);
    program->disableAttributeArray(glshader::PlaceAttribute);
    program->release();
    gl->glDisable(GL_SCISSOR_TEST);
    for (int unit = 3; unit >= 0; --unit) {
        gl->glActiveTexture(GLenum(GL_TEXTURE0 + unit));
        gl->glBindTexture(unit == MapTexture && m_mapped ? GL_TEXTURE_3D : GL_TEXTURE_2D, 0);
    }
    return succeeded("drawing");
}

void GlPicture::release()
{
    if (m_viewport && m_context && m_viewport->context() == m_context) {
        m_viewport->makeCurrent();
        if (QOpenGLContext::currentContext() == m_context) { // a lost one cannot be
            m_context->functions()->glDeleteTextures(4, m_textures);
            m_programs.clear();
            m_viewport->doneCurrent();
        }
    }
    QObject::disconnect(m_going);
    m_programs.clear();
    m_context = nullptr;
    m_uploaded.reset();
    m_mapped.reset();
    std::fill(std::begin(m_textures), std::end(m_textures), 0U);
}

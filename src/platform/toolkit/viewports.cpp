// SPDX-License-Identifier: GPL-3.0-or-later
#include "viewports.h"

#include <QDir>
#include <QEvent>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFunctions>

using namespace Qt::Literals::StringLiterals;

namespace toolkit {

namespace {

constexpr int Samples = 4; // without, the edges of shapes are stairs

// A look into a directory takes microseconds; making a context without a graphics processor 60 ms and 40 MB.
bool hasGraphicsProcessor()
{
    const QDir devices(u"/dev"_s);
    const QDir renderers(u"/dev/dri"_s, u"renderD*"_s, QDir::NoSort, QDir::System);
    return !renderers.isEmpty()
        || !devices
                .entryList({u"nvidia[0-9]*"_s, u"mali[0-9]*"_s, u"kgsl-3d[0-9]*"_s, u"pvr*"_s}, QDir::System)
                .isEmpty();
}

// Else a lost context is not noticed.
QSurfaceFormat toldOfResets()
{
    QSurfaceFormat format = QSurfaceFormat::defaultFormat();
    format.setOption(QSurfaceFormat::ResetNotification);
    return format;
}

ViewportChoice rendererChoice(bool forced)
{
    QOffscreenSurface surface;
    surface.create();
    QOpenGLContext context;
    context.setFormat(toldOfResets());
    if (!context.create() || !context.makeCurrent(&surface))
        return {false, u"no OpenGL"_s};
    QOpenGLFunctions *gl = context.functions();
    const auto *name = reinterpret_cast<const char *>(gl->glGetString(GL_RENDERER));
    const QString renderer = QString::fromUtf8(name);
    const int version = context.format().majorVersion();
    context.doneCurrent();
    if (version < 2)
        return {false, u"OpenGL %1 only"_s.arg(version)};
    if (!forced && isSoftwareRenderer(renderer))
        return {false, u"%1 is a software renderer"_s.arg(renderer)};
    return {true, renderer};
}

} // namespace

bool isSoftwareRenderer(const QString &renderer)
{
    static const QStringList names{u"llvmpipe"_s,    u"softpipe"_s, u"swrast"_s,
                                   u"swiftshader"_s, u"software"_s, u"basic render"_s};
    return renderer.isEmpty() || std::any_of(names.begin(), names.end(), [&renderer](const QString &name) {
               return renderer.contains(name, Qt::CaseInsensitive);
           });
}

// Drivers let only contexts of one kind share their textures, and the window's own is made by the default.
void askForResetNotification()
{
    QSurfaceFormat::setDefaultFormat(toldOfResets());
}

ViewportChoice chooseViewport()
{
    const QByteArray wish = qgetenv("KESTREL_VIEWPORT").toLower();
    if (wish == "raster")
        return {false, u"asked for"_s};
    const bool forced = wish == "opengl";
    if (!forced && !hasGraphicsProcessor())
        return {false, u"no graphics processor"_s};
    return rendererChoice(forced);
}

void forgetLostContext()
{
    if (QOpenGLContext::currentContext() == nullptr)
        return;
    QOffscreenSurface surface;
    surface.create();
    QOpenGLContext another;
    if (another.create() && another.makeCurrent(&surface))
        another.doneCurrent();
}

GlViewport::GlViewport(QWidget *parent) : QOpenGLWidget(parent)
{
    QSurfaceFormat format = QSurfaceFormat::defaultFormat();
    format.setStencilBufferSize(8); // the painter clips by it
    format.setSamples(Samples);
    setFormat(format);
}

bool GlViewport::isAlive() const
{
    return !m_givenUp && isValid();
}

bool GlViewport::obeys()
{
    if (m_givenUp)
        return false;
    const bool current = takeContext();
    if (!current)
        giveUp(m_worked ? u"the OpenGL context is lost"_s : u"no OpenGL in this window"_s);
    m_worked = m_worked || current;
    return !m_givenUp;
}

// A loss is found out when a context is made current. Whatever is current and lost stays so for the library,
// even when it exists no longer; on Wayland a lost context goes on calling itself valid.
bool GlViewport::takeContext()
{
    if (QOpenGLContext *current = QOpenGLContext::currentContext())
        current->doneCurrent();
    makeCurrent();
    return isValid() && QOpenGLContext::currentContext() == context();
}

// The window's own context is lost first, now and then; the library asks for another one, and does not
// survive the next flush when there is none.
bool GlViewport::event(QEvent *event)
{
    if (event->type() == QEvent::WindowAboutToChangeInternal && m_worked)
        (void)obeys();
    return QOpenGLWidget::event(event);
}

void GlViewport::giveUp(const QString &reason)
{
    if (std::exchange(m_givenUp, true))
        return;
    window()->setUpdatesEnabled(false);
    QMetaObject::invokeMethod(
        this, [this, reason] { Q_EMIT lost(reason); }, Qt::QueuedConnection);
}

} // namespace toolkit

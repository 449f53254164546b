// SPDX-License-Identifier: GPL-3.0-or-later
#include "backendrenderer.h"

#include "mediabackend.h"
#include "wholeseconds.h"

#include <QMetaMethod>
#include <QPointer>
#include <QStringList>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr auto RenderRectangle = "render-rectangle"_L1;

// "x,y,w,h"; invalid when the text is anything else.
QRectF parseRectangle(const QString &text)
{
    const QStringList parts = text.split(u',');
    if (parts.size() != 4)
        return {};
    qreal numbers[4];
    for (int i = 0; i < 4; ++i) {
        bool ok = false;
        numbers[i] = parts.at(i).trimmed().toDouble(&ok);
        if (!ok)
            return {};
    }
    return {numbers[0], numbers[1], numbers[2], numbers[3]};
}

// SLOT() writes "1name(type)".
QByteArray methodSignature(const char *slot)
{
    return QMetaObject::normalizedSignature(*slot >= '0' && *slot <= '9' ? slot + 1 : slot);
}

} // namespace

BackendRenderer::BackendRenderer(MediaBackend *backend, QObject *parent)
    : AvloRenderer(parent),
      m_backend(backend)
{
    connect(backend, &MediaBackend::stateChanged, this, &AvloRenderer::stateChanged);
    connect(backend, &MediaBackend::failed, this, &AvloRenderer::error);
    connect(backend, &MediaBackend::complained, this, &AvloRenderer::error);
    connect(backend, &MediaBackend::bufferingChanged, this, &AvloRenderer::bufferingInfo);
    connect(backend, &MediaBackend::videoSizeChanged, this, [this](const QSize &size) {
        if (size.isEmpty())
            return;
        Q_EMIT metadataChanged(u"res-x"_s, {size.width()});
        Q_EMIT metadataChanged(u"res-y"_s, {size.height()});
    });
    connect(backend, &MediaBackend::stillWritten, this, [this](const QString &uri, const QString &path) {
        Q_EMIT metadataChanged(u"paused-thumbnail-uri"_s, {uri, path});
    });
}

void BackendRenderer::getPosition(QObject *receiver, const char *slot)
{
    const uint position = wholeSeconds(m_backend->position());
    const int generation = m_backend->generation();
    QMetaObject::invokeMethod(
        this,
        [this, receiver = QPointer<QObject>(receiver), signature = methodSignature(slot), position,
         generation] {
            if (!receiver || generation != m_backend->generation())
                return;
            const int index = receiver->metaObject()->indexOfMethod(signature.constData());
            if (index < 0) {
                qWarning("void BackendRenderer::getPosition(QObject*, const char*) No such slot: %s",
                         signature.constData());
                return;
            }
            receiver->metaObject()->method(index).invoke(receiver, Q_ARG(uint, position));
        },
        Qt::QueuedConnection);
}

void BackendRenderer::setRendererProperty(const QString &name, const QVariant &value)
{
    QObject::setProperty(name.toUtf8().constData(), value);
    if (name == "current-frame-on-pause"_L1) {
        m_backend->setStillOnPause(value.toBool());
    } else if (name == RenderRectangle) {
        m_renderRectangle = parseRectangle(value.toString());
        Q_EMIT renderRectangleChanged();
    }
}

void BackendRenderer::clearRenderRectangle()
{
    setRendererProperty(RenderRectangle, QVariant());
}

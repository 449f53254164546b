// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "avlorenderer.h"

#include <QRectF>

class MediaBackend;

// The renderer over a back end: whole seconds, properties by name, metadata by name.
class BackendRenderer : public AvloRenderer
{
    Q_OBJECT

public:
    explicit BackendRenderer(MediaBackend *backend, QObject *parent = nullptr);

    // The receiver is not called any more when another video was begun before the answer was due.
    void getPosition(QObject *receiver, const char *slot) override;
    void setRendererProperty(const QString &name, const QVariant &value) override;

    // Of "render-rectangle", in the window; invalid when it is not set.
    [[nodiscard]] QRectF renderRectangle() const { return m_renderRectangle; }
    void clearRenderRectangle();

Q_SIGNALS:
    void renderRectangleChanged();

private:
    MediaBackend *m_backend;
    QRectF m_renderRectangle;
};

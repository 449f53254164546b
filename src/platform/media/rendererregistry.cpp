// SPDX-License-Identifier: GPL-3.0-or-later
#include "rendererregistry.h"

#include "mediabackend.h"
#include "gst/gstmediabackend.h"

#include <QCoreApplication>
#include <QPointer>

namespace {

RendererRegistry::BackendFactory &factory()
{
    static RendererRegistry::BackendFactory current;
    return current;
}

} // namespace

RendererRegistry::RendererRegistry(QObject *parent) : QObject(parent) { }

RendererRegistry::~RendererRegistry() = default;

RendererRegistry *RendererRegistry::instance()
{
    static QPointer<RendererRegistry> registry;
    if (!registry)
        registry = new RendererRegistry(QCoreApplication::instance());
    return registry;
}

void RendererRegistry::setBackendFactory(BackendFactory newFactory)
{
    factory() = std::move(newFactory);
}

std::unique_ptr<MediaBackend> RendererRegistry::createBackend()
{
    if (factory())
        return factory()();
    return std::make_unique<GstMediaBackend>();
}

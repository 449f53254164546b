// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <data/thumbnailhelper.h>
#include <data/trackerinterface.h>
#include <data/videoinfo.h>
#include <platform/media/nullmediabackend.h>
#include <platform/media/rendererregistry.h>
#include <platform/media/videowidget.h>
#include <platform/sparql/changenotifier.h>
#include <platform/system/devicestate.h>
#include <player/playercontroller.h>

#include "support/fakesparqldriver.h"
#include "support/fakethumbnailerclient.h"

#include <QPointer>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

// The device as the tests say it is.
struct FakeDevice
{
    int call = 0;
    QString route;
    QList<int> backlight; // modes, in order
    int subscriptions = 0;
    QPointer<ContextProperty> routeProperty;

    static FakeDevice &instance()
    {
        static FakeDevice device;
        return device;
    }
};

class FakeCallMonitor : public CallMonitor
{
public:
    using CallMonitor::CallMonitor;
    int getState() const override { return FakeDevice::instance().call; }
};

class FakeContextProperty : public ContextProperty
{
public:
    using ContextProperty::ContextProperty;
    void subscribe() override { ++FakeDevice::instance().subscriptions; }
    void unsubscribe() override { --FakeDevice::instance().subscriptions; }
    QVariant value() const override { return FakeDevice::instance().route; }
};

class FakeBacklight : public BacklightControl
{
public:
    void set(int mode) override { FakeDevice::instance().backlight.append(mode); }
};

// A player over a store, a thumbnailer, a device and a back end of the test's own. One a process.
class PlayerFixture
{
public:
    PlayerFixture()
    {
        qputenv("HOME", m_home.path().toUtf8());
        FakeThumbnailerClient::install();
        ChangeNotifier::setSource([](ChangeNotifier *) {});
        store = std::make_unique<FakeSparqlStore>();
        RendererRegistry::setBackendFactory([this]() -> std::unique_ptr<MediaBackend> {
            if (!hasRenderer)
                return nullptr;
            auto made = std::make_unique<NullMediaBackend>();
            made->setDefaultMedia(media);
            backend = made.get();
            return made;
        });
        DeviceStateOverrides overrides;
        overrides.call = [](QObject *parent) -> CallMonitor * { return new FakeCallMonitor(parent); };
        overrides.context = [](const QString &, QObject *parent) -> ContextProperty * {
            auto *property = new FakeContextProperty(parent);
            FakeDevice::instance().routeProperty = property;
            return property;
        };
        overrides.backlight = []() -> BacklightControl * { return new FakeBacklight; };
        setDeviceStateOverrides(overrides);
    }

    // A widget with its renderer, and a controller on it.
    void start()
    {
        widget = new VideoWidget;
        widget->resize(480, 270);
        controller = std::make_unique<PlayerController>(widget, RendererRegistry::instance(),
                                                        TrackerInterface::instance(),
                                                        ThumbnailHelper::instance(), nullptr);
    }
    [[nodiscard]] bool startWithRenderer()
    {
        start();
        return QTest::qWaitFor([this] { return widget->renderer() != nullptr; });
    }
    void stop(bool deleteWidget = true)
    {
        controller.reset();
        if (deleteWidget)
            delete widget;
        FakeDevice::instance() = FakeDevice();
        media = NullMediaBackend::Media();
        hasRenderer = true;
        store->clear();
    }

    // Plays until the first frame stands.
    [[nodiscard]] bool playUntilItPlays(VideoInfo video)
    {
        controller->play(video);
        return QTest::qWaitFor([this] { return controller->state() == AvloRenderer::Playing; });
    }
    [[nodiscard]] bool waitFor(AvloRenderer::State state)
    {
        return QTest::qWaitFor([this, state] { return controller->state() == state; });
    }
    // What was saved, as "urn position", in order.
    [[nodiscard]] QStringList savedPositions() const
    {
        static const QRegularExpression insert(
            QStringLiteral("INSERT \\{ <(.*)> nmm:runTime \"(\\d+)\" \\}$"));
        QStringList saved;
        for (const QString &text : store->texts(SparqlQuery::UpdateStatement)) {
            const QRegularExpressionMatch match = insert.match(text);
            saved.append(match.captured(1) + u' ' + match.captured(2));
        }
        return saved;
    }
    [[nodiscard]] static VideoInfo video(const QString &urn = QStringLiteral("urn:1"), quint32 duration = 60,
                                         quint32 position = 0)
    {
        VideoInfo info;
        info.urn = urn;
        info.title = QStringLiteral("Title");
        info.duration = duration;
        info.playPosition = position;
        info.url = QStringLiteral("file:///v/") + QString(urn).replace(u':', u'-') + QStringLiteral(".mp4");
        return info;
    }

    std::unique_ptr<FakeSparqlStore> store;
    QPointer<NullMediaBackend> backend;
    NullMediaBackend::Media media;
    bool hasRenderer = true;
    QPointer<VideoWidget> widget;
    std::unique_ptr<PlayerController> controller;

private:
    QTemporaryDir m_home;
};

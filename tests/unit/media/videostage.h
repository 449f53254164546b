// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <platform/media/controlslider.h>
#include <platform/media/gestureoverlay.h>
#include <platform/media/nullmediabackend.h>
#include <platform/media/playercontrols.h>
#include <platform/media/rendererregistry.h>
#include <platform/media/videowidget.h>
#include <platform/toolkit/applicationpage.h>
#include <platform/toolkit/applicationwindow.h>
#include <platform/toolkit/button.h>
#include <platform/toolkit/theme.h>

#include "support/driventimer.h"
#include "support/fingers.h"

#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

// A page whose picture is a video widget.
class VideoPage : public toolkit::ApplicationPage
{
public:
    VideoPage() : m_widget(new VideoWidget(this)) { setStyleName(QStringLiteral("KestrelPlayerPage")); }
    [[nodiscard]] VideoWidget *widget() const { return m_widget; }

protected:
    void resizeEvent(QGraphicsSceneResizeEvent *event) override
    {
        ApplicationPage::resizeEvent(event);
        m_widget->setGeometry(rect());
    }

private:
    VideoWidget *m_widget;
};

// A video of a minute on a page of a real window, at second 15 unless said otherwise; its time passes by
// `backend` alone.
class VideoStage
{
public:
    using Profile = toolkit::ApplicationWindow::Profile;

    VideoStage()
    {
        qputenv("XDG_CACHE_HOME", QFile::encodeName(m_home.path()));
        toolkit::Theme::instance()->setReducedMotion(true);
        RendererRegistry::setBackendFactory([this] {
            auto made = std::make_unique<NullMediaBackend>();
            backend = made.get();
            return made;
        });
    }

    [[nodiscard]] bool open(Profile profile = Profile::Desktop,
                            const NullMediaBackend::Media &media = NullMediaBackend::Media())
    {
        page = std::make_unique<VideoPage>();
        widget = page->widget();
        window = std::make_unique<toolkit::ApplicationWindow>();
        window->setProfile(profile);
        window->showForProfile();
        if (!QTest::qWaitForWindowExposed(window.get())
            || !QTest::qWaitFor([this] { return window->isOnDisplay() && backend; }))
            return false;
        page->appear(window.get(), toolkit::Appearance::Immediate);
        fingers = std::make_unique<Fingers>(window.get());
        backend->setDefaultMedia(media);
        widget->play(QStringLiteral("file:///a.mp4"), 0);
        backend->advance(std::chrono::seconds(15));
        backend->clearCommands();
        return QTest::qWaitFor(
            [this] { return widget->isOnDisplay() && widget->size() == window->logicalSize(); });
    }
    void close()
    {
        fingers.reset();
        page.reset();
        window.reset();
        backend = nullptr;
        QGuiApplication::setLayoutDirection(Qt::LeftToRight);
    }

    // In the window, by parts of the picture.
    [[nodiscard]] QPoint at(qreal across, qreal down) const
    {
        return window->mapFromScene(
            widget->mapToScene(QPointF(widget->size().width() * across, widget->size().height() * down)));
    }
    [[nodiscard]] QPoint middleOf(const QGraphicsItem *item, qreal across = 0.5) const
    {
        const QRectF place = item->sceneBoundingRect();
        return window->mapFromScene(QPointF(place.left() + place.width() * across, place.center().y()));
    }
    // In steps, as frames go by.
    void swipe(const QPoint &way, int finger = 0)
    {
        for (int step = 1; step <= 4; ++step)
            fingers->moveBy(finger, way * step / 4 - way * (step - 1) / 4);
    }
    [[nodiscard]] QTimer *timer(const char *name) const
    {
        return widget->findChild<QTimer *>(QLatin1String(name));
    }
    void pause()
    {
        widget->pause();
        backend->advance(std::chrono::milliseconds(0));
    }
    [[nodiscard]] double second() const { return double(backend->heading().count()) / 1e9; }

    std::unique_ptr<toolkit::ApplicationWindow> window;
    std::unique_ptr<VideoPage> page;
    std::unique_ptr<Fingers> fingers;
    VideoWidget *widget = nullptr;
    NullMediaBackend *backend = nullptr;

private:
    QTemporaryDir m_home;
};

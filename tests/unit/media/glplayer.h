// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "pictureclips.h"

#include <platform/media/gst/gstmediabackend.h>
#include <platform/media/videowidget.h>
#include <platform/toolkit/applicationpage.h>
#include <platform/toolkit/applicationwindow.h>
#include <platform/toolkit/viewports.h>

#include <QGraphicsSceneResizeEvent>
#include <QScreen>
#include <QSignalSpy>
#include <QTest>

#include <cstring>
#include <dlfcn.h>
#include <functional>
#include <link.h>
#include <memory>

// A window that plays, painted by OpenGL or by the processor.
namespace glplayer {

using toolkit::ApplicationWindow;
using toolkit::GlViewport;

constexpr int Patience = 45000; // ms; a loaded machine
constexpr int Near = 4; // of 255

class VideoPage : public toolkit::ApplicationPage
{
public:
    VideoPage() : m_video(new VideoWidget(this)) { }
    [[nodiscard]] VideoWidget *video() const { return m_video; }
    int deactivations = 0;

protected:
    bool event(QEvent *event) override
    {
        if (event->type() == QEvent::WindowDeactivate)
            ++deactivations;
        return ApplicationPage::event(event);
    }
    void resizeEvent(QGraphicsSceneResizeEvent *event) override
    {
        ApplicationPage::resizeEvent(event);
        m_video->setGeometry(rect());
    }

private:
    VideoWidget *m_video;
};

// The driver is let go at the end of the program, and with it the only pointers to what it allocated once:
// leaks whose place has no name any more. Here it stays.
inline void keepDriver()
{
    const auto keep = [](dl_phdr_info *library, size_t, void *) {
        if (std::strstr(library->dlpi_name, "_dri.so") != nullptr)
            dlopen(library->dlpi_name, RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE);
        return 0;
    };
    dl_iterate_phdr(keep, nullptr);
}

// What a person sees.
inline QImage onScreen(const QWidget *window)
{
    return window->screen()->grabWindow(window->winId()).toImage().convertToFormat(QImage::Format_RGB32);
}

// A window that plays, painted by what the environment asks for.
class Player
{
public:
    // An empty size is that of a handset's screen.
    Player(
        const char *viewport, const QSize &size, const std::function<void()> &beforeShown = [] {})
    {
        qputenv("KESTREL_VIEWPORT", viewport);
        m_window = std::make_unique<ApplicationWindow>();
        m_window->setProfile(size.isEmpty() ? ApplicationWindow::Profile::Handset
                                            : ApplicationWindow::Profile::Desktop);
        if (!size.isEmpty()) {
            m_window->setWindowFlag(Qt::FramelessWindowHint);
            m_window->setFixedSize(size);
        }
        beforeShown();
        m_window->showForProfile();
        m_page = std::make_unique<VideoPage>();
        m_page->appear(m_window.get(), toolkit::Appearance::Immediate);
    }
    [[nodiscard]] ApplicationWindow *window() const { return m_window.get(); }
    [[nodiscard]] VideoPage *page() const { return m_page.get(); }
    [[nodiscard]] VideoWidget *video() const { return m_page->video(); }
    [[nodiscard]] GlViewport *gl() const { return qobject_cast<GlViewport *>(m_window->viewport()); }
    [[nodiscard]] VideoFrame frame() const { return video()->backend()->frame(); }

    [[nodiscard]] bool start(const QString &path)
    {
        const bool ready
            = QTest::qWaitFor([this] { return video()->backend() != nullptr; }, Patience) && isPainted();
        video()->play(testclips::address(path), 0);
        return ready;
    }
    // Paused, and what is painted is a frame of the kind and size that the painting asked for.
    [[nodiscard]] bool showPaused(const QString &path)
    {
        if (!start(path))
            return false;
        QSignalSpy paused(video()->backend(), &MediaBackend::paused);
        video()->pause();
        return paused.wait(Patience) && isPainted();
    }
    [[nodiscard]] bool isPainted() const { return QTest::qWaitForWindowExposed(m_window.get(), Patience); }
    [[nodiscard]] QImage picture() const
    {
        m_window->viewport()->repaint();
        return onScreen(m_window.get());
    }

private:
    std::unique_ptr<ApplicationWindow> m_window;
    std::unique_ptr<VideoPage> m_page; // goes before the window
};

inline QString largestDifference(const QImage &one, const QImage &other)
{
    if (one.size() != other.size())
        return QStringLiteral("sizes");
    int worst = 0;
    QPoint where;
    for (int y = 0; y < one.height(); ++y) {
        for (int x = 0; x < one.width(); ++x) {
            const int off = pictureclips::largestDifference(one.pixel(x, y), other.pixel(x, y));
            if (off > worst) {
                worst = off;
                where = {x, y};
            }
        }
    }
    return worst <= Near
        ? QString()
        : QStringLiteral("%1 at %2,%3: %4 %5")
              .arg(worst)
              .arg(where.x())
              .arg(where.y())
              .arg(pictureclips::text(one.pixel(where)), pictureclips::text(other.pixel(where)));
}

} // namespace glplayer

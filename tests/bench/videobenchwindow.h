// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <platform/media/videowidget.h>
#include <platform/toolkit/applicationpage.h>
#include <platform/toolkit/applicationwindow.h>

#include <QGraphicsSceneResizeEvent>
#include <QString>
#include <QStringList>

// A page that is nothing but a video.
class VideoBenchPage : public toolkit::ApplicationPage
{
public:
    VideoBenchPage() : m_video(new VideoWidget(this)) { setStyleName(QStringLiteral("KestrelPlayerPage")); }
    [[nodiscard]] VideoWidget *video() const { return m_video; }

protected:
    void resizeEvent(QGraphicsSceneResizeEvent *event) override
    {
        ApplicationPage::resizeEvent(event);
        m_video->setGeometry(rect());
    }

private:
    VideoWidget *m_video;
};

// The window of the program with such a page.
class VideoBenchWindow : public toolkit::ApplicationWindow
{
public:
    // "1920x1080"
    explicit VideoBenchWindow(const QString &size) : m_page(new VideoBenchPage)
    {
        const QStringList sides = size.split(u'x');
        setProfile(Profile::Desktop);
        setWindowFlag(Qt::FramelessWindowHint);
        setFixedSize(sides.value(0).toInt(), sides.value(1).toInt());
        show();
        m_page->appear(this, toolkit::Appearance::Immediate);
    }
    [[nodiscard]] VideoWidget *video() const { return m_page->video(); }

private:
    VideoBenchPage *m_page;
};

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "data/videoinfo.h"
#include "platform/toolkit/applicationpage.h"

#include <QString>

class MyAllVideosWidget;
class QKeyEvent;
class QTimer;
class ScanProgressLine;

namespace toolkit {
class LinearLayoutPolicy;
}

// The library: all videos in a list, the filter field above it while it is wanted.
class LocalVideosPage : public toolkit::ApplicationPage
{
    Q_OBJECT

public:
    LocalVideosPage();
    ~LocalVideosPage() override;

    void resetFilter();
    // Off while a video plays.
    void setAutoUpdate(bool on);
    // The orientation that the controller asked for: 1 for the player, 0 for the library.
    void setOrientation(int orientation) { m_orientation = orientation; }
    [[nodiscard]] int requestedOrientation() const { return m_orientation; }
    // Of the store. That it cannot be reached is told once, when the page is seen; a page without a list says
    // it itself, as long as that lasts.
    void setLibraryReachable(bool reachable);
    // The last request to play was turned down because of a call.
    void setCallRefused(bool refused);
    // Null until the content was made.
    [[nodiscard]] MyAllVideosWidget *localVideosWidget() const { return m_widget; }

Q_SIGNALS:
    void showNowPlayingPage(VideoInfo &info);
    void showDetailsPage(QString url);
    void goBackClicked();
    // Once, shortly after the list appeared for the first time.
    void localContentCreated();
    void handleError(QString message);
    void shareVideo(QString fileUrl);
    void mmcStateChanged(bool mounted);

public Q_SLOTS:
    void hideEmptyFilter();
    void showTextEdit(const QString &firstChar, bool show);
    void keyEvent(QKeyEvent *eventData);
    void deleteFile(const QString &filePath);
    void disableThumbnailing(bool disable);
    // Whatever the person was asked there is not answered any more.
    void cancelDialogs();
    void timerEvent(QTimerEvent *event) override;
    void delayEvent();

protected:
    void createContent() override;
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget) override;
    void resizeEvent(QGraphicsSceneResizeEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    void connectWidget();
    void followScans();
    // Warns when there is none.
    [[nodiscard]] MyAllVideosWidget *widgetFor(const char *function) const;
    void placeProgressLine();
    // While nothing is known of the collection, or it is empty.
    [[nodiscard]] bool isBlack() const;
    void followViewState();
    void tellUnreachable();

    MyAllVideosWidget *m_widget = nullptr;
    toolkit::LinearLayoutPolicy *m_policy = nullptr;
    ScanProgressLine *m_progressLine = nullptr;
    QMetaObject::Connection m_announcement; // until the content was announced
    QTimer *m_announcementTimer;
    int m_orientation = 0;
    bool m_isReachable = true;
    bool m_unreachableToTell = false;
};

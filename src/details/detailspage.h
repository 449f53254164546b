// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "previewwidget.h"

#include <data/videodetails.h>
#include <data/videofacts.h>
#include <data/videoinfo.h>
#include <kestrel/contentrecord.h>
#include <platform/toolkit/applicationpage.h>

#include <QImage>
#include <QMap>
#include <QPointer>
#include <QString>
#include <QStringList>

class ActionMediator;
class ExtensionArea;
class ExtensionFailureList;
class ExtensionInterface;
class FactsReader;
class QGraphicsWidget;
class QTimer;
class ThumbnailHelper;
class TrackerInterface;

namespace toolkit {
class FocusSight;
class LinearLayoutPolicy;
} // namespace toolkit

// Shows one video's details, and below them what extensions have to say about it.
class DetailsPage : public toolkit::ApplicationPage
{
    Q_OBJECT

public:
    // Both outlive the page.
    DetailsPage(TrackerInterface *store, ThumbnailHelper *thumbnails);
    ~DetailsPage() override;

    // The store's identifier of a video. An empty one changes nothing.
    void setPlayedVideo(const QString &urn);
    // The still of the video shown was made anew.
    void updatePauseThumbnail();
    // The picture behind the page while the program sits in the task switcher.
    using Picture = const QImage &(*)();
    void setSwitcherBackground(Picture background) { m_switcherBackground = background; }
    // Both may be asked for again and again. They are loaded when the page is first seen.
    void loadExtensions();
    void unloadExtensions();
    // Null before the page needed one.
    [[nodiscard]] ExtensionArea *extensionArea() const { return m_area; }
    [[nodiscard]] PreviewWidget *preview() const { return m_preview; }
    // Of the video shown; empty before there was one.
    [[nodiscard]] QString urn() const { return m_details.urn; }

Q_SIGNALS:
    void extensionVideoPlaybackRequest(QString &address);
    // The widget stays the extension's.
    void showExtensionView(QGraphicsWidget *widget, QString title);

public Q_SLOTS:
    void addExtension(ExtensionInterface *extension);
    void removeExtension(ExtensionInterface *extension);
    // Of the host interface that it is connected to.
    void showExtensionSubView();
    // Plays entry `index` of the list; the caller's id is not used.
    void processPlayRequest(QStringList uriList, uint index, QString callerId);
    void detailsReady(VideoDetails details, int id);
    void dataReady(VideoInfo info, int id);

protected:
    void createContent() override;
    void keyPressEvent(QKeyEvent *event) override;
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget) override;

private:
    void showPicture(const QString &path);
    void thumbnailArrived(const QString &url, const QString &path);
    void showDetails();
    void showFacts();
    void factsRead(const VideoFacts &facts, int id);
    void pageAppeared();
    // That there are no details, unless there are.
    void sayNothingIsThere();
    void startExtensions();
    void tellExtensions();
    [[nodiscard]] ContentRecord contentRecord() const;

    QPointer<PreviewWidget> m_preview;
    toolkit::LinearLayoutPolicy *m_policy;
    toolkit::Widget *m_foot; // takes the room that is left; extensions stand above it
    toolkit::FocusSight *m_focusSight;
    TrackerInterface *m_store;
    ThumbnailHelper *m_thumbnails;
    FactsReader *m_factsReader;
    QTimer *m_emptyGuard; // how long nothing is said while an answer may come
    VideoDetails m_details; // as shown
    VideoFacts m_facts;
    Picture m_switcherBackground = nullptr;
    ExtensionArea *m_area = nullptr;
    ExtensionFailureList *m_failureList = nullptr;
    QMap<ExtensionInterface *, QPointer<QGraphicsWidget>> m_widgets;
    QMap<ExtensionInterface *, ActionMediator *> m_mediators;
    bool m_extensionsWanted = false;
    bool m_contentMade = false;
    int m_detailsQueryId = 0; // 0: none is outstanding
    int m_dataQueryId = 0;
    int m_factsId = 0;
};

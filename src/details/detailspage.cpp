// SPDX-License-Identifier: GPL-3.0-or-later
#include "detailspage.h"

#include "detailslog.h"
#include "extensionfailurelist.h"
#include "facttexts.h"
#include "videodetailscontainer.h"

#include <data/factsreader.h>
#include <data/thumbnailhelper.h>
#include <data/trackerinterface.h>
#include <data/videoconstants.h>
#include <platform/toolkit/applicationwindow.h>
#include <platform/toolkit/focussight.h>
#include <platform/toolkit/keeptranslated.h>
#include <platform/toolkit/layout.h>
#include <platform/toolkit/pannableviewport.h>

#include <QKeyEvent>
#include <QPainter>
#include <QTimer>
#include <QUrl>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int emptyDelay = 500; // ms; the store mostly answers before the page has slid in

} // namespace

DetailsPage::DetailsPage(TrackerInterface *store, ThumbnailHelper *thumbnails)
    : m_preview(new PreviewWidget(thumbnails, centralWidget())),
      m_foot(new toolkit::Widget(centralWidget())),
      m_focusSight(new toolkit::FocusSight(pannableViewport())),
      m_store(store),
      m_thumbnails(thumbnails),
      m_factsReader(new FactsReader(this)),
      m_emptyGuard(new QTimer(this))
{
    setStyleName(u"VideoApplicationPage"_s);
    setPannable(true);
    setEscapeMode(EscapeMode::Back);
    auto *layout = new toolkit::Layout;
    m_policy = new toolkit::LinearLayoutPolicy(layout, Qt::Vertical);
    m_policy->setStyleName(u"KestrelPolicy"_s);
    layout->setPolicy(m_policy);
    m_policy->addItem(m_preview);
    m_policy->addItem(m_foot);
    m_policy->setStretchFactor(m_foot, 1);
    centralWidget()->setLayout(layout);

    m_emptyGuard->setObjectName(u"emptyGuard"_s);
    m_emptyGuard->setSingleShot(true);
    m_emptyGuard->setInterval(emptyDelay);
    connect(m_emptyGuard, &QTimer::timeout, this, &DetailsPage::sayNothingIsThere);
    connect(this, &DetailsPage::appeared, this, &DetailsPage::pageAppeared);
    connect(m_store, &TrackerInterface::videoDetailsFinished, this, &DetailsPage::detailsReady);
    connect(m_store, &TrackerInterface::dataFromUrnFinished, this, &DetailsPage::dataReady);
    connect(m_thumbnails, &ThumbnailHelper::newThumbnailReady, this, &DetailsPage::thumbnailArrived);
    connect(m_factsReader, &FactsReader::factsRead, this, &DetailsPage::factsRead);
    toolkit::keepTranslated(this, [this] {
        setTitle(qtTrId("qtn_comm_object_details"));
        if (m_preview && !m_preview->detailsContainer()->labels().isEmpty())
            showDetails();
    });
}

DetailsPage::~DetailsPage()
{
    // Extensions go while what they were given is there.
    delete m_failureList;
    delete m_area;
}

void DetailsPage::setPlayedVideo(const QString &urn)
{
    constexpr auto function = "void DetailsPage::setPlayedVideo(const QString&)";
    if (!m_preview) {
        qCWarning(detailsLog) << function << "Preview widget missing";
        return;
    }
    if (urn.isEmpty()) {
        qCWarning(detailsLog) << function << "No urn specified";
        return;
    }
    if (!isShown()) // opened anew, perhaps for the same video
        pannableViewport()->setPosition(QPointF());
    m_detailsQueryId = m_store->videoDetails(urn);
    if (m_detailsQueryId == 0)
        qCWarning(detailsLog) << function << "Tracker query failed";
}

void DetailsPage::detailsReady(VideoDetails details, int id)
{
    if (id == 0 || id != m_detailsQueryId)
        return;
    m_detailsQueryId = 0;
    if (details.urn != m_details.urn) {
        m_dataQueryId = 0; // of the video before
        m_facts = VideoFacts();
        pannableViewport()->setPosition(QPointF());
    }
    m_details = details;
    const QString picture = m_thumbnails->thumbnailPath(details.url, THUMBNAIL_FLAVOR);
    showPicture(picture);
    if (picture.isEmpty()) // one is made now: a video that was never in the list may have none
        m_thumbnails->thumbnail(details.url, details.mimeType);
    showDetails();
    // Those that were read before are shown until the file has been read again.
    m_factsId = QUrl(details.url).isLocalFile() ? m_factsReader->read(details.urn) : 0;
    tellExtensions();
}

void DetailsPage::showDetails()
{
    m_emptyGuard->stop();
    if (!m_preview)
        return;
    m_preview->setDetails(m_details);
    showFacts();
}

void DetailsPage::showFacts()
{
    if (m_preview)
        m_preview->detailsContainer()->setFacts(qtTrId("qtn_vide_facts"),
                                                FactTexts::lines(m_facts, m_details.url));
}

void DetailsPage::factsRead(const VideoFacts &facts, int id)
{
    if (id == 0 || id != m_factsId)
        return;
    m_factsId = 0;
    if (facts == m_facts)
        return;
    m_facts = facts;
    showFacts();
}

void DetailsPage::showPicture(const QString &path)
{
    if (!m_preview)
        return;
    if (path.isEmpty())
        m_preview->showPlaceholder();
    else
        m_preview->setThumbnail(path);
}

void DetailsPage::thumbnailArrived(const QString &url, const QString &path)
{
    if (!m_details.url.isEmpty() && QUrl(url) == QUrl(m_details.url))
        showPicture(path);
}

void DetailsPage::updatePauseThumbnail()
{
    if (m_details.urn.isEmpty())
        return;
    m_dataQueryId = m_store->dataFromUrn(m_details.urn);
    if (m_dataQueryId == 0)
        qCWarning(detailsLog) << "void DetailsPage::updatePauseThumbnail()"
                              << "Tracker query failed";
}

void DetailsPage::dataReady(VideoInfo info, int id)
{
    if (id == 0 || id != m_dataQueryId)
        return;
    m_dataQueryId = 0;
    showPicture(m_thumbnails->thumbnailPath(info.url, THUMBNAIL_FLAVOR));
}

// The page never stays blank: also not for a stream, of which the store knows nothing, and without a store.
void DetailsPage::pageAppeared()
{
    if (!m_details.urn.isEmpty())
        return;
    if (m_detailsQueryId == 0)
        sayNothingIsThere();
    else
        m_emptyGuard->start();
}

void DetailsPage::sayNothingIsThere()
{
    if (m_details.urn.isEmpty())
        showDetails();
}

void DetailsPage::keyPressEvent(QKeyEvent *event)
{
    if (m_focusSight->moveByKey(event) || pannableViewport()->scrollByKey(event))
        event->accept();
    else
        toolkit::ApplicationPage::keyPressEvent(event);
}

void DetailsPage::paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget)
{
    const bool inSwitcher = window() && window()->isInSwitcher();
    const QImage background = inSwitcher && m_switcherBackground ? m_switcherBackground() : QImage();
    if (painter && !background.isNull())
        painter->drawImage(boundingRect(), background, background.rect());
    else
        toolkit::ApplicationPage::paint(painter, option, widget);
}

// SPDX-License-Identifier: GPL-3.0-or-later
// Details, what extensions show of them, and sharing.
#include "applicationcontroller.h"

#include "applog.h"
#include "data/thumbnailhelper.h"
#include "details/detailspage.h"
#include "details/extensionpage.h"
#include "library/pagebackground.h"
#include "platform/system/usernotice.h"
#include "player/playercontroller.h"
#include "player/playerpage.h"

#include <QUrl>

void ApplicationController::createDetailsPage()
{
    if (m_detailsPage)
        return;
    m_detailsPage = new DetailsPage(m_store, ThumbnailHelper::instance());
    m_detailsPage->setSwitcherBackground(&pageBackground);
    connect(m_detailsPage, &DetailsPage::backButtonClicked, this, &ApplicationController::returnToPlay);
    connect(m_detailsPage, &DetailsPage::showExtensionView, this, &ApplicationController::showExtensionView);
    connect(m_detailsPage, &DetailsPage::extensionVideoPlaybackRequest, this,
            [this](QString &address) { processAndPlay(address, 0); });
}

void ApplicationController::showDetails()
{
    createDetailsPage();
    if (!m_playerPage)
        createPlayerPage();
    if (m_playerController) {
        m_playerPage->setControlsEnabled(false);
        m_playerController->pause();
        const QString urn = m_playerController->currentVideo().urn;
        if (!urn.isEmpty())
            m_detailsPage->setPlayedVideo(urn);
        else
            qCWarning(appLog) << "void ApplicationController::showDetails()"
                              << "Details cannot be shown for streams";
    }
    goToPage(m_detailsPage);
}

void ApplicationController::showDetails(QString url)
{
    createDetailsPage();
    m_detailsPage->setPlayedVideo(url);
    goToPage(m_detailsPage);
}

void ApplicationController::pauseThumbnailUpdated()
{
    if (m_detailsPage)
        m_detailsPage->updatePauseThumbnail();
}

void ApplicationController::showExtensionView(QGraphicsWidget *content, const QString &title)
{
    auto *page = new ExtensionPage(content, title);
    connect(page, &ExtensionPage::backButtonClicked, this, &ApplicationController::goBack);
    goToPage(page);
}

void ApplicationController::initServices()
{
    if (!m_shareService)
        m_shareService.reset(ShareService::create());
}

// What follows file:// is a plain path from here on, and no address to be read as one again.
void ApplicationController::shareVideo(const QString &fileUrl)
{
    initServices();
    m_shareService->share({QUrl::fromPercentEncoding(fileUrl.toUtf8())});
}

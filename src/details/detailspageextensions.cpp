// SPDX-License-Identifier: GPL-3.0-or-later
// What extensions show below the details, and what they ask for.
#include "detailspage.h"

#include "detailslog.h"
#include "extensionfailurelist.h"

#include <data/videoconstants.h>
#include <kestrel/actionmediator.h>
#include <kestrel/extensioninterface.h>
#include <kestrel/playerhostinterface.h>
#include <platform/extensions/extensionarea.h>
#include <platform/toolkit/layout.h>

#include <QGraphicsScene>
#include <QGraphicsWidget>
#include <QRegularExpression>

using namespace Qt::Literals::StringLiterals;

namespace {

bool isNumber(const QString &text)
{
    bool number = false;
    static_cast<void>(text.toUInt(&number));
    return number;
}

} // namespace

void DetailsPage::loadExtensions()
{
    m_extensionsWanted = true;
    if (m_contentMade)
        startExtensions();
}

void DetailsPage::unloadExtensions()
{
    m_extensionsWanted = false;
    if (m_area)
        m_area->unload();
}

// What takes time is done when somebody looks at the page: it is made when the program starts.
void DetailsPage::createContent()
{
    toolkit::ApplicationPage::createContent();
    m_contentMade = true;
    if (m_preview && m_preview->image()->pixmap().isNull())
        m_preview->showPlaceholder();
    if (m_extensionsWanted)
        startExtensions();
}

void DetailsPage::startExtensions()
{
    if (!m_area) {
        m_area = new ExtensionArea(QString::fromLatin1(KESTREL_EXTENSION_INTERFACE), this);
        m_area->setOutOfProcessFilter(QRegularExpression(u"$^"_s)); // none
        m_area->setInProcessFilter(QRegularExpression(RELATED_EXTENSION_DESKTOP_FILE));
        connect(m_area, &ExtensionArea::extensionInstantiated, this, &DetailsPage::addExtension);
        connect(m_area, &ExtensionArea::extensionRemoved, this, &DetailsPage::removeExtension);
        m_failureList = new ExtensionFailureList(m_area, centralWidget());
        m_policy->insertItem(m_policy->indexOf(m_foot), m_failureList);
    }
    m_area->init();
}

void DetailsPage::addExtension(ExtensionInterface *extension)
{
    auto *mediator = new ActionMediator(extension, this);
    auto *host = new PlayerHostInterface(mediator);
    connect(host, &PlayerHostInterface::subPageWidgetChanged, this, &DetailsPage::showExtensionSubView);
    connect(host, &PlayerHostInterface::playRequested, this, &DetailsPage::processPlayRequest);
    mediator->setHostInterface(host);
    extension->setActionMediator(mediator);
    QGraphicsWidget *widget = extension->widget();
    if (widget) {
        widget->setParentItem(centralWidget());
        const QGraphicsLayoutItem *below = m_foot;
        if (m_failureList)
            below = m_failureList;
        m_policy->insertItem(m_policy->indexOf(below), widget);
    }
    m_widgets.insert(extension, widget);
    if (ActionMediator *before = m_mediators.value(extension))
        before->deleteLater();
    m_mediators.insert(extension, mediator);
    if (!m_details.urn.isEmpty())
        mediator->setContent(contentRecord());
}

void DetailsPage::removeExtension(ExtensionInterface *extension)
{
    QGraphicsWidget *const widget = m_widgets.take(extension);
    // It may speak to the extension until that is gone.
    if (ActionMediator *mediator = m_mediators.take(extension))
        mediator->deleteLater();
    if (!widget) {
        qCWarning(detailsLog) << "void DetailsPage::removeExtension(ExtensionInterface*)"
                              << "No widget founds for removed extension!";
        return;
    }
    m_policy->removeItem(widget);
    widget->setParentItem(nullptr);
    if (widget->scene())
        widget->scene()->removeItem(widget);
}

void DetailsPage::showExtensionSubView()
{
    const auto *host = qobject_cast<PlayerHostInterface *>(sender());
    if (!host) {
        qCWarning(detailsLog) << "void DetailsPage::showExtensionSubView()"
                              << "interface is NULL";
        return;
    }
    Q_EMIT showExtensionView(host->subPageWidget(), host->title());
}

void DetailsPage::processPlayRequest(QStringList uriList, uint index, QString callerId)
{
    Q_UNUSED(callerId)
    if (index >= size_t(uriList.size())) {
        qCWarning(detailsLog) << "void DetailsPage::processPlayRequest(QStringList, uint, QString)"
                              << "Faulty index";
        return;
    }
    Q_EMIT extensionVideoPlaybackRequest(uriList[qsizetype(index)]);
}

// A record of the details tells no series, and of episodes only their number.
ContentRecord DetailsPage::contentRecord() const
{
    return ContentRecord(m_details.url, m_details.title, QString(),
                         isNumber(m_details.additionalInfo) ? m_details.additionalInfo : QString());
}

void DetailsPage::tellExtensions()
{
    const QList<ActionMediator *> mediators = m_mediators.values();
    for (ActionMediator *mediator : mediators)
        mediator->setContent(contentRecord());
}

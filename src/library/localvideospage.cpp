// SPDX-License-Identifier: GPL-3.0-or-later
#include "localvideospage.h"

#include "data/storeprogress.h"
#include "data/thumbnailhelper.h"
#include "data/trackerinterface.h"
#include "filterwidget.h"
#include "librarylog.h"
#include "myallvideoswidget.h"
#include "pagebackground.h"
#include "platform/toolkit/application.h"
#include "platform/toolkit/applicationwindow.h"
#include "platform/toolkit/keeptranslated.h"
#include "platform/toolkit/layout.h"
#include "platform/toolkit/pannableviewport.h"
#include "platform/toolkit/textedit.h"
#include "scanprogressline.h"

#include <QCoreApplication>
#include <QPainter>
#include <QTimer>
#include <QTimerEvent>

#include <new>
#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int AnnouncementTimer = 15000; // id of an event, not a time
constexpr int AnnouncementDelay = 300; // ms
constexpr qreal ProgressLineHeight = 3;

} // namespace

LocalVideosPage::LocalVideosPage() : m_announcementTimer(new QTimer(this))
{
    toolkit::keepTranslated(this, [this] { setTitle(qtTrId("qtn_vide_collection")); });
    setPannable(true);
    setEscapeMode(EscapeMode::CloseWindow);
    setComponentsDisplay(AllComponents, ComponentDisplay::Hide);
    setStyleName(u"VideoApplicationPage"_s);
    followViewState();
    if (!toolkit::Application::activeApplicationWindow())
        qCWarning(libraryLog) << "Kestrel: Unable to get active window.";
    connect(this, &LocalVideosPage::backButtonClicked, this, &LocalVideosPage::goBackClicked);
    m_announcementTimer->setObjectName(u"announcementTimer"_s);
    m_announcementTimer->setSingleShot(true);
    m_announcementTimer->setInterval(AnnouncementDelay);
    connect(m_announcementTimer, &QTimer::timeout, this, &LocalVideosPage::localContentCreated);
    connect(this, &LocalVideosPage::displayEntered, this, &LocalVideosPage::tellUnreachable);
}

LocalVideosPage::~LocalVideosPage() = default;

void LocalVideosPage::createContent()
{
    toolkit::ApplicationPage::createContent();
    auto *layout = new toolkit::Layout;
    m_policy = new toolkit::LinearLayoutPolicy(layout, Qt::Vertical);
    m_policy->setStyleName(u"KestrelPolicy"_s);
    layout->setPolicy(m_policy);
    m_widget = new (std::nothrow) MyAllVideosWidget(centralWidget());
    if (m_widget) {
        connectWidget();
        m_policy->addItem(m_widget);
    } else {
        qCWarning(libraryLog) << "virtual void LocalVideosPage::createContent()"
                              << "localVideosWidget is null";
    }
    centralWidget()->setLayout(layout);

    m_progressLine = new ScanProgressLine(this);
    m_progressLine->setZValue(1);
    m_progressLine->setOnInverted(isBlack());
    if (!TrackerInterface::isOnServer())
        followScans();
    placeProgressLine();
    if (m_widget)
        m_widget->setLibraryReachable(m_isReachable);
}

// Of the folders of this machine.
void LocalVideosPage::followScans()
{
    const auto *progress = new StoreProgress(this);
    m_progressLine->follow(progress);
    if (m_widget)
        connect(progress, &StoreProgress::changed, m_widget, &MyAllVideosWidget::setScanProgress);
}

bool LocalVideosPage::isBlack() const
{
    const int state = m_widget ? m_widget->viewState() : MyAllVideosWidget::Unknown;
    return state == MyAllVideosWidget::Unknown || state == MyAllVideosWidget::EmptyCollection
        || state == MyAllVideosWidget::Unreachable;
}

// The whole page has another background with another state, and the title stands on it.
void LocalVideosPage::followViewState()
{
    setHeaderStyleName(isBlack() ? u"LibraryPageHeaderInverted"_s : u"LibraryPageHeader"_s);
    if (m_progressLine)
        m_progressLine->setOnInverted(isBlack());
    update();
}

void LocalVideosPage::connectWidget()
{
    connect(m_widget, &MyAllVideosWidget::playVideo, this, &LocalVideosPage::showNowPlayingPage);
    connect(m_widget, &MyAllVideosWidget::notify, this, &LocalVideosPage::handleError);
    connect(m_widget, &MyAllVideosWidget::shareVideo, this, &LocalVideosPage::shareVideo);
    connect(m_widget, &MyAllVideosWidget::detailsActionClicked, this, &LocalVideosPage::showDetailsPage);
    connect(m_widget, &MyAllVideosWidget::showTextEdit, this, &LocalVideosPage::showTextEdit);
    connect(this, &LocalVideosPage::backButtonClicked, m_widget, &MyAllVideosWidget::goingBack);
    m_announcement
        = connect(m_widget, &MyAllVideosWidget::displayEntered, this, &LocalVideosPage::delayEvent);
    connect(m_widget, &MyAllVideosWidget::contentVisible, this, &LocalVideosPage::setPannable);
    connect(m_widget, &MyAllVideosWidget::contentVisible, this, &LocalVideosPage::followViewState);
    connect(this, &LocalVideosPage::mmcStateChanged, m_widget, &MyAllVideosWidget::mmcStateChanged);
    // What was asked over this page does not stand over another: a video may be played from outside.
    connect(this, &LocalVideosPage::disappeared, m_widget, &MyAllVideosWidget::closeDialogs);
}

MyAllVideosWidget *LocalVideosPage::widgetFor(const char *function) const
{
    if (!m_widget)
        qCWarning(libraryLog) << function << "localVideosWidget is null";
    return m_widget;
}

void LocalVideosPage::resetFilter()
{
    if (MyAllVideosWidget *widget = widgetFor("void LocalVideosPage::resetFilter()"))
        widget->resetFilter();
}

void LocalVideosPage::setAutoUpdate(bool on)
{
    if (MyAllVideosWidget *widget = widgetFor("void LocalVideosPage::setAutoUpdate(bool)"))
        widget->setAutoUpdate(on);
}

void LocalVideosPage::setCallRefused(bool refused)
{
    if (m_widget)
        m_widget->setCallRefused(refused);
}

void LocalVideosPage::setLibraryReachable(bool reachable)
{
    if (reachable == m_isReachable)
        return;
    m_isReachable = reachable;
    m_unreachableToTell = !reachable;
    if (m_widget)
        m_widget->setLibraryReachable(reachable);
    tellUnreachable();
}

void LocalVideosPage::tellUnreachable()
{
    if (!m_widget || !isOnDisplay())
        return;
    if (std::exchange(m_unreachableToTell, false) && m_widget->hasLoaded())
        Q_EMIT handleError(qtTrId("qtn_vide_library_unreachable"));
}

void LocalVideosPage::deleteFile(const QString &filePath)
{
    if (MyAllVideosWidget *widget = widgetFor("void LocalVideosPage::deleteFile(const QString&)"))
        widget->hideDeletedFile(filePath);
}

void LocalVideosPage::keyEvent(QKeyEvent *eventData)
{
    MyAllVideosWidget *widget = widgetFor("void LocalVideosPage::keyEvent(QKeyEvent*)");
    if (!widget)
        return;
    if (toolkit::Application::activeApplicationWindow())
        widget->keyEvent(eventData);
    else if (FilterWidget *filter = widget->filterWidget())
        filter->textEdit()->clearFocus();
}

void LocalVideosPage::disableThumbnailing(bool disable)
{
    if (widgetFor("void LocalVideosPage::disableThumbnailing(bool)"))
        ThumbnailHelper::instance()->disableThumbnailing(disable);
}

void LocalVideosPage::cancelDialogs()
{
    if (MyAllVideosWidget *widget = widgetFor("void LocalVideosPage::cancelDialogs()"))
        widget->closeDialogs();
}

void LocalVideosPage::showTextEdit(const QString &firstChar, bool show)
{
    FilterWidget *filter = m_widget ? m_widget->filterWidget() : nullptr;
    if (!filter) {
        qCWarning(libraryLog) << "void LocalVideosPage::showTextEdit(const QString&, bool)"
                              << "Widget returned NULL filter";
        return;
    }
    if (!show) {
        filter->setVisible(false);
        m_policy->removeItem(filter);
        return;
    }
    if (m_policy->indexOf(filter) < 0) {
        m_policy->insertItem(0, filter);
        filter->setVisible(true);
    }
    if (!firstChar.isEmpty())
        filter->setText(firstChar);
    pannableViewport()->setPosition(QPointF(0, 0));
}

void LocalVideosPage::hideEmptyFilter()
{
    FilterWidget *filter = m_widget ? m_widget->filterWidget() : nullptr;
    if (filter && filter->text().isEmpty())
        showTextEdit(QString(), false);
}

void LocalVideosPage::delayEvent()
{
    // Behind the painting that is due.
    QCoreApplication::postEvent(this, new QTimerEvent(AnnouncementTimer), Qt::LowEventPriority);
}

void LocalVideosPage::timerEvent(QTimerEvent *event)
{
    if (event->timerId() != AnnouncementTimer) {
        toolkit::ApplicationPage::timerEvent(event);
        return;
    }
    // The list may have entered the display again before this was handled.
    if (!m_announcement)
        return;
    m_announcementTimer->start();
    disconnect(m_announcement);
}

void LocalVideosPage::paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget)
{
    if (!painter)
        return;
    if (isBlack())
        painter->fillRect(boundingRect(), Qt::black);
    else if (window() && window()->isInSwitcher() && !pageBackground().isNull())
        painter->drawImage(boundingRect(), pageBackground(), pageBackground().rect());
    else
        toolkit::ApplicationPage::paint(painter, option, widget);
}

void LocalVideosPage::resizeEvent(QGraphicsSceneResizeEvent *event)
{
    toolkit::ApplicationPage::resizeEvent(event);
    placeProgressLine();
}

void LocalVideosPage::keyPressEvent(QKeyEvent *event)
{
    if (m_widget && m_widget->takeKey(event))
        event->accept();
    else
        toolkit::ApplicationPage::keyPressEvent(event);
}

void LocalVideosPage::placeProgressLine()
{
    if (!m_progressLine)
        return;
    const qreal header = style().number(u"header"_s);
    m_progressLine->setGeometry(0, qMax(0.0, header - ProgressLineHeight), rect().width(),
                                ProgressLineHeight);
}

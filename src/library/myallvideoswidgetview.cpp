// SPDX-License-Identifier: GPL-3.0-or-later
// What the widget is made of, and which of it is shown.
#include "myallvideoswidget.h"

#include "data/allvideosmodel.h"
#include "data/mmcmonitor.h"
#include "data/thumbnailhelper.h"
#include "fileops/filemanager.h"
#include "filteredmodel.h"
#include "filterwidget.h"
#include "localvideoitemcreator.h"
#include "platform/toolkit/application.h"
#include "platform/toolkit/applicationwindow.h"
#include "platform/toolkit/imagewidget.h"
#include "platform/toolkit/keeptranslated.h"
#include "platform/toolkit/label.h"
#include "platform/toolkit/layout.h"
#include "platform/toolkit/list.h"
#include "platform/toolkit/spinner.h"
#include "platform/toolkit/textedit.h"
#include "platform/toolkit/theme.h"
#include "thumbnailrefresh.h"

#include <QLocale>
#include <QTimer>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr qreal FilterHeight = 80;
constexpr qreal SpacerHeight = 100;
constexpr qreal EmptyMarkDistance = 24; // above the text
constexpr int FilterHideDelay = 5000; // ms
constexpr int WaitingDelay = 1000; // ms, most lists are there before

} // namespace

MyAllVideosWidget::MyAllVideosWidget(QGraphicsItem *parent)
    : toolkit::Widget(parent),
      m_mmcAvailable(MmcMonitor::isAvailable())
{
    m_layout = new toolkit::Layout(this);
    m_policy = new toolkit::LinearLayoutPolicy(m_layout, Qt::Vertical);
    m_policy->setStyleName(u"KestrelPolicy"_s);
    m_layout->setPolicy(m_policy);

    m_model = new AllVideosModel(this);
    m_proxy = new FilteredModel(this);
    m_proxy->setFilterKeyColumn(VideoColumn::Title);
    m_proxy->setDynamicSortFilter(true);
    m_proxy->setSourceModel(m_model);
    createList();
    createEmptyState();
    createFilterField();
    createObjectMenu();

    connect(m_model, &AllVideosModel::modelUpdated, this, &MyAllVideosWidget::modelRowCountChanged,
            Qt::QueuedConnection);
    connect(m_model, &AllVideosModel::dataChanged, this, &MyAllVideosWidget::modelDataChanged);
    connect(m_proxy, &FilteredModel::modelReset, this, &MyAllVideosWidget::rowsArranged);
    connect(m_proxy, &FilteredModel::layoutChanged, this, &MyAllVideosWidget::rowsArranged);
    connect(m_filter, &FilterWidget::textChanged, this, &MyAllVideosWidget::liveFilteringTextChanged);
    connect(m_filter, &FilterWidget::clearClicked, this, &MyAllVideosWidget::liveFilteringClearClicked);
    connect(m_filter->textEdit(), &toolkit::TextEdit::gainedFocus, this,
            &MyAllVideosWidget::liveFilteringFocusChanged);
    connect(m_filter->textEdit(), &toolkit::TextEdit::lostFocus, this,
            &MyAllVideosWidget::liveFilteringFocusChanged);
    connectThumbnails();
    connectList();
    connect(m_filterTimer, &QTimer::timeout, this, &MyAllVideosWidget::filterTimeout);
    connectWindow();
    toolkit::keepTranslated(this, [this] {
        translateList();
        translateEmptyState();
        translateObjectMenu();
    });
}

void MyAllVideosWidget::createList()
{
    m_cellCreator = new LocalVideoItemCreator(this);
    m_list = new toolkit::List(this);
    m_list->setViewType(u"fast"_s);
    m_list->setColumns(1);
    m_list->setShowGroups(false);
    m_list->setIndexVisible(false);
    m_list->setSelectionMode(toolkit::List::SelectionMode::None);
    m_list->setStyleName(u"KestrelList"_s);
    m_list->setFocusPolicy(Qt::StrongFocus);
    m_list->setCellCreator(m_cellCreator);
    m_list->setItemModel(m_proxy);
    m_policy->insertItem(0, m_list);
}

// Cells write their times as the language does.
void MyAllVideosWidget::translateList()
{
    m_list->setAccessibleName(qtTrId("qtn_vide_collection"));
    refillCells();
}

void MyAllVideosWidget::createEmptyState()
{
    m_emptyLabel = new toolkit::Label(this);
    m_emptyLabel->setTextFormat(Qt::RichText);
    m_emptyLabel->setAlignment(Qt::AlignCenter);
    m_emptyLabel->setWordWrap(true);
    m_emptyLabel->setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    m_emptyLabel->setStyleName(u"CommonEmptyStateTitleInverted"_s);
    m_emptyLabel->hide();
    m_emptyMark = new toolkit::ImageWidget(this);
    m_emptyMark->setStyleName(u"EmptyStateMark"_s);
    m_emptyMark->hide();
    m_scanLabel = new toolkit::Label(this);
    m_scanLabel->setObjectName(u"scanLabel"_s);
    m_scanLabel->setTextFormat(Qt::PlainText);
    m_scanLabel->setAlignment(Qt::AlignCenter);
    m_scanLabel->setStyleName(u"CommonEmptyStateTitleKeyword"_s);
    m_scanLabel->hide();
    m_waitingRing = new toolkit::Spinner(this);
    m_waitingRing->setStyleName(u"CommonLargeSpinnerInverted"_s);
    m_waitingRing->hide();
    QTimer::singleShot(WaitingDelay, this, [this] {
        m_waitingRing->setUnknownDuration(true);
        m_waitingRing->setVisible(m_viewState == Unknown);
    });
}

void MyAllVideosWidget::createFilterField()
{
    m_filter = new FilterWidget(this);
    m_filter->setMinimumHeight(FilterHeight);
    m_filter->setMaximumHeight(FilterHeight);
    m_filter->hide();
    m_filterTimer = new QTimer(this);
    m_filterTimer->setObjectName(u"filterTimer"_s);
    m_filterTimer->setSingleShot(true);
    m_filterTimer->setInterval(FilterHideDelay);
}

void MyAllVideosWidget::connectThumbnails()
{
    ThumbnailHelper *thumbnails = ThumbnailHelper::instance();
    connect(m_model, &AllVideosModel::filesRemoved, thumbnails, &ThumbnailHelper::filesRemoved);
    connect(thumbnails, &ThumbnailHelper::newThumbnailReady, m_model,
            &AllVideosModel::defaultThumbnailUpdated);
    connect(thumbnails, &ThumbnailHelper::pauseThumbnailCreated, m_model,
            &AllVideosModel::pauseThumbnailUpdated);
    new ThumbnailRefresh(m_list, thumbnails, this);
}

void MyAllVideosWidget::connectList()
{
    ThumbnailHelper *thumbnails = ThumbnailHelper::instance();
    connect(m_list, &toolkit::List::itemClicked, this, &MyAllVideosWidget::itemClicked);
    connect(m_list, &toolkit::List::itemLongTapped, this, &MyAllVideosWidget::itemLongTapped,
            Qt::UniqueConnection);
    connect(m_list, &toolkit::List::editRequested, this,
            [this](const QModelIndex &index) { actOn(index, &MyAllVideosWidget::editVideoAction); });
    connect(m_list, &toolkit::List::removeRequested, this, [this](const QModelIndex &index) {
        if (isOnThisMachine(index))
            actOn(index, &MyAllVideosWidget::deleteVideoAction);
    });
    connect(m_list, &toolkit::List::displayEntered, this, &MyAllVideosWidget::videoListEntered);
    connect(m_list, &toolkit::List::displayEntered, this, &MyAllVideosWidget::focusList);
    connect(m_list, &toolkit::List::panningStarted, m_cellCreator, &LocalVideoItemCreator::panningStarted);
    connect(m_list, &toolkit::List::panningStopped, m_cellCreator, &LocalVideoItemCreator::panningStopped);
    connect(m_list, &toolkit::List::panningStarted, thumbnails, &ThumbnailHelper::panningStarted);
    connect(m_list, &toolkit::List::panningStopped, thumbnails, &ThumbnailHelper::panningStopped);
    connect(m_list, &toolkit::List::panningStarted, this, &MyAllVideosWidget::panningStarted);
}

void MyAllVideosWidget::connectWindow()
{
    if (toolkit::ApplicationWindow *window = toolkit::Application::activeApplicationWindow()) {
        connect(window, &toolkit::ApplicationWindow::orientationChangeStarted, this,
                &MyAllVideosWidget::blockPlay);
        connect(window, &toolkit::ApplicationWindow::orientationChangeFinished, this,
                &MyAllVideosWidget::unblockPlay);
    }
}

void MyAllVideosWidget::setLibraryReachable(bool reachable)
{
    m_isReachable = reachable;
    // Once it can be reached the text stays until a list has come.
    if (!reachable && !m_hasLoaded)
        setViewState(Unreachable);
}

void MyAllVideosWidget::setViewState(int state)
{
    if (state == EmptyCollection && !m_hasLoaded && (!m_isReachable || m_viewState == Unreachable))
        state = Unreachable;
    if (state == m_viewState)
        return;
    m_viewState = state;
    m_waitingRing->hide();
    if (state == ListShown) {
        showList();
    } else {
        showLabel();
        placeSpacer(state == NoResults);
    }
    translateEmptyState();
    Q_EMIT contentVisible(state == ListShown);
}

void MyAllVideosWidget::showList()
{
    m_emptyLabel->hide();
    m_list->show();
    m_policy->removeItem(m_emptyLabel);
    placeSpacer(false);
    if (m_policy->indexOf(m_list) < 0)
        m_policy->insertItem(0, m_list);
}

void MyAllVideosWidget::showLabel()
{
    m_list->hide();
    m_emptyLabel->show();
    m_policy->removeItem(m_list);
    if (m_policy->indexOf(m_emptyLabel) < 0)
        m_policy->insertItem(0, m_emptyLabel);
}

// Keeps the text clear of the filter field and of the keyboard's upper edge.
void MyAllVideosWidget::placeSpacer(bool shown)
{
    if (!shown) {
        if (m_spacer)
            m_policy->removeItem(m_spacer);
        delete m_spacer;
        m_spacer = nullptr;
        return;
    }
    if (m_spacer)
        return;
    m_spacer = new toolkit::Widget(this);
    m_spacer->setMinimumHeight(SpacerHeight);
    m_spacer->setPreferredHeight(SpacerHeight);
    m_spacer->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    m_policy->insertItem(m_policy->indexOf(m_emptyLabel), m_spacer);
}

void MyAllVideosWidget::setScanProgress(bool scanning, uint seen, uint done)
{
    m_scanSeen = scanning ? seen : 0;
    m_scanDone = qMin(done, seen);
    translateEmptyState();
}

void MyAllVideosWidget::translateEmptyState()
{
    if (m_viewState == NoResults)
        m_emptyLabel->setText(qtTrId("qtn_vide_no_results"));
    else if (m_viewState == EmptyCollection)
        m_emptyLabel->setText(qtTrId("qtn_vide_collection_empty"));
    else if (m_viewState == Unreachable)
        m_emptyLabel->setText(qtTrId("qtn_vide_library_unreachable"));
    m_scanLabel->setText(textBelow());
    m_waitingRing->setAccessibleName(qtTrId("qtn_vide_library_waiting"));
    showEmptyState();
}

QString MyAllVideosWidget::textBelow() const
{
    if (m_viewState == Unreachable)
        return qtTrId("qtn_vide_library_trying");
    if (m_viewState != EmptyCollection || m_scanSeen == 0)
        return {};
    const QLocale locale;
    return qtTrId("qtn_vide_scan_progress").arg(locale.toString(m_scanDone), locale.toString(m_scanSeen));
}

void MyAllVideosWidget::showEmptyState()
{
    m_emptyMark->setImage(m_viewState == Unreachable ? u"icon-l-kestrel-unreachable"_s
                                                     : u"icon-l-kestrel-no-videos"_s);
    m_emptyMark->setVisible(m_viewState == EmptyCollection || m_viewState == Unreachable);
    m_scanLabel->setVisible(!m_scanLabel->text().isEmpty());
    // The empty collection stands on black in every scheme, a filter without results on the page as it is.
    const auto onPage = toolkit::Theme::instance()->style(u"CommonEmptyStateTitle"_s, screenOrientation());
    m_emptyLabel->setColor(m_viewState == NoResults ? onPage.color(u"text"_s) : QColor());
    placeEmptyState();
}

void MyAllVideosWidget::applyStyle()
{
    toolkit::Widget::applyStyle();
    if (m_waitingRing)
        showEmptyState();
}

void MyAllVideosWidget::resizeEvent(QGraphicsSceneResizeEvent *event)
{
    toolkit::Widget::resizeEvent(event);
    placeEmptyState();
}

void MyAllVideosWidget::placeEmptyState()
{
    if (!m_waitingRing)
        return;
    const auto heightOf = [this](const toolkit::Label *label) {
        return label->effectiveSizeHint(Qt::PreferredSize, QSizeF(rect().width(), -1)).height();
    };
    const QPointF middle = rect().center();
    const auto place = [&middle](toolkit::Widget *widget, qreal bottom) {
        const QSizeF size = widget->effectiveSizeHint(Qt::PreferredSize);
        widget->setGeometry(QRectF(QPointF(middle.x() - size.width() / 2, bottom - size.height()), size));
    };
    place(m_waitingRing, middle.y() + m_waitingRing->preferredHeight() / 2);
    const qreal text = heightOf(m_emptyLabel) / 2;
    place(m_emptyMark, middle.y() - text - EmptyMarkDistance);
    m_scanLabel->setGeometry(0, middle.y() + text, rect().width(), heightOf(m_scanLabel));
}

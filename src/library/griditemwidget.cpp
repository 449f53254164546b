// SPDX-License-Identifier: GPL-3.0-or-later
#include "griditemwidget.h"

#include "cellprogress.h"
#include "data/thumbnailhelper.h"
#include "data/videoconstants.h"
#include "data/videotimehelper.h"
#include "griditemwidgetmodel.h"
#include "griditemwidgetstyle.h"
#include "griditemwidgetview.h"
#include "platform/toolkit/imagewidget.h"
#include "platform/toolkit/label.h"
#include "platform/toolkit/layout.h"
#include "platform/toolkit/theme.h"

#include <QDebug>
#include <QEvent>
#include <QGraphicsSceneMouseEvent>
#include <QPropertyAnimation>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int SecondsOfAnHour = 3600;
constexpr qreal TimeLabelInset = 6; // from the picture's corner

} // namespace

GridItemWidget::GridItemWidget(QGraphicsItem *parent)
    : toolkit::WidgetController(new GridItemWidgetModel, new GridItemWidgetView(this),
                                new GridItemWidgetStyle, parent),
      m_thumbnail(new toolkit::ImageWidget(this)),
      m_titleLabel(new toolkit::Label(this)),
      m_timeLabel(new toolkit::Label(m_thumbnail)),
      m_progress(new CellProgress(m_thumbnail))
{
    setStyleName(u"KestrelGridItem"_s);
    m_thumbnail->setStyleName(u"KestrelGridCellThumbnail"_s);
    m_titleLabel->setStyleName(u"KestrelGridCellTitleLabel"_s);
    m_titleLabel->setWordWrap(true);
    m_titleLabel->setTextElide(true);
    m_timeLabel->setStyleName(u"KestrelGridCellTimeLabel"_s);
    m_progress->setCornerRadius(m_thumbnail->style().radius);
    m_progress->hide();

    auto *picture = new toolkit::Layout;
    auto *picturePolicy = new toolkit::LinearLayoutPolicy(picture, Qt::Horizontal);
    picturePolicy->setStyleName(u"KestrelGridCellThumbnailPolicy"_s);
    picturePolicy->addItem(m_thumbnail);

    auto *layout = new toolkit::Layout(this);
    auto *policy = new toolkit::LinearLayoutPolicy(layout, Qt::Horizontal);
    policy->setStyleName(u"KestrelPolicy"_s);
    policy->setSpacing(style().spacing);
    policy->addItem(picture);
    policy->addItem(m_titleLabel);
    policy->setAlignment(picture, Qt::AlignVCenter);
    policy->setStretchFactor(m_titleLabel, 1);

    setUpAnimations();
    connectTaps();
}

void GridItemWidget::connectTaps()
{
    setAcceptedMouseButtons(Qt::LeftButton);
    connect(model(), &GridItemWidgetModel::changed, this, [this] { update(); });
    connect(&m_tap, &toolkit::TapTracker::tapped, this, [this] {
        styleObject()->releaseFeedback().play();
        setReleaseMode();
        emitItemClicked();
    });
    connect(&m_tap, &toolkit::TapTracker::longTapped, this, [this](const QPointF &point) {
        setReleaseMode();
        Q_EMIT longTapped(point);
    });
    connect(&m_tap, &toolkit::TapTracker::cancelled, this, [this] {
        styleObject()->cancelFeedback().play();
        setReleaseMode();
    });
}

GridItemWidget::~GridItemWidget() = default;

GridItemWidgetModel *GridItemWidget::model() const
{
    return static_cast<GridItemWidgetModel *>(toolkit::WidgetController::model());
}

GridItemWidgetStyle *GridItemWidget::styleObject() const
{
    return static_cast<GridItemWidgetStyle *>(toolkit::WidgetController::styleObject());
}

void GridItemWidget::setItemKey(const QString &key)
{
    if (key == m_itemKey)
        return;
    m_itemKey = key;
    m_placeHolderShown = false;
    m_fadeAnimation->stop();
    m_thumbnail->setOpacity(1.0);
}

void GridItemWidget::setTitleFormat(Qt::TextFormat format)
{
    m_titleLabel->setTextFormat(format);
}

void GridItemWidget::setTitle(const QString &title)
{
    m_titleLabel->setText(title);
}

void GridItemWidget::setTime(int seconds, int state)
{
    m_time = seconds;
    m_timeState = state;
    updateTimeLabel();
}

void GridItemWidget::updateTimeLabel()
{
    const bool isLong = m_time >= SecondsOfAnHour;
    if (m_timeState == FullDuration)
        m_timeLabel->setStyleName(isLong ? u"KestrelGridCellTimeLabelLong"_s : u"KestrelGridCellTimeLabel"_s);
    else if (m_timeState == RemainingTime)
        m_timeLabel->setStyleName(isLong ? u"KestrelGridCellTimeLabelPausedLong"_s
                                         : u"KestrelGridCellTimeLabelPaused"_s);
    else
        qWarning() << "void GridItemWidget::updateTimeLabel()"
                   << "state:" << m_timeState << "not defined";
    m_timeLabel->setText(VideoTimeHelper::formatDuration(m_time));
    m_progress->setVisible(m_timeState == RemainingTime);
    placeOverlays();
}

void GridItemWidget::setWatched(qreal fraction)
{
    m_progress->setFraction(fraction);
}

void GridItemWidget::setPicture(const QPixmap &picture)
{
    m_hasPicture = true;
    if (m_thumbnail->pixmap().cacheKey() == picture.cacheKey())
        return;
    m_thumbnail->setPixmap(picture);
    if (m_placeHolderShown)
        fadeIn();
    m_placeHolderShown = false;
}

void GridItemWidget::setPlaceHolder(const QPixmap &placeHolder)
{
    m_hasPicture = false;
    m_placeHolderShown = true;
    if (m_thumbnail->pixmap().cacheKey() != placeHolder.cacheKey())
        m_thumbnail->setPixmap(placeHolder);
}

void GridItemWidget::emitItemClicked()
{
    Q_EMIT clicked();
}

void GridItemWidget::setReleaseMode()
{
    model()->setDown(false);
}

void GridItemWidget::setUpAnimations()
{
    m_fadeAnimation = new QPropertyAnimation(m_thumbnail, OPACITY_PROPERTY.toLatin1(), this);
    m_fadeAnimation->setStartValue(0.0);
    m_fadeAnimation->setEndValue(1.0);
    m_fadeAnimation->setEasingCurve(QEasingCurve::OutCubic);
    connect(m_fadeAnimation, &QPropertyAnimation::finished, this, &GridItemWidget::fadeInDone);
}

void GridItemWidget::fadeIn()
{
    const int duration = toolkit::Theme::instance()->motion(int(m_thumbnail->style().number(u"fade"_s, 180)));
    if (duration == 0) {
        fadeInDone();
        return;
    }
    m_fadeAnimation->setDuration(duration);
    m_fadeAnimation->start();
}

void GridItemWidget::fadeInDone()
{
    m_thumbnail->setOpacity(1.0);
    animationDone();
}

void GridItemWidget::animationDone()
{
    ThumbnailHelper::instance()->resetAnimationState();
}

bool GridItemWidget::event(QEvent *event)
{
    // Taken away, by a pan for example, or hidden while the finger is on it.
    if (event->type() == QEvent::UngrabMouse || event->type() == QEvent::Hide)
        m_tap.cancel();
    return toolkit::WidgetController::event(event);
}

void GridItemWidget::mousePressEvent(QGraphicsSceneMouseEvent *event)
{
    event->accept();
    styleObject()->pressFeedback().play();
    model()->setDown(true);
    m_tap.press(event->scenePos());
}

void GridItemWidget::mouseMoveEvent(QGraphicsSceneMouseEvent *event)
{
    m_tap.move(event->scenePos());
}

void GridItemWidget::mouseReleaseEvent(QGraphicsSceneMouseEvent *event)
{
    m_tap.release(event->scenePos());
}

void GridItemWidget::resizeEvent(QGraphicsSceneResizeEvent *event)
{
    toolkit::WidgetController::resizeEvent(event);
    placeOverlays();
}

void GridItemWidget::changeEvent(QEvent *event)
{
    toolkit::WidgetController::changeEvent(event);
    if (event->type() == QEvent::LayoutDirectionChange)
        placeOverlays();
}

// The time stands in the picture's lower corner on the side where lines of text end.
void GridItemWidget::placeOverlays()
{
    const QSizeF picture = m_thumbnail->preferredSize();
    const QSizeF time = m_timeLabel->effectiveSizeHint(Qt::PreferredSize);
    const bool mirrored = layoutDirection() == Qt::RightToLeft;
    const qreal x = mirrored ? TimeLabelInset : picture.width() - time.width() - TimeLabelInset;
    m_timeLabel->setGeometry(QRectF(QPointF(x, picture.height() - time.height() - TimeLabelInset), time));
    const qreal bar = m_progress->effectiveSizeHint(Qt::PreferredSize).height();
    m_progress->setGeometry(QRectF(0, picture.height() - bar, picture.width(), bar));
}

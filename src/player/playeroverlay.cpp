// SPDX-License-Identifier: GPL-3.0-or-later
#include "playeroverlay.h"

#include "navigationbarwidget.h"

#include <platform/toolkit/button.h>
#include <platform/toolkit/keeptranslated.h>
#include <platform/toolkit/label.h>
#include <platform/toolkit/theme.h>

#include <QCoreApplication>
#include <QGraphicsLinearLayout>
#include <QLinearGradient>
#include <QPainter>
#include <QPropertyAnimation>

#include <algorithm>
#include <cmath>
#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int fadeMs = 160;
// The scrim runs out below the bar, so that it has no edge.
constexpr qreal scrimHeightOfBar = 1.5;
constexpr qreal gapToTaken = 16;

} // namespace

PlayerOverlay::PlayerOverlay(QGraphicsItem *parent)
    : Widget(parent),
      m_navigationBar(new NavigationBarWidget(this)),
      m_toolbar(new Widget),
      m_title(new toolkit::Label(m_toolbar)),
      m_infoButton(new toolkit::IconButton(u"icon-s-music-video-description"_s, m_toolbar)),
      m_fade(new QPropertyAnimation(this, "opacity", this))
{
    setAcceptedMouseButtons(Qt::NoButton);
    m_navigationBar->setAcceptedMouseButtons(Qt::NoButton);

    m_toolbar->setStyleName(u"NavigationBarToolbar"_s);
    m_toolbar->setAcceptedMouseButtons(Qt::NoButton);
    m_title->setStyleName(u"NavigationBarTitle"_s);
    m_title->setTextFormat(Qt::PlainText);
    m_title->setTextElide(true);
    m_title->setAlignment(Qt::AlignCenter);
    m_title->setAcceptedMouseButtons(Qt::NoButton);
    m_infoButton->setObjectName(u"InfoButton"_s);
    m_infoButton->setStyleName(u"InfoButton"_s);
    toolkit::keepTranslated(this,
                            [this] { m_infoButton->setAccessibleName(qtTrId("qtn_comm_object_details")); });
    auto *layout = new QGraphicsLinearLayout(Qt::Horizontal);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addItem(m_title);
    layout->setStretchFactor(m_title, 1);
    layout->addItem(m_infoButton);
    layout->setAlignment(m_infoButton, Qt::AlignCenter);
    m_toolbar->setLayout(layout);

    setOpacity(0);
    setVisible(false);
    connect(m_toolbar, &QGraphicsWidget::geometryChanged, this, &PlayerOverlay::placeTitle);
    connect(m_infoButton, &QGraphicsWidget::visibleChanged, this, &PlayerOverlay::placeTitle);
    // The title has its new font by then: it was made before this.
    connect(toolkit::Theme::instance(), &toolkit::Theme::stylesChanged, this, &PlayerOverlay::placeTitle);
    connect(m_fade, &QPropertyAnimation::finished, this, [this] { setVisible(m_shown); });
}

PlayerOverlay::~PlayerOverlay()
{
    m_toolbar->disconnect(this); // its place changes once more while all this goes
    m_infoButton->disconnect(this);
}

void PlayerOverlay::setTitle(const QString &title)
{
    m_title->setText(title);
    placeTitle();
}

QString PlayerOverlay::title() const
{
    return m_title->text();
}

void PlayerOverlay::setTaken(const QMarginsF &taken)
{
    if (m_taken == taken)
        return;
    m_taken = taken;
    placeTitle();
}

// In the middle of what of the bar is not taken, as far as the button beside it leaves room for that.
void PlayerOverlay::placeTitle()
{
    const QRectF toolbar = m_toolbar->geometry();
    const auto overlap = [](qreal taken, qreal before) {
        return taken > 0 ? std::max(0.0, taken + gapToTaken - before) : 0;
    };
    qreal left = overlap(m_taken.left(), toolbar.left());
    qreal right = overlap(m_taken.right(), size().width() - toolbar.right());
    // A layout's margins are those of lines from left to right.
    if (m_toolbar->layoutDirection() == Qt::RightToLeft)
        std::swap(left, right);
    const qreal button = m_infoButton->isVisibleTo(m_toolbar) ? m_infoButton->preferredWidth() : 0;
    const qreal text = std::ceil(m_title->effectiveSizeHint(Qt::PreferredSize).width()) + 1;
    const qreal spare = toolbar.width() - left - right - button - text;
    left += std::clamp(spare, 0.0, button);
    m_toolbar->layout()->setContentsMargins(left, 0, right, 0);
}

void PlayerOverlay::setShown(bool shown)
{
    if (m_shown == shown)
        return;
    m_shown = shown;
    m_fade->stop();
    if (shown)
        setVisible(true);
    // What is not seen does not fade: it would do so when it is seen again, over the next video.
    m_fade->setDuration(isOnDisplay() ? toolkit::Theme::instance()->motion(fadeMs) : 0);
    m_fade->setEasingCurve(shown ? QEasingCurve::OutCubic : QEasingCurve::InCubic);
    m_fade->setStartValue(opacity());
    m_fade->setEndValue(shown ? 1.0 : 0.0);
    m_fade->start();
}

QSizeF PlayerOverlay::sizeHint(Qt::SizeHint which, const QSizeF &constraint) const
{
    if (which != Qt::PreferredSize)
        return Widget::sizeHint(which, constraint);
    return {m_navigationBar->preferredWidth(), m_navigationBar->preferredHeight() * scrimHeightOfBar};
}

void PlayerOverlay::resizeEvent(QGraphicsSceneResizeEvent *event)
{
    Widget::resizeEvent(event);
    m_navigationBar->setGeometry(0, 0, size().width(), m_navigationBar->preferredHeight());
}

void PlayerOverlay::paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget)
{
    const QRectF scrim = rect();
    const QColor color = m_navigationBar->style().color(u"scrim"_s, QColor(12, 14, 18, 190));
    QColor clear = color;
    clear.setAlpha(0);
    QLinearGradient gradient(scrim.topLeft(), scrim.bottomLeft());
    gradient.setColorAt(0, color);
    gradient.setColorAt(1, clear);
    painter->fillRect(scrim, gradient);
}

// SPDX-License-Identifier: GPL-3.0-or-later
#include "sheet_p.h"

#include "applicationwindow.h"
#include "button.h"
#include "pannableviewport.h"
#include "sheetheader.h"
#include "sheetpanel.h"

#include <QEvent>
#include <QGraphicsScene>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace toolkit {

Sheet::Private::Private(Sheet *sheet, Extent sheetExtent)
    : q(sheet),
      extent(sheetExtent),
      panel(new SheetPanel(sheet)),
      header(new SheetHeader(panel)),
      viewport(new PannableViewport(panel))
{
    panel->setRounded(extent == Extent::Content);
    panel->setDraggable(extent == Extent::Content);
    header->setDragMark(extent == Extent::Content);
}

// A style may have it where lines end, as high as the scene, instead of at the lower edge.
bool Sheet::Private::isAtSide() const
{
    return extent == Extent::Content && q->style().number(u"atSide"_s, 0) > 0;
}

// When so much of its way is done.
QPointF Sheet::Private::panelPosition(qreal progress) const
{
    const QSizeF own = panel->size();
    const QSizeF scene = q->size();
    if (!isAtSide())
        return {(scene.width() - own.width()) / 2, scene.height() - progress * own.height()};
    const qreal seen = progress * own.width();
    return {q->layoutDirection() == Qt::RightToLeft ? seen - own.width() : scene.width() - seen, 0};
}

Sheet::Sheet(Extent extent) : d(std::make_unique<Private>(this, extent))
{
    d->viewport->installEventFilter(this);
    d->header->installEventFilter(this);
    connect(d->header, &SheetHeader::positiveClicked, this, &Sheet::accept);
    connect(d->header, &SheetHeader::negativeClicked, this, &Sheet::reject);
    connect(d->header, &SheetHeader::backClicked, this, [this] { escape(); });
    connect(d->panel, &SheetPanel::groundChanged, this,
            [this] { d->viewport->setGround(d->panel->ground()); });
    d->viewport->setGround(d->panel->ground());
    connect(d->panel, &SheetPanel::dragged, this,
            [this](qreal distance) { setProgress(1 - distance / std::max(1.0, d->panel->size().height())); });
    connect(d->panel, &SheetPanel::dragEnded, this, [this](bool closes) {
        if (closes)
            reject();
        else
            settle();
    });
    setStyleName(u"Sheet"_s);
}

Sheet::~Sheet()
{
    setCentralWidget(nullptr);
}

void Sheet::setTitle(const QString &title)
{
    d->header->setTitle(title);
    arrange();
}

QString Sheet::title() const
{
    return d->header->title();
}

void Sheet::setPositiveAction(const QString &text)
{
    d->header->setPositiveAction(text);
    arrange();
}

void Sheet::setNegativeAction(const QString &text)
{
    d->header->setNegativeAction(text);
    arrange();
}

void Sheet::setPositiveActionEnabled(bool enabled)
{
    d->header->positiveButton()->setEnabled(enabled);
}

SheetHeader *Sheet::header() const
{
    return d->header;
}

void Sheet::setCentralWidget(Widget *widget)
{
    Widget *old = d->viewport->widget();
    if (old == widget)
        return;
    d->viewport->setWidget(widget);
    if (widget != nullptr)
        widget->installEventFilter(this);
    if (old != nullptr) {
        // It may be one of its own buttons that replaces it.
        old->hide();
        old->removeEventFilter(this);
        if (old->scene() != nullptr)
            old->scene()->removeItem(old);
        old->deleteLater();
    }
    arrange();
}

Widget *Sheet::centralWidget() const
{
    return d->viewport->widget();
}

void Sheet::accept()
{
    close([this] { Q_EMIT accepted(); });
}

void Sheet::reject()
{
    close([this] { Q_EMIT rejected(); });
}

// A full one has nothing but its content at the foot.
QRectF Sheet::keptFree() const
{
    if (!isActive() || d->extent == Extent::Full)
        return {};
    return {d->panelPosition(1), d->panel->size()};
}

void Sheet::escape()
{
    reject();
}

void Sheet::tappedBeside()
{
    reject();
}

QRectF Sheet::panelRect() const
{
    return d->panel->geometry();
}

// The parts inside the panel, and the panel's size.
void Sheet::arrange()
{
    const QSizeF scene = size();
    if (scene.isEmpty())
        return;
    const bool full = d->extent == Extent::Full;
    const bool atSide = d->isAtSide();
    const bool atFoot = !full && !atSide; // only as high as its content
    const qreal width
        = full ? scene.width() : std::min(scene.width(), style().number(u"maximumMeasure"_s, 560));
    const qreal top = atSide ? style().number(u"sideTop"_s, 16) : 0; // no mark stands above the title there
    const qreal head = top + d->header->heightFor(width);
    const qreal foot = full ? 0 : style().number(u"foot"_s, 16);
    qreal highest = scene.height();
    if (atFoot)
        highest = std::min(highest - style().number(u"outsideMargin"_s, 48),
                           highest * style().number(u"highestShare"_s, 1));
    // What is read and written keeps a measure that the eye can follow.
    const qreal measure = full ? std::min(width, style().number(u"fullMeasure"_s, 720)) : width;
    qreal content = highest - head - foot;
    if (const Widget *central = d->viewport->widget()) {
        const qreal wish = central->effectiveSizeHint(Qt::PreferredSize, {measure, -1}).height();
        d->viewport->setPannable(wish > content);
        if (atFoot)
            content = std::min(content, wish);
    } else if (!full) {
        content = 0;
    }
    // A content that pans takes the finger for itself.
    d->panel->setDragArea(d->viewport->isPannable() ? head : -1);
    d->panel->setDraggable(atFoot);
    d->panel->setRounded(atFoot);
    d->header->setDragMark(atFoot);
    d->panel->resize(width, head + content + foot);
    d->header->setGeometry(QRectF(0, top, width, head - top));
    d->viewport->setGeometry(QRectF((width - measure) / 2, head, measure, content));
    place();
    if (ApplicationWindow *window = popupWindow())
        window->sceneManager()->popupChanged();
}

void Sheet::place()
{
    d->panel->setPos(d->panelPosition(progress()));
    update();
}

void Sheet::setLeaving(bool leaving)
{
    d->panel->setLeaving(leaving);
    if (!leaving)
        d->viewport->setPosition({});
}

void Sheet::applyStyle()
{
    Popup::applyStyle();
    arrange();
}

// A row that the keyboard goes to is seen.
bool Sheet::focusNextPrevChild(bool next)
{
    Popup::focusNextPrevChild(next);
    const QGraphicsItem *target = scene() != nullptr ? scene()->focusItem() : nullptr;
    if (const Widget *content = d->viewport->widget(); content != nullptr && content->isAncestorOf(target))
        d->viewport->ensureVisible(content->mapRectFromItem(target, target->boundingRect()));
    return true;
}

// A content that wants another size gets it.
bool Sheet::eventFilter(QObject *watched, QEvent *event)
{
    if (Popup::eventFilter(watched, event))
        return true;
    if (event->type() == QEvent::LayoutRequest)
        arrange();
    return false;
}

} // namespace toolkit

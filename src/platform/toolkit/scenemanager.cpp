// SPDX-License-Identifier: GPL-3.0-or-later
#include "scenemanager.h"

#include "applicationpage.h"
#include "applicationwindow.h"
#include "banner.h"
#include "bannerplace.h"
#include "pageslide.h"
#include "popup.h"
#include "popupstack.h"
#include "theme.h"

#include <QCoreApplication>
#include <QGraphicsScene>
#include <QGraphicsWidget>
#include <QGuiApplication>
#include <QPointer>

namespace toolkit {

namespace {

constexpr int slideMilliseconds = 240;

// Keeps the activation of the window from its children: what a page hears of it follows rules of its own.
class Root : public QGraphicsWidget
{
protected:
    bool sceneEvent(QEvent *event) override
    {
        if (event->type() == QEvent::WindowActivate || event->type() == QEvent::WindowDeactivate)
            return true;
        return QGraphicsWidget::sceneEvent(event);
    }
};

} // namespace

class SceneManager::Private
{
public:
    Private(SceneManager *manager, ApplicationWindow *applicationWindow)
        : q(manager),
          window(applicationWindow),
          root(new Root),
          bannerPlace(root),
          slide(manager)
    {
    }

    [[nodiscard]] ApplicationPage *current() const { return history.isEmpty() ? nullptr : history.last(); }
    [[nodiscard]] bool overlayIsOnTop() const { return overlay != nullptr && !overlayIsCovered; }
    void place(ApplicationPage *page, qreal x, int z);
    void reveal(ApplicationPage *page);
    void conceal(ApplicationPage *page);
    void change(ApplicationPage *incoming, ApplicationPage *outgoing, PageSlide::Direction direction,
                Appearance appearance);
    void slideFinished(ApplicationPage *incoming, ApplicationPage *outgoing);
    void raiseOverlay();
    void lowerOverlay();
    [[nodiscard]] QList<QRectF> keptFree() const;
    void followPage();

    SceneManager *q;
    ApplicationWindow *window;
    QGraphicsWidget *root; // of the scene
    BannerPlace bannerPlace;
    PageSlide slide;
    QList<ApplicationPage *> history;
    ApplicationPage *overlay = nullptr;
    bool overlayIsCovered = false; // by a page that appeared after it
    PopupStack popups;
    bool onDisplay = false;
    QSizeF size;
};

void SceneManager::Private::place(ApplicationPage *page, qreal x, int z)
{
    page->setParentItem(root);
    page->setZValue(z);
    page->setGeometry(QRectF(QPointF(x, 0), size));
}

// Visible, but perhaps still on its way in.
void SceneManager::Private::reveal(ApplicationPage *page)
{
    page->setShown(true);
    page->show();
    page->setOnDisplay(onDisplay);
    window->setWindowTitle(page->title());
}

void SceneManager::Private::conceal(ApplicationPage *page)
{
    page->setShown(false);
    // Hidden with it, a widget would hand it to the first on another page, as if the keyboard had gone there.
    QGraphicsItem *focus = page->scene() != nullptr ? page->scene()->focusItem() : nullptr;
    if (focus != nullptr && page->isAncestorOf(focus))
        focus->clearFocus();
    page->hide();
    page->setOnDisplay(false);
    Q_EMIT page->disappeared();
}

void SceneManager::Private::change(ApplicationPage *incoming, ApplicationPage *outgoing,
                                   PageSlide::Direction direction, Appearance appearance)
{
    const qreal width = root->layoutDirection() == Qt::RightToLeft ? -size.width() : size.width();
    // Taken out of a slide that is still running, the page goes on from where it is seen.
    const bool wasMoving
        = slide.isRunning() && (slide.incoming() == incoming || slide.outgoing() == incoming);
    const qreal seen = incoming->x();
    const QPointer<ApplicationPage> guard(incoming);
    slide.interrupt();
    if (guard == nullptr || current() != incoming)
        return; // a receiver of the interrupted slide's signals changed the pages again
    const bool onto = direction == PageSlide::Direction::Onto;
    // One movement at a time: a scene that turns shows its new page at once.
    const bool animated = appearance == Appearance::Normal && onDisplay && !window->isTurning()
        && outgoing != nullptr && outgoing->isVisible();
    const qreal start = wasMoving ? seen : onto ? width : -0.3 * width;
    place(incoming, animated ? start : 0, PageLayer + (onto ? 1 : 0));
    if (outgoing != nullptr) {
        outgoing->setZValue(PageLayer + (onto ? 0 : 1));
        outgoing->setShown(false);
    }
    reveal(incoming);
    followPage();
    Q_EMIT window->pageChanged(incoming);
    if (guard == nullptr || current() != incoming || slide.isRunning())
        return;
    slide.start(incoming, outgoing, direction, width,
                animated ? Theme::instance()->motion(slideMilliseconds) : 0);
}

void SceneManager::Private::slideFinished(ApplicationPage *incoming, ApplicationPage *outgoing)
{
    const QPointer<ApplicationPage> arrived(incoming);
    if (outgoing != nullptr && outgoing != current())
        conceal(outgoing);
    if (arrived != nullptr)
        Q_EMIT arrived->appeared();
}

void SceneManager::Private::raiseOverlay()
{
    slide.finish();
    overlayIsCovered = false;
    ApplicationPage *covered = current();
    place(overlay, 0, OverlayPageLayer);
    reveal(overlay);
    followPage();
    if (covered != nullptr && covered->isVisible())
        conceal(covered);
    if (overlay != nullptr)
        Q_EMIT overlay->appeared();
}

void SceneManager::Private::lowerOverlay()
{
    overlayIsCovered = true;
    conceal(overlay);
}

// What banners do not cover: what the person is kept to, or else what the page has to be tapped.
QList<QRectF> SceneManager::Private::keptFree() const
{
    const QList<QRectF> areas = popups.keptFree();
    const ApplicationPage *page = q->visiblePage();
    return areas.isEmpty() && page != nullptr ? page->touchAreas() : areas;
}

// What lies over a page that is dark in both schemes is light on dark, too. What is leaving keeps its look.
void SceneManager::Private::followPage()
{
    const ApplicationPage *page = q->visiblePage();
    const bool inverted = page != nullptr && page->isInverted();
    if (!window->styleName().isEmpty())
        window->setStyleName(window->styleName());
    for (Popup *popup : popups.popups()) {
        if (popup->isActive())
            popup->setOnInverted(inverted);
    }
    if (Banner *banner = bannerPlace.banner())
        banner->setOnInverted(inverted);
    bannerPlace.arrange(size, keptFree());
}

SceneManager::SceneManager(ApplicationWindow *window)
    : QObject(window),
      d(std::make_unique<Private>(this, window))
{
    window->scene()->addItem(d->root);
    d->root->setLayoutDirection(QGuiApplication::layoutDirection());
    connect(qGuiApp, &QGuiApplication::layoutDirectionChanged, this,
            [this](Qt::LayoutDirection direction) { d->root->setLayoutDirection(direction); });
    connect(Theme::instance(), &Theme::themeChangeCompleted, this, &SceneManager::popupChanged);
    connect(&d->slide, &PageSlide::finished, this,
            [this](ApplicationPage *incoming, ApplicationPage *outgoing) {
                d->slideFinished(incoming, outgoing);
            });
}

SceneManager::~SceneManager()
{
    d->slide.disconnect(this);
    // Popups and pages are not the scene's.
    for (Popup *popup : d->popups.popups()) {
        removePopup(popup);
        popup->abandoned();
    }
    const auto items = d->root->childItems();
    for (QGraphicsItem *item : items) {
        auto *page = qobject_cast<ApplicationPage *>(item->toGraphicsObject());
        if (page == nullptr)
            continue;
        page->setShown(false);
        page->setOnDisplay(false);
        page->setParentItem(nullptr);
        if (page->scene() != nullptr)
            page->scene()->removeItem(page);
    }
    delete d->root;
}

void SceneManager::appearPage(ApplicationPage *page, Appearance appearance)
{
    if (page == nullptr)
        return;
    ApplicationPage *below = d->current();
    if (d->overlayIsOnTop()) {
        d->lowerOverlay();
        appearance = Appearance::Immediate;
    }
    if (page == below) {
        if (!page->isVisible()) {
            d->reveal(page);
            Q_EMIT page->appeared();
        } else if (appearance == Appearance::Immediate) {
            d->slide.finish();
        }
        return;
    }
    page->ensureContent();
    d->history.removeOne(page);
    d->history.append(page);
    d->change(page, below, PageSlide::Direction::Onto, appearance);
}

void SceneManager::dismissPage(ApplicationPage *page, Appearance appearance)
{
    if (!d->history.contains(page) || d->history.size() == 1)
        return;
    const bool onTop = page == d->current();
    d->history.removeOne(page);
    if (!onTop)
        return;
    d->change(d->current(), page, PageSlide::Direction::Off,
              d->overlay != nullptr ? Appearance::Immediate : appearance);
    if (d->overlay != nullptr)
        d->raiseOverlay();
}

ApplicationPage *SceneManager::currentPage() const
{
    return d->current();
}

QList<ApplicationPage *> SceneManager::history() const
{
    return d->history;
}

void SceneManager::showOverlayPage(ApplicationPage *page)
{
    if (page == nullptr || (page == d->overlay && !d->overlayIsCovered))
        return;
    if (d->overlayIsOnTop())
        d->lowerOverlay();
    page->ensureContent();
    d->overlay = page;
    d->raiseOverlay();
}

void SceneManager::hideOverlayPage(ApplicationPage *page)
{
    if (page == nullptr || page != d->overlay)
        return;
    const bool wasOnTop = d->overlayIsOnTop();
    d->overlay = nullptr;
    d->overlayIsCovered = false;
    if (!wasOnTop)
        return;
    ApplicationPage *uncovered = d->current();
    if (uncovered != nullptr) {
        d->place(uncovered, 0, PageLayer);
        d->reveal(uncovered);
    }
    d->followPage();
    d->conceal(page);
    if (uncovered != nullptr && uncovered == d->current())
        Q_EMIT uncovered->appeared();
}

void SceneManager::showBanner(Banner *banner)
{
    if (const ApplicationPage *page = visiblePage(); page != nullptr && banner != nullptr)
        banner->setOnInverted(page->isInverted());
    d->bannerPlace.show(banner, d->size, d->keptFree(), d->onDisplay);
    if (banner != nullptr)
        banner->setOnDisplay(d->onDisplay);
}

bool SceneManager::isInTransition() const
{
    return d->slide.isRunning();
}

ApplicationPage *SceneManager::visiblePage() const
{
    return d->overlayIsOnTop() ? d->overlay : d->current();
}

QGraphicsWidget *SceneManager::root() const
{
    return d->root;
}

void SceneManager::block()
{
    d->popups.block(visiblePage());
}

void SceneManager::unblock()
{
    d->popups.unblock();
}

bool SceneManager::isBlocked() const
{
    return d->popups.isBlocked();
}

void SceneManager::addPopup(Popup *popup)
{
    d->popups.add(popup);
    popup->setParentItem(d->root);
    popup->unsetLayoutDirection(); // the scene's, which may have changed while it was in none
    popup->setZValue(int(PopupLayer) + int(d->popups.popups().size()));
    popup->setGeometry(QRectF(QPointF(), d->size));
    popup->setOnDisplay(d->onDisplay);
    d->followPage();
}

void SceneManager::popupChanged()
{
    d->bannerPlace.arrange(d->size, d->keptFree());
}

void SceneManager::removePopup(Popup *popup)
{
    d->popups.remove(popup);
    popup->setOnDisplay(false);
    popup->setParentItem(nullptr);
    if (popup->scene() != nullptr)
        popup->scene()->removeItem(popup);
    popupChanged();
}

void SceneManager::setSceneSize(const QSizeF &size)
{
    d->size = size;
    d->root->resize(size);
    for (ApplicationPage *page : {d->current(), d->slide.outgoing(), d->overlay}) {
        if (page != nullptr && page->isVisible())
            page->setGeometry(QRectF(page->pos(), size));
    }
    for (Popup *popup : d->popups.popups())
        popup->setGeometry(QRectF(QPointF(), size));
    popupChanged();
}

void SceneManager::setOnDisplay(bool onDisplay)
{
    d->onDisplay = onDisplay;
    if (!onDisplay)
        d->slide.finish();
    for (ApplicationPage *page : {d->current(), d->slide.outgoing(), d->overlay}) {
        if (page != nullptr && page->isVisible())
            page->setOnDisplay(onDisplay);
    }
    for (Popup *popup : d->popups.popups())
        popup->setOnDisplay(onDisplay);
    if (Banner *banner = d->bannerPlace.banner())
        banner->setOnDisplay(onDisplay);
}

void SceneManager::finishTransition()
{
    d->slide.finish();
}

void SceneManager::sendToPage(QEvent::Type type)
{
    ApplicationPage *page = visiblePage();
    if (page == nullptr)
        return;
    QEvent event(type);
    QCoreApplication::sendEvent(page, &event);
}

bool SceneManager::takesPress(const QPointF &scenePosition) const
{
    if (!d->slide.isRunning() || d->slide.incoming() == nullptr)
        return true;
    const ApplicationPage *incoming = d->slide.incoming();
    const ApplicationPage *outgoing = d->slide.outgoing();
    const bool hidden = outgoing != nullptr && outgoing->zValue() > incoming->zValue()
        && outgoing->geometry().contains(scenePosition);
    return !hidden && incoming->geometry().contains(scenePosition);
}

void SceneManager::escape()
{
    if (d->popups.escape())
        return;
    if (ApplicationPage *page = visiblePage())
        page->escape();
    else
        d->window->close();
}

// Called by a page that is being destroyed.
void SceneManager::forget(ApplicationPage *page)
{
    d->slide.drop(page);
    d->popups.forget(page);
    const bool wasOnTop = page == d->current();
    d->history.removeOne(page);
    if (page == d->overlay) {
        d->overlay = nullptr;
        d->overlayIsCovered = false;
        if (d->current() != nullptr && !d->current()->isVisible()) {
            d->place(d->current(), 0, PageLayer);
            d->reveal(d->current());
        }
    } else if (wasOnTop && d->current() != nullptr) {
        d->slide.finish();
        d->place(d->current(), 0, PageLayer);
        if (!d->overlayIsOnTop()) {
            d->reveal(d->current());
            d->followPage();
            Q_EMIT d->window->pageChanged(d->current());
            Q_EMIT d->current()->appeared();
        }
    }
}

} // namespace toolkit

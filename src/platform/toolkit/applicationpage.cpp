// SPDX-License-Identifier: GPL-3.0-or-later
#include "applicationpage.h"

#include "applicationwindow.h"
#include "pageheader.h"
#include "pannableviewport.h"

#include <QGraphicsScene>
#include <QMetaMethod>
#include <QPainter>
#include <QPointer>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace toolkit {

class ApplicationPage::Private
{
public:
    PageHeader *header = nullptr;
    PannableViewport *viewport = nullptr;
    Widget *central = nullptr;
    QPointer<SceneManager> manager; // that showed the page last
    QPointer<QGraphicsObject> focus; // what had it when the page was covered
    EscapeMode escapeMode = EscapeMode::Auto;
    ComponentDisplay displays[3] = {ComponentDisplay::Show, ComponentDisplay::Show, ComponentDisplay::Show};
    bool contentMade = false;
    bool shown = false;
};

ApplicationPage::ApplicationPage(QGraphicsItem *parent) : Widget(parent), d(std::make_unique<Private>())
{
    setVisible(false);
    d->viewport = new PannableViewport(this);
    d->header = new PageHeader(this);
    connect(d->header, &PageHeader::backClicked, this, [this] { escape(); });
    setCentralWidget(new Widget);
    setStyleName(u"CommonApplicationPage"_s);
}

ApplicationPage::~ApplicationPage()
{
    if (d->manager != nullptr)
        d->manager->forget(this);
}

void ApplicationPage::setTitle(const QString &title)
{
    d->header->setTitle(title);
    arrange();
    if (d->shown && window() != nullptr)
        window()->setWindowTitle(title);
}

QString ApplicationPage::title() const
{
    return d->header->title();
}

void ApplicationPage::setHeaderStyleName(const QString &styleName)
{
    d->header->setStyleName(styleName);
}

void ApplicationPage::setPannable(bool pannable)
{
    d->viewport->setPannable(pannable);
}

bool ApplicationPage::isPannable() const
{
    return d->viewport->isPannable();
}

void ApplicationPage::setEscapeMode(EscapeMode mode)
{
    d->escapeMode = mode;
    arrange();
}

ApplicationPage::EscapeMode ApplicationPage::escapeMode() const
{
    return d->escapeMode;
}

void ApplicationPage::setComponentsDisplay(Components components, ComponentDisplay display)
{
    for (int index = 0; index < 3; ++index) {
        if (components.testFlag(Component(1 << index)))
            d->displays[index] = display;
    }
    arrange();
}

ApplicationPage::ComponentDisplay ApplicationPage::componentDisplay(Component component) const
{
    const int index = component == NavigationBar ? 0 : component == HomeButton ? 1 : 2;
    return d->displays[index];
}

PannableViewport *ApplicationPage::pannableViewport() const
{
    return d->viewport;
}

Widget *ApplicationPage::centralWidget() const
{
    return d->central;
}

void ApplicationPage::setCentralWidget(Widget *widget)
{
    if (widget == d->central)
        return;
    Widget *old = d->central;
    d->central = widget != nullptr ? widget : new Widget;
    d->viewport->setWidget(d->central);
    delete old;
}

void ApplicationPage::appear(ApplicationWindow *window, Appearance appearance)
{
    if (window != nullptr)
        window->sceneManager()->appearPage(this, appearance);
}

void ApplicationPage::dismiss(Appearance appearance)
{
    if (d->manager != nullptr)
        d->manager->dismissPage(this, appearance);
}

bool ApplicationPage::isShown() const
{
    return d->shown;
}

void ApplicationPage::ensureContent()
{
    if (d->contentMade)
        return;
    d->contentMade = true;
    createContent();
}

void ApplicationPage::createContent() { }

void ApplicationPage::applyStyle()
{
    Widget::applyStyle();
    if (d->header != nullptr) {
        // Lines run out under the heading instead of being cut there.
        d->viewport->setGround(style().color(u"background"_s));
        d->header->setBarHeight(style().number(u"header"_s, 0));
        arrange();
    }
}

void ApplicationPage::resizeEvent(QGraphicsSceneResizeEvent *event)
{
    Widget::resizeEvent(event);
    arrange();
}

// The header, where there is one, and below it the viewport.
void ApplicationPage::arrange()
{
    const bool first = d->manager == nullptr || !d->manager->history().contains(this)
        || d->manager->history().constFirst() == this;
    const bool hasBack = componentDisplay(EscapeButton) == ComponentDisplay::Show && !first
        && d->escapeMode != EscapeMode::CloseWindow;
    d->header->setBackVisible(hasBack);
    const qreal header = d->header->barHeight();
    d->header->setVisible(header > 0);
    d->header->setGeometry(QRectF(0, 0, size().width(), header));
    d->viewport->setGeometry(QRectF(0, header, size().width(), qMax(0.0, size().height() - header)));
}

bool ApplicationPage::isOpaque() const
{
    return style().color(u"background"_s).alpha() == 255 || isCoveredByChild();
}

// As a video covers the player's page.
bool ApplicationPage::isCoveredByChild() const
{
    const QList<QGraphicsItem *> children = childItems();
    return std::any_of(children.begin(), children.end(), [this](const QGraphicsItem *child) {
        return child->isVisible() && child->opacity() >= 1
            && child->mapRectToParent(child->opaqueArea().boundingRect()).contains(rect());
    });
}

void ApplicationPage::paint(QPainter *painter, const QStyleOptionGraphicsItem *, QWidget *)
{
    const QColor background = style().color(u"background"_s);
    if (painter != nullptr && background.alpha() > 0 && !isCoveredByChild())
        painter->fillRect(rect(), background);
}

void ApplicationPage::requestMenu()
{
    if (window() != nullptr)
        window()->openMenu();
}

void ApplicationPage::escape()
{
    const bool heard = isSignalConnected(QMetaMethod::fromSignal(&ApplicationPage::backButtonClicked));
    const bool isLast = d->manager == nullptr || d->manager->history().size() <= 1;
    switch (d->escapeMode) {
    case EscapeMode::Back:
        Q_EMIT backButtonClicked();
        return;
    case EscapeMode::Auto:
        if (heard) {
            Q_EMIT backButtonClicked();
            return;
        }
        if (!isLast) {
            dismiss();
            return;
        }
        break;
    case EscapeMode::CloseWindow:
        break;
    }
    if (ApplicationWindow *shownIn = window())
        shownIn->close();
}

// Called by the scene manager when the page comes to the top and when it is covered or leaves.
void ApplicationPage::setShown(bool shown)
{
    if (d->shown == shown)
        return;
    d->shown = shown;
    ApplicationWindow *shownIn = window();
    if (shownIn != nullptr)
        d->manager = shownIn->sceneManager();
    QGraphicsItem *focus = scene() != nullptr ? scene()->focusItem() : nullptr;
    if (!shown) {
        d->focus = focus != nullptr && isAncestorOf(focus) ? focus->toGraphicsObject() : nullptr;
    } else {
        arrange();
        if (d->focus != nullptr)
            d->focus->setFocus(Qt::OtherFocusReason);
    }
}

} // namespace toolkit

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "scenemanager.h"
#include "widget.h"

#include <functional>
#include <memory>

namespace toolkit {

// What stands over the page and keeps the person to itself until it is answered: a sheet, a dialog, a menu.
// The page on top is blocked meanwhile: told so before the popup shows, and told of its end after the popup's
// result was sent. The scene manager keeps it as large as the scene. It is its owner's before, while and
// after it is seen; it can appear again at any time, also on its way out.
class Popup : public Widget
{
    Q_OBJECT

public:
    explicit Popup(QGraphicsItem *parent = nullptr);
    ~Popup() override;

    // Nothing without a window.
    void appear(ApplicationWindow *window);
    // From appear() until disappeared().
    [[nodiscard]] bool isDisplayed() const;
    // Fully up, and not on its way out.
    [[nodiscard]] bool isOpen() const;
    // On its way in or fully up: not yet answered.
    [[nodiscard]] bool isActive() const;

public Q_SLOTS:
    // Closes it without a result; nothing while it is not on its way in or up.
    void dismiss();

Q_SIGNALS:
    void appeared(); // fully up
    void disappeared(); // out of the scene

protected:
    friend class PopupStack;
    friend class SceneManager;
    // Where it stands when it is up, which is kept free of banners; the scene manager is told when it becomes
    // another. Empty on its way out.
    [[nodiscard]] virtual QRectF keptFree() const { return isActive() ? panelRect() : QRectF(); }
    // Escape, the back key or the back gesture.
    virtual void escape() = 0;
    // A tap or click beside the panel.
    virtual void tappedBeside() { escape(); }
    // The scene goes away with the window: the popup is out of it now, and nobody is left to answer it.
    virtual void abandoned();

    // The part of it that is no dimmed page.
    [[nodiscard]] virtual QRectF panelRect() const = 0;
    // Lays its parts out for its size.
    virtual void arrange() { }
    // Shows it at progress(): 0 not there, 1 fully there.
    virtual void place() { update(); }
    // Begins to go: it takes no touch from now on. And stays after all.
    virtual void setLeaving(bool leaving) { Q_UNUSED(leaving) }
    // Of the whole way.
    [[nodiscard]] virtual int motionMilliseconds() const;

    [[nodiscard]] ApplicationWindow *popupWindow() const; // null when it is not displayed
    [[nodiscard]] qreal progress() const;
    // By a finger that holds it, and where that lets it go.
    void setProgress(qreal progress);
    void settle();
    // The result is sent after it was marked as closed; its owner may delete it there, or let it appear
    // again. The page is free in the same call, or in the turn of the event loop after the result, so that
    // everything that the owner does about it comes first.
    enum class Free { Now, NextTurn };
    void close(const std::function<void()> &result, Free free = Free::NextTurn,
               Appearance appearance = Appearance::Normal);
    // To whatever had it before the popup, unless somebody else took it.
    void giveFocusBack();
    // What the Tab key goes through, in the order in which a person reads.
    [[nodiscard]] QList<QGraphicsWidget *> focusChain() const;

    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget) override;
    void resizeEvent(QGraphicsSceneResizeEvent *event) override;
    void mousePressEvent(QGraphicsSceneMouseEvent *event) override;
    void mouseReleaseEvent(QGraphicsSceneMouseEvent *event) override;
    void wheelEvent(QGraphicsSceneWheelEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void keyReleaseEvent(QKeyEvent *event) override;
    bool focusNextPrevChild(bool next) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    class Private;
    std::unique_ptr<Private> d;
};

} // namespace toolkit

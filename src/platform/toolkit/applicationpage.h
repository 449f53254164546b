// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "scenemanager.h"
#include "widget.h"

#include <QList>
#include <QRectF>

#include <memory>

namespace toolkit {

class PannableViewport;

// One page: title, content in a pannable viewport, back button. Content is made when it is first shown.
class ApplicationPage : public Widget
{
    Q_OBJECT

public:
    enum class EscapeMode { Auto, Back, CloseWindow };
    enum Component { NavigationBar = 1, HomeButton = 2, EscapeButton = 4, AllComponents = 7 };
    Q_DECLARE_FLAGS(Components, Component)
    enum class ComponentDisplay { Show, Hide, AutoHide };

    explicit ApplicationPage(QGraphicsItem *parent = nullptr);
    ~ApplicationPage() override;

    void setTitle(const QString &title); // drawn by pages whose style has a header
    [[nodiscard]] QString title() const;
    // For titles that stand on another background than the page's own.
    void setHeaderStyleName(const QString &styleName);
    [[nodiscard]] QString accessibleName() const override { return title(); }
    [[nodiscard]] QAccessible::Role accessibleRole() const override { return QAccessible::Pane; }
    // Of the menu with the page's actions: whether it is offered now, and the wish for it that comes from
    // elsewhere than its button.
    [[nodiscard]] virtual bool offersMenu() const { return !actions().isEmpty(); }
    virtual void requestMenu();
    // What can be tapped at fixed places on it, whether it is shown just now or not: no banner lies over
    // that.
    [[nodiscard]] virtual QList<QRectF> touchAreas() const { return {}; }
    void setPannable(bool pannable);
    [[nodiscard]] bool isPannable() const;
    void setEscapeMode(EscapeMode mode);
    [[nodiscard]] EscapeMode escapeMode() const;
    void setComponentsDisplay(Components components, ComponentDisplay display);
    [[nodiscard]] ComponentDisplay componentDisplay(Component component) const;

    [[nodiscard]] PannableViewport *pannableViewport() const;
    [[nodiscard]] Widget *centralWidget() const; // never null; content goes into it
    void setCentralWidget(Widget *widget); // takes ownership, deletes the old one

    void appear(ApplicationWindow *window, Appearance appearance = Appearance::Normal);
    void dismiss(Appearance appearance = Appearance::Normal);
    // Shown or on its way in; false for pages that are covered.
    [[nodiscard]] bool isShown() const;
    // Every pixel of it is painted, by its background or by one child that covers it.
    [[nodiscard]] bool isOpaque() const;
    // Makes the content now when it was not made yet.
    void ensureContent();

Q_SIGNALS:
    void appeared();
    void disappeared();
    void backButtonClicked();

protected:
    virtual void createContent();
    void applyStyle() override;
    void resizeEvent(QGraphicsSceneResizeEvent *event) override;
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget) override;
    friend class SceneManager;
    // The window's back gesture, Escape or back key on this page: closes the window, or backButtonClicked().
    void escape();

private:
    void setShown(bool shown);
    void arrange();
    [[nodiscard]] bool isCoveredByChild() const;

    class Private;
    std::unique_ptr<Private> d;
};

Q_DECLARE_OPERATORS_FOR_FLAGS(ApplicationPage::Components)

} // namespace toolkit

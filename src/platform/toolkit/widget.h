// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "style.h"

#include <QAccessible>
#include <QGraphicsWidget>
#include <QString>

namespace toolkit {

class ApplicationWindow;

// Base of every toolkit widget. A style name gives it its size and look; a throw-away widget with a style
// name thus answers the themed size (preferredSize()).
class Widget : public QGraphicsWidget
{
    Q_OBJECT
    Q_PROPERTY(QString styleName READ styleName WRITE setStyleName)

public:
    explicit Widget(QGraphicsItem *parent = nullptr);
    ~Widget() override;

    [[nodiscard]] QString styleName() const { return m_styleName; }
    // Reads the theme's style and applies it: size hints, margins (contentsMargins), font.
    void setStyleName(const QString &styleName);
    [[nodiscard]] const Style &style() const { return m_style; }
    // Light on dark in both schemes: its style says so, or what it stands in or over does.
    [[nodiscard]] bool isInverted() const { return m_style.inverted; }
    // What it stands in or over is inverted. Taken from the widget that it stands in; what lies over a page
    // is told.
    [[nodiscard]] bool isOnInverted() const { return m_onInverted; }
    void setOnInverted(bool on);
    void setViewType(const QString &viewType) { m_viewType = viewType; }
    [[nodiscard]] QString viewType() const { return m_viewType; }
    // On the screen: visible, on a page that is shown, in a window on the display.
    [[nodiscard]] bool isOnDisplay() const { return m_onDisplay; }
    [[nodiscard]] ApplicationWindow *window() const;
    // The orientation that its style is read for.
    [[nodiscard]] Qt::Orientation screenOrientation() const { return m_orientation; }
    // Every widget of the scene reads its style again, for the orientation of its window.
    static void reloadStyles(QGraphicsScene *scene);

    // What assistive technology is told. The name is plain text, whatever it holds.
    virtual void setAccessibleName(const QString &name);
    [[nodiscard]] virtual QString accessibleName() const { return m_accessibleName; }
    // NoRole: it is not told of itself, only what is in it is. Whatever has a name is at least a group.
    [[nodiscard]] virtual QAccessible::Role accessibleRole() const;
    // Called when it is asked for the first time. QAccessible keeps it and ends it with the widget.
    [[nodiscard]] virtual QAccessibleInterface *createAccessible();

Q_SIGNALS:
    void displayEntered();
    void displayExited();
    // For assistive technology, which is told nothing while it does not listen.
    void accessibleNameChanged();

protected:
    // The style changed (its name, the theme, the orientation, the text scale).
    virtual void applyStyle();
    QVariant itemChange(GraphicsItemChange change, const QVariant &value) override;
    friend class SceneManager;
    // Said to a page (or another top widget) when it is on the screen; its visible descendants follow, also
    // those that come or become visible later.
    void setOnDisplay(bool on);
    void changeEvent(QEvent *event) override;

private:
    void reloadStyle();
    void followGround();
    void updateOnDisplay();
    void followWindow();
    QString m_styleName;
    QString m_viewType;
    QString m_accessibleName;
    Style m_style;
    Qt::Orientation m_orientation = Qt::Vertical;
    bool m_onInverted = false;
    bool m_toldInverted = false;
    bool m_onDisplay = false;
    bool m_displayRoot = false;
};

} // namespace toolkit

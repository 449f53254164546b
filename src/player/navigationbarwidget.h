// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <platform/toolkit/widget.h>

#include <QPointer>

class QGraphicsGridLayout;

namespace toolkit {
class IconButton;
}

// The program's own bar: a back button, a centre widget, a menu button. Turns taps into signals; the page
// that owns it decides what they do.
class NavigationBarWidget : public toolkit::Widget
{
    Q_OBJECT

public:
    explicit NavigationBarWidget(QGraphicsItem *parent = nullptr);
    ~NavigationBarWidget() override;

    void setBackButtonIcon(const QString &iconId);
    void setMenuButtonVisible(bool visible);
    // Shown in the middle; null for none. Returns the one that stood there, hidden and no longer laid out.
    QGraphicsWidget *setCentralWidget(QGraphicsWidget *widget);
    void setMenuEnabled(bool enabled);

    [[nodiscard]] toolkit::IconButton *backButton() const { return m_backButton; }
    [[nodiscard]] toolkit::IconButton *menuButton() const { return m_menuButton; }

Q_SIGNALS:
    void backButtonClicked();
    void menuButtonClicked();

protected:
    QVariant itemChange(GraphicsItemChange change, const QVariant &value) override;
    void resizeEvent(QGraphicsSceneResizeEvent *event) override;

private:
    void takeCentralWidth();
    void layOutCentralColumn();
    void orderKeys();

    QGraphicsGridLayout *m_layout;
    toolkit::IconButton *m_backButton;
    toolkit::IconButton *m_menuButton;
    QPointer<QGraphicsWidget> m_centralWidget;
    int m_centralWidth = 0; // whole pixels, of the theme
};

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <platform/toolkit/widget.h>

#include <QMarginsF>

class NavigationBarWidget;
class QPropertyAnimation;

namespace toolkit {
class IconButton;
class Label;
} // namespace toolkit

// What lies over the upper edge of the picture: a scrim, the navigation bar, and in its middle the toolbar
// with the video's title and the information button. Taps beside its buttons go through to the picture.
class PlayerOverlay : public toolkit::Widget
{
    Q_OBJECT

public:
    explicit PlayerOverlay(QGraphicsItem *parent = nullptr);
    ~PlayerOverlay() override;

    [[nodiscard]] NavigationBarWidget *navigationBar() const { return m_navigationBar; }
    [[nodiscard]] toolkit::Widget *toolbar() const { return m_toolbar; }
    [[nodiscard]] toolkit::IconButton *infoButton() const { return m_infoButton; }
    void setTitle(const QString &title);
    [[nodiscard]] QString title() const;

    // At the left and the right: the title and what stands beside it keep clear of it.
    void setTaken(const QMarginsF &taken);

    // Fades in or out from where it is.
    void setShown(bool shown);
    [[nodiscard]] bool isShown() const { return m_shown; }

protected:
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget) override;
    void resizeEvent(QGraphicsSceneResizeEvent *event) override;
    QSizeF sizeHint(Qt::SizeHint which, const QSizeF &constraint) const override;

private:
    void placeTitle();

    NavigationBarWidget *m_navigationBar;
    toolkit::Widget *m_toolbar;
    toolkit::Label *m_title;
    toolkit::IconButton *m_infoButton;
    QPropertyAnimation *m_fade;
    QMarginsF m_taken;
    bool m_shown = false;
};

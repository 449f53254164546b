// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAccessibleWidget>

class QGraphicsItem;

namespace toolkit {

class ApplicationWindow;

// The window: in it the pages that are seen, and what stands over them.
class AccessibleWindow : public QAccessibleWidget
{
public:
    explicit AccessibleWindow(ApplicationWindow *window);

    [[nodiscard]] QAccessibleInterface *child(int index) const override;
    [[nodiscard]] int childCount() const override;
    [[nodiscard]] int indexOfChild(const QAccessibleInterface *child) const override;
    [[nodiscard]] QAccessibleInterface *childAt(int x, int y) const override;
    [[nodiscard]] QAccessibleInterface *focusChild() const override;
    [[nodiscard]] QString text(QAccessible::Text kind) const override;

private:
    [[nodiscard]] ApplicationWindow *view() const;
    [[nodiscard]] QGraphicsItem *root() const; // null while the window is going away
};

} // namespace toolkit

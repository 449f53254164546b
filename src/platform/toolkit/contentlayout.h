// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QGraphicsLayout>
#include <QWidget>

#include <functional>

namespace toolkit {

// Hears when the widget's wishes change; places it as the viewport says.
class ContentLayout : public QGraphicsLayout
{
public:
    ContentLayout(QGraphicsLayoutItem *parent, std::function<void()> arrange)
        : QGraphicsLayout(parent),
          m_arrange(std::move(arrange))
    {
    }

    void setItem(QGraphicsLayoutItem *item)
    {
        // The old one may live longer than this layout.
        if (m_item != nullptr && m_item != item && m_item->parentLayoutItem() == this)
            m_item->setParentLayoutItem(nullptr);
        m_item = item;
        if (item != nullptr)
            addChildLayoutItem(item);
        invalidate();
    }
    int count() const override { return m_item != nullptr ? 1 : 0; }
    QGraphicsLayoutItem *itemAt(int) const override { return m_item; }
    void removeAt(int) override { m_item = nullptr; }
    void setGeometry(const QRectF &rect) override
    {
        QGraphicsLayout::setGeometry(rect);
        m_arrange();
    }

protected:
    QSizeF sizeHint(Qt::SizeHint which, const QSizeF &) const override
    {
        return which == Qt::MaximumSize ? QSizeF(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX) : QSizeF(0, 0);
    }

private:
    QGraphicsLayoutItem *m_item = nullptr;
    std::function<void()> m_arrange;
};

} // namespace toolkit

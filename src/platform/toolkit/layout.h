// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QGraphicsLayout>
#include <QString>

#include <memory>

namespace toolkit {

class LinearLayoutPolicy;
class Widget;

// A layout whose policies, one an orientation, arrange the same items in different ways. Changes are not
// animated.
class Layout : public QGraphicsLayout
{
public:
    explicit Layout(QGraphicsLayoutItem *parent = nullptr);
    ~Layout() override;

    // Both orientations, or one. The layout owns its policies.
    void setPolicy(LinearLayoutPolicy *policy);
    void setPortraitPolicy(LinearLayoutPolicy *policy);
    void setLandscapePolicy(LinearLayoutPolicy *policy);
    [[nodiscard]] LinearLayoutPolicy *policy() const; // the one in force

    int count() const override;
    QGraphicsLayoutItem *itemAt(int index) const override;
    void removeAt(int index) override;
    void setGeometry(const QRectF &rect) override;
    void invalidate() override;

protected:
    QSizeF sizeHint(Qt::SizeHint which, const QSizeF &constraint = QSizeF()) const override;

private:
    friend class LinearLayoutPolicy;
    void registerPolicy(LinearLayoutPolicy *policy);
    void unregisterPolicy(LinearLayoutPolicy *policy);
    void adopt(QGraphicsLayoutItem *item);
    void drop(QGraphicsLayoutItem *item);
    void dropUnused();
    void showItemsOfPolicy(const LinearLayoutPolicy *policy);
    [[nodiscard]] Widget *parentWidget() const; // null: its widget is none of the toolkit's
    [[nodiscard]] Qt::LayoutDirection direction() const;
    [[nodiscard]] static bool isShown(const QGraphicsLayoutItem *item);

    class Private;
    std::unique_ptr<Private> d;
};

// A row or a column. Items that are hidden take no room. Sides in margins and alignments are those of
// left-to-right; they change places in the other direction.
class LinearLayoutPolicy
{
public:
    LinearLayoutPolicy(Layout *layout, Qt::Orientation orientation);
    ~LinearLayoutPolicy();

    void setStyleName(const QString &styleName); // margins and spacing
    [[nodiscard]] QString styleName() const;
    void setSpacing(qreal spacing);
    void setContentsMargins(qreal left, qreal top, qreal right, qreal bottom);
    void addItem(QGraphicsLayoutItem *item);
    void insertItem(int index, QGraphicsLayoutItem *item);
    void removeItem(QGraphicsLayoutItem *item);
    void addStretch(int stretch = 1);
    [[nodiscard]] int indexOf(const QGraphicsLayoutItem *item) const; // -1: not in it
    [[nodiscard]] int count() const;
    [[nodiscard]] QGraphicsLayoutItem *itemAt(int index) const;
    void setAlignment(QGraphicsLayoutItem *item, Qt::Alignment alignment);
    void setStretchFactor(QGraphicsLayoutItem *item, int stretch);

private:
    friend class Layout;
    class Private;
    std::unique_ptr<Private> d;
};

} // namespace toolkit

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "widget.h"

#include <QModelIndex>
#include <QSizeF>

#include <memory>

class QAbstractItemModel;

namespace toolkit {

// Cells that were scrolled away, kept for reuse. Owned by the list.
class CellRecycler
{
public:
    ~CellRecycler();
    // A kept cell, or null.
    [[nodiscard]] Widget *take();
    void recycle(Widget *cell);

private:
    QList<Widget *> m_cells;
};

// Makes and fills the cells of a list.
class CellCreator
{
public:
    virtual ~CellCreator() = default;
    // A cell for this row, filled: from the recycler when it has one.
    virtual Widget *createCell(const QModelIndex &index, CellRecycler &recycler) const = 0;
    virtual void updateCell(const QModelIndex &index, Widget *cell) const = 0;
    // All cells are of one size; the list stretches the width.
    [[nodiscard]] virtual QSizeF cellSize() const = 0;

    // What assistive technology says of a row, which need not have a cell: what it is, and what else it
    // shows. Plain text.
    [[nodiscard]] virtual QString accessibleName(const QModelIndex &index) const;
    [[nodiscard]] virtual QString accessibleDescription(const QModelIndex &index) const;
};

// A list of the rows of a model in the nearest enclosing pannable viewport. Only the visible cells and a
// small margin exist, however long the model is.
class List : public Widget
{
    Q_OBJECT

public:
    explicit List(QGraphicsItem *parent = nullptr);
    ~List() override;

    void setCellCreator(CellCreator *creator); // not owned
    [[nodiscard]] CellCreator *cellCreator() const;
    void setItemModel(QAbstractItemModel *model); // not owned
    [[nodiscard]] QAbstractItemModel *itemModel() const;
    void setColumns(int columns);
    void setShowGroups(bool show);
    void setIndexVisible(bool visible);
    enum class SelectionMode { None, Single };
    void setSelectionMode(SelectionMode mode);

    // Rows whose cells are at least partly visible, top to bottom.
    [[nodiscard]] QList<QModelIndex> visibleIndexes() const;
    // Null when the row has no cell now.
    [[nodiscard]] Widget *cell(const QModelIndex &index) const;
    // Calls updateCell() for the row when it has a cell.
    void refreshCell(const QModelIndex &index);
    void scrollTo(const QModelIndex &index);
    // How many cells exist now, seen or kept ready beside what is seen.
    [[nodiscard]] int cellCount() const;
    // The row that the keyboard is on. It follows its row through changes of the model; when the row goes,
    // the next takes its place.
    [[nodiscard]] QModelIndex currentIndex() const;
    void setCurrentIndex(const QModelIndex &index); // invalid: none, the keyboard begins at what is seen
    // As by the keyboard: the row comes into sight with the mark around it.
    void goTo(const QModelIndex &index);
    // The row looks pressed until another is held, or none (invalid): something that stands over the list,
    // its menu for one, is about it.
    void setHeldIndex(const QModelIndex &index);
    [[nodiscard]] QModelIndex heldIndex() const;
    // As by the user.
    void tap(const QModelIndex &index);
    void longTap(const QModelIndex &index);

    // Of the ground that a pressed row lies on: square where it goes from edge to edge of the window.
    [[nodiscard]] qreal plateRadius() const;
    // Where a row is, or would be if it had a cell; in the list's coordinates.
    [[nodiscard]] QRectF rowRect(const QModelIndex &index) const;
    [[nodiscard]] QModelIndex indexAt(const QPointF &point) const;
    [[nodiscard]] bool isInSight(const QModelIndex &index) const;
    [[nodiscard]] QAccessible::Role accessibleRole() const override { return QAccessible::List; }
    [[nodiscard]] QAccessibleInterface *createAccessible() override;

Q_SIGNALS:
    void itemClicked(QModelIndex index);
    // Also with the menu key and Shift+F10.
    void itemLongTapped(QModelIndex index, QPointF point); // scene coordinates
    void editRequested(QModelIndex index); // F2
    void removeRequested(QModelIndex index); // Delete
    void currentChanged(QModelIndex index);
    void modelChanged(); // another model
    void panningStarted();
    void panningStopped();

protected:
    void applyStyle() override;
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget) override;
    QSizeF sizeHint(Qt::SizeHint which, const QSizeF &constraint) const override;
    QVariant itemChange(GraphicsItemChange change, const QVariant &value) override;
    void resizeEvent(QGraphicsSceneResizeEvent *event) override;
    void changeEvent(QEvent *event) override;
    bool event(QEvent *event) override;
    bool sceneEventFilter(QGraphicsItem *watched, QEvent *event) override;
    void mousePressEvent(QGraphicsSceneMouseEvent *event) override;
    void mouseMoveEvent(QGraphicsSceneMouseEvent *event) override;
    void mouseReleaseEvent(QGraphicsSceneMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;

private Q_SLOTS:
    void cellClicked();
    void cellLongTapped(const QPointF &point);

private:
    void connectModel(QAbstractItemModel *model);
    void structureChanged();
    void syncNow();
    void ensureSynced();
    void attachViewport();
    void cancelPress();
    void setPressedRow(int row);
    void adoptCell(Widget *cell);
    void updateFocusMark();
    void followCurrent();
    void pointAt(int row);
    void makeCurrent(int row);
    [[nodiscard]] bool isCurrentShown() const;
    [[nodiscard]] bool isMarkInSight() const; // where it was seen last
    [[nodiscard]] int startingRow() const;
    [[nodiscard]] bool actByKey(const QKeyEvent *event);
    void moveByKey(int key);
    [[nodiscard]] int rowForKey(int key, int row) const;
    [[nodiscard]] QRectF seenRect() const;

    class Private;
    std::unique_ptr<Private> d;
};

} // namespace toolkit

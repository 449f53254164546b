// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/toolkit/label.h"
#include "platform/toolkit/layout.h"
#include "platform/toolkit/list.h"
#include "platform/toolkit/pannableviewport.h"
#include "widgets_support.h"

#include <QApplication>
#include <QStringListModel>

using namespace Qt::Literals::StringLiterals;
using toolkit::CellCreator;
using toolkit::CellRecycler;
using toolkit::Label;
using toolkit::Layout;
using toolkit::LinearLayoutPolicy;
using toolkit::List;
using toolkit::PannableViewport;
using toolkit::Widget;

class Cell : public Label
{
    Q_OBJECT

public:
    using Label::Label;
    void handlePointer() { m_handles = true; }

Q_SIGNALS:
    void clicked();
    void longTapped(QPointF point);

protected:
    void mousePressEvent(QGraphicsSceneMouseEvent *event) override
    {
        if (!m_handles)
            event->ignore();
    }
    void mouseReleaseEvent(QGraphicsSceneMouseEvent *event) override { Q_EMIT clicked(); }

private:
    bool m_handles = false;
};

class Creator : public CellCreator
{
public:
    Widget *createCell(const QModelIndex &index, CellRecycler &recycler) const override
    {
        auto *cell = static_cast<Cell *>(recycler.take());
        if (cell == nullptr) {
            cell = new Cell;
            cell->setTextFormat(Qt::PlainText);
            if (cellsHandlePointer)
                cell->handlePointer();
            ++made;
        }
        updateCell(index, cell);
        return cell;
    }
    void updateCell(const QModelIndex &index, Widget *cell) const override
    {
        static_cast<Cell *>(cell)->setText(index.data().toString());
        ++filled;
    }
    QSizeF cellSize() const override { return {480, height}; }

    qreal height = 100;
    bool cellsHandlePointer = false;
    mutable int made = 0;
    mutable int filled = 0;
};

// A page as the program builds it: a viewport whose widget is the list.
struct Fixture
{
    explicit Fixture(int rows, bool cellsHandlePointer = false)
    {
        creator.cellsHandlePointer = cellsHandlePointer;
        QStringList names;
        for (int i = 0; i < rows; ++i)
            names.append(QString::number(i));
        model.setStringList(names);
        page = new ShownPage;
        stage.scene.addItem(page);
        page->resize(480, 854);
        viewport = new PannableViewport(page);
        viewport->setGeometry(QRectF(0, 0, 480, 854));
        list = new List;
        list->setCellCreator(&creator);
        list->setItemModel(&model);
        viewport->setWidget(list);
        page->setOnDisplay(true);
        settle();
    }
    ~Fixture() { stage.scene.clear(); }

    void settle()
    {
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
    }
    void placeBetween(Widget *above, Widget *below, qreal height)
    {
        auto *content = new Widget;
        auto *policy = new LinearLayoutPolicy(new Layout(content), Qt::Vertical);
        policy->addItem(above);
        policy->addItem(list);
        policy->addItem(below);
        for (Widget *widget : {above, below}) {
            widget->setMinimumHeight(height);
            widget->setMaximumHeight(height);
        }
        viewport->setWidget(content);
        settle();
    }
    QString textOf(int row) const
    {
        const auto *cell = static_cast<Cell *>(list->cell(model.index(row)));
        return cell != nullptr ? cell->text() : QString();
    }
    // Every existing cell shows its row, at its place.
    QString faults() const
    {
        QStringList result;
        for (int row = 0; row < model.rowCount(); ++row) {
            const Widget *cell = list->cell(model.index(row));
            if (cell == nullptr)
                continue;
            if (textOf(row) != model.index(row).data().toString())
                result.append(u"row %1 shows %2"_s.arg(row).arg(textOf(row)));
            if (cell->geometry() != QRectF(0, row * 100, 480, 100) || !cell->isVisible())
                result.append(u"row %1 is at %2"_s.arg(row).arg(cell->geometry().top()));
        }
        return result.join(u'\n');
    }

    Creator creator;
    QStringListModel model;
    Stage stage;
    ShownPage *page;
    PannableViewport *viewport;
    List *list;
};

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QGraphicsWidget>
#include <QList>

class TouchRow;

// Rows one below the other, as wide as the page, if that is not wider than people like to read, and as high
// as they want to be there.
class RelatedColumn : public QGraphicsWidget
{
    Q_OBJECT

public:
    explicit RelatedColumn(QGraphicsItem *parent = nullptr);

    // Takes the rows over. The keyboard stays on what it was on, or where that was.
    void setRows(const QList<TouchRow *> &rows);
    [[nodiscard]] const QList<TouchRow *> &rows() const { return m_rows; }
    // On a page that is seen.
    [[nodiscard]] bool isSeen() const;

Q_SIGNALS:
    void seenChanged();

protected:
    QSizeF sizeHint(Qt::SizeHint which, const QSizeF &constraint) const override;
    void resizeEvent(QGraphicsSceneResizeEvent *event) override;
    void changeEvent(QEvent *event) override;
    QVariant itemChange(GraphicsItemChange change, const QVariant &value) override;

private:
    [[nodiscard]] qreal heightAt(qreal width) const;
    void placeRows();

    static constexpr qreal Measure = 720; // as the list of all videos

    QList<TouchRow *> m_rows;
};

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "data/videoinfo.h"

#include <QAbstractTableModel>
#include <QList>
#include <QStringList>

// A source of video rows that a test changes as it likes. Title and URL of row n are made from the title
// alone, so that a row can be told from another of the same title.
class VideoTable : public QAbstractTableModel
{
    Q_OBJECT

public:
    using QAbstractTableModel::QAbstractTableModel;

    explicit VideoTable(const QStringList &titles) { setTitles(titles); }

    int rowCount(const QModelIndex &parent = QModelIndex()) const override
    {
        return parent.isValid() ? 0 : int(m_rows.size());
    }
    int columnCount(const QModelIndex &parent = QModelIndex()) const override
    {
        return parent.isValid() ? 0 : VideoColumn::Count;
    }
    QVariant data(const QModelIndex &index, int role) const override
    {
        ++reads;
        if (!index.isValid() || role != Qt::DisplayRole)
            return {};
        return m_rows.at(index.row()).value(index.column());
    }

    void setTitles(const QStringList &titles)
    {
        beginResetModel();
        m_rows.clear();
        for (const QString &title : titles)
            m_rows.append(row(title));
        endResetModel();
    }
    void insert(int first, const QStringList &titles)
    {
        beginInsertRows({}, first, first + int(titles.size()) - 1);
        for (const QString &title : titles)
            m_rows.insert(first++, row(title));
        endInsertRows();
    }
    void remove(int first, int last)
    {
        beginRemoveRows({}, first, last);
        m_rows.remove(first, last - first + 1);
        endRemoveRows();
    }
    // Announced in the title's column, as the model of all videos does.
    void changeTitles(int first, const QStringList &titles)
    {
        for (qsizetype i = 0; i < titles.size(); ++i)
            m_rows[first + i][VideoColumn::Title] = titles.at(i);
        Q_EMIT dataChanged(index(first, VideoColumn::Title),
                           index(first + int(titles.size()) - 1, VideoColumn::Title));
    }
    void setCell(int row, int column, const QString &text) { m_rows[row][column] = text; }
    [[nodiscard]] const QStringList &rowAt(int row) const { return m_rows.at(row); }

    mutable int reads = 0;

private:
    QStringList row(const QString &title)
    {
        const QString number = QString::number(m_next++);
        return {QStringLiteral("urn:uuid:") + number,
                title,
                title + QStringLiteral(".mp4"),
                QStringLiteral("60"),
                QStringLiteral("0"),
                QStringLiteral("video/mp4"),
                QStringLiteral("file:///videos/%1.mp4").arg(number),
                number,
                {},
                {}};
    }

    QList<QStringList> m_rows;
    int m_next = 1;
};

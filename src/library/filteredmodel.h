// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "data/videoinfo.h"
#include "titleindex.h"

#include <QFutureWatcher>
#include <QMap>
#include <QSet>
#include <QSortFilterProxyModel>
#include <QTimer>

#include <functional>
#include <memory>
#include <vector>

namespace toolkit {
class Locale;
}

// Stands between the model of all videos and the list: sorts by title in the user's collation order, keeps
// the rows whose title holds the filter text, and hides videos whose deletion is under way.
//
// The rows are its own and not the base's, whose order and filter cost a call a row and two a comparison. Up
// to RowsAtOnce rows follow the source, and the text, in the same turn of the event loop. More are read and
// searched some at a time and sorted in another thread; what is shown until then are the rows before, which
// are none after a reset of the source.
class FilteredModel : public QSortFilterProxyModel
{
    Q_OBJECT

public:
    static constexpr int RowsAtOnce = 10000;
    static constexpr int SearchesPerTurn = 100000;

    explicit FilteredModel(QObject *parent = nullptr);
    ~FilteredModel() override;

    // Hides the base's, which keeps the text only as an escaped expression.
    void setFilterFixedString(const QString &text);
    // Hides the base's: sorts and filters again and announces another layout.
    void invalidate();
    void setSourceModel(QAbstractItemModel *model) override;
    // False while rows are not yet what the source and the text ask for. A layout change or a reset tells the
    // end of that.
    [[nodiscard]] bool isSettled() const { return m_isSettled && !m_isReading && !m_isSorting; }

    // The record of a row of this proxy; the empty record when there is no such row.
    [[nodiscard]] VideoInfo videoInfo(int row) const;
    // The video at this address is being deleted: it is hidden until clearExcluded().
    void excludeItem(const QString &urn, const QString &url);
    void clearExcluded();

    [[nodiscard]] QModelIndex mapToSource(const QModelIndex &index) const override;
    [[nodiscard]] QModelIndex mapFromSource(const QModelIndex &index) const override;
    [[nodiscard]] QModelIndex index(int row, int column,
                                    const QModelIndex &parent = QModelIndex()) const override;
    [[nodiscard]] QModelIndex parent(const QModelIndex &child) const override;
    using QObject::parent;
    [[nodiscard]] QModelIndex sibling(int row, int column, const QModelIndex &index) const override;
    [[nodiscard]] int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    [[nodiscard]] int columnCount(const QModelIndex &parent = QModelIndex()) const override;
    [[nodiscard]] bool hasChildren(const QModelIndex &parent = QModelIndex()) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                      int role = Qt::DisplayRole) const override;
    // The order is by title, whatever is asked for.
    void sort(int column, Qt::SortOrder order = Qt::AscendingOrder) override;

public Q_SLOTS:
    void localeChanged();

protected:
    // The rules of the rows, for one row and for two.
    bool filterAcceptsRow(int sourceRow, const QModelIndex &sourceParent) const override;
    bool lessThan(const QModelIndex &left, const QModelIndex &right) const override;

private:
    using Change = std::function<void(TitleIndex &)>;
    enum class Announce { Rows, Layout };

    void connectSource(QAbstractItemModel *model);
    void sourceGone();
    void sourceReset();
    void sourceInserted(const QModelIndex &parent, int first, int last);
    void sourceAboutToRemove(const QModelIndex &parent, int first, int last);
    void sourceRemoved(const QModelIndex &parent, int first, int last);
    void sourceChanged(const QModelIndex &from, const QModelIndex &to, const QList<int> &roles);
    [[nodiscard]] int sourceRows() const;
    [[nodiscard]] QStringList readTitles(int first, int last) const;
    void moveSourceRows(int from, int by);

    // Titles, in filteredmodeltitles.cpp.
    void readAll();
    void startReading();
    void readSome();
    void startSorting(TitleIndex titles);
    void takeSorted();
    void stopPreparing();
    void note(const Change &change, bool movesRows);
    [[nodiscard]] bool canArrange();
    void workOn();

    [[nodiscard]] QList<int> arranged();
    [[nodiscard]] QSet<int> hiddenRows() const;
    void arrange(Announce announce);
    void moveTo(const QList<int> &rows);
    void layOut(const QList<int> &rows);
    void removePlaces(const QList<int> &places);
    void insertPlaces(const QList<int> &places, const QList<int> &rows);
    [[nodiscard]] QList<int> placesOf(int firstSourceRow, int lastSourceRow) const;
    [[nodiscard]] int placeOf(int sourceRow) const;
    void rowsMoved();

    std::unique_ptr<QCollator> m_collator;
    std::unique_ptr<toolkit::Locale> m_locale;
    QMap<QString, QString> m_hiddenItems;
    QString m_collationName;

    QString m_filterText;
    QList<QMetaObject::Connection> m_sourceConnections;
    QList<int> m_rows; // of the source, by the row here
    mutable QList<int> m_places; // the other way round, -1 for what is not shown; empty: not made yet
    bool m_isSettled = true; // the rows are what the titles that are known and the text ask for
    bool m_isEmptied = false; // by a reset of the source, whose titles are not known yet

    TitleIndex m_titles;
    bool m_isKnown = false; // the titles are those of the source
    QTimer m_turn{this};
    bool m_isReading = false;
    PackedTexts m_read; // titles so far
    bool m_isSorting = false;
    QFutureWatcher<TitleIndex> m_sorting;
    std::vector<Change> m_meanwhile; // changes of what was read, in order
};

// SPDX-License-Identifier: GPL-3.0-or-later
#include "filteredmodel.h"

#include "platform/toolkit/locale.h"

#include <QDebug>

FilteredModel::FilteredModel(QObject *parent)
    : QSortFilterProxyModel(parent),
      m_locale(std::make_unique<toolkit::Locale>(this))
{
    m_collator = std::make_unique<QCollator>(m_locale->collator());
    m_titles.setCollator(*m_collator);
    m_collationName = m_locale->categoryName(toolkit::Locale::Category::Collate);
    setFilterCaseSensitivity(Qt::CaseInsensitive);
    m_turn.setSingleShot(true);
    m_turn.setInterval(0);
    connect(&m_turn, &QTimer::timeout, this, &FilteredModel::workOn);
    connect(&m_sorting, &QFutureWatcher<TitleIndex>::finished, this, &FilteredModel::takeSorted);
    m_locale->connectSettings();
    connect(m_locale.get(), &toolkit::Locale::settingsChanged, this, &FilteredModel::localeChanged,
            Qt::QueuedConnection);
    // What the base says of the order.
    QSortFilterProxyModel::sort(VideoColumn::Title, Qt::AscendingOrder);
}

FilteredModel::~FilteredModel() = default;

void FilteredModel::setFilterFixedString(const QString &text)
{
    if (text == m_filterText)
        return;
    m_filterText = text;
    arrange(Announce::Layout);
}

void FilteredModel::invalidate()
{
    // Otherwise that is on its way.
    if (m_isSettled)
        arrange(Announce::Layout);
}

void FilteredModel::sort(int column, Qt::SortOrder order)
{
    Q_UNUSED(column)
    Q_UNUSED(order)
}

void FilteredModel::setSourceModel(QAbstractItemModel *model)
{
    for (const QMetaObject::Connection &connection : std::as_const(m_sourceConnections))
        disconnect(connection);
    m_sourceConnections.clear();
    beginResetModel();
    // Not the sorting and filtering base's, which would follow the source, too.
    QAbstractProxyModel::setSourceModel(model); // NOLINT(bugprone-parent-virtual-call)
    if (model)
        connectSource(model);
    readAll();
    endResetModel();
}

void FilteredModel::connectSource(QAbstractItemModel *model)
{
    const auto readAnew = [this] {
        beginResetModel();
        sourceReset();
    };
    m_sourceConnections = {
        connect(model, &QAbstractItemModel::rowsInserted, this, &FilteredModel::sourceInserted),
        connect(model, &QAbstractItemModel::rowsAboutToBeRemoved, this, &FilteredModel::sourceAboutToRemove),
        connect(model, &QAbstractItemModel::rowsRemoved, this, &FilteredModel::sourceRemoved),
        connect(model, &QAbstractItemModel::dataChanged, this, &FilteredModel::sourceChanged),
        connect(model, &QAbstractItemModel::modelAboutToBeReset, this, [this] { beginResetModel(); }),
        connect(model, &QAbstractItemModel::modelReset, this, &FilteredModel::sourceReset),
        connect(model, &QAbstractItemModel::layoutChanged, this, readAnew),
        connect(model, &QAbstractItemModel::rowsMoved, this, readAnew),
        connect(model, &QAbstractItemModel::columnsInserted, this, readAnew),
        connect(model, &QAbstractItemModel::columnsRemoved, this, readAnew),
        connect(model, &QObject::destroyed, this, &FilteredModel::sourceGone),
    };
}

void FilteredModel::sourceReset()
{
    readAll();
    endResetModel();
}

void FilteredModel::sourceGone()
{
    beginResetModel();
    stopPreparing();
    m_titles.reset(QStringList());
    m_isKnown = m_isSettled = true;
    m_isEmptied = false;
    m_rows.clear();
    rowsMoved();
    endResetModel();
}

int FilteredModel::sourceRows() const
{
    return sourceModel() ? sourceModel()->rowCount() : 0;
}

int FilteredModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_rows.size());
}

int FilteredModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() || !sourceModel() ? 0 : sourceModel()->columnCount();
}

bool FilteredModel::hasChildren(const QModelIndex &parent) const
{
    return rowCount(parent) > 0 && columnCount(parent) > 0;
}

QModelIndex FilteredModel::index(int row, int column, const QModelIndex &parent) const
{
    return hasIndex(row, column, parent) ? createIndex(row, column) : QModelIndex();
}

QModelIndex FilteredModel::parent(const QModelIndex &child) const
{
    Q_UNUSED(child)
    return {};
}

QModelIndex FilteredModel::sibling(int row, int column, const QModelIndex &index) const
{
    return index.isValid() ? this->index(row, column) : QModelIndex();
}

QVariant FilteredModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (!sourceModel())
        return {};
    if (orientation == Qt::Horizontal)
        return sourceModel()->headerData(section, orientation, role);
    return section >= 0 && section < m_rows.size()
        ? sourceModel()->headerData(m_rows.at(section), orientation, role)
        : QVariant();
}

QModelIndex FilteredModel::mapToSource(const QModelIndex &index) const
{
    if (!index.isValid() || index.model() != this || index.row() >= m_rows.size() || !sourceModel())
        return {};
    return sourceModel()->index(m_rows.at(index.row()), index.column());
}

QModelIndex FilteredModel::mapFromSource(const QModelIndex &index) const
{
    if (!index.isValid() || index.model() != sourceModel())
        return {};
    const int place = placeOf(index.row());
    return place >= 0 ? createIndex(place, index.column()) : QModelIndex();
}

VideoInfo FilteredModel::videoInfo(int row) const
{
    if (row < 0 || row >= rowCount()) {
        qWarning() << "VideoInfo FilteredModel::videoInfo(int)"
                   << "Index out of bounds";
        return {};
    }
    QStringList texts;
    for (int column = 0; column < VideoColumn::RowSize; ++column)
        texts.append(index(row, column).data(Qt::DisplayRole).toString());
    return videoInfoFromRow(texts);
}

void FilteredModel::excludeItem(const QString &urn, const QString &url)
{
    m_hiddenItems.insert(url, urn);
    arrange(Announce::Rows);
}

void FilteredModel::clearExcluded()
{
    if (m_hiddenItems.isEmpty())
        return;
    m_hiddenItems.clear();
    arrange(Announce::Rows);
}

void FilteredModel::localeChanged()
{
    const QString name = m_locale->categoryName(toolkit::Locale::Category::Collate);
    if (name == m_collationName)
        return;
    m_collationName = name;
    m_collator = std::make_unique<QCollator>(m_locale->collator());
    m_titles.setCollator(*m_collator);
    if (m_isSorting && !m_isKnown)
        startReading(); // what is being sorted is not what will be wanted
    else if (m_isSorting)
        stopPreparing();
    arrange(Announce::Layout);
}

bool FilteredModel::filterAcceptsRow(int sourceRow, const QModelIndex &sourceParent) const
{
    if (m_filterText.isEmpty() && m_hiddenItems.isEmpty())
        return true;
    const QModelIndex url = sourceModel()->index(sourceRow, VideoColumn::Url, sourceParent);
    if (m_hiddenItems.contains(url.data(Qt::DisplayRole).toString()))
        return false;
    const QModelIndex title = sourceModel()->index(sourceRow, VideoColumn::Title, sourceParent);
    return title.data(Qt::DisplayRole).toString().contains(m_filterText, Qt::CaseInsensitive);
}

bool FilteredModel::lessThan(const QModelIndex &left, const QModelIndex &right) const
{
    return m_collator->compare(left.data(Qt::DisplayRole).toString(), right.data(Qt::DisplayRole).toString())
        < 0;
}

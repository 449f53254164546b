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
    m_locale->connectSettings();
    connect(m_locale.get(), &toolkit::Locale::settingsChanged, this, &FilteredModel::localeChanged,
            Qt::QueuedConnection);
    sort(VideoColumn::Title, Qt::AscendingOrder);
}

FilteredModel::~FilteredModel() = default;

void FilteredModel::setFilterFixedString(const QString &text)
{
    if (text == m_filterText)
        return;
    m_filterText = text;
    // The base would take out and put in run by run, each in a pass over all rows; starting over is one pass.
    invalidate();
}

void FilteredModel::setSourceModel(QAbstractItemModel *model)
{
    for (const QMetaObject::Connection &connection : std::as_const(m_sourceConnections))
        disconnect(connection);
    m_sourceConnections.clear();
    forgetTitles();
    if (model)
        connectSource(model); // before the base's, which compares titles when it hears of a change
    QSortFilterProxyModel::setSourceModel(model);
}

void FilteredModel::connectSource(QAbstractItemModel *model)
{
    m_sourceConnections = {
        connect(model, &QAbstractItemModel::rowsInserted, this, &FilteredModel::titlesInserted),
        connect(model, &QAbstractItemModel::rowsRemoved, this, &FilteredModel::titlesRemoved),
        connect(model, &QAbstractItemModel::dataChanged, this, &FilteredModel::titlesChanged),
        connect(model, &QAbstractItemModel::modelReset, this, &FilteredModel::forgetTitles),
        connect(model, &QAbstractItemModel::layoutChanged, this, &FilteredModel::forgetTitles),
        connect(model, &QAbstractItemModel::rowsMoved, this, &FilteredModel::forgetTitles),
        connect(model, &QAbstractItemModel::columnsInserted, this, &FilteredModel::forgetTitles),
        connect(model, &QAbstractItemModel::columnsRemoved, this, &FilteredModel::forgetTitles),
    };
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
    invalidateFilter();
}

void FilteredModel::clearExcluded()
{
    if (m_hiddenItems.isEmpty())
        return;
    m_hiddenItems.clear();
    invalidateFilter();
}

void FilteredModel::localeChanged()
{
    const QString name = m_locale->categoryName(toolkit::Locale::Category::Collate);
    if (name == m_collationName)
        return;
    m_collationName = name;
    m_collator = std::make_unique<QCollator>(m_locale->collator());
    m_titles.setCollator(*m_collator);
    invalidate();
}

bool FilteredModel::filterAcceptsRow(int sourceRow, const QModelIndex &sourceParent) const
{
    if (m_filterText.isEmpty() && m_hiddenItems.isEmpty())
        return true;
    if (!m_hiddenItems.isEmpty()) {
        const QModelIndex url = sourceModel()->index(sourceRow, VideoColumn::Url, sourceParent);
        if (m_hiddenItems.contains(url.data(Qt::DisplayRole).toString()))
            return false;
    }
    if (ensureTitles() && sourceRow < m_titles.count())
        return m_titles.contains(sourceRow, m_filterText);
    const QModelIndex title = sourceModel()->index(sourceRow, VideoColumn::Title, sourceParent);
    return title.data(Qt::DisplayRole).toString().contains(m_filterText, Qt::CaseInsensitive);
}

bool FilteredModel::lessThan(const QModelIndex &left, const QModelIndex &right) const
{
    if (left.column() == VideoColumn::Title && ensureTitles() && left.row() < m_titles.count()
        && right.row() < m_titles.count())
        return m_titles.isBefore(left.row(), right.row());
    return m_collator->compare(left.data(Qt::DisplayRole).toString(), right.data(Qt::DisplayRole).toString())
        < 0;
}

void FilteredModel::forgetTitles()
{
    m_titlesRead = false;
}

bool FilteredModel::ensureTitles() const
{
    if (m_titlesRead)
        return true;
    if (!sourceModel())
        return false;
    m_titles.reset(readTitles(0, sourceModel()->rowCount() - 1));
    m_titlesRead = true;
    return true;
}

QStringList FilteredModel::readTitles(int first, int last) const
{
    QStringList titles;
    titles.reserve(last - first + 1);
    const QAbstractItemModel *source = sourceModel();
    for (int row = first; row <= last; ++row)
        titles.append(source->index(row, VideoColumn::Title).data(Qt::DisplayRole).toString());
    return titles;
}

void FilteredModel::titlesInserted(const QModelIndex &parent, int first, int last)
{
    if (!m_titlesRead || parent.isValid())
        return;
    if (m_titles.count() + last - first + 1 != sourceModel()->rowCount())
        forgetTitles();
    else
        m_titles.insert(first, readTitles(first, last));
}

void FilteredModel::titlesRemoved(const QModelIndex &parent, int first, int last)
{
    if (!m_titlesRead || parent.isValid())
        return;
    if (m_titles.count() - (last - first + 1) != sourceModel()->rowCount())
        forgetTitles();
    else
        m_titles.remove(first, last);
}

void FilteredModel::titlesChanged(const QModelIndex &from, const QModelIndex &to)
{
    if (!m_titlesRead || !from.isValid() || from.parent().isValid())
        return;
    if (to.row() >= m_titles.count())
        forgetTitles();
    else
        m_titles.update(from.row(), readTitles(from.row(), to.row()));
}

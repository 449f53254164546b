// SPDX-License-Identifier: GPL-3.0-or-later
#include "thumbnailrefresh.h"

#include "data/thumbnailhelper.h"
#include "data/videoinfo.h"
#include "griditemwidget.h"
#include "platform/toolkit/list.h"

#include <QAbstractItemModel>
#include <QUrl>

namespace {

// The helper names a resource in its encoded form; rows may spell it otherwise.
QString comparable(const QString &url)
{
    return QString::fromUtf8(QUrl::fromEncoded(url.toUtf8()).toEncoded());
}

QString address(const QModelIndex &index)
{
    return comparable(index.siblingAtColumn(VideoColumn::Url).data(Qt::DisplayRole).toString());
}

} // namespace

ThumbnailRefresh::ThumbnailRefresh(toolkit::List *list, ThumbnailHelper *thumbnails, QObject *parent)
    : QObject(parent),
      m_list(list)
{
    connect(thumbnails, &ThumbnailHelper::newThumbnailReady, this, &ThumbnailRefresh::thumbnailReady);
    connect(thumbnails, &ThumbnailHelper::newThumbnailError, this, &ThumbnailRefresh::thumbnailFailed);
    connect(list, &toolkit::List::panningStopped, this, &ThumbnailRefresh::schedule);

    m_settle.setSingleShot(true);
    m_settle.setInterval(SettleTime);
    connect(&m_settle, &QTimer::timeout, this, &ThumbnailRefresh::fillCells);
    const auto settle = [this] { m_settle.start(); };
    const QAbstractItemModel *model = list->itemModel();
    connect(model, &QAbstractItemModel::rowsInserted, this, settle);
    connect(model, &QAbstractItemModel::modelReset, this, settle);
    connect(model, &QAbstractItemModel::layoutChanged, this, settle);
    connect(list, &toolkit::List::displayEntered, this, settle);
}

void ThumbnailRefresh::schedule()
{
    if (m_scheduled)
        return;
    m_scheduled = true;
    QMetaObject::invokeMethod(this, &ThumbnailRefresh::fillCells, Qt::QueuedConnection);
}

void ThumbnailRefresh::thumbnailReady(const QString &resourceUrl)
{
    m_failed.remove(comparable(resourceUrl));
    schedule();
}

void ThumbnailRefresh::thumbnailFailed(const QString &resourceUrl)
{
    m_failed.insert(comparable(resourceUrl));
    schedule();
}

// A picture that is known and cannot be read is not asked for again and again, at the cost of those below.
bool ThumbnailRefresh::isUnreadable(const QModelIndex &index) const
{
    const auto *cell = qobject_cast<GridItemWidget *>(m_list->cell(index));
    if (!cell || cell->hasPicture())
        return false;
    const bool atStart = index.siblingAtColumn(VideoColumn::PlayPosition).data(Qt::DisplayRole).toInt() == 0;
    const int column = atStart ? VideoColumn::DefaultThumbnail : VideoColumn::PauseThumbnail;
    return !index.siblingAtColumn(column).data(Qt::DisplayRole).toString().isEmpty();
}

bool ThumbnailRefresh::isMissing(const QModelIndex &index) const
{
    const auto *cell = qobject_cast<GridItemWidget *>(m_list->cell(index));
    if (!cell || cell->hasPicture())
        return false;
    return !m_failed.contains(address(index));
}

void ThumbnailRefresh::fillCells()
{
    m_scheduled = false;
    m_settle.stop();
    if (!m_list->isOnDisplay())
        return;
    int filled = 0;
    const QList<QModelIndex> visible = m_list->visibleIndexes();
    for (const QModelIndex &index : visible) {
        if (filled == CellsATurn || !isMissing(index))
            continue;
        m_list->refreshCell(index);
        if (isUnreadable(index))
            m_failed.insert(address(index));
        ++filled;
    }
    if (filled > 0)
        m_settle.start();
}

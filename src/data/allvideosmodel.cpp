// SPDX-License-Identifier: GPL-3.0-or-later
#include "allvideosmodel.h"

#include "datalog.h"
#include "thumbnailhelper.h"
#include "trackerinterface.h"
#include "videoinfo.h"

#include <QSet>
#include <QTimer>

#include <bit>
#include <utility>

namespace {

constexpr int coalescingIntervalMs = 2000;

// A row of the store with its two paths, in one allocation.
QStringList modelRow(const QStringList &row, const QString &pausePath, const QString &defaultPath)
{
    QStringList extended;
    extended.reserve(VideoColumn::Count);
    extended += row;
    extended.resize(VideoColumn::RowSize);
    extended.append(pausePath);
    extended.append(defaultPath);
    return extended;
}

} // namespace

size_t AllVideosModel::RowIndex::slotOf(const QList<QStringList> &rows, const QString &text) const
{
    const size_t mask = m_slots.size() - 1;
    size_t slot = qHash(text) & mask;
    while (m_slots[slot] >= 0 && rows.at(m_slots[slot]).at(m_column) != text)
        slot = (slot + 1) & mask;
    return slot;
}

void AllVideosModel::RowIndex::cover(const QList<QStringList> &rows)
{
    const size_t wanted = 2 * size_t(rows.size()) + 1;
    if (m_slots.size() < wanted) {
        m_slots.assign(std::bit_ceil(wanted), -1);
        m_indexed = 0;
    }
    for (; m_indexed < rows.size(); ++m_indexed) {
        int &row = m_slots[slotOf(rows, rows.at(m_indexed).at(m_column))];
        if (row < 0)
            row = m_indexed;
    }
}

int AllVideosModel::RowIndex::find(const QList<QStringList> &rows, const QString &text)
{
    cover(rows);
    return m_slots[slotOf(rows, text)];
}

AllVideosModel::AllVideosModel(QObject *parent)
    : QAbstractItemModel(parent),
      m_store(TrackerInterface::instance()),
      m_changeTimer(new QTimer(this)),
      m_byUrn(VideoColumn::Urn),
      m_byUrl(VideoColumn::Url),
      m_byId(VideoColumn::TrackerId)
{
    m_changeTimer->setSingleShot(true);
    m_changeTimer->setInterval(coalescingIntervalMs);
    connect(m_changeTimer, &QTimer::timeout, this, &AllVideosModel::doEmitDataChanged);
    connect(m_store, &TrackerInterface::allVideosFinished, this, &AllVideosModel::queryFinished);
    connect(m_store, &TrackerInterface::videosDeleted, this, &AllVideosModel::videosDeleted);
    // By name: the store has a slot of this name, too.
    connect(m_store, SIGNAL(videosChanged(QList<QStringList>)), this,
            SLOT(videosChanged(QList<QStringList>)));
    if (m_store->allVideos(0) == 0) {
        qCWarning(lcData) << "AllVideosModel::AllVideosModel(QObject*)"
                          << "Could not load videos from tracker";
    }
}

AllVideosModel::~AllVideosModel() = default;

int AllVideosModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_rows.size());
}

int AllVideosModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : VideoColumn::Count;
}

QModelIndex AllVideosModel::index(int row, int column, const QModelIndex &parent) const
{
    return hasIndex(row, column, parent) ? createIndex(row, column) : QModelIndex();
}

QModelIndex AllVideosModel::parent(const QModelIndex &child) const
{
    return {};
}

QVariant AllVideosModel::data(const QModelIndex &index, int role) const
{
    const int row = index.row();
    const int column = index.column();
    if (row < 0 || row > m_rows.size() || column < 0 || column > VideoColumn::Count) {
        qCWarning(lcData) << "virtual QVariant AllVideosModel::data(const QModelIndex&, int) const"
                          << "Index out of bounds";
        return {};
    }
    // The range above is one wider than what is stored, both ways: quiet, and nothing there.
    if (row == m_rows.size() || column == VideoColumn::Count)
        return {};
    return m_rows.at(row).at(column);
}

QString AllVideosModel::groupTitle(int group) const
{
    return {};
}

QVariant AllVideosModel::groupData(const QModelIndex &index, int group, int role) const
{
    return {};
}

const QString &AllVideosModel::text(int row, int column) const
{
    static const QString nothing;
    if (row < 0 || row >= m_rows.size() || column < 0 || column >= VideoColumn::Count)
        return nothing;
    return m_rows.at(row).at(column);
}

QString AllVideosModel::titleForUrn(const QString &urn) const
{
    const int row = findRowByUrn(urn);
    if (row >= 0)
        return m_rows.at(row).at(VideoColumn::Title);
    qCWarning(lcData) << "QString AllVideosModel::titleForUrn(const QString&)"
                      << "Urn not in model";
    return {};
}

QString AllVideosModel::urnForUrl(const QString &url) const
{
    const int row = findRowByUrl(url);
    if (row >= 0)
        return m_rows.at(row).at(VideoColumn::Urn);
    qCWarning(lcData) << "QString AllVideosModel::urnForUrl(const QString&)"
                      << "Url not in model";
    return {};
}

QString AllVideosModel::urlForUrn(const QString &urn) const
{
    const int row = findRowByUrn(urn);
    if (row >= 0)
        return m_rows.at(row).at(VideoColumn::Url);
    qCWarning(lcData) << "QString AllVideosModel::urlForUrn(const QString&)"
                      << "Urn not in model";
    return {};
}

int AllVideosModel::findRowByUrl(const QString &url) const
{
    return m_byUrl.find(m_rows, url);
}

int AllVideosModel::findRowById(int id) const
{
    return m_byId.find(m_rows, QString::number(id));
}

int AllVideosModel::findRowByUrn(const QString &urn) const
{
    return m_byUrn.find(m_rows, urn);
}

void AllVideosModel::invalidateIndexes()
{
    m_byUrn.invalidate();
    m_byUrl.invalidate();
    m_byId.invalidate();
}

void AllVideosModel::queryFinished(QList<QStringList> allVideos)
{
    beginResetModel();
    ThumbnailHelper *thumbnails = ThumbnailHelper::instance();
    {
        const ThumbnailHelper::FolderListing listing(thumbnails);
        QString defaultPath;
        QString pausePath;
        for (QStringList &row : allVideos) {
            thumbnails->setThumbnailPaths(row.value(VideoColumn::Url), defaultPath, pausePath);
            row = modelRow(row, pausePath, defaultPath);
        }
    }
    m_rows = std::move(allVideos);
    invalidateIndexes();
    endResetModel();
    Q_EMIT modelUpdated();
}

QString AllVideosModel::removeRowAndEqualOnes(int row)
{
    const QStringList removed = m_rows.at(row);
    // Once a row in normal operation. Were there equal ones, each is announced, so that views stay in step.
    while (row >= 0) {
        beginRemoveRows(QModelIndex(), row, row);
        m_rows.removeAt(row);
        invalidateIndexes();
        endRemoveRows();
        row = int(m_rows.indexOf(removed, row));
    }
    return removed.at(VideoColumn::Url);
}

void AllVideosModel::removeVideo(const QString &url)
{
    const int row = findRowByUrl(url);
    if (row < 0)
        return;
    const QString removedUrl = removeRowAndEqualOnes(row);
    Q_EMIT modelUpdated();
    Q_EMIT filesRemoved({removedUrl});
}

void AllVideosModel::videosDeleted(QList<int> ids)
{
    if (ids.isEmpty())
        return;
    if (ids.size() == 1) {
        const int row = findRowById(ids.first());
        if (row < 0)
            return;
        const QString removedUrl = removeRowAndEqualOnes(row);
        Q_EMIT modelUpdated();
        Q_EMIT filesRemoved({removedUrl});
        return;
    }
    // One reset instead of many removals: views build up once.
    QSet<QStringList> removedRows;
    QStringList removedUrls;
    for (const int id : std::as_const(ids)) {
        const int row = findRowById(id);
        if (row < 0)
            continue;
        removedRows.insert(m_rows.at(row));
        removedUrls.append(m_rows.at(row).at(VideoColumn::Url));
    }
    beginResetModel();
    if (!removedRows.isEmpty()) {
        m_rows.removeIf([&removedRows](const QStringList &row) { return removedRows.contains(row); });
        invalidateIndexes();
    }
    endResetModel();
    Q_EMIT modelUpdated();
    Q_EMIT filesRemoved(removedUrls);
}

void AllVideosModel::videosChanged(QList<QStringList> changedVideos)
{
    if (changedVideos.isEmpty())
        return;
    QList<QStringList> newRows;
    int lowest = int(m_rows.size());
    int highest = -1;
    for (const QStringList &changed : std::as_const(changedVideos)) {
        const int row = findRowByUrn(changed.value(VideoColumn::Urn));
        if (row < 0) {
            newRows.append(changed);
            continue;
        }
        lowest = qMin(lowest, row);
        highest = qMax(highest, row);
        replaceRow(row, changed);
    }
    if (lowest <= highest) {
        m_rowsChanged = true;
        emitDataChanged(lowest, highest);
    }
    if (!newRows.isEmpty())
        appendRows(newRows);
}

// The new content of a row; its thumbnails stay.
void AllVideosModel::replaceRow(int row, const QStringList &changed)
{
    const QStringList &old = m_rows.at(row);
    if (old.value(VideoColumn::Title) != changed.value(VideoColumn::Title))
        m_titleChanged = true;
    if (old.value(VideoColumn::Url) != changed.value(VideoColumn::Url))
        m_byUrl.invalidate();
    if (old.value(VideoColumn::TrackerId) != changed.value(VideoColumn::TrackerId))
        m_byId.invalidate();
    m_rows[row]
        = modelRow(changed, old.value(VideoColumn::PauseThumbnail), old.value(VideoColumn::DefaultThumbnail));
}

void AllVideosModel::appendRows(const QList<QStringList> &rows)
{
    const int first = int(m_rows.size());
    beginInsertRows(QModelIndex(), first, first + int(rows.size()) - 1);
    m_rows.reserve(first + rows.size());
    for (const QStringList &row : rows)
        m_rows.append(
            modelRow(row, row.value(VideoColumn::PauseThumbnail), row.value(VideoColumn::DefaultThumbnail)));
    endInsertRows();
    Q_EMIT modelUpdated();
}

void AllVideosModel::setThumbnail(int row, int column, const QString &path, bool &changedFlag)
{
    m_rows[row][column] = path;
    changedFlag = true;
    emitDataChanged(row, row);
}

void AllVideosModel::defaultThumbnailUpdated(QString videoUrl, QString thumbPath)
{
    if (videoUrl.isEmpty() || thumbPath.isEmpty())
        return;
    const int row = findRowByUrl(videoUrl);
    if (row < 0) {
        qCWarning(lcData).noquote()
            << "void AllVideosModel::defaultThumbnailUpdated(const QString&, const QString&)"
            << "Url not found from model:" << videoUrl;
        return;
    }
    setThumbnail(row, VideoColumn::DefaultThumbnail, thumbPath, m_defaultThumbnailChanged);
}

void AllVideosModel::pauseThumbnailUpdated(QString videoUrl, QString thumbPath)
{
    const int row = findRowByUrl(videoUrl);
    if (row < 0) {
        qCWarning(lcData).noquote()
            << "void AllVideosModel::pauseThumbnailUpdated(const QString&, const QString&)"
            << "Url not found from model:" << videoUrl;
        return;
    }
    setThumbnail(row, VideoColumn::PauseThumbnail, thumbPath, m_pauseThumbnailChanged);
}

void AllVideosModel::emitDataChanged(int first, int last)
{
    if (first < 0 || last >= m_rows.size()) {
        qCWarning(lcData) << "void AllVideosModel::emitDataChanged(int, int)"
                          << "index out of bounds";
        return;
    }
    if (m_pendingFirstRow == -1 || m_pendingFirstRow > first)
        m_pendingFirstRow = first;
    if (last > m_pendingLastRow)
        m_pendingLastRow = last;

    const bool storeAndStill = m_rowsChanged && m_pauseThumbnailChanged;
    if (!storeAndStill && !m_defaultThumbnailChanged && !m_titleChanged) {
        m_changeTimer->start();
        return;
    }
    m_changeTimer->stop();
    doEmitDataChanged();
}

void AllVideosModel::doEmitDataChanged()
{
    const int column = m_titleChanged ? VideoColumn::Title : VideoColumn::Urn;
    // Rows may have gone since the range was noted.
    const int first = m_pendingFirstRow;
    const int last = qMin(m_pendingLastRow, int(m_rows.size()) - 1);
    m_pendingFirstRow = -1;
    m_pendingLastRow = -1;
    m_rowsChanged = m_defaultThumbnailChanged = m_pauseThumbnailChanged = m_titleChanged = false;
    if (first >= 0 && first <= last)
        Q_EMIT dataChanged(index(first, column), index(last, column));
}

// SPDX-License-Identifier: GPL-3.0-or-later
#include "allvideosmodel.h"

#include "datalog.h"
#include "storenews.h"
#include "trackerinterface.h"

#include <platform/sparql/loosetext.h>
#include <platform/system/background.h>

#include <QTimer>

#include <algorithm>
#include <utility>

namespace {

constexpr int coalescingIntervalMs = 2000;

// Texts of another maker, as a table.
std::shared_ptr<const RowTable> tableOf(const QList<QStringList> &rows)
{
    RowTable table(VideoColumn::RowSize);
    for (const QStringList &row : rows) {
        bool fits = true;
        for (int column = 0; column < VideoColumn::RowSize; ++column) {
            const QString text = row.value(column);
            const auto type = text.isNull() ? RowTable::Type::Unbound : RowTable::Type::Text;
            fits = table.append(type, toLooseUtf8(text)) && fits;
        }
        if (!fits) {
            qCWarning(lcData) << "void AllVideosModel::queryFinished(QList<QStringList>)"
                              << "more rows than can be held";
            break;
        }
    }
    return std::make_shared<const RowTable>(std::move(table));
}

} // namespace

AllVideosModel::AllVideosModel(QObject *parent)
    : QAbstractItemModel(parent),
      m_store(TrackerInterface::instance()),
      m_changeTimer(new QTimer(this))
{
    m_changeTimer->setSingleShot(true);
    m_changeTimer->setInterval(coalescingIntervalMs);
    connect(m_changeTimer, &QTimer::timeout, this, &AllVideosModel::doEmitDataChanged);
    m_store->news()->addTableReader(this);
    connect(m_store->news(), &StoreNews::listLoaded, this, &AllVideosModel::load);
    connect(m_store, &TrackerInterface::allVideosFinished, this, [this](const QList<QStringList> &rows) {
        if (!m_store->news()->isToldAgain())
            queryFinished(rows);
    });
    connect(&m_loading, &QFutureWatcher<LibraryRows>::finished, this, &AllVideosModel::takeLoaded);
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
    return parent.isValid() ? 0 : m_rows.count();
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
    if (row < 0 || row > m_rows.count() || column < 0 || column > VideoColumn::Count) {
        qCWarning(lcData) << "virtual QVariant AllVideosModel::data(const QModelIndex&, int) const"
                          << "Index out of bounds";
        return {};
    }
    // The range above is one wider than what is stored, both ways: quiet, and nothing there.
    if (row == m_rows.count() || column == VideoColumn::Count)
        return {};
    return m_rows.text(row, column);
}

QString AllVideosModel::groupTitle(int group) const
{
    return {};
}

QVariant AllVideosModel::groupData(const QModelIndex &index, int group, int role) const
{
    return {};
}

QString AllVideosModel::titleForUrn(const QString &urn) const
{
    const int row = rowOfUrn(urn);
    if (row >= 0)
        return m_rows.text(row, VideoColumn::Title);
    qCWarning(lcData) << "QString AllVideosModel::titleForUrn(const QString&)"
                      << "Urn not in model";
    return {};
}

QString AllVideosModel::urnForUrl(const QString &url) const
{
    const int row = rowOfUrl(url);
    if (row >= 0)
        return m_rows.text(row, VideoColumn::Urn);
    qCWarning(lcData) << "QString AllVideosModel::urnForUrl(const QString&)"
                      << "Url not in model";
    return {};
}

QString AllVideosModel::urlForUrn(const QString &urn) const
{
    const int row = rowOfUrn(urn);
    if (row >= 0)
        return m_rows.text(row, VideoColumn::Url);
    qCWarning(lcData) << "QString AllVideosModel::urlForUrn(const QString&)"
                      << "Urn not in model";
    return {};
}

int AllVideosModel::findRowById(int id) const
{
    return m_rows.find(VideoColumn::TrackerId, QString::number(id));
}

void AllVideosModel::queryFinished(QList<QStringList> allVideos)
{
    setRows(LibraryRows(tableOf(allVideos), ThumbnailListing::ofFolders(), true));
}

void AllVideosModel::load(const Table &table)
{
    if (table->rows() <= RowsAtOnce) {
        setRows(LibraryRows(table, ThumbnailListing::ofFolders(), false));
        return;
    }
    forgetMeanwhile(); // this answer is newer
    m_isLoading = true;
    m_loading.setFuture(
        inBackground([table] { return LibraryRows(table, ThumbnailListing::ofFolders(), false); }));
}

void AllVideosModel::takeLoaded()
{
    if (!m_isLoading)
        return;
    QFuture<LibraryRows> loaded = m_loading.future();
    const std::vector<std::function<void()>> meanwhile = std::exchange(m_meanwhile, {});
    QSet<QString> told = std::exchange(m_removedMeanwhile, {});
    setRows(loaded.takeResult());
    m_removedMeanwhile = std::move(told);
    m_isRepeating = true;
    for (const std::function<void()> &change : meanwhile)
        change();
    m_isRepeating = false;
    m_removedMeanwhile.clear();
}

void AllVideosModel::forgetMeanwhile()
{
    m_meanwhile.clear();
    m_removedMeanwhile.clear();
}

// Replaces all rows, and what is being loaded.
void AllVideosModel::setRows(LibraryRows rows)
{
    m_isLoading = false;
    forgetMeanwhile();
    beginResetModel();
    std::swap(m_rows, rows);
    endResetModel();
    Q_EMIT modelUpdated();
}

void AllVideosModel::repeatOnceLoaded(std::function<void()> change)
{
    if (m_isLoading)
        m_meanwhile.push_back(std::move(change));
}

// After a removal. What was told of the rows before is not told of the new ones again.
void AllVideosModel::tellRemoved(QStringList urls)
{
    Q_EMIT modelUpdated();
    if (m_isLoading) {
        m_removedMeanwhile.unite(QSet<QString>(urls.cbegin(), urls.cend()));
    } else if (m_isRepeating) {
        urls.removeIf([this](const QString &url) { return m_removedMeanwhile.contains(url); });
        if (urls.isEmpty())
            return;
    }
    Q_EMIT filesRemoved(urls);
}

QString AllVideosModel::removeRowAndEqualOnes(int row)
{
    const QString url = m_rows.text(row, VideoColumn::Url);
    // Once a row in normal operation. Were there equal ones, each is announced, so that views stay in step.
    const QList<int> rows = m_rows.equalRows(row);
    for (auto equal = rows.crbegin(); equal != rows.crend(); ++equal) {
        beginRemoveRows(QModelIndex(), *equal, *equal);
        m_rows.remove(*equal);
        endRemoveRows();
    }
    return url;
}

void AllVideosModel::removeVideo(const QString &url)
{
    repeatOnceLoaded([this, url] { removeVideo(url); });
    const int row = rowOfUrl(url);
    if (row < 0)
        return;
    tellRemoved({removeRowAndEqualOnes(row)});
}

void AllVideosModel::videosDeleted(QList<int> ids)
{
    if (ids.isEmpty())
        return;
    repeatOnceLoaded([this, ids] { videosDeleted(ids); });
    if (ids.size() == 1) {
        const int row = findRowById(ids.first());
        if (row < 0)
            return;
        tellRemoved({removeRowAndEqualOnes(row)});
        return;
    }
    // One reset instead of many removals: views build up once.
    QSet<int> removedRows;
    QStringList removedUrls;
    for (const int id : std::as_const(ids)) {
        const int row = findRowById(id);
        if (row < 0)
            continue;
        const QList<int> equalRows = m_rows.equalRows(row);
        removedRows.unite(QSet<int>(equalRows.cbegin(), equalRows.cend()));
        removedUrls.append(m_rows.text(row, VideoColumn::Url));
    }
    if (m_isRepeating && removedRows.isEmpty())
        return;
    QList<int> sorted = removedRows.values();
    std::sort(sorted.begin(), sorted.end());
    beginResetModel();
    m_rows.remove(sorted);
    endResetModel();
    tellRemoved(removedUrls);
}

void AllVideosModel::videosChanged(QList<QStringList> changedVideos)
{
    if (changedVideos.isEmpty())
        return;
    repeatOnceLoaded([this, changedVideos] { videosChanged(changedVideos); });
    QList<QStringList> newRows;
    int lowest = m_rows.count();
    int highest = -1;
    for (const QStringList &changed : std::as_const(changedVideos)) {
        const int row = rowOfUrn(changed.value(VideoColumn::Urn));
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
    if (m_rows.text(row, VideoColumn::Title) != changed.value(VideoColumn::Title))
        m_titleChanged = true;
    m_rows.replace(row, changed);
}

void AllVideosModel::appendRows(const QList<QStringList> &rows)
{
    const int first = m_rows.count();
    beginInsertRows(QModelIndex(), first, first + int(rows.size()) - 1);
    for (const QStringList &row : rows)
        m_rows.append(row);
    endInsertRows();
    Q_EMIT modelUpdated();
}

void AllVideosModel::setThumbnail(int row, int column, const QString &path, bool &changedFlag)
{
    m_rows.setThumbnail(row, column, path);
    changedFlag = true;
    emitDataChanged(row, row);
}

void AllVideosModel::defaultThumbnailUpdated(QString videoUrl, QString thumbPath)
{
    if (videoUrl.isEmpty() || thumbPath.isEmpty())
        return;
    repeatOnceLoaded([this, videoUrl, thumbPath] { defaultThumbnailUpdated(videoUrl, thumbPath); });
    const int row = rowOfUrl(videoUrl);
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
    repeatOnceLoaded([this, videoUrl, thumbPath] { pauseThumbnailUpdated(videoUrl, thumbPath); });
    const int row = rowOfUrl(videoUrl);
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
    if (first < 0 || last >= m_rows.count()) {
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
    const int last = qMin(m_pendingLastRow, m_rows.count() - 1);
    m_pendingFirstRow = -1;
    m_pendingLastRow = -1;
    m_rowsChanged = m_defaultThumbnailChanged = m_pauseThumbnailChanged = m_titleChanged = false;
    if (first >= 0 && first <= last)
        Q_EMIT dataChanged(index(first, column), index(last, column));
}

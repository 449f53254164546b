// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAbstractItemModel>
#include <QList>
#include <QStringList>

#include <vector>

class QTimer;
class TrackerInterface;

// The whole library in memory: a video row a video (columns of VideoColumn), in the store's order, and the
// paths of its two thumbnails. Filled once, then kept current by the store's changes. Rows are unique by URN
// in normal operation; look-ups take the first match.
class AllVideosModel : public QAbstractItemModel
{
    Q_OBJECT

public:
    explicit AllVideosModel(QObject *parent);
    ~AllVideosModel() override;

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    int columnCount(const QModelIndex &parent = QModelIndex()) const override;
    QModelIndex index(int row, int column, const QModelIndex &parent = QModelIndex()) const override;
    QModelIndex parent(const QModelIndex &child) const override;
    using QObject::parent;
    // The string of the cell, whatever the role.
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;

    // The model has no groups.
    [[nodiscard]] int groupCount() const { return 0; }
    [[nodiscard]] QString groupTitle(int group) const;
    [[nodiscard]] QVariant groupData(const QModelIndex &index, int group, int role) const;

    // The cell's string without the way through a variant, for what sorts and filters 100,000 rows; a null
    // string beyond the rows.
    [[nodiscard]] const QString &text(int row, int column) const;

    [[nodiscard]] QString titleForUrn(const QString &urn) const;
    [[nodiscard]] QString urnForUrl(const QString &url) const;
    [[nodiscard]] QString urlForUrn(const QString &urn) const;

    // The file of this video was deleted by the program itself.
    void removeVideo(const QString &url);
    // Announces changed rows, gathered with others for up to two seconds unless a title or a picture changed.
    void emitDataChanged(int first, int last);

Q_SIGNALS:
    // After every reset, insertion and removal.
    void modelUpdated();
    // URLs of rows that left the model.
    void filesRemoved(QStringList urls);

public Q_SLOTS:
    void queryFinished(QList<QStringList> allVideos);
    void videosDeleted(QList<int> ids);
    void videosChanged(QList<QStringList> changedVideos);
    void defaultThumbnailUpdated(QString videoUrl, QString thumbPath);
    void pauseThumbnailUpdated(QString videoUrl, QString thumbPath);
    void doEmitDataChanged();

private:
    friend struct AllVideosModelProbe;

    // First row by the text of a column. Built on the first look-up after rows moved, kept while rows are
    // only appended or changed in place. Holds row numbers only: the texts stand in the rows.
    class RowIndex
    {
    public:
        explicit RowIndex(int column) : m_column(column) { }
        void invalidate() { m_slots.clear(); }
        [[nodiscard]] int find(const QList<QStringList> &rows, const QString &text);

    private:
        void cover(const QList<QStringList> &rows);
        // The slot of the text, or the free one where it would go.
        [[nodiscard]] size_t slotOf(const QList<QStringList> &rows, const QString &text) const;

        const int m_column;
        int m_indexed = 0; // rows from 0 that are in the index
        std::vector<int> m_slots; // a power of two, at most half of them taken; -1: free
    };

    [[nodiscard]] int findRowByUrl(const QString &url) const;
    [[nodiscard]] int findRowById(int id) const;
    [[nodiscard]] int findRowByUrn(const QString &urn) const;
    void replaceRow(int row, const QStringList &changed);
    void appendRows(const QList<QStringList> &rows);
    QString removeRowAndEqualOnes(int row);
    void setThumbnail(int row, int column, const QString &path, bool &changedFlag);
    void invalidateIndexes();

    TrackerInterface *m_store;
    QList<QStringList> m_rows;
    QTimer *m_changeTimer;
    int m_pendingFirstRow = -1;
    int m_pendingLastRow = -1;
    bool m_rowsChanged = false;
    bool m_defaultThumbnailChanged = false;
    bool m_pauseThumbnailChanged = false;
    bool m_titleChanged = false;
    mutable RowIndex m_byUrn;
    mutable RowIndex m_byUrl;
    mutable RowIndex m_byId;
};

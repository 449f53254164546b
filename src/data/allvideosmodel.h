// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "libraryrows.h"

#include <QAbstractItemModel>
#include <QFutureWatcher>
#include <QList>
#include <QSet>
#include <QStringList>

#include <functional>
#include <memory>
#include <vector>

class QTimer;
class TrackerInterface;

// The whole library in memory: a video row a video (columns of VideoColumn), in the store's order, and the
// paths of its two thumbnails. Filled once, then kept current by the store's changes. Rows are unique by URN
// in normal operation; look-ups take the first match.
//
// Up to RowsAtOnce rows of the store stand here when its answer has been told. More are made ready in a
// thread and replace those before in one reset; what changes in between happens to both.
class AllVideosModel : public QAbstractItemModel
{
    Q_OBJECT

public:
    static constexpr int RowsAtOnce = 10000; // some milliseconds

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

    // The cell's string without the way through a variant, for what sorts and filters; a null string beyond
    // the rows.
    [[nodiscard]] QString text(int row, int column) const { return m_rows.text(row, column); }

    // The first row of this video, -1 when there is none: no warning.
    [[nodiscard]] int rowOfUrn(const QString &urn) const { return m_rows.find(VideoColumn::Urn, urn); }
    [[nodiscard]] int rowOfUrl(const QString &url) const { return m_rows.find(VideoColumn::Url, url); }
    [[nodiscard]] QList<int> rowsOfUrl(const QString &url) const
    {
        return m_rows.findAll(VideoColumn::Url, url);
    }

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

    using Table = std::shared_ptr<const RowTable>;

    void load(const Table &table);
    void takeLoaded();
    void setRows(LibraryRows rows);
    // Does it again once the rows that are being loaded stand here.
    void repeatOnceLoaded(std::function<void()> change);
    void forgetMeanwhile();
    void tellRemoved(QStringList urls);
    [[nodiscard]] int findRowById(int id) const;
    void replaceRow(int row, const QStringList &changed);
    void appendRows(const QList<QStringList> &rows);
    QString removeRowAndEqualOnes(int row);
    void setThumbnail(int row, int column, const QString &path, bool &changedFlag);

    TrackerInterface *m_store;
    LibraryRows m_rows;
    QTimer *m_changeTimer;
    int m_pendingFirstRow = -1;
    int m_pendingLastRow = -1;
    bool m_rowsChanged = false;
    bool m_defaultThumbnailChanged = false;
    bool m_pauseThumbnailChanged = false;
    bool m_titleChanged = false;

    // A long list is made ready in a thread; what is shown and changed until then are the rows before.
    QFutureWatcher<LibraryRows> m_loading;
    bool m_isLoading = false;
    std::vector<std::function<void()>> m_meanwhile; // changes since the answer came, in order
    QSet<QString> m_removedMeanwhile; // URLs that filesRemoved() told since the answer came
    bool m_isRepeating = false; // these changes, on the new rows
};

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "data/videoinfo.h"

#include <QObject>
#include <QString>

#include <memory>

class FileRemoval;
class MmcMonitor;
class TrackerInterface;

namespace toolkit {
class QueryDialog;
}

// Asks whether a video shall be deleted, and removes its file. The store is not written to: it sees for
// itself that the file is gone. One flow at a time; each ends in one deleteDone().
class FileManager : public QObject
{
    Q_OBJECT

public:
    // Yes deletes at once, or only tells deleteConfirmed(): then the owner calls deleteFile() when it is
    // ready.
    explicit FileManager(bool deleteOnAccept);
    ~FileManager() override;

    // By the store's identifier. Whatever happens to lists meanwhile, it is this video that is asked about
    // and deleted.
    void showDeleteConfirmation(const QString &urn);
    [[nodiscard]] bool isDialogOpen() const { return m_dialogOpen; }
    // Between deleteFile() and deleteDone().
    [[nodiscard]] bool isDeleting() const { return m_deleting; }
    // As by the person: No when it is asked, and no question any more when it is about to be.
    void closeDialog();
    // This object, once its question is out of the scene.
    void deleteWhenGone();

Q_SIGNALS:
    void deleteFailed(QString error); // for the person; deleteDone(false) follows
    void deleteDone(bool result); // true: the file is gone
    void deleteConfirmed();

public Q_SLOTS:
    // Answers later: a file may lie on a slow disk.
    void deleteFile();
    void dataReady(VideoInfo info, int id);
    void dialogFinished();
    void deleteRejected();

private:
    void fail();
    void removalFinished(bool removed, const QString &reason);

    QString m_filePath;
    bool m_dialogOpen = false;
    bool m_deleting = false;
    std::unique_ptr<toolkit::QueryDialog> m_dialog;
    MmcMonitor *m_mmcMonitor;
    TrackerInterface *m_store;
    int m_queryId = 0;
    VideoInfo m_video;
    std::unique_ptr<FileRemoval> m_removal; // of the file at m_filePath
};

// SPDX-License-Identifier: GPL-3.0-or-later
#include "filemanager.h"

#include "data/mmcmonitor.h"
#include "data/trackerinterface.h"
#include "fileopslog.h"
#include "fileremoval.h"
#include "platform/toolkit/application.h"
#include "platform/toolkit/keeptranslated.h"
#include "platform/toolkit/querydialog.h"

using namespace Qt::Literals::StringLiterals;
using toolkit::QueryDialog;

namespace {

constexpr int LongestTitle = 400;

// The person recognises the video by it; nobody reads more of it.
QString shortened(const QString &title)
{
    if (title.size() <= LongestTitle)
        return title;
    QString first = title.left(LongestTitle);
    if (first.back().isHighSurrogate())
        first.chop(1); // half a character would be shown as a box
    return first + u"..."_s;
}

} // namespace

FileManager::FileManager(bool deleteOnAccept)
    : m_dialog(std::make_unique<QueryDialog>()),
      m_mmcMonitor(MmcMonitor::instance()),
      m_store(TrackerInterface::instance())
{
    m_dialog->setDestructive(true);
    toolkit::keepTranslated(m_dialog.get(), [this] { m_dialog->setTitle(qtTrId("qtn_vide_delete_query")); });
    if (deleteOnAccept)
        connect(m_dialog.get(), &QueryDialog::accepted, this, &FileManager::deleteFile);
    else
        connect(m_dialog.get(), &QueryDialog::accepted, this, &FileManager::deleteConfirmed);
    connect(m_dialog.get(), &QueryDialog::finished, this, &FileManager::dialogFinished);
    connect(m_dialog.get(), &QueryDialog::rejected, this, &FileManager::deleteRejected);
}

FileManager::~FileManager()
{
    m_dialog->disconnect(this);
}

void FileManager::showDeleteConfirmation(const QString &urn)
{
    connect(m_store, &TrackerInterface::dataFromUrnFinished, this, &FileManager::dataReady,
            Qt::UniqueConnection);
    m_queryId = m_store->dataFromUrn(urn);
    if (m_queryId == 0)
        qCWarning(fileOpsLog) << "void FileManager::showDeleteConfirmation(const QString&)"
                              << "Tracker query failed";
}

void FileManager::dataReady(VideoInfo info, int id)
{
    if (id == 0 || id != m_queryId)
        return;
    m_queryId = 0;
    disconnect(m_store, &TrackerInterface::dataFromUrnFinished, this, &FileManager::dataReady);
    if (m_dialogOpen || m_deleting)
        return; // the flow before is not over
    m_dialogOpen = true;
    const QByteArray path = FileRemoval::pathOf(info.url);
    m_filePath = QString::fromUtf8(path);
    m_video = info;
    m_removal = std::make_unique<FileRemoval>(path, this);
    connect(m_removal.get(), &FileRemoval::finished, this, &FileManager::removalFinished);
    // The closing tag is not closed itself; the text widget does not need it.
    m_dialog->setText(u"<span>"_s + shortened(info.title).toHtmlEscaped() + u"</span"_s);
    toolkit::ApplicationWindow *window = toolkit::Application::activeApplicationWindow();
    m_dialog->appear(window);
    if (window)
        return;
    qCWarning(fileOpsLog) << "void FileManager::dataReady(VideoInfo, int)"
                          << "Kestrel: Unable to get active window.";
    deleteRejected();
    dialogFinished();
}

void FileManager::dialogFinished()
{
    m_dialogOpen = false;
}

void FileManager::deleteRejected()
{
    m_filePath.clear();
    m_removal.reset();
    Q_EMIT deleteDone(false);
}

void FileManager::closeDialog()
{
    m_queryId = 0;
    m_dialog->reject();
}

void FileManager::deleteWhenGone()
{
    if (m_dialog->isDisplayed())
        connect(m_dialog.get(), &QueryDialog::disappeared, this, &QObject::deleteLater);
    else
        deleteLater();
}

void FileManager::deleteFile()
{
    if (m_deleting)
        return;
    if (!MmcMonitor::isAvailable()) {
        qCWarning(fileOpsLog).noquote() << "void FileManager::deleteFile()"
                                        << u"Mass strorage mode: Couldn't remove file: "_s + m_filePath;
        fail();
        return;
    }
    if (!m_removal) {
        removalFinished(false, u"no file was asked about"_s);
        return;
    }
    m_deleting = true;
    m_removal->start();
}

void FileManager::removalFinished(bool removed, const QString &reason)
{
    if (!removed) {
        qCWarning(fileOpsLog).noquote() << "void FileManager::deleteFile()"
                                        << u"couldn't remove file: "_s + m_filePath << u"(%1)"_s.arg(reason);
        fail();
        return;
    }
    m_deleting = false;
    m_filePath.clear();
    m_removal.release()->deleteLater(); // it is its signal that brought us here
    Q_EMIT deleteDone(true);
}

void FileManager::fail()
{
    const QString message = qtTrId("qtn_vide_error_delete");
    m_deleting = false;
    m_filePath.clear();
    if (m_removal)
        m_removal.release()->deleteLater();
    Q_EMIT deleteFailed(message);
    Q_EMIT deleteDone(false);
}

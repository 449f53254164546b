// SPDX-License-Identifier: GPL-3.0-or-later
// The menu of the player page: share, rename and delete of a stored video, a copy of one that is only here.
#include "playerpage.h"

#include "navigationbarwidget.h"
#include "playercontroller.h"
#include "playerlog.h"

#include <data/videoconstants.h>
#include <fileops/editmanager.h>
#include <fileops/filemanager.h>
#include <fileops/saveasmanager.h>
#include <platform/toolkit/action.h>
#include <platform/toolkit/button.h>

#include <QTimer>
#include <QUrl>

#include <sys/vfs.h>

using namespace Qt::Literals::StringLiterals;
using toolkit::Action;

namespace {

constexpr quint32 fuseFileSystem = 0x65735546;

bool isLocal(const QString &url)
{
    return url.startsWith(FILE_URL_PREFIX, Qt::CaseInsensitive);
}

// With its scheme as everybody else spells it, and without the machine's own name.
QString localAddress(const QString &url)
{
    if (!isLocal(url))
        return url;
    const QString rest = url.mid(FILE_URL_PREFIX.size());
    const QString machine = u"localhost"_s;
    const bool named = rest.startsWith(machine + u'/', Qt::CaseInsensitive);
    return FILE_URL_PREFIX + (named ? rest.mid(machine.size()) : rest);
}

} // namespace

void PlayerPage::addMenuAction(const QString &name, void (PlayerPage::*slot)())
{
    auto *action = new Action(this);
    action->setObjectName(name);
    connect(action, &QAction::triggered, this, slot);
    addAction(action);
}

void PlayerPage::removeMenuActions()
{
    const QList<QAction *> old = actions();
    for (QAction *action : old)
        removeAction(action);
    qDeleteAll(old);
}

void PlayerPage::createStoredActions()
{
    removeMenuActions();
    addMenuAction(u"shareAction"_s, &PlayerPage::shareActionTriggered);
    addMenuAction(u"editAction"_s, &PlayerPage::editCurrent);
    addMenuAction(u"deleteAction"_s, &PlayerPage::deleteCurrent);
    static_cast<Action *>(actions().constLast())->setDestructive(true);
    translateActions();
}

void PlayerPage::createSaveAsAction()
{
    removeMenuActions();
    addMenuAction(u"saveAsAction"_s, &PlayerPage::saveAsCurrent);
    translateActions();
}

// The language may be another than when they were made.
void PlayerPage::translateActions()
{
    const QHash<QString, QString> texts = {{u"shareAction"_s, qtTrId("qtn_comm_command_share")},
                                           {u"editAction"_s, qtTrId("qtn_comm_command_rename")},
                                           {u"deleteAction"_s, qtTrId("qtn_comm_command_delete")},
                                           {u"saveAsAction"_s, qtTrId("qtn_comm_content_save_as")}};
    const QList<QAction *> all = actions();
    for (QAction *action : all) {
        if (const auto text = texts.constFind(action->objectName()); text != texts.constEnd())
            action->setText(*text);
    }
}

void PlayerPage::enableIndexedActions(bool enabled)
{
    if (!hasController("void PlayerPage::enableIndexedActions(bool)"))
        return;
    connectBuffering();
    showTitle();
    if (enabled) {
        navigationBar()->setMenuEnabled(true);
        if (actions().size() < 2)
            createStoredActions();
    } else {
        const bool local = isLocal(m_controller->lastVideo().url);
        navigationBar()->setMenuEnabled(local && saveAllowed());
        if (local && actions().size() != 1)
            createSaveAsAction();
    }
    setToolbarVisible(false);
}

bool PlayerPage::saveAllowed() const
{
    if (!hasController("bool PlayerPage::saveAllowed() const") || m_controller->lastVideo().url.isEmpty())
        return true;
    QString address = localAddress(m_controller->lastVideo().url);
    if (isLocal(address))
        address.remove(0, FILE_URL_PREFIX.size());
    // A file's name is bytes, text or not.
    const QByteArray path = QByteArray::fromPercentEncoding(address.toUtf8());
    const std::optional<quint32> type = fileSystemType(path);
    if (!type) {
        qCWarning(lcPlayer, "%s: Call to \"statfs\" failed on file %s.",
                  "bool PlayerPage::saveAllowed() const", path.constData());
        return true;
    }
    return *type != fuseFileSystem;
}

// Some types are negative where the system's numbers are of 32 bits.
std::optional<quint32> PlayerPage::fileSystemType(const QByteArray &path) const
{
    struct statfs information = {};
    if (statfs(path.constData(), &information) != 0)
        return {};
    return quint32(information.f_type);
}

void PlayerPage::shareActionTriggered()
{
    if (!hasController("void PlayerPage::shareActionTriggered()"))
        return;
    m_controller->pause();
    Q_EMIT shareVideo(m_controller->lastVideo().url);
    m_shareOpened = true;
    m_wasPlaying = false; // nor does it go on after the sheet, whatever happens to the window meanwhile
}

bool PlayerPage::offersMenu() const
{
    return ApplicationPage::offersMenu() && navigationBar()->menuButton()->isEnabled();
}

void PlayerPage::requestMenu()
{
    if (offersMenu())
        handleMenuClick();
}

void PlayerPage::saveAsCurrent()
{
    constexpr auto function = "void PlayerPage::saveAsCurrent()";
    if (!beginDialog(function))
        return;
    if (!m_saveAsManager) {
        m_saveAsManager = new SaveAsManager(this);
        connect(m_saveAsManager, &SaveAsManager::saveAsDone, this, &PlayerPage::editOrSaveAsDone);
    }
    if (m_saveAsManager->isDialogOpen())
        refuseDialog(function);
    else
        m_saveAsManager->showSaveAsDialog(localAddress(m_controller->lastVideo().url));
}

void PlayerPage::editCurrent()
{
    constexpr auto function = "void PlayerPage::editCurrent()";
    if (!beginDialog(function))
        return;
    if (!m_editManager) {
        m_editManager = new EditManager(this);
        connect(m_editManager, &EditManager::editDone, this, &PlayerPage::editOrSaveAsDone);
    }
    if (m_editManager->isSheetDisplayed())
        refuseDialog(function);
    else
        m_editManager->showEditSheet(m_controller->lastVideo().urn);
}

void PlayerPage::editOrSaveAsDone()
{
    m_dialogGuard->stop();
    m_dialogOpen = false;
    if (!hasController("void PlayerPage::editOrSaveAsDone()"))
        return;
    m_controller->setPauseWhenPlaying(false);
    resetSavedState();
}

void PlayerPage::deleteCurrent()
{
    constexpr auto function = "void PlayerPage::deleteCurrent()";
    if (!beginDialog(function))
        return;
    m_deletePath = m_controller->lastVideo().url;
    if (!m_fileManager) {
        m_fileManager = std::make_unique<FileManager>(false);
        connect(m_fileManager.get(), &FileManager::deleteFailed, this, &PlayerPage::notify);
        connect(m_fileManager.get(), &FileManager::deleteConfirmed, this, &PlayerPage::prepareDeletion);
        connect(m_fileManager.get(), &FileManager::deleteDone, this, &PlayerPage::deleteDone);
    }
    if (m_fileManager->isDialogOpen())
        refuseDialog(function);
    else
        m_fileManager->showDeleteConfirmation(m_controller->lastVideo().urn);
}

void PlayerPage::prepareDeletion()
{
    constexpr auto function = "void PlayerPage::prepareDeletion()";
    if (!hasController(function))
        return;
    m_controller->stop();
    setControlsAnswering(false);
    if (m_fileManager)
        m_fileManager->deleteFile();
    else
        qCWarning(lcPlayer, "%s fileManager == NULL!", function);
}

void PlayerPage::deleteDone(bool done)
{
    m_dialogGuard->stop();
    m_dialogOpen = false;
    setControlsAnswering(true);
    if (m_controller)
        m_controller->setPauseWhenPlaying(false);
    if (!sender()) {
        qCWarning(lcPlayer, "void PlayerPage::deleteDone(bool) Invalid sender");
        return;
    }
    if (m_fileManager) { // it is its signal that brought us here, and its question is on its way out
        m_fileManager->setParent(this);
        m_fileManager.release()->deleteWhenGone();
    }
    if (!done)
        return;
    if (m_backButtonType == TvMainViewBackButton) {
        shutdown();
        return;
    }
    Q_EMIT deleteFile(m_deletePath);
    Q_EMIT backButtonClicked();
}

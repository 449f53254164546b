// SPDX-License-Identifier: GPL-3.0-or-later
// The menu of a video, and what is done from there.
#include "myallvideoswidget.h"

#include "data/allvideosmodel.h"
#include "data/videoconstants.h"
#include "fileops/editmanager.h"
#include "fileops/filemanager.h"
#include "filteredmodel.h"
#include "filterwidget.h"
#include "librarylog.h"
#include "platform/toolkit/action.h"
#include "platform/toolkit/application.h"
#include "platform/toolkit/applicationwindow.h"
#include "platform/toolkit/list.h"
#include "platform/toolkit/objectmenu.h"
#include "platform/toolkit/textedit.h"

#include <QActionGroup>

using namespace Qt::Literals::StringLiterals;
using toolkit::Action;

MyAllVideosWidget::~MyAllVideosWidget()
{
    delete m_objectMenu; // nobody's child while it is not shown
}

void MyAllVideosWidget::createObjectMenu()
{
    m_objectMenu = new toolkit::ObjectMenu;
    m_menuActions = new QActionGroup(this);
    addMenuAction(u"detailsAction"_s, &MyAllVideosWidget::detailsVideoAction);
    addMenuAction(u"shareAction"_s, &MyAllVideosWidget::shareVideoAction);
    addMenuAction(u"editAction"_s, &MyAllVideosWidget::editVideoAction);
    addMenuAction(u"deleteAction"_s, &MyAllVideosWidget::deleteVideoAction)->setDestructive(true);
    // The cell under the menu stays lit until it is gone.
    connect(m_objectMenu, &toolkit::Popup::disappeared, m_list, [this] { m_list->setHeldIndex({}); });
}

Action *MyAllVideosWidget::addMenuAction(const QString &name, void (MyAllVideosWidget::*slot)())
{
    auto *action = new Action(m_menuActions);
    action->setObjectName(name);
    action->setLocation(Action::ObjectMenuLocation);
    m_menuActions->addAction(action);
    m_objectMenu->addAction(action);
    connect(action, &QAction::triggered, this, slot);
    return action;
}

void MyAllVideosWidget::translateObjectMenu()
{
    const QStringList texts = {qtTrId("qtn_comm_object_details"), qtTrId("qtn_comm_command_share"),
                               qtTrId("qtn_comm_command_rename"), qtTrId("qtn_comm_command_delete")};
    const QList<QAction *> actions = m_menuActions->actions();
    for (int index = 0; index < actions.size(); ++index)
        actions.at(index)->setText(texts.at(index));
}

// A video that comes over the net has no file that could be deleted.
bool MyAllVideosWidget::isOnThisMachine(const QModelIndex &index)
{
    return index.siblingAtColumn(VideoColumn::Url)
        .data()
        .toString()
        .startsWith(FILE_URL_PREFIX, Qt::CaseInsensitive);
}

void MyAllVideosWidget::itemLongTapped(const QModelIndex &index, const QPointF &pos)
{
    if (!index.isValid())
        return;
    m_filter->textEdit()->clearFocus();
    m_menuUrn = index.siblingAtColumn(VideoColumn::Urn).data().toString();
    for (QAction *action : m_menuActions->actions()) {
        if (action->objectName() == "deleteAction"_L1)
            action->setEnabled(isOnThisMachine(index));
    }
    showListObjectMenu(pos);
    if (m_objectMenu->isActive())
        m_list->setHeldIndex(index);
}

void MyAllVideosWidget::showListObjectMenu(const QPointF &pos)
{
    const auto warn = [](const char *reason) {
        qCWarning(libraryLog) << "void MyAllVideosWidget::showListObjectMenu(const QPointF&)" << reason;
    };
    toolkit::ApplicationWindow *window = toolkit::Application::activeApplicationWindow();
    if (!m_objectMenu) {
        warn("No object menu created");
    } else if (m_menuUrn.isEmpty()) {
        warn("No object menu Urn set!");
    } else if (m_objectMenu->actions().isEmpty()) {
        warn("Empty action list");
    } else if (!m_mmcAvailable) {
        warn("MMC not available!");
    } else if (!window) {
        warn("No scene manager for object menu!");
    } else {
        m_objectMenu->setCursorPosition(pos);
        m_objectMenu->appear(window);
    }
}

void MyAllVideosWidget::actOn(const QModelIndex &index, void (MyAllVideosWidget::*action)())
{
    const QString urn = index.siblingAtColumn(VideoColumn::Urn).data().toString();
    if (urn.isEmpty() || !m_mmcAvailable)
        return;
    m_menuUrn = urn;
    (this->*action)();
}

void MyAllVideosWidget::detailsVideoAction()
{
    Q_EMIT detailsActionClicked(m_menuUrn);
}

void MyAllVideosWidget::shareVideoAction()
{
    const QString url = m_model->urlForUrn(m_menuUrn);
    if (!url.isEmpty()) // it may be gone by now
        Q_EMIT shareVideo(url);
}

void MyAllVideosWidget::editVideoAction()
{
    if (!m_editManager)
        m_editManager = new EditManager(this);
    m_editManager->showEditSheet(m_menuUrn);
}

void MyAllVideosWidget::deleteVideoAction()
{
    const QString url = m_model->urlForUrn(m_menuUrn);
    if (!m_fileManager) {
        m_fileManager = std::make_unique<FileManager>(true);
        connect(m_fileManager.get(), &FileManager::deleteFailed, this, &MyAllVideosWidget::notify);
        connect(m_fileManager.get(), &FileManager::deleteDone, this, &MyAllVideosWidget::deleteDone);
    } else if (m_fileManager->isDialogOpen() || m_fileManager->isDeleting()) {
        qCWarning(libraryLog) << "void MyAllVideosWidget::deleteVideoAction()"
                              << "Dialog already open!";
        return;
    }
    m_fileManager->showDeleteConfirmation(m_menuUrn);
    m_pendingDeleteUrl = url;
    m_pendingDeleteUrn = m_menuUrn;
}

void MyAllVideosWidget::deleteDone(bool deleteItem)
{
    if (deleteItem && !m_pendingDeleteUrl.isEmpty()) {
        // Another video may have come to this address while the person thought about it.
        if (const int row = m_model->rowOfUrn(m_pendingDeleteUrn); row >= 0)
            m_model->removeVideo(m_model->text(row, VideoColumn::Url));
        m_pendingDeleteUrl.clear();
    }
    if (m_proxy->rowCount() == 0 && !awaitsRows())
        setViewState(isFilterIdle() ? EmptyCollection : NoResults);
}

bool MyAllVideosWidget::isEditSheetDisplayed() const
{
    return m_editManager && m_editManager->isSheetDisplayed();
}

void MyAllVideosWidget::closeDialogs()
{
    if (m_editManager)
        m_editManager->closeSheet();
    if (m_fileManager)
        m_fileManager->closeDialog();
    m_objectMenu->disappear(toolkit::Appearance::Immediate);
}

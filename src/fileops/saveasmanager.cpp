// SPDX-License-Identifier: GPL-3.0-or-later
#include "saveasmanager.h"

#include "fileopslog.h"
#include "platform/saveas/filecopy.h"
#include "platform/saveas/saveasdialog.h"
#include "platform/toolkit/application.h"

#include <QFile>
#include <QStandardPaths>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int DisplayedAfterClosing = 1200; // ms

} // namespace

SaveAsManager::SaveAsManager(QObject *parent)
    : QObject(parent),
      m_destination(QStandardPaths::writableLocation(QStandardPaths::MoviesLocation)),
      m_dialog(std::make_unique<SaveAsDialog>()),
      m_displayedTimer(this)
{
    connect(m_dialog.get(), &SaveAsDialog::accepted, this, &SaveAsManager::saveAsAccepted);
    connect(m_dialog.get(), &SaveAsDialog::rejected, this, &SaveAsManager::saveAsRejected);
    m_displayedTimer.setObjectName(u"displayedTimer"_s);
    m_displayedTimer.setSingleShot(true);
    m_displayedTimer.setInterval(DisplayedAfterClosing);
    connect(&m_displayedTimer, &QTimer::timeout, this, &SaveAsManager::saveAsDisplayedTimeout);
}

SaveAsManager::~SaveAsManager()
{
    m_dialog->disconnect(this);
}

void SaveAsManager::clearUp()
{
    FileCopy::clearUp(QFile::encodeName(QStandardPaths::writableLocation(QStandardPaths::MoviesLocation)));
}

void SaveAsManager::showSaveAsDialog(QString path)
{
    m_displayedTimer.stop(); // of the time before
    m_dialogOpen = true;
    const QString source = path.remove(u"file://"_s);
    const qsizetype slash = source.lastIndexOf(u'/');
    const QString fileName = slash > 0 ? source.mid(slash + 1) : source;
    // A name without a dot is whole, and has no extension.
    const qsizetype dot = fileName.lastIndexOf(u'.');
    m_dialog->setAutomaticCopy(false);
    m_dialog->setSourcePath(source);
    m_dialog->setDefaultFileName(dot < 0 ? fileName : fileName.left(dot));
    m_dialog->setDefaultExtension(dot < 0 ? QString() : fileName.mid(dot + 1));
    m_dialog->setDestinationPath(m_destination);
    toolkit::ApplicationWindow *window = toolkit::Application::activeApplicationWindow();
    if (window) {
        m_dialog->appear(window);
        return;
    }
    qCWarning(fileOpsLog) << "void SaveAsManager::showSaveAsDialog(QString)"
                          << "Kestrel: Unable to get active window.";
    saveAsRejected(); // there is no dialog that would ever end
}

bool SaveAsManager::isDialogOpen()
{
    return m_dialogOpen;
}

void SaveAsManager::cancelSaveAsDeletion()
{
    m_dialog->dismiss();
    m_displayedTimer.start();
    Q_EMIT saveAsDone();
}

void SaveAsManager::saveAsAccepted()
{
    m_dialogOpen = false;
    Q_EMIT saveAsDone();
}

void SaveAsManager::saveAsRejected()
{
    m_dialogOpen = false;
    Q_EMIT saveAsDone();
}

void SaveAsManager::saveAsDisplayedTimeout()
{
    m_dialogOpen = false;
}

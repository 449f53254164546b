// SPDX-License-Identifier: GPL-3.0-or-later
#include "saveasdialog.h"

#include "filecopy.h"
#include "platform/toolkit/applicationwindow.h"
#include "platform/toolkit/banner.h"
#include "platform/toolkit/keeptranslated.h"
#include "platform/toolkit/label.h"
#include "platform/toolkit/querydialog.h"
#include "platform/toolkit/sheetheader.h"
#include "platform/toolkit/textedit.h"
#include "saveascontent.h"
#include "saveaslog.h"

#include <QCoreApplication>
#include <QPointer>

using namespace Qt::Literals::StringLiterals;
using toolkit::QueryDialog;
using toolkit::Sheet;
using toolkit::SheetHeader;
using toolkit::TextEdit;

namespace {

// For the person: what, and what to do about it.
QString textOf(CopyFault fault)
{
    switch (fault) {
    case CopyFault::None:
        return {};
    case CopyFault::SourceGone:
    case CopyFault::NoFile:
        return qtTrId("qtn_saveas_error_source");
    case CopyFault::SourceChanged:
        return qtTrId("qtn_saveas_error_changed");
    case CopyFault::SameFile:
        return qtTrId("qtn_saveas_error_same");
    case CopyFault::FolderThere:
        return qtTrId("qtn_saveas_error_folder_there");
    case CopyFault::NameTooLong:
        return qtTrId("qtn_saveas_error_long");
    case CopyFault::NameInvalid:
        return qtTrId("qtn_saveas_error_characters");
    case CopyFault::NoSpace:
        return qtTrId("qtn_saveas_error_space");
    case CopyFault::ReadOnly:
        return qtTrId("qtn_saveas_error_read_only");
    case CopyFault::TooLarge:
        return qtTrId("qtn_saveas_error_large");
    case CopyFault::DestinationGone:
        return qtTrId("qtn_saveas_error_destination");
    case CopyFault::NameTaken: // is asked about
    case CopyFault::Failed:
        break;
    }
    return qtTrId("qtn_saveas_error");
}

QString textOf(SaveName::Fault fault)
{
    switch (fault) {
    case SaveName::Fault::Invalid:
        return qtTrId("qtn_saveas_error_name");
    case SaveName::Fault::TooLong:
        return qtTrId("qtn_saveas_error_long");
    case SaveName::Fault::Empty: // is seen
    case SaveName::Fault::None:
        break;
    }
    return {};
}

} // namespace

SaveAsDialog::SaveAsDialog() : Sheet(Extent::Full), m_content(new SaveAsContent)
{
    setStyleName(u"Inverted"_s);
    header()->setStyleName(u"Inverted"_s);
    setCentralWidget(m_content);
    // Its actions do not close it by themselves: saving takes a while, and the last moment of it is not
    // cancelled.
    disconnect(header(), &SheetHeader::positiveClicked, this, &Sheet::accept);
    disconnect(header(), &SheetHeader::negativeClicked, this, &Sheet::reject);
    connect(header(), &SheetHeader::positiveClicked, this, &SaveAsDialog::save);
    connect(header(), &SheetHeader::negativeClicked, this, &SaveAsDialog::escape);
    connect(m_content->field(), &TextEdit::textChanged, this, &SaveAsDialog::nameEdited);
    connect(m_content->field(), &TextEdit::returnPressed, this, &SaveAsDialog::save);
    connect(&m_space, &SpaceQuery::answered, m_content, &SaveAsContent::setSpace);
    toolkit::keepTranslated(this, [this] { translate(); });
}

SaveAsDialog::~SaveAsDialog()
{
    m_content->field()->disconnect(this);
}

void SaveAsDialog::translate()
{
    setNegativeAction(qtTrId("qtn_comm_cancel"));
    setPositiveAction(qtTrId("qtn_comm_save"));
    m_content->translate();
    setAccessibleName(m_content->heading()->text());
    showError();
    translateQuestion();
}

void SaveAsDialog::setSourcePath(const QString &path)
{
    m_sourcePath = path;
}

void SaveAsDialog::setDefaultFileName(const QString &name)
{
    m_defaultName = name;
}

void SaveAsDialog::setDefaultExtension(const QString &extension)
{
    m_defaultExtension = extension;
}

void SaveAsDialog::setDestinationPath(const QString &folder)
{
    m_folder = folder;
}

QString SaveAsDialog::folderName() const
{
    const QString name = m_folder.section(u'/', -1, -1, QString::SectionSkipEmpty);
    return name.isEmpty() ? m_folder : name;
}

void SaveAsDialog::appear(toolkit::ApplicationWindow *window)
{
    if (window == nullptr || isActive())
        return;
    m_name = SaveName(m_defaultName, m_defaultExtension);
    m_content->setExtension(m_name.extension());
    m_content->setFolder(folderName());
    m_content->setSpace(-1, -1);
    m_content->showForm();
    translate();
    m_content->field()->setText(m_name.proposed());
    m_untouched = m_content->field()->text();
    nameEdited();
    m_space.ask(SaveName::decoded(m_sourcePath), m_folder.toUtf8());
    Sheet::appear(window);
    m_content->field()->setFocus(Qt::OtherFocusReason);
    m_content->field()->setSelection(int(m_untouched.size()), 0); // all of it; a long one shows its beginning
    if (m_automatic)
        save();
}

QString SaveAsDialog::typedName() const
{
    const QString text = m_content->field()->text();
    return text == m_untouched ? m_name.proposed() : text;
}

void SaveAsDialog::nameEdited()
{
    m_nameFault = m_name.check(typedName());
    m_copyFault = CopyFault::None;
    showError();
    updateSaveEnabled();
}

void SaveAsDialog::showError()
{
    m_content->setError(m_copyFault != CopyFault::None ? textOf(m_copyFault) : textOf(m_nameFault));
}

void SaveAsDialog::updateSaveEnabled()
{
    const bool enabled = m_copy == nullptr && m_name.check(typedName()) == SaveName::Fault::None;
    setPositiveActionEnabled(enabled);
    m_content->field()->setInputMethodAttribute(u"/keys"_s, u"actionKey"_s, u"enabled"_s, enabled);
}

void SaveAsDialog::save()
{
    const bool asked = m_question != nullptr && m_question->isActive();
    if (!isActive() || asked || m_copy != nullptr || m_name.check(typedName()) != SaveName::Fault::None)
        return;
    m_copyFault = CopyFault::None;
    showError();
    copy(std::nullopt);
    Q_EMIT saveFileAs(m_folder + u'/' + m_name.shownName(typedName()));
}

void SaveAsDialog::copy(const std::optional<FileMark> &replaced)
{
    m_copy = std::make_unique<FileCopy>(FileCopy::Request{SaveName::decoded(m_sourcePath), m_folder.toUtf8(),
                                                          m_name.fileName(typedName()), replaced});
    connect(m_copy.get(), &FileCopy::progress, this, &SaveAsDialog::progressed);
    connect(m_copy.get(), &FileCopy::finished, this, &SaveAsDialog::copied);
    connect(m_copy.get(), &FileCopy::failed, this, &SaveAsDialog::copyFailed);
    updateSaveEnabled();
    m_copy->start();
}

// The first is told when nothing stands in the way any more: the form does not go for a moment only.
void SaveAsDialog::progressed(qint64 copied, qint64 size)
{
    if (copied == 0) {
        m_content->showCopying(m_name.shownName(typedName()));
        setAccessibleName(m_content->heading()->text());
        setFocus(Qt::OtherFocusReason); // the field's keyboard goes
    }
    m_content->setProgress(copied, size);
}

void SaveAsDialog::copied()
{
    endCopy();
    tellSaved(popupWindow(), folderName());
    accept();
}

void SaveAsDialog::tellSaved(toolkit::ApplicationWindow *window, const QString &folderName)
{
    if (window == nullptr)
        return;
    auto *banner = new toolkit::Banner;
    banner->setTitle(qtTrId("qtn_saveas_saved").arg(folderName));
    banner->appear(window);
}

void SaveAsDialog::copyFailed(CopyFault fault, const QString &reason)
{
    const FileMark taken = m_copy->taken();
    endCopy();
    if (fault == CopyFault::NameTaken) {
        askToReplace(taken);
        return;
    }
    qCWarning(saveAsLog).noquote() << m_sourcePath << "is not saved in" << m_folder << u"(%1)"_s.arg(reason);
    backToForm();
    m_copyFault = fault;
    showError();
    m_space.ask(SaveName::decoded(m_sourcePath), m_folder.toUtf8());
}

void SaveAsDialog::askToReplace(const FileMark &taken)
{
    m_question = std::make_unique<QueryDialog>();
    m_question->setDestructive(true);
    translateQuestion();
    connect(m_question.get(), &QueryDialog::accepted, this, [this, taken] { copy(taken); });
    connect(m_question.get(), &QueryDialog::rejected, this, &SaveAsDialog::backToForm);
    m_question->appear(popupWindow());
}

void SaveAsDialog::translateQuestion()
{
    if (m_question == nullptr)
        return;
    m_question->setTitle(qtTrId("qtn_saveas_replace_title"));
    const QString name = m_name.shownName(typedName());
    m_question->setText(qtTrId("qtn_saveas_replace_text").arg(name.toHtmlEscaped()));
}

void SaveAsDialog::backToForm()
{
    m_content->showForm();
    setAccessibleName(m_content->heading()->text());
    updateSaveEnabled();
    if (isActive())
        m_content->field()->setFocus(Qt::OtherFocusReason);
}

// It is its own signal that brought us here.
void SaveAsDialog::endCopy()
{
    m_copy->disconnect(this);
    m_copy.release()->deleteLater();
    updateSaveEnabled();
}

// A copy that is just getting its name comes to be all the same: the person hears of it.
void SaveAsDialog::abandonCopy()
{
    if (m_copy == nullptr)
        return;
    FileCopy *copy = m_copy.release();
    copy->disconnect(this);
    if (copy->cancel()) {
        copy->deleteLater();
    } else {
        copy->setParent(QCoreApplication::instance());
        connect(copy, &FileCopy::finished, copy, [copy, folder = folderName()] {
            tellSaved(toolkit::ApplicationWindow::current(), folder);
            copy->deleteLater();
        });
        connect(copy, &FileCopy::failed, copy, [copy](CopyFault, const QString &reason) {
            qCWarning(saveAsLog).noquote() << u"not saved after all (%1)"_s.arg(reason);
            copy->deleteLater();
        });
    }
    updateSaveEnabled();
}

void SaveAsDialog::escape()
{
    if (m_copy == nullptr || m_copy->cancel())
        reject();
}

void SaveAsDialog::setLeaving(bool leaving)
{
    Sheet::setLeaving(leaving);
    if (!leaving)
        return;
    abandonCopy();
    m_space.forget();
    if (m_question != nullptr)
        m_question->dismiss();
}

void SaveAsDialog::abandoned()
{
    const bool unanswered = isActive();
    abandonCopy();
    m_space.forget();
    const QPointer<SaveAsDialog> alive(this);
    Sheet::abandoned();
    if (alive != nullptr && unanswered)
        Q_EMIT rejected();
}

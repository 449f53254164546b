// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "copyfault.h"
#include "platform/toolkit/sheet.h"
#include "savename.h"
#include "spacequery.h"

#include <memory>
#include <optional>

class FileCopy;
class SaveAsContent;
struct FileMark;

namespace toolkit {
class QueryDialog;
}

// Asks under which name a file is to be copied into a folder, and copies it: the sheet stays, with the
// progress, until the copy is there. It ends in accepted() when it is, or in rejected(). Cancelling, also by
// closing the sheet in any other way, leaves nothing of the copy.
class SaveAsDialog : public toolkit::Sheet
{
    Q_OBJECT

public:
    SaveAsDialog();
    ~SaveAsDialog() override;

    // To be set before it appears. The path, the name and the extension are taken from an address and decoded
    // here: "my%20film".
    void setSourcePath(const QString &path);
    [[nodiscard]] QString sourcePath() const { return m_sourcePath; }
    void setDefaultFileName(const QString &name); // without its extension
    [[nodiscard]] QString defaultFileName() const { return m_defaultName; }
    void setDefaultExtension(const QString &extension); // without its dot
    [[nodiscard]] QString defaultExtension() const { return m_defaultExtension; }
    // A plain path, of no address.
    void setDestinationPath(const QString &folder);
    [[nodiscard]] QString destinationPath() const { return m_folder; }
    // On: it copies under the default name as soon as it appears, and asks only when something has it.
    void setAutomaticCopy(bool on) { m_automatic = on; }
    [[nodiscard]] bool automaticCopy() const { return m_automatic; }

    void appear(toolkit::ApplicationWindow *window);
    [[nodiscard]] bool isCopying() const { return m_copy != nullptr; }
    [[nodiscard]] SaveAsContent *content() const { return m_content; }
    [[nodiscard]] toolkit::QueryDialog *question() const { return m_question.get(); }

public Q_SLOTS:
    // Begins to copy under the name that is in the field; nothing while that is none, or while it copies.
    void save();

Q_SIGNALS:
    // A copy begins. The dialog copies by itself, whoever listens.
    void saveFileAs(QString path);

protected:
    void escape() override;
    void abandoned() override;
    void setLeaving(bool leaving) override;

private:
    using Sheet::accept; // whoever closes it otherwise has no copy

    void translate();
    void translateQuestion();
    void nameEdited();
    void showError();
    void updateSaveEnabled();
    [[nodiscard]] QString typedName() const;
    void copy(const std::optional<FileMark> &replaced);
    void progressed(qint64 copied, qint64 size);
    void copied();
    void copyFailed(CopyFault fault, const QString &reason);
    void askToReplace(const FileMark &taken);
    void backToForm();
    void endCopy();
    void abandonCopy();
    static void tellSaved(toolkit::ApplicationWindow *window, const QString &folderName);
    [[nodiscard]] QString folderName() const;

    QString m_sourcePath;
    QString m_defaultName;
    QString m_defaultExtension;
    QString m_folder;
    bool m_automatic = false;
    SaveName m_name;
    QString m_untouched; // the default name as the field shows it
    SaveName::Fault m_nameFault = SaveName::Fault::None;
    CopyFault m_copyFault = CopyFault::None; // of the last try, until another name is typed
    SaveAsContent *m_content; // the sheet's
    SpaceQuery m_space;
    std::unique_ptr<FileCopy> m_copy;
    std::unique_ptr<toolkit::QueryDialog> m_question;
};

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/toolkit/widget.h"

namespace toolkit {
class Label;
class Layout;
class TextEdit;
} // namespace toolkit

class CopyProgress;

// What stands in the save-as sheet: first the form, then how far the copy is.
class SaveAsContent : public toolkit::Widget
{
    Q_OBJECT

public:
    SaveAsContent();

    // In the language and the digits in force; the error is whoever's tells it.
    void translate();
    void setExtension(const QString &extension); // without its dot; empty: none is shown
    void setFolder(const QString &name);
    void setSpace(qint64 size, qint64 free); // bytes; -1: not known
    // What is wrong, below the field; empty: nothing is. Read out when it comes.
    void setError(const QString &text);

    void showForm();
    void showCopying(const QString &name);
    void setProgress(qint64 copied, qint64 size); // bytes

    [[nodiscard]] toolkit::TextEdit *field() const { return m_field; }
    [[nodiscard]] toolkit::Label *extensionLabel() const { return m_extension; }
    [[nodiscard]] toolkit::Label *errorLabel() const { return m_error; }
    [[nodiscard]] toolkit::Label *folderLabel() const { return m_folder; }
    [[nodiscard]] toolkit::Label *sizeLabel() const { return m_size; }
    [[nodiscard]] toolkit::Label *freeLabel() const { return m_free; }
    [[nodiscard]] CopyProgress *progressBar() const { return m_progress; }
    [[nodiscard]] toolkit::Label *progressLabel() const { return m_status; }
    [[nodiscard]] toolkit::Label *heading() const { return m_heading; }

protected:
    void changeEvent(QEvent *event) override;

private:
    void followName();
    toolkit::Label *addLabel(const QString &styleName, toolkit::Label *label);
    void showFacts();
    void showProgress();
    void arrange();

    toolkit::Layout *m_layout;
    toolkit::Label *m_heading;
    toolkit::Widget *m_row;
    toolkit::TextEdit *m_field;
    toolkit::Label *m_extension;
    toolkit::Label *m_error;
    toolkit::Label *m_folder;
    toolkit::Label *m_size;
    toolkit::Label *m_free;
    CopyProgress *m_progress;
    toolkit::Label *m_status;
    QString m_folderName;
    qint64 m_bytes = -1;
    qint64 m_freeBytes = -1;
    qint64 m_copied = 0;
    qint64 m_whole = 0;
    QString m_copiedName;
    bool m_copying = false;
};

// SPDX-License-Identifier: GPL-3.0-or-later
#include "saveascontent.h"

#include "copyprogress.h"
#include "platform/toolkit/label.h"
#include "platform/toolkit/layout.h"
#include "platform/toolkit/textedit.h"

#include <QEvent>
#include <QLocale>

using namespace Qt::Literals::StringLiterals;
using toolkit::Label;
using toolkit::Layout;
using toolkit::LinearLayoutPolicy;
using toolkit::TextEdit;

namespace {

// As file managers tell it, in the reader's words and digits.
QString shownBytes(qint64 bytes)
{
    return QLocale().formattedDataSize(bytes, 1, QLocale::DataSizeSIFormat);
}

// Is read out as soon as it is seen: who types looks at the field, or at nothing.
class ErrorLabel : public Label
{
public:
    using Label::Label;
    [[nodiscard]] QAccessible::Role accessibleRole() const override { return QAccessible::AlertMessage; }
};

} // namespace

SaveAsContent::SaveAsContent()
    : m_layout(new Layout(this)),
      m_row(new toolkit::Widget(this)),
      m_field(new TextEdit(m_row)),
      m_extension(new Label(m_row))
{
    setStyleName(u"SaveAsContent"_s);
    auto *column = new LinearLayoutPolicy(m_layout, Qt::Vertical);
    column->setStyleName(u"SaveAsColumn"_s);
    m_layout->setPolicy(column);
    m_heading = addLabel(u"CommonHeaderInverted"_s, new Label(this));

    auto *rowLayout = new Layout(m_row);
    auto *row = new LinearLayoutPolicy(rowLayout, Qt::Horizontal);
    row->setStyleName(u"SaveAsRow"_s);
    rowLayout->setPolicy(row);
    m_field->setStyleName(u"SaveAsFieldInverted"_s);
    m_field->setInputMethodCorrectionEnabled(false);
    m_field->setWordPredictionEnabled(false);
    m_extension->setTextFormat(Qt::PlainText);
    m_extension->setStyleName(u"SaveAsExtensionInverted"_s);
    row->addItem(m_field);
    row->addItem(m_extension);
    row->setStretchFactor(m_field, 1);
    row->setAlignment(m_extension, Qt::AlignVCenter);
    column->addItem(m_row);

    m_error = addLabel(u"SaveAsErrorInverted"_s, new ErrorLabel(this));
    m_progress = new CopyProgress(this);
    column->addItem(m_progress);
    m_status = addLabel(u"SaveAsFactInverted"_s, new Label(this));
    m_folder = addLabel(u"SaveAsFactInverted"_s, new Label(this));
    m_size = addLabel(u"SaveAsFactInverted"_s, new Label(this));
    m_free = addLabel(u"SaveAsFactInverted"_s, new Label(this));
    column->addStretch();
    connect(m_field, &TextEdit::textChanged, this, &SaveAsContent::followName);
    setError({});
    showForm();
}

// A name and its ending are read as one, the way the name is written; everything else stays as the page is.
void SaveAsContent::followName()
{
    m_field->setLayoutDirection(layoutDirection());
    m_row->setLayoutDirection(m_field->textDirection());
}

void SaveAsContent::changeEvent(QEvent *event)
{
    toolkit::Widget::changeEvent(event);
    if (event->type() == QEvent::LayoutDirectionChange)
        followName();
}

Label *SaveAsContent::addLabel(const QString &styleName, Label *label)
{
    label->setTextFormat(Qt::PlainText);
    label->setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere); // file names have no blanks
    label->setStyleName(styleName);
    m_layout->policy()->addItem(label);
    return label;
}

void SaveAsContent::arrange()
{
    m_row->setVisible(!m_copying);
    m_error->setVisible(!m_copying && !m_error->text().isEmpty());
    m_progress->setVisible(m_copying);
    m_status->setVisible(m_copying);
    m_folder->setVisible(!m_folder->text().isEmpty());
    for (Label *fact : {m_size, m_free})
        fact->setVisible(!m_copying && !fact->text().isEmpty());
    m_heading->setText(m_copying ? qtTrId("qtn_saveas_copying").arg(m_copiedName)
                                 : qtTrId("qtn_comm_content_save_as"));
    m_progress->setAccessibleName(m_heading->text());
    m_layout->invalidate();
}

void SaveAsContent::translate()
{
    m_field->setAccessibleName(qtTrId("qtn_saveas_name"));
    m_field->setPrompt(qtTrId("qtn_saveas_name"));
    const auto key = [this](const QString &attribute, const QVariant &value) {
        m_field->setInputMethodAttribute(u"/keys"_s, u"actionKey"_s, attribute, value);
    };
    key(u"label"_s, qtTrId("qtn_comm_save"));
    key(u"highlighted"_s, true);
    showProgress();
    showFacts();
}

void SaveAsContent::setExtension(const QString &extension)
{
    // Written as it will be on the disk, also where lines run from right to left.
    m_extension->setText(extension.isEmpty() ? QString() : u"\u2068\u200E."_s + extension + u"\u2069"_s);
    m_extension->setAccessibleName(extension.isEmpty() ? QString() : u"."_s + extension);
    m_extension->setVisible(!extension.isEmpty());
    arrange();
}

void SaveAsContent::showFacts()
{
    const auto told = [](const QString &text, qint64 bytes) {
        return bytes < 0 ? QString() : text.arg(shownBytes(bytes));
    };
    m_folder->setText(m_folderName.isEmpty() ? QString() : qtTrId("qtn_saveas_folder").arg(m_folderName));
    m_size->setText(told(qtTrId("qtn_saveas_size"), m_bytes));
    m_free->setText(told(qtTrId("qtn_saveas_free"), m_freeBytes));
    arrange();
}

void SaveAsContent::setFolder(const QString &name)
{
    m_folderName = name;
    showFacts();
}

void SaveAsContent::setSpace(qint64 size, qint64 free)
{
    m_bytes = size;
    m_freeBytes = free;
    showFacts();
}

void SaveAsContent::setError(const QString &text)
{
    if (text == m_error->text())
        return;
    m_error->setVisible(false); // another one is news, too
    m_error->setText(text);
    arrange();
}

void SaveAsContent::showForm()
{
    m_copying = false;
    arrange();
}

void SaveAsContent::showCopying(const QString &name)
{
    m_copying = true;
    m_copiedName = name;
    setProgress(0, 0);
    arrange();
}

void SaveAsContent::setProgress(qint64 copied, qint64 size)
{
    m_copied = copied;
    m_whole = size;
    showProgress();
}

void SaveAsContent::showProgress()
{
    const QString text = qtTrId("qtn_saveas_progress").arg(shownBytes(m_copied), shownBytes(m_whole));
    m_status->setText(text);
    m_progress->setWords(text);
    m_progress->setFraction(m_whole > 0 ? qreal(m_copied) / qreal(m_whole) : 0);
}

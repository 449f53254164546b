// SPDX-License-Identifier: GPL-3.0-or-later
#include "editmanager.h"

#include "data/trackerinterface.h"
#include "fileopslog.h"
#include "platform/toolkit/application.h"
#include "platform/toolkit/keeptranslated.h"
#include "platform/toolkit/label.h"
#include "platform/toolkit/layout.h"
#include "platform/toolkit/sheet.h"
#include "platform/toolkit/sheetheader.h"
#include "platform/toolkit/textedit.h"

using namespace Qt::Literals::StringLiterals;
using toolkit::Sheet;
using toolkit::TextEdit;

namespace {

constexpr int DisplayedAfterClosing = 1200; // ms

void setActionKey(TextEdit *field, const QString &attribute, const QVariant &value)
{
    field->setInputMethodAttribute(u"/keys"_s, u"actionKey"_s, attribute, value);
}

} // namespace

// The heading above the field.
class EditManager::Content : public toolkit::Widget
{
public:
    Content() : m_heading(new toolkit::Label(this)), m_field(new TextEdit(this))
    {
        setStyleName(u"VideoSheetContent"_s);
        auto *layout = new toolkit::Layout(this);
        auto *policy = new toolkit::LinearLayoutPolicy(layout, Qt::Vertical);
        policy->setContentsMargins(0, 0, 0, 0);
        policy->setSpacing(0);
        layout->setPolicy(policy);
        m_heading->setTextFormat(Qt::PlainText);
        m_heading->setStyleName(u"CommonHeaderInverted"_s);
        m_field->setStyleName(u"VideoSheetTextEditInverted"_s);
        policy->addItem(m_heading);
        policy->addItem(m_field);
        policy->addStretch();
    }

    void setHeading(const QString &text)
    {
        m_heading->setText(text);
        const Qt::Alignment side = text.isRightToLeft() ? Qt::AlignRight : Qt::AlignLeft;
        m_heading->setAlignment(side | Qt::AlignAbsolute | Qt::AlignVCenter);
    }

    [[nodiscard]] TextEdit *field() const { return m_field; }

private:
    toolkit::Label *m_heading;
    TextEdit *m_field;
};

EditManager::EditManager(QObject *parent)
    : QObject(parent),
      m_store(TrackerInterface::instance()),
      m_sheet(std::make_unique<Sheet>(Sheet::Extent::Full)),
      m_displayedTimer(this)
{
    m_sheet->setStyleName(u"Inverted"_s);
    createContent();
    createHeader();
    toolkit::keepTranslated(this, [this] { translate(); });
    m_displayedTimer.setObjectName(u"displayedTimer"_s);
    m_displayedTimer.setSingleShot(true);
    m_displayedTimer.setInterval(DisplayedAfterClosing);
    connect(&m_displayedTimer, &QTimer::timeout, this, &EditManager::editDisplayedTimeout);
}

EditManager::~EditManager()
{
    m_sheet->disconnect(this);
    m_textEdit->disconnect(this);
}

void EditManager::createContent()
{
    m_content = new Content;
    m_textEdit = m_content->field();
    connect(m_textEdit, &TextEdit::returnPressed, this, &EditManager::sheetAccepted);
    connect(m_textEdit, &TextEdit::textChanged, this, &EditManager::textChanged);
    m_sheet->setCentralWidget(m_content);
}

void EditManager::createHeader()
{
    m_sheet->header()->setStyleName(u"Inverted"_s);
    connect(m_sheet.get(), &Sheet::rejected, this, &EditManager::sheetRejected);
    connect(m_sheet.get(), &Sheet::accepted, this, &EditManager::sheetAccepted);
    // It may be gone with its window; after every other end the mark is being timed by then.
    connect(
        m_sheet.get(), &Sheet::disappeared, this,
        [this] {
            if (m_sheetDisplayed && !m_displayedTimer.isActive() && !m_sheet->isDisplayed())
                leave();
        },
        Qt::QueuedConnection);
    setActionKey(m_textEdit, u"highlighted"_s, true);
    setActionKey(m_textEdit, u"enabled"_s, m_saveEnabled);
}

void EditManager::translate()
{
    m_sheet->setAccessibleName(qtTrId("qtn_vide_rename_title"));
    m_textEdit->setAccessibleName(qtTrId("qtn_vide_access_title"));
    m_content->setHeading(qtTrId("qtn_vide_rename_title"));
    m_sheet->setNegativeAction(qtTrId("qtn_comm_cancel"));
    m_sheet->setPositiveAction(qtTrId("qtn_comm_save"));
    setActionKey(m_textEdit, u"label"_s, qtTrId("qtn_comm_save"));
}

void EditManager::showEditSheet(const QString &urn)
{
    m_urn = urn;
    m_originalTitle.clear();
    connect(m_store, &TrackerInterface::titleFinished, this, &EditManager::titleReady, Qt::UniqueConnection);
    m_queryId = m_store->title(urn);
    if (m_queryId == 0)
        qCWarning(fileOpsLog) << "void EditManager::showEditSheet(const QString&)"
                              << "Tracker query failed";
}

void EditManager::titleReady(QString title, int id)
{
    if (id == 0 || id != m_queryId)
        return;
    m_displayedTimer.stop(); // of the time before
    m_sheetDisplayed = true;
    m_queryId = 0;
    disconnect(m_store, &TrackerInterface::titleFinished, this, &EditManager::titleReady);
    toolkit::ApplicationWindow *window = toolkit::Application::activeApplicationWindow();
    if (!window) {
        qCWarning(fileOpsLog) << "Kestrel: Unable to get active window.";
        m_displayedTimer.start(); // there is no sheet whose end would clear the mark
        return;
    }
    m_textEdit->setText(title);
    // As the field shows it, on one line: what nobody touched is not written.
    m_originalTitle = m_textEdit->text();
    textChanged();
    m_sheet->appear(window);
    m_textEdit->setFocus(Qt::OtherFocusReason);
}

void EditManager::textChanged()
{
    setSaveEnabled(!m_textEdit->text().simplified().isEmpty());
}

void EditManager::setSaveEnabled(bool enabled)
{
    if (enabled == m_saveEnabled)
        return;
    m_saveEnabled = enabled;
    setActionKey(m_textEdit, u"enabled"_s, enabled);
    m_sheet->setPositiveActionEnabled(enabled);
}

void EditManager::sheetAccepted()
{
    m_sheet->dismiss();
    m_textEdit->clearFocus(); // what is still being composed becomes text
    const QString text = m_textEdit->text();
    if (!text.simplified().isEmpty() && text != m_originalTitle)
        m_store->setTitle(m_urn, text);
    leave();
    Q_EMIT editDone();
}

void EditManager::sheetRejected()
{
    closeSheet();
    Q_EMIT editDone();
}

void EditManager::closeSheet()
{
    m_queryId = 0;
    leave();
    m_sheet->dismiss();
}

void EditManager::leave()
{
    m_textEdit->setText(QString());
    m_urn.clear();
    if (m_sheetDisplayed)
        m_displayedTimer.start();
}

void EditManager::editDisplayedTimeout()
{
    m_sheetDisplayed = false;
}

// SPDX-License-Identifier: GPL-3.0-or-later
#include "sharesheet.h"

#include "platform/toolkit/button.h"
#include "platform/toolkit/keeptranslated.h"
#include "platform/toolkit/label.h"
#include "platform/toolkit/layout.h"
#include "platform/toolkit/sheetheader.h"

#include <QGraphicsScene>

using namespace Qt::Literals::StringLiterals;
using toolkit::Button;
using toolkit::Label;
using toolkit::Layout;
using toolkit::LinearLayoutPolicy;
using toolkit::Widget;

namespace {

// One row below the other.
class Column : public Widget
{
public:
    Column() : m_layout(new Layout(this)), m_policy(new LinearLayoutPolicy(m_layout, Qt::Vertical))
    {
        m_policy->setStyleName(u"SheetRows"_s);
        m_layout->setPolicy(m_policy);
    }

    Button *addRow(const QString &text, const QString &iconId)
    {
        auto *row = new Button(text, this);
        row->setStyleName(u"SheetRow"_s);
        row->setIconId(iconId);
        m_policy->addItem(row);
        return row;
    }

    void addText(const QString &text)
    {
        auto *label = new Label(this);
        label->setTextFormat(Qt::PlainText);
        label->setStyleName(u"SheetText"_s);
        label->setText(text);
        m_policy->addItem(label);
    }

private:
    Layout *m_layout;
    LinearLayoutPolicy *m_policy;
};

QString iconOf(ShareSheet::Target target)
{
    switch (target) {
    case ShareSheet::Target::Email:
        return u"icon-m-share-email"_s;
    case ShareSheet::Target::OpenWith:
        return u"icon-m-share-open-with"_s;
    case ShareSheet::Target::Bluetooth:
        return u"icon-m-share-bluetooth"_s;
    case ShareSheet::Target::CopyAddress:
        return u"icon-m-share-copy"_s;
    case ShareSheet::Target::StopSending:
        return u"icon-m-share-stop"_s;
    }
    return {};
}

QString iconOf(const BluetoothDevice &device)
{
    if (device.icon == "phone"_L1)
        return u"icon-m-share-phone"_s;
    if (device.icon == "computer"_L1)
        return u"icon-m-share-computer"_s;
    return u"icon-m-share-bluetooth"_s;
}

} // namespace

ShareSheet::ShareSheet()
{
    toolkit::keepTranslated(this, [this] { translate(); });
}

// The rows are the same in another language: whoever was on one stays there.
void ShareSheet::translate()
{
    qsizetype current = 0;
    while (current < m_rows.size() && !m_rows.at(current)->hasFocus())
        ++current;
    if (m_choosingDevice)
        showDevices();
    else
        showTargets();
    if (current < m_rows.size())
        m_rows.at(current)->setFocus(Qt::OtherFocusReason);
}

void ShareSheet::renameSubject(const QString &name)
{
    m_subject = name;
    if (!m_choosingDevice)
        setTitle(name);
}

void ShareSheet::setSubject(const QString &name)
{
    m_subject = name;
    showTargets();
}

void ShareSheet::setTargets(const QList<Target> &targets)
{
    if (targets == m_targets)
        return;
    m_targets = targets;
    if (!m_choosingDevice || !targets.contains(Target::Bluetooth))
        showTargets();
}

void ShareSheet::setDevices(const QList<BluetoothDevice> &devices)
{
    if (devices == m_devices)
        return;
    m_devices = devices;
    if (m_choosingDevice)
        showDevices();
}

void ShareSheet::setReceiver(const QString &name)
{
    if (name == m_receiver)
        return;
    m_receiver = name;
    if (!m_choosingDevice)
        showTargets();
}

QString ShareSheet::textOf(Target target) const
{
    switch (target) {
    case Target::Email:
        return qtTrId("qtn_share_email");
    case Target::OpenWith:
        return qtTrId("qtn_share_open_with");
    case Target::Bluetooth:
        return qtTrId("qtn_share_bluetooth");
    case Target::CopyAddress:
        return qtTrId("qtn_share_copy_address");
    case Target::StopSending:
        return qtTrId("qtn_share_stop").arg(m_receiver);
    }
    return {};
}

void ShareSheet::escape()
{
    if (m_choosingDevice)
        showTargets();
    else
        reject();
}

void ShareSheet::choose(Target target)
{
    m_target = target;
    if (target == Target::Bluetooth)
        showDevices();
    else
        accept();
}

void ShareSheet::showTargets()
{
    m_choosingDevice = false;
    m_rows.clear();
    header()->setBackVisible(false);
    setTitle(m_subject);
    auto *column = new Column;
    for (const Target target : std::as_const(m_targets)) {
        Button *row = column->addRow(textOf(target), iconOf(target));
        connect(row, &Button::clicked, this, [this, target] { choose(target); });
        m_rows.append(row);
    }
    rebuild(column);
}

void ShareSheet::showDevices()
{
    m_choosingDevice = true;
    m_rows.clear();
    header()->setBackVisible(true);
    setTitle(qtTrId("qtn_share_bluetooth"));
    auto *column = new Column;
    for (const BluetoothDevice &device : std::as_const(m_devices)) {
        Button *row = column->addRow(device.name, iconOf(device));
        connect(row, &Button::clicked, this, [this, device] {
            m_device = device;
            accept();
        });
        m_rows.append(row);
    }
    if (m_devices.isEmpty())
        column->addText(qtTrId("qtn_share_no_devices"));
    rebuild(column);
}

// Whoever goes by keys goes on by keys.
void ShareSheet::rebuild(Widget *content)
{
    const QGraphicsItem *focus = scene() != nullptr ? scene()->focusItem() : nullptr;
    const bool byKeys = focus != nullptr && focus != this && isAncestorOf(focus);
    setCentralWidget(content);
    if (!isDisplayed())
        return;
    if (byKeys && !m_rows.isEmpty())
        m_rows.first()->setFocus(Qt::TabFocusReason);
    else if (byKeys)
        setFocus(Qt::OtherFocusReason);
}

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "bluetoothdevice.h"
#include "platform/toolkit/sheet.h"

#include <QList>

namespace toolkit {
class Button;
}

// The sheet that asks with whom or what to share: a row a target; for Bluetooth a second step with a row a
// device, from which back leads to the first. What was chosen is told by accepted().
class ShareSheet : public toolkit::Sheet
{
    Q_OBJECT

public:
    enum class Target { Email, OpenWith, Bluetooth, CopyAddress, StopSending };

    ShareSheet();

    // Begins at the first step.
    void setSubject(const QString &name);
    // Its name is another, where the sheet stands.
    void renameSubject(const QString &name);
    // In this order. While the sheet is up, too: rows come and go.
    void setTargets(const QList<Target> &targets);
    void setDevices(const QList<BluetoothDevice> &devices);
    // The device that is named by the row which stops sending to it.
    void setReceiver(const QString &name);

    [[nodiscard]] QList<Target> targets() const { return m_targets; }
    [[nodiscard]] bool isChoosingDevice() const { return m_choosingDevice; }
    // Valid from accepted() on.
    [[nodiscard]] Target chosenTarget() const { return m_target; }
    [[nodiscard]] BluetoothDevice chosenDevice() const { return m_device; }
    // The rows that are seen, from above.
    [[nodiscard]] QList<toolkit::Button *> rows() const { return m_rows; }

protected:
    void escape() override;

private:
    [[nodiscard]] QString textOf(Target target) const;
    void choose(Target target);
    void showTargets();
    void showDevices();
    void rebuild(toolkit::Widget *content);
    void translate();

    QString m_subject;
    QString m_receiver;
    QList<Target> m_targets;
    QList<BluetoothDevice> m_devices;
    QList<toolkit::Button *> m_rows;
    Target m_target = Target::CopyAddress;
    BluetoothDevice m_device;
    bool m_choosingDevice = false;
};

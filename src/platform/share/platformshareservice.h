// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/system/usernotice.h"
#include "shareitem.h"
#include "shareportal.h"
#include "sharesheet.h"
#include "sharetargets.h"

#include <QDBusConnection>
#include <QDBusUnixFileDescriptor>
#include <QMetaObject>
#include <QObject>

#include <functional>
#include <memory>

class ObexPush;

// The platform's share service: asks in a sheet over the page on top, then hands what is shared to the
// portal, to bluez or to the clipboard. Failures are told in a banner; what the person breaks off is not.
class PlatformShareService : public QObject, public ShareService
{
    Q_OBJECT

public:
    PlatformShareService(const QDBusConnection &sessionBus, const QDBusConnection &systemBus,
                         QObject *parent = nullptr);
    ~PlatformShareService() override;

    // For ShareService::setFactory(): on the buses of the session and the system.
    [[nodiscard]] static ShareService *createOnDefaultBuses();

    // Decoded addresses, see ShareItem. A call while the sheet is up shares these instead.
    void share(const QStringList &addresses) override;

    [[nodiscard]] ShareSheet *sheet() const { return m_sheet.get(); }
    [[nodiscard]] const ShareTargets &targets() const { return m_targets; }

private:
    using Files = QList<QDBusUnixFileDescriptor>;

    void offerTargets();
    void followPage(toolkit::ApplicationWindow *window);
    void chosen();
    void compose(const ShareItems &items);
    void openWith(const ShareItem &item);
    void send(const ShareItems &items, const BluetoothDevice &device);
    void push(const QStringList &paths, const BluetoothDevice &device);
    void forget(ObexPush *push);
    void stopSending();
    void copy(const ShareItems &items);
    void withFiles(const ShareItems &items, const std::function<void(const Files &files)> &then);
    void run(PortalRequest *request, const QString &failure);

    QDBusConnection m_session;
    ShareTargets m_targets;
    SharePortal m_portal;
    ShareItems m_items;
    QList<ObexPush *> m_pushes; // under way; the last is the one that the sheet can stop
    std::unique_ptr<ShareSheet> m_sheet;
    QMetaObject::Connection m_pageLeaves;
    QMetaObject::Connection m_pageChanges;
};

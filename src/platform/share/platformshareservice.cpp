// SPDX-License-Identifier: GPL-3.0-or-later
#include "platformshareservice.h"

#include "fileopener.h"
#include "obexpush.h"
#include "platform/toolkit/applicationpage.h"
#include "platform/toolkit/applicationwindow.h"
#include "platform/toolkit/keeptranslated.h"
#include "platform/toolkit/scenemanager.h"
#include "sharebanner.h"
#include "sharelog.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QLocale>
#include <QMimeData>

using namespace Qt::Literals::StringLiterals;
using toolkit::ApplicationPage;
using toolkit::ApplicationWindow;

namespace {

QString subjectOf(const ShareItems &items)
{
    if (items.size() == 1)
        return items.first().name();
    return qtTrId("qtn_share_items", int(items.size()));
}

} // namespace

PlatformShareService::PlatformShareService(const QDBusConnection &sessionBus,
                                           const QDBusConnection &systemBus, QObject *parent)
    : QObject(parent),
      m_session(sessionBus),
      m_targets(sessionBus, systemBus, this),
      m_portal(sessionBus)
{
    connect(&m_targets, &ShareTargets::changed, this, &PlatformShareService::offerTargets);
    toolkit::keepTranslated(this, [this] {
        if (m_sheet != nullptr && !m_items.isEmpty())
            m_sheet->renameSubject(subjectOf(m_items));
    });
}

PlatformShareService::~PlatformShareService() = default;

ShareService *PlatformShareService::createOnDefaultBuses()
{
    return new PlatformShareService(QDBusConnection::sessionBus(), QDBusConnection::systemBus());
}

void PlatformShareService::share(const QStringList &addresses)
{
    const ShareItems items = shareItems(addresses);
    ApplicationWindow *window = ApplicationWindow::current();
    if (items.isEmpty() || window == nullptr) {
        qCWarning(shareLog, "nothing is shared: %s", window == nullptr ? "no window" : "no address");
        return;
    }
    m_items = items;
    if (m_sheet == nullptr) {
        m_sheet = std::make_unique<ShareSheet>();
        connect(m_sheet.get(), &ShareSheet::accepted, this, &PlatformShareService::chosen);
    }
    offerTargets();
    m_sheet->setSubject(subjectOf(items));
    m_sheet->appear(window);
    followPage(window);
}

void PlatformShareService::offerTargets()
{
    if (m_sheet == nullptr)
        return;
    const bool onlyFiles = streamAddresses(m_items).isEmpty();
    QList<ShareSheet::Target> offered;
    if (m_targets.hasEmail())
        offered.append(ShareSheet::Target::Email);
    if (m_targets.hasOpenWith() && m_items.size() == 1)
        offered.append(ShareSheet::Target::OpenWith);
    if (m_targets.hasBluetooth() && onlyFiles)
        offered.append(ShareSheet::Target::Bluetooth);
    offered.append(ShareSheet::Target::CopyAddress);
    if (!m_pushes.isEmpty()) {
        offered.append(ShareSheet::Target::StopSending);
        m_sheet->setReceiver(m_pushes.last()->device().name);
    }
    m_sheet->setDevices(m_targets.bluez().devices());
    m_sheet->setTargets(offered);
}

// The question goes with the page that it was asked on.
void PlatformShareService::followPage(ApplicationWindow *window)
{
    disconnect(m_pageLeaves);
    disconnect(m_pageChanges);
    if (const ApplicationPage *page = window->sceneManager()->visiblePage())
        m_pageLeaves = connect(page, &ApplicationPage::disappeared, m_sheet.get(), &ShareSheet::dismiss);
    m_pageChanges = connect(window, &ApplicationWindow::pageChanged, m_sheet.get(), &ShareSheet::dismiss);
}

void PlatformShareService::chosen()
{
    switch (m_sheet->chosenTarget()) {
    case ShareSheet::Target::Email:
        compose(m_items);
        break;
    case ShareSheet::Target::OpenWith:
        openWith(m_items.first());
        break;
    case ShareSheet::Target::Bluetooth:
        send(m_items, m_sheet->chosenDevice());
        break;
    case ShareSheet::Target::CopyAddress:
        copy(m_items);
        break;
    case ShareSheet::Target::StopSending:
        stopSending();
        break;
    }
}

void PlatformShareService::withFiles(const ShareItems &items,
                                     const std::function<void(const Files &files)> &then)
{
    const QStringList paths = filePaths(items);
    if (paths.isEmpty()) {
        then({});
        return;
    }
    auto *opener = new FileOpener(paths, this);
    connect(opener, &FileOpener::opened, this, [opener, then](const Files &files) {
        opener->deleteLater();
        then(files);
    });
    connect(opener, &FileOpener::failed, this, [opener](const QString &path, const QString &reason) {
        opener->deleteLater();
        qCWarning(shareLog, "%ls cannot be shared: %ls", qUtf16Printable(path), qUtf16Printable(reason));
        ShareBanner::show(qtTrId("qtn_share_error_file"));
    });
    opener->start();
}

void PlatformShareService::run(PortalRequest *request, const QString &failure)
{
    connect(request, &PortalRequest::failed, this, [failure](const QString &reason) {
        qCWarning(shareLog, "the portal did not share: %ls", qUtf16Printable(reason));
        ShareBanner::show(failure);
    });
    request->start();
}

void PlatformShareService::compose(const ShareItems &items)
{
    withFiles(items, [this, items](const Files &files) {
        const QString body = streamAddresses(items).join(u'\n');
        run(m_portal.composeEmail(windowHandle(ApplicationWindow::current()), subjectOf(items), body, files,
                                  this),
            qtTrId("qtn_share_error_email"));
    });
}

void PlatformShareService::openWith(const ShareItem &item)
{
    withFiles({item}, [this, item](const Files &files) {
        const QString window = windowHandle(ApplicationWindow::current());
        run(files.isEmpty() ? m_portal.openAddress(window, item.text, this)
                            : m_portal.openFile(window, files.first(), this),
            qtTrId("qtn_share_error_open"));
    });
}

void PlatformShareService::send(const ShareItems &items, const BluetoothDevice &device)
{
    // The service opens the files itself, by name: ours only tell now what could not be read.
    withFiles(items, [this, items, device](const Files &) { push(filePaths(items), device); });
}

void PlatformShareService::push(const QStringList &paths, const BluetoothDevice &device)
{
    auto *push = new ObexPush(m_session, device, paths, this);
    const auto banner = std::make_shared<ShareBanner>();
    const auto shownQuarter = std::make_shared<int>(0);
    banner->tell(qtTrId("qtn_share_sending").arg(device.name));
    connect(push, &ObexPush::progress, this, [banner, shownQuarter, device](int percent) {
        const QString text
            = qtTrId("qtn_share_sending_percent").arg(device.name, QLocale().toString(percent));
        if (const int quarter = percent / 25; std::exchange(*shownQuarter, quarter) != quarter)
            banner->tell(text);
        else
            banner->news(text);
    });
    connect(push, &ObexPush::finished, this, [this, push, banner, device] {
        banner->tell(qtTrId("qtn_share_sent").arg(device.name));
        forget(push);
    });
    connect(push, &ObexPush::failed, this, [this, push, banner, device](const QString &reason) {
        qCWarning(shareLog, "not sent to %ls: %ls", qUtf16Printable(device.address), qUtf16Printable(reason));
        banner->tell(qtTrId("qtn_share_error_bluetooth").arg(device.name));
        forget(push);
    });
    m_pushes.append(push);
    push->start();
}

void PlatformShareService::forget(ObexPush *push)
{
    m_pushes.removeOne(push);
    offerTargets();
}

void PlatformShareService::stopSending()
{
    if (m_pushes.isEmpty())
        return; // it came to its end while the sheet was up
    ObexPush *push = m_pushes.takeLast();
    ShareBanner::show(qtTrId("qtn_share_stopped").arg(push->device().name));
    push->stop();
    offerTargets();
}

void PlatformShareService::copy(const ShareItems &items)
{
    QGuiApplication::clipboard()->setMimeData(mimeDataOf(items));
    ShareBanner::show(qtTrId("qtn_share_copied"));
}

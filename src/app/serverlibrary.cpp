// SPDX-License-Identifier: GPL-3.0-or-later
#include "serverlibrary.h"

#include "data/allvideosmodel.h"
#include "data/storenews.h"
#include "data/trackeranswers.h"
#include "data/trackerinterface.h"
#include "data/videoinfo.h"
#include "platform/servers/changepoll.h"
#include "platform/servers/serversettings.h"
#include "platform/system/background.h"
#include "platform/system/devicestate.h"
#include "platform/toolkit/applicationwindow.h"

#include <chrono>
#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int DisplayOff = 0;
constexpr auto RetryInterval = std::chrono::seconds(30);

ServerSettings settingsOf(const QString &driver)
{
    return driver == "QVIRTUOSO"_L1 ? ServerSettings::ofVirtuoso() : ServerSettings::ofEndpoint();
}

ChangePoll *makePoll(const QString &driver, QObject *parent)
{
    ChangePoll::Options options;
    options.driver = driver;
    options.interval = [driver] { return settingsOf(driver).pollInterval; };
    return new ChangePoll(options, parent);
}

LibrarySnapshot snapshotOf(const RowTable &table)
{
    LibrarySnapshot snapshot;
    for (int row = 0; row < table.rows(); ++row) {
        const QString fileName = table.text(row, VideoColumn::FileName);
        snapshot.add({table.utf8(row, VideoColumn::TrackerId).toInt(),
                      TrackerAnswers::titleOrBaseName(table.text(row, VideoColumn::Title), fileName),
                      table.text(row, VideoColumn::PlayPosition), fileName});
    }
    return snapshot;
}

} // namespace

ServerLibrary::ServerLibrary(const QString &driver, QObject *parent)
    : QObject(parent),
      m_poll(makePoll(driver, this))
{
    ChangeNotifier::setSource([this](ChangeNotifier *notifier) { m_poll->attach(notifier); });
    connect(m_poll, &ChangePoll::reachableChanged, this, &ServerLibrary::updateReachable);
    connect(&m_snapshot, &QFutureWatcher<LibrarySnapshot>::finished, this, &ServerLibrary::takeSnapshot);
    m_retry.setObjectName(u"listRetry"_s);
    m_retry.setSingleShot(true);
    m_retry.setInterval(RetryInterval);
    connect(&m_retry, &QTimer::timeout, this, &ServerLibrary::askForListAgain);
}

ServerLibrary::~ServerLibrary()
{
    ChangeNotifier::setSource({});
}

void ServerLibrary::follow(TrackerInterface *store)
{
    m_store = store;
    const StoreNews *news = store->news();
    connect(news, &StoreNews::listLoaded, this, &ServerLibrary::listLoaded);
    connect(news, &StoreNews::listFailed, this, &ServerLibrary::listFailed);
    connect(news, &StoreNews::propertyStored, this, &ServerLibrary::propertyStored);
    connect(news, &StoreNews::reachableChanged, this, &ServerLibrary::updateReachable);
}

void ServerLibrary::follow(toolkit::ApplicationWindow *window)
{
    using toolkit::ApplicationWindow;
    connect(window, &ApplicationWindow::displayEntered, this, [this] {
        m_windowOnDisplay = true;
        updateVisible();
    });
    connect(window, &ApplicationWindow::displayExited, this, [this] {
        m_windowOnDisplay = false;
        updateVisible();
    });
    m_windowOnDisplay = window->isOnDisplay();
    const DisplayWatcher *display = DisplayWatcher::create(this);
    connect(display, &DisplayWatcher::stateChanged, this,
            [this](int state) { setDisplayOn(state != DisplayOff); });
    setDisplayOn(display->state() != DisplayOff);
}

void ServerLibrary::setDisplayOn(bool on)
{
    m_displayOn = on;
    updateVisible();
}

void ServerLibrary::updateVisible()
{
    m_poll->setVisible(m_windowOnDisplay && m_displayOn);
}

void ServerLibrary::listLoaded(const std::shared_ptr<const RowTable> &table)
{
    m_awaitsSnapshot = table->rows() > AllVideosModel::RowsAtOnce;
    if (m_awaitsSnapshot)
        m_snapshot.setFuture(inBackground([table] { return snapshotOf(*table); }));
    else
        m_poll->setList(snapshotOf(*table));
    m_retry.stop();
    m_hasList = true;
    m_listFailed = false;
    updateReachable();
}

void ServerLibrary::takeSnapshot()
{
    if (!std::exchange(m_awaitsSnapshot, false))
        return;
    QFuture<LibrarySnapshot> snapshot = m_snapshot.future();
    m_poll->setList(snapshot.takeResult());
}

// The server may be there and not willing, or still starting. One that is away makes the store ask again by
// itself as soon as it is back.
void ServerLibrary::listFailed()
{
    m_retry.start();
    if (m_hasList)
        return; // what is shown stays, but somebody asked for another since it is not what the server has
    m_listFailed = true;
    updateReachable();
}

void ServerLibrary::askForListAgain()
{
    if (m_store->news()->isReachable())
        m_store->allVideos(0);
    else
        m_retry.start();
}

void ServerLibrary::propertyStored(const QString &urn, const QString &property)
{
    if (property == "nie:title"_L1)
        m_poll->tellWritten(urn, LibrarySnapshot::Title);
    else if (property == "nmm:runTime"_L1)
        m_poll->tellWritten(urn, LibrarySnapshot::Position);
}

void ServerLibrary::updateReachable()
{
    const bool reachable
        = m_poll->isReachable() && (!m_store || m_store->news()->isReachable()) && !m_listFailed;
    if (reachable == m_isReachable)
        return;
    m_isReachable = reachable;
    Q_EMIT reachableChanged(reachable);
}

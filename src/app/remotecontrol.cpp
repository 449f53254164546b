// SPDX-License-Identifier: GPL-3.0-or-later
#include "remotecontrol.h"

#include "applicationcontroller.h"
#include "data/thumbnailhelper.h"
#include "data/trackerinterface.h"
#include "data/videoconstants.h"
#include "platform/media/addresstext.h"
#include "platform/media/mediabackend.h"
#include "platform/media/videowidget.h"
#include "platform/remote/mprisserver.h"
#include "player/playercontroller.h"
#include "player/playerpage.h"

#include <QDBusConnection>
#include <QUrl>

using namespace std::chrono_literals;
using namespace Qt::Literals::StringLiterals;

namespace {

constexpr auto OpeningLimit = 5s; // longer than the store is waited for
constexpr int WholePercent = 100;

RemoteIdentity identity()
{
    return {u"com.harrow.Kestrel"_s,
            qtTrId("qtn_vide_collection"),
            u"com.harrow.Kestrel"_s,
            {u"file"_s, u"http"_s, u"https"_s, u"rtsp"_s, u"mms"_s},
            {u"video/mp4"_s, u"video/quicktime"_s, u"video/3gpp"_s, u"video/3gpp2"_s, u"video/x-matroska"_s,
             u"video/webm"_s, u"video/x-msvideo"_s, u"video/mp2t"_s, u"video/mpeg"_s, u"video/ogg"_s,
             u"video/x-flv"_s, u"video/x-ms-wmv"_s, u"video/x-ms-asf"_s, u"video/x-m4v"_s}};
}

// A video that is being opened counts as playing: that is what was asked, and what a second press takes back.
RemoteState::Status statusOf(AvloRenderer::State state)
{
    switch (state) {
    case AvloRenderer::Playing:
    case AvloRenderer::Transitioning:
        return RemoteState::Status::Playing;
    case AvloRenderer::Paused:
        return RemoteState::Status::Paused;
    case AvloRenderer::Stopped:
        break;
    }
    return RemoteState::Status::Stopped;
}

QString titleOf(const VideoInfo &video)
{
    if (!video.title.isEmpty())
        return video.title;
    return video.fileName.isEmpty() ? QUrl(video.url).fileName() : video.fileName;
}

RemoteTime remoteTime(MediaTime time)
{
    return std::chrono::duration_cast<RemoteTime>(time);
}

} // namespace

RemoteControl::RemoteControl(ApplicationController *controller)
    : QObject(controller),
      m_controller(controller)
{
    const auto *thumbnails = ThumbnailHelper::instance();
    connect(thumbnails, &ThumbnailHelper::pauseThumbnailCreated, this, &RemoteControl::updatePicture);
    connect(thumbnails, &ThumbnailHelper::newThumbnailReady, this, &RemoteControl::updatePicture);
}

RemoteControl::~RemoteControl() = default;

QString RemoteControl::serviceName() const
{
    return m_server ? m_server->serviceName() : QString();
}

void RemoteControl::setPlayer(PlayerController *player, VideoWidget *videoWidget)
{
    m_player = player;
    m_videoWidget = videoWidget;
    // Told at every begin of a video.
    connect(player, &PlayerController::isIndexedByTracker, this, &RemoteControl::beginVideo);
    connect(videoWidget, &VideoWidget::rendererReady, this, &RemoteControl::followBackend);
    // The title, which the player has taken by then.
    connect(TrackerInterface::instance(), qOverload<QList<QStringList>>(&TrackerInterface::videosChanged),
            this, &RemoteControl::update);
    followBackend();
}

void RemoteControl::followBackend()
{
    MediaBackend *media = backend();
    if (!media)
        return;
    connect(media, &MediaBackend::stateChanged, this, &RemoteControl::stateChanged);
    connect(media, &MediaBackend::durationChanged, this, &RemoteControl::update);
    connect(media, &MediaBackend::videoSizeChanged, this, &RemoteControl::update);
    connect(media, &MediaBackend::volumeChanged, this, &RemoteControl::update);
    connect(media, &MediaBackend::seekFinished, this, &RemoteControl::announceJump);
    connect(media, &MediaBackend::bufferingChanged, this, &RemoteControl::bufferingChanged);
    update();
}

void RemoteControl::beginVideo()
{
    m_opening = QDeadlineTimer();
    m_startAnnounced = false;
    m_stalled = false;
    ++m_state.track;
    m_state.artUrl.clear();
    if (!m_server) // the name of the program is translated by now
        m_server.reset(new MprisServer(QDBusConnection::sessionBus(), identity(), this));
    updatePicture(m_player->currentVideo().url);
    update();
}

void RemoteControl::update()
{
    if (!m_server || !m_player)
        return;
    const VideoInfo &video = m_player->currentVideo();
    const MediaBackend *media = backend();
    // Until the back end was told of the new video it knows the one before.
    const bool loaded = media && media->uri() == video.url;
    m_state.title = titleOf(video);
    if (loaded && media->duration() > MediaTime::zero())
        m_state.length = remoteTime(media->duration());
    else if (m_state.url != video.url)
        m_state.length = RemoteTime(1s) * video.duration;
    m_state.url = video.url;
    m_state.status = statusOf(media ? media->state() : AvloRenderer::Stopped);
    m_state.canSeek = loaded && media->isSeekable() && media->state() != AvloRenderer::Stopped;
    if (media)
        m_state.volume = media->volume();
    RemoteState told = m_state;
    told.url = withoutCredentials(told.url); // everybody on the bus reads it
    m_server->setState(told);
}

// The still of the paused frame, where there is one, else the picture of the list.
void RemoteControl::updatePicture(const QString &videoUrl)
{
    if (!m_player || videoUrl != m_player->currentVideo().url)
        return;
    const QString path = ThumbnailHelper::instance()->thumbnailPath(videoUrl, THUMBNAIL_FLAVOR);
    m_state.artUrl = path.isEmpty() ? QString() : QUrl::fromLocalFile(path).toString(QUrl::FullyEncoded);
    update();
}

void RemoteControl::stateChanged()
{
    update();
    const AvloRenderer::State state = backend()->state();
    if (!m_startAnnounced && (state == AvloRenderer::Playing || state == AvloRenderer::Paused))
        announceJump();
}

// While a stream waits for data, listeners believe that it goes on.
void RemoteControl::bufferingChanged(float percent)
{
    const bool stalled = percent < WholePercent;
    if (m_stalled && !stalled)
        announceJump();
    m_stalled = stalled;
}

void RemoteControl::announceJump()
{
    if (!m_server)
        return;
    m_startAnnounced = true;
    update();
    m_server->announceJump(position());
}

MediaBackend *RemoteControl::backend() const
{
    return m_videoWidget ? m_videoWidget->backend() : nullptr;
}

RemoteTime RemoteControl::position() const
{
    return backend() ? remoteTime(backend()->position()) : RemoteTime::zero();
}

RemoteTime RemoteControl::heading() const
{
    return backend() ? remoteTime(backend()->heading()) : RemoteTime::zero();
}

void RemoteControl::raise()
{
    m_controller->raiseToTop();
}

void RemoteControl::quit()
{
    m_controller->stopAndQuit();
}

bool RemoteControl::isPlayerPageOnTop() const
{
    const auto &pages = m_controller->pageStack();
    return !pages.isEmpty() && pages.last() == m_controller->playerPage();
}

// What was stopped, or left for the list, is played as if it was tapped there: from where it was left.
void RemoteControl::play()
{
    if (!m_player || !m_opening.hasExpired() || !m_controller->admitsPlayback(m_player->hasPicture()))
        return;
    if (isPlayerPageOnTop() && m_controller->playerPage()->isDeleting())
        return;
    VideoInfo video = m_player->currentVideo();
    if (isPlayerPageOnTop() && m_player->state() != AvloRenderer::Stopped)
        m_player->resume();
    else if (!video.url.isEmpty())
        m_controller->play(video);
}

void RemoteControl::pause()
{
    if (m_player && statusOf(m_player->state()) == RemoteState::Status::Playing)
        m_player->pause();
}

// As the back button does: the place is kept and the list comes back; then nothing is left open.
void RemoteControl::stop()
{
    if (!m_player || m_player->state() == AvloRenderer::Stopped)
        return;
    if (!isPlayerPageOnTop() || m_player->stopAtEnd()) {
        m_player->stop();
        return;
    }
    PlayerPage *page = m_controller->playerPage();
    connect(
        page, &PlayerPage::savingReady, this,
        [this, track = m_state.track] {
            if (m_player && track == m_state.track)
                m_player->stop();
        },
        Qt::SingleShotConnection);
    page->backButton();
}

void RemoteControl::seekTo(RemoteTime position)
{
    if (backend())
        backend()->seek(position, MediaBackend::SeekPrecision::Exact);
}

void RemoteControl::setVolume(double volume)
{
    if (backend())
        backend()->setVolume(volume);
}

void RemoteControl::open(const QString &uri)
{
    m_opening.setRemainingTime(OpeningLimit);
    m_controller->serviceFwPlayRequest(uri, 0);
}

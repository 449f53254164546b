// SPDX-License-Identifier: GPL-3.0-or-later
#include "playercontrols.h"

#include "controlslider.h"
#include "linemarks.h"
#include "percenttext.h"
#include "timebubble.h"
#include "timetext.h"
#include "volumeicon.h"

#include <platform/toolkit/button.h>
#include <platform/toolkit/keeptranslated.h>
#include <platform/toolkit/locale.h>
#include <platform/toolkit/theme.h>

#include <QCoreApplication>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr qreal FirstOpacity = 0.02;
constexpr qreal SeekStep = 10; // seconds, of assistive technology

} // namespace

PlayerControls::PlayerControls(QGraphicsItem *parent)
    : Widget(parent),
      m_playButton(new toolkit::IconButton(u"icon-m-kestrel-play"_s, this)),
      m_seekSlider(new ControlSlider(this)),
      m_volumeButton(new toolkit::IconButton(u"icon-m-kestrel-volume"_s, this)),
      m_volumeSlider(new ControlSlider(this)),
      m_optionsButton(new toolkit::IconButton(u"icon-m-kestrel-options"_s, this)),
      m_fullScreenButton(new toolkit::IconButton(u"icon-m-kestrel-full-screen"_s, this)),
      m_timeBubble(new TimeBubble(this)),
      m_fade(this, "opacity")
{
    setAcceptedMouseButtons(Qt::NoButton);
    prepareParts();
    setState(AvloRenderer::Stopped);
    toolkit::keepTranslated(this, [this] { translate(); });
    setStyleName(u"KestrelPlayerControls"_s);
    connectParts();
    connectSeekSlider();
    setTimes(MediaTime::zero(), MediaTime::zero(), false);
    setOpacity(0);
    setVisible(false);
    connect(&m_fade, &QPropertyAnimation::finished, this, [this] { setVisible(m_shown); });
}

PlayerControls::~PlayerControls() = default;

void PlayerControls::prepareParts()
{
    m_playButton->setStyleName(u"KestrelPlayerMark"_s);
    m_playButton->setObjectName(u"PlayPauseButton"_s);
    m_volumeButton->setObjectName(u"VolumeButton"_s);
    m_optionsButton->setObjectName(u"OptionsButton"_s);
    m_fullScreenButton->setObjectName(u"FullScreenButton"_s);
    for (toolkit::Button *button : {m_volumeButton, m_optionsButton, m_fullScreenButton})
        button->setStyleName(u"KestrelPlayerButton"_s);
    m_optionsButton->setVisible(false);
    m_fullScreenButton->setVisible(false);
    m_seekSlider->setObjectName(u"SeekSlider"_s);
    m_seekSlider->setRefining(true);
    m_seekSlider->setWords([this] {
        const qint64 whole = m_duration / std::chrono::seconds(1);
        return whole <= 0
            ? m_elapsedText
            : qtTrId("qtn_musi_position_of").arg(m_elapsedText, timeText(whole, toolkit::Locale::current()));
    });
    m_volumeSlider->setObjectName(u"VolumeSlider"_s);
    m_volumeSlider->setValue(1);
    m_volumeSlider->setScale(100, 5);
    m_volumeSlider->setWords([this] { return percentText(m_volumeSlider->value()); });
}

void PlayerControls::connectParts()
{
    for (toolkit::Button *button : {m_playButton, m_volumeButton, m_optionsButton, m_fullScreenButton})
        connect(button, &toolkit::Button::pressed, this, &PlayerControls::touched);
    connect(m_playButton, &toolkit::Button::clicked, this, &PlayerControls::playPauseRequested);
    connect(m_optionsButton, &toolkit::Button::clicked, this, &PlayerControls::optionsRequested);
    connect(m_fullScreenButton, &toolkit::Button::clicked, this, &PlayerControls::fullScreenRequested);
    connect(m_volumeButton, &toolkit::Button::clicked, this, [this] { toggleMute(); });
    const auto changeVolume = [this](qreal value) {
        showVolumeIcon();
        Q_EMIT touched();
        Q_EMIT volumeRequested(value);
    };
    connect(m_volumeSlider, &ControlSlider::dragged, this, changeVolume);
    connect(m_volumeSlider, &ControlSlider::released, this, changeVolume);
}

void PlayerControls::connectSeekSlider()
{
    connect(m_seekSlider, &ControlSlider::pressed, this, [this] {
        Q_EMIT touched();
        Q_EMIT seekBegan();
    });
    connect(m_seekSlider, &ControlSlider::dragged, this, [this](qreal value) {
        showTexts(timeAt(value));
        showBubble();
        Q_EMIT touched();
        Q_EMIT seekRequested(timeAt(value), false);
    });
    connect(m_seekSlider, &ControlSlider::released, this, [this](qreal value) {
        m_timeBubble->setVisible(false);
        Q_EMIT touched();
        Q_EMIT seekRequested(timeAt(value), true);
    });
    connect(m_seekSlider, &ControlSlider::cancelled, this, [this] {
        m_timeBubble->setVisible(false);
        Q_EMIT seekCancelled();
    });
}

void PlayerControls::setShown(bool shown)
{
    if (m_shown == shown)
        return;
    m_shown = shown;
    setVisible(true);
    setEnabled(shown);
    m_fade.stop();
    // A scene finds nothing that is wholly clear: a press that comes with them goes to them, not to the
    // picture.
    m_fade.setStartValue(shown ? qMax(opacity(), FirstOpacity) : opacity());
    m_fade.setEndValue(shown ? 1.0 : 0.0);
    // What is not seen does not fade: it would do so when it is seen again, over the next video.
    const int fade = isOnDisplay() ? int(style().number(u"fade"_s, 160)) : 0;
    m_fade.setDuration(toolkit::Theme::instance()->motion(fade));
    m_fade.setEasingCurve(shown ? QEasingCurve::OutCubic : QEasingCurve::InCubic);
    m_fade.start();
}

void PlayerControls::setState(AvloRenderer::State state)
{
    m_playing = state == AvloRenderer::Playing;
    m_playButton->setIconId(m_playing ? u"icon-m-kestrel-pause"_s : u"icon-m-kestrel-play"_s);
    namePlayButton();
}

void PlayerControls::namePlayButton()
{
    m_playButton->setAccessibleName(m_playing ? qtTrId("qtn_musi_pause") : qtTrId("qtn_musi_play"));
}

void PlayerControls::nameVolumeButton()
{
    m_volumeButton->setAccessibleName(m_volumeSlider->value() > 0 ? qtTrId("qtn_musi_mute")
                                                                  : qtTrId("qtn_musi_unmute"));
}

void PlayerControls::nameFullScreenButton()
{
    m_fullScreenButton->setAccessibleName(m_fullScreen == FullScreen::On
                                              ? qtTrId("qtn_musi_full_screen_leave")
                                              : qtTrId("qtn_musi_full_screen"));
}

void PlayerControls::translate()
{
    m_seekSlider->setAccessibleName(qtTrId("qtn_musi_position"));
    m_volumeSlider->setAccessibleName(qtTrId("qtn_musi_volume"));
    m_optionsButton->setAccessibleName(qtTrId("qtn_musi_options"));
    namePlayButton();
    nameVolumeButton();
    nameFullScreenButton();
}

void PlayerControls::setTimes(MediaTime position, MediaTime duration, bool seekable)
{
    const bool known = duration > MediaTime::zero();
    m_seekSlider->setEnabled(known && seekable);
    m_seekSlider->setKnobShown(known && seekable);
    if (m_duration != duration || m_textSize.isEmpty()) {
        m_duration = duration;
        measureTexts();
        showChapterMarks();
        showLoop();
    }
    if (m_seekSlider->isHeld())
        return;
    m_seekSlider->setValue(known ? qreal(position.count()) / qreal(duration.count()) : 0);
    showTexts(position);
}

void PlayerControls::setChapters(const QList<MediaChapter> &chapters)
{
    if (m_chapters == chapters)
        return;
    m_chapters = chapters;
    showChapterMarks();
}

void PlayerControls::showChapterMarks()
{
    m_seekSlider->setMarks(chapterMarks(m_chapters, m_duration));
}

void PlayerControls::setLoop(const std::optional<MediaSection> &section)
{
    if (m_loop == section)
        return;
    m_loop = section;
    showLoop();
}

void PlayerControls::showLoop()
{
    m_seekSlider->setSection(m_loop ? sectionOnLine(*m_loop, m_duration) : std::nullopt);
}

void PlayerControls::showBubble()
{
    const QPointF knob(m_seekSlider->pos().x() + m_seekSlider->knobPosition(),
                       m_seekSlider->geometry().center().y());
    m_timeBubble->show(m_elapsedText, chapterTitle(m_chapters, timeAt(m_seekSlider->value())), knob,
                       size().width());
}

void PlayerControls::setVolume(qreal volume)
{
    m_volumeSlider->setValue(volume);
    showVolumeIcon();
}

void PlayerControls::toggleMute()
{
    const qreal volume = m_volumeSlider->value();
    if (volume > 0)
        m_volumeBeforeMute = volume;
    m_volumeSlider->setValue(volume > 0 ? 0 : m_volumeBeforeMute);
    showVolumeIcon();
    Q_EMIT touched();
    Q_EMIT volumeRequested(m_volumeSlider->value());
}

void PlayerControls::setOptionsOffered(bool offered)
{
    m_optionsButton->setVisible(offered);
}

void PlayerControls::setFullScreen(FullScreen state)
{
    m_fullScreen = state;
    m_fullScreenButton->setVisible(state != FullScreen::NotOffered);
    m_fullScreenButton->setIconId(state == FullScreen::On ? u"icon-m-kestrel-full-screen-leave"_s
                                                          : u"icon-m-kestrel-full-screen"_s);
    nameFullScreenButton();
    layOut();
}

bool PlayerControls::isHeld() const
{
    return m_seekSlider->isHeld() || m_volumeSlider->isHeld() || m_playButton->isDown()
        || m_volumeButton->isDown() || m_optionsButton->isDown() || m_fullScreenButton->isDown();
}

MediaTime PlayerControls::timeAt(qreal value) const
{
    return MediaTime(qint64(value * qreal(m_duration.count())));
}

// Elapsed and remaining together always give the whole seconds of the duration.
void PlayerControls::showTexts(MediaTime position)
{
    const QLocale locale = toolkit::Locale::current();
    const qint64 elapsed = position / std::chrono::seconds(1);
    const qint64 whole = m_duration / std::chrono::seconds(1);
    const QString elapsedText = timeText(elapsed, locale);
    const QString remainingText = whole > 0 ? timeText(whole - elapsed, locale, true) : QString();
    if (elapsedText == m_elapsedText && remainingText == m_remainingText)
        return;
    m_elapsedText = elapsedText;
    m_remainingText = remainingText;
    m_seekSlider->setScale(qreal(whole), SeekStep);
    m_seekSlider->tellValue();
    update(m_layout.elapsed);
    update(m_layout.remaining);
}

void PlayerControls::showVolumeIcon()
{
    m_volumeSlider->tellValue();
    m_volumeButton->setIconId(volumeIcon(m_volumeSlider->value()));
    nameVolumeButton();
}

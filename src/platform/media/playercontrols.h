// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "controlslayout.h"
#include "mediabackend.h"

#include <platform/toolkit/widget.h>

#include <QPropertyAnimation>

namespace toolkit {
class Button;
}
class ControlSlider;
class TimeBubble;

// What lies over the picture while the user wants it: the scrim, the play/pause mark, the seek line between
// the elapsed and the remaining time, the volume, the buttons for options and the full screen. Asks for
// changes by its signals; shows what it is told. A tap beside its parts goes to what lies below.
class PlayerControls : public toolkit::Widget
{
    Q_OBJECT

public:
    enum class FullScreen { NotOffered, Off, On };

    explicit PlayerControls(QGraphicsItem *parent = nullptr);
    ~PlayerControls() override;

    // Fades where it is seen. Hidden controls take no input.
    void setShown(bool shown);
    [[nodiscard]] bool isShown() const { return m_shown; }
    void setState(AvloRenderer::State state);
    // `duration` 0: unknown; the seek line then takes no finger.
    void setTimes(MediaTime position, MediaTime duration, bool seekable);
    // The seek line is parted where one begins; the bubble over a held knob names it.
    void setChapters(const QList<MediaChapter> &chapters);
    // The part of the seek line that is played again and again.
    void setLoop(const std::optional<MediaSection> &section);
    void setVolume(qreal volume);
    // As the button does: silence, or what was heard before.
    void toggleMute();
    // Whether there is a button for options; there is none at first.
    void setOptionsOffered(bool offered);
    void setFullScreen(FullScreen state);
    // Where its parts stand, shown or not.
    [[nodiscard]] const ControlsLayout &places() const { return m_layout; }
    // A finger is on one of them.
    [[nodiscard]] bool isHeld() const;

    [[nodiscard]] QString elapsedText() const { return m_elapsedText; }
    [[nodiscard]] QString remainingText() const { return m_remainingText; }
    [[nodiscard]] toolkit::Button *playButton() const { return m_playButton; }
    [[nodiscard]] ControlSlider *seekSlider() const { return m_seekSlider; }
    [[nodiscard]] ControlSlider *volumeSlider() const { return m_volumeSlider; }
    [[nodiscard]] toolkit::Button *volumeButton() const { return m_volumeButton; }
    [[nodiscard]] toolkit::Button *optionsButton() const { return m_optionsButton; }
    [[nodiscard]] toolkit::Button *fullScreenButton() const { return m_fullScreenButton; }
    [[nodiscard]] TimeBubble *timeBubble() const { return m_timeBubble; }

Q_SIGNALS:
    void playPauseRequested();
    // A finger takes the knob: what plays waits until it is lifted, or taken away, which undoes the seek.
    void seekBegan();
    // `last`: the finger was lifted here.
    void seekRequested(MediaTime position, bool last);
    void seekCancelled();
    void volumeRequested(qreal volume);
    void optionsRequested();
    void fullScreenRequested();
    // Something was pressed: the controls stay for another while.
    void touched();

protected:
    void applyStyle() override;
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *widget) override;
    void resizeEvent(QGraphicsSceneResizeEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void prepareParts();
    void connectParts();
    void connectSeekSlider();
    void translate();
    void namePlayButton();
    void nameVolumeButton();
    void nameFullScreenButton();
    void layOut();
    void measureTexts();
    void showTexts(MediaTime position);
    void showBubble();
    void showChapterMarks();
    void showLoop();
    void showVolumeIcon();
    [[nodiscard]] MediaTime timeAt(qreal value) const;

    // In the order in which the keyboard goes through them.
    toolkit::Button *m_playButton;
    ControlSlider *m_seekSlider;
    toolkit::Button *m_volumeButton;
    ControlSlider *m_volumeSlider;
    toolkit::Button *m_optionsButton;
    toolkit::Button *m_fullScreenButton;
    TimeBubble *m_timeBubble;
    QPropertyAnimation m_fade;
    ControlsLayout m_layout;
    QList<MediaChapter> m_chapters;
    std::optional<MediaSection> m_loop;
    MediaTime m_duration{0};
    QString m_elapsedText;
    QString m_remainingText;
    QSizeF m_textSize;
    qreal m_volumeBeforeMute = 1;
    FullScreen m_fullScreen = FullScreen::NotOffered;
    bool m_shown = false;
    bool m_playing = false;
};

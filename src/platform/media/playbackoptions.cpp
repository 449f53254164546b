// SPDX-License-Identifier: GPL-3.0-or-later
#include "playbackoptions.h"

#include "playbackoptionrows.h"

#include <platform/toolkit/keeptranslated.h>
#include <platform/toolkit/sheetheader.h>

#include <QGraphicsLayout>
#include <QGraphicsScene>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

PlaybackOptions::PlaybackOptions(PlaybackMemory *memory) : m_memory(memory)
{
    setStyleName(u"PlaybackOptionsInverted"_s);
    connect(this, &Sheet::appeared, this, &PlaybackOptions::takenChanged);
    connect(this, &Sheet::disappeared, this, &PlaybackOptions::takenChanged);
    toolkit::keepTranslated(this, [this] { rebuild(); });
}

PlaybackOptions::~PlaybackOptions() = default;

void PlaybackOptions::setBackend(MediaBackend *backend)
{
    if (m_backend)
        m_backend->disconnect(this);
    m_backend = backend;
    if (backend == nullptr) {
        dismiss();
        return;
    }
    connect(backend, &MediaBackend::begun, this, [this] {
        m_loopStart.reset();
        rebuild();
    });
    connect(backend, &MediaBackend::tracksChanged, this, [this] { rebuild(); });
    connect(backend, &MediaBackend::rateChanged, this, [this] { rebuild(); });
    connect(backend, &MediaBackend::loopChanged, this, [this] { rebuild(); });
}

QRectF PlaybackOptions::takenRect() const
{
    return isActive() ? panelRect() : QRectF();
}

QString PlaybackOptions::titleOf(Topic topic)
{
    switch (topic) {
    case Topic::All:
        return qtTrId("qtn_vide_options_title");
    case Topic::Subtitles:
        return qtTrId("qtn_vide_options_subtitles");
    case Topic::Sound:
        return qtTrId("qtn_vide_options_sound");
    case Topic::Speed:
        return qtTrId("qtn_vide_options_speed");
    case Topic::Loop:
        return qtTrId("qtn_vide_options_loop");
    case Topic::Chapters:
        return qtTrId("qtn_vide_options_chapters");
    }
    return {};
}

OptionColumn *PlaybackOptions::column() const
{
    return static_cast<OptionColumn *>(centralWidget());
}

void PlaybackOptions::showTopic(Topic topic)
{
    const Topic before = std::exchange(m_topic, topic);
    header()->setBackVisible(topic != Topic::All);
    rebuild();
    // Whoever goes by keys goes on by keys: at the one that holds, or where the list was left.
    if (!isDisplayed() || before == topic)
        return;
    const QGraphicsItem *focus = scene()->focusItem();
    if (focus == nullptr || focus == this)
        return;
    for (toolkit::Widget *row : column()->rows()) {
        const auto *option = qobject_cast<OptionRow *>(row);
        if (option != nullptr && option->isChosen())
            row->setFocus(Qt::TabFocusReason);
    }
}

// The row that has the focus, or within which it is; -1: none.
int PlaybackOptions::focusedRow() const
{
    const QGraphicsItem *focus = column() != nullptr && scene() != nullptr ? scene()->focusItem() : nullptr;
    if (focus == nullptr)
        return -1;
    const QList<toolkit::Widget *> &rows = column()->rows();
    const auto focused = std::find_if(rows.begin(), rows.end(), [focus](const toolkit::Widget *row) {
        return row == focus || row->isAncestorOf(focus);
    });
    return focused == rows.end() ? -1 : int(focused - rows.begin());
}

// The rows anew; the focus stays where it was.
void PlaybackOptions::rebuild()
{
    if (m_rebuilding)
        return;
    m_rebuilding = true;
    const int focused = focusedRow();
    setTitle(titleOf(m_topic));
    auto *rows = new OptionColumn;
    if (m_backend)
        fill(rows);
    rows->end();
    setCentralWidget(rows);
    rows->layout()->activate(); // a tap in this turn of the event loop finds its row
    if (focused >= 0 && isDisplayed() && !rows->rows().isEmpty())
        rows->rows().at(std::min<qsizetype>(focused, rows->rows().size() - 1))->setFocus(Qt::TabFocusReason);
    m_rebuilding = false;
    Q_EMIT takenChanged();
}

void PlaybackOptions::escape()
{
    if (m_topic == Topic::All)
        reject();
    else
        showTopic(Topic::All);
}

void PlaybackOptions::place()
{
    Sheet::place();
    Q_EMIT takenChanged();
}

void PlaybackOptions::setLeaving(bool leaving)
{
    Sheet::setLeaving(leaving);
    Q_EMIT takenChanged();
}

// SPDX-License-Identifier: GPL-3.0-or-later
#include "playbackmemory.h"

#include "mediabackend.h"
#include "medialog.h"

#include <QStandardPaths>

using namespace std::chrono_literals;
using namespace Qt::Literals::StringLiterals;

namespace {

constexpr auto WritingInterval = 1s; // while somebody tries one after the other

} // namespace

PlaybackMemory::PlaybackMemory(QObject *parent)
    : PlaybackMemory(QStandardPaths::writableLocation(QStandardPaths::AppDataLocation)
                         + u"/playback-choices.json"_s,
                     parent)
{
}

PlaybackMemory::PlaybackMemory(const QString &fileName, QObject *parent)
    : QObject(parent),
      m_choices(fileName),
      m_writer(lcMedia, OnDisk::Contents)
{
    m_writing.setParent(this);
    m_writing.setSingleShot(true);
    m_writing.setInterval(WritingInterval);
    connect(&m_writing, &QTimer::timeout, this, [this] {
        if (m_unwritten)
            write();
    });
}

PlaybackMemory::~PlaybackMemory()
{
    if (m_unwritten)
        write();
}

void PlaybackMemory::setBackend(MediaBackend *backend)
{
    if (m_backend)
        m_backend->disconnect(this);
    m_backend = backend;
    if (backend == nullptr)
        return;
    backend->setSubtitleScale(m_choices.subtitleScale());
    connect(backend, &MediaBackend::begun, this, [this] { applyChoices(); });
}

void PlaybackMemory::applyChoices()
{
    if (!m_backend)
        return;
    const PlaybackChoice choice = m_choices.of(m_backend->uri());
    if (choice.sound)
        m_backend->selectAudioTrack(*choice.sound);
    if (choice.subtitle)
        m_backend->selectSubtitleTrack(*choice.subtitle);
    if (choice.delay != MediaTime::zero())
        m_backend->setSubtitleDelay(choice.delay);
    if (!qFuzzyCompare(choice.rate, 1))
        m_backend->setRate(choice.rate);
}

template <typename Change> void PlaybackMemory::change(Change change)
{
    if (!m_backend)
        return;
    PlaybackChoice choice = m_choices.of(m_backend->uri());
    change(choice);
    if (m_choices.set(m_backend->uri(), choice))
        keep();
}

void PlaybackMemory::chooseSubtitle(const QString &id)
{
    change([&](PlaybackChoice &choice) { choice.subtitle = id; });
    if (m_backend)
        m_backend->selectSubtitleTrack(id);
}

void PlaybackMemory::chooseSound(const QString &id)
{
    change([&](PlaybackChoice &choice) { choice.sound = id; });
    if (m_backend)
        m_backend->selectAudioTrack(id);
}

void PlaybackMemory::chooseRate(qreal rate)
{
    change([&](PlaybackChoice &choice) { choice.rate = rate; });
    if (m_backend)
        m_backend->setRate(rate);
}

void PlaybackMemory::chooseDelay(MediaTime delay)
{
    change([&](PlaybackChoice &choice) { choice.delay = delay; });
    if (m_backend)
        m_backend->setSubtitleDelay(delay);
}

void PlaybackMemory::chooseSubtitleScale(qreal scale)
{
    if (m_choices.setSubtitleScale(scale))
        keep();
    if (m_backend)
        m_backend->setSubtitleScale(m_choices.subtitleScale());
}

// The first at once: whatever ends the program then, it is there the next time.
void PlaybackMemory::keep()
{
    m_unwritten = true;
    if (!m_writing.isActive())
        write();
}

void PlaybackMemory::write()
{
    m_unwritten = false;
    m_writing.start();
    m_writer.write(m_choices.fileName(), m_choices.serialized());
}

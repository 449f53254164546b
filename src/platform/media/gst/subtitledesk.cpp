// SPDX-License-Identifier: GPL-3.0-or-later
#include "subtitledesk.h"

#include "controlthread.h"
#include "playableaddress.h"

#include <platform/media/subtitles/languages.h>
#include <platform/media/subtitles/subtitlecharset.h>

#include <QPointer>
#include <QUrl>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;
using subtitles::FoundFile;

namespace {

constexpr qsizetype Sample = 64 * 1024; // bytes of which it is told whether it is a subtitle file

QList<FoundFile> filesOf(const QString &videoPath, const QString &language)
{
    QList<FoundFile> files = subtitles::findFiles(videoPath);
    files.removeIf([&](const FoundFile &file) {
        const QString text = subtitles::decode(subtitles::readFile(file).left(Sample), language);
        return subtitles::parseFile(text, 0).isEmpty();
    });
    return files;
}

std::shared_ptr<CueStore> cuesOf(const FoundFile &file, const QString &language, double framesPerSecond)
{
    auto cues = std::make_shared<CueStore>();
    const QString charset = file.track.language.isEmpty() ? language : file.track.language;
    cues->set(subtitles::parseFile(subtitles::decode(subtitles::readFile(file), charset), framesPerSecond));
    return cues;
}

} // namespace

SubtitleDesk::SubtitleDesk(QObject *parent)
    : QObject(parent),
      m_receiver(new QObject, [](QObject *receiver) { receiver->deleteLater(); })
{
}

SubtitleDesk::~SubtitleDesk()
{
    if (m_tap)
        m_tap->close();
}

void SubtitleDesk::begin(const QString &uri)
{
    ++m_number;
    if (m_tap)
        m_tap->close();
    m_tap = std::make_shared<SubtitleTap>(
        [guard = QPointer<SubtitleDesk>(this), receiver = m_receiver, number = m_number] {
            QMetaObject::invokeMethod(
                receiver.get(),
                [guard, number] {
                    if (guard && number == guard->m_number)
                        guard->tracksCame();
                },
                Qt::QueuedConnection);
        });
    m_files.clear();
    m_loaded.clear();
    m_selected.clear();
    m_wanted.clear();
    m_position = m_delay = MediaTime::zero();
    m_opened = m_searched = m_chosen = false;
    refresh();
    lookForFiles(uri);
}

// `task` runs on the thread; what it returns runs here, unless another video was begun meanwhile.
void SubtitleDesk::work(std::function<std::function<void()>()> task)
{
    if (!m_thread)
        m_thread = std::make_unique<ControlThread>(u"subtitle-files"_s);
    m_thread->post([receiver = m_receiver, guard = QPointer<SubtitleDesk>(this), number = m_number,
                    task = std::move(task)] {
        const std::function<void()> answer = task();
        QMetaObject::invokeMethod(
            receiver.get(),
            [guard, number, answer] {
                if (guard && number == guard->m_number)
                    answer();
            },
            Qt::QueuedConnection);
    });
}

// A folder that does not answer must not keep those of the next video waiting.
void SubtitleDesk::lookForFiles(const QString &uri)
{
    if (m_thread) {
        m_thread->finish();
        m_retired.push_back(std::move(m_thread));
        std::erase_if(m_retired, [](const auto &thread) { return thread->isFinished(); });
    }
    const QString path = QUrl::fromEncoded(playableAddress(uri)).toLocalFile();
    if (!isFileAddress(uri) || path.isEmpty()) {
        m_searched = true;
        return;
    }
    work([this, path, language = languages::ofUser().value(0)]() -> std::function<void()> {
        return [this, files = filesOf(path, language)] {
            m_files = files;
            m_searched = true;
            tracksCame();
        };
    });
}

void SubtitleDesk::opened(const QString &soundLanguage, double framesPerSecond)
{
    m_soundLanguage = soundLanguage;
    m_framesPerSecond = framesPerSecond;
    m_opened = true;
    tracksCame();
}

QList<trackchoice::Candidate> SubtitleDesk::candidates() const
{
    QList<trackchoice::Candidate> result;
    for (const FoundFile &file : m_files)
        result.append({file.track, false, file.forced, file.bare});
    const QList<SubtitleTap::Track> within = m_tap ? m_tap->tracks() : QList<SubtitleTap::Track>();
    for (const SubtitleTap::Track &track : within)
        result.append({track.track, track.isDefault, false, false});
    return result;
}

QList<MediaTrack> SubtitleDesk::tracks() const
{
    QList<MediaTrack> result;
    const QList<trackchoice::Candidate> all = candidates();
    for (const trackchoice::Candidate &candidate : all)
        result.append(candidate.track);
    return result;
}

void SubtitleDesk::tracksCame()
{
    const QList<MediaTrack> known = tracks();
    const bool there = std::any_of(known.begin(), known.end(),
                                   [this](const MediaTrack &track) { return track.id == m_wanted; });
    if (!m_wanted.isEmpty() && there)
        take(std::exchange(m_wanted, {}));
    else if (!m_wanted.isEmpty() && m_opened && m_searched) { // it is gone: as if nothing had been chosen
        m_wanted.clear();
        m_chosen = false;
    }
    decide();
    Q_EMIT tracksChanged();
}

void SubtitleDesk::decide()
{
    if (m_chosen || !m_opened || !m_searched)
        return;
    m_chosen = true;
    take(trackchoice::subtitle(candidates(), m_soundLanguage, languages::ofUser()));
}

void SubtitleDesk::select(const QString &id)
{
    const QList<MediaTrack> known = tracks();
    const bool there
        = std::any_of(known.begin(), known.end(), [&](const MediaTrack &track) { return track.id == id; });
    if (!there && !id.isEmpty() && m_opened && m_searched)
        return;
    m_chosen = true;
    if (there || id.isEmpty()) {
        m_wanted.clear();
        take(id);
    } else {
        m_wanted = id;
    }
}

void SubtitleDesk::take(const QString &id)
{
    m_selected = id;
    if (!id.isEmpty() && cues(id) == nullptr)
        load(id);
    refresh();
}

void SubtitleDesk::load(const QString &id)
{
    const auto file = std::find_if(m_files.begin(), m_files.end(),
                                   [&](const FoundFile &found) { return found.track.id == id; });
    if (file == m_files.end())
        return;
    work([this, file = *file, language = languages::ofUser().value(0), rate = m_framesPerSecond]() {
        return std::function<void()>([this, id = file.track.id, cues = cuesOf(file, language, rate)] {
            m_loaded.insert(id, cues);
            refresh();
        });
    });
}

std::shared_ptr<CueStore> SubtitleDesk::cues(const QString &id) const
{
    if (const auto loaded = m_loaded.constFind(id); loaded != m_loaded.constEnd())
        return *loaded;
    const QList<SubtitleTap::Track> within = m_tap ? m_tap->tracks() : QList<SubtitleTap::Track>();
    const auto track = std::find_if(within.begin(), within.end(),
                                    [&](const SubtitleTap::Track &known) { return known.track.id == id; });
    return track == within.end() ? nullptr : track->cues;
}

void SubtitleDesk::setDelay(MediaTime delay)
{
    m_delay = delay;
    refresh();
}

void SubtitleDesk::setPosition(MediaTime position)
{
    if (m_position == position)
        return;
    m_position = position;
    refresh();
}

void SubtitleDesk::refresh()
{
    QList<SubtitleText> shown;
    if (!m_selected.isEmpty()) {
        if (const auto store = cues(m_selected))
            shown = store->at(m_position - m_delay);
    }
    if (std::exchange(m_shown, shown) != shown)
        Q_EMIT shownChanged();
}

// SPDX-License-Identifier: GPL-3.0-or-later
#include "quadgatherer.h"

#include <QSet>

#include <algorithm>

namespace {

// The only quads whose object is no literal say what class a resource is of.
bool isNewResource(const ChangeNotifier::Quad &quad)
{
    return quad.object != -1;
}

QSet<int> newSubjects(const QuadGatherer::Quads &quads)
{
    QSet<int> subjects;
    for (const ChangeNotifier::Quad &quad : quads) {
        if (isNewResource(quad))
            subjects.insert(quad.subject);
    }
    return subjects;
}

} // namespace

QuadGatherer::QuadGatherer(QObject *parent, int intervalMs) : QObject(parent)
{
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    m_timer.setInterval(intervalMs);
    connect(&m_timer, &QTimer::timeout, this, &QuadGatherer::handOn);
}

void QuadGatherer::take(const Quads &deletes, const Quads &inserts)
{
    // What is gone again was never there for anybody who has not been told of it.
    const QSet<int> gone = newSubjects(deletes);
    m_gathered.removeIf([&](const ChangeNotifier::Quad &quad) { return gone.contains(quad.subject); });

    // What is told of a new resource goes with the news of it.
    const QSet<int> fresh = newSubjects(m_gathered) + newSubjects(inserts);
    Quads now;
    for (const ChangeNotifier::Quad &quad : inserts)
        (fresh.contains(quad.subject) ? m_gathered : now).append(quad);
    if (!deletes.isEmpty() || !now.isEmpty())
        Q_EMIT ready(deletes, now);
    if (!m_gathered.isEmpty() && !m_timer.isActive())
        handOn();
}

void QuadGatherer::clear()
{
    m_gathered.clear();
}

void QuadGatherer::handOn()
{
    if (m_gathered.isEmpty())
        return;
    m_timer.start();
    Q_EMIT ready({}, std::exchange(m_gathered, {}));
}

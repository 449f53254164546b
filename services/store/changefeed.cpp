// SPDX-License-Identifier: GPL-3.0-or-later
#include "changefeed.h"

namespace {
constexpr int s_gatherMs = 1300;
}

ChangeFeed::ChangeFeed(QObject *parent) : QObject(parent)
{
    m_turn.setSingleShot(true);
    m_turn.setInterval(0);
    connect(&m_turn, &QTimer::timeout, this, &ChangeFeed::send);
    m_gather.setSingleShot(true);
    m_gather.setInterval(s_gatherMs);
    connect(&m_gather, &QTimer::timeout, this, &ChangeFeed::sendAdded);
}

void ChangeFeed::videoAdded(int id)
{
    m_added.append({0, id, m_terms.type, m_terms.video});
    if (!m_gather.isActive())
        m_turn.start();
}

void ChangeFeed::videoDeleted(int id)
{
    const StoreQuad quad{0, id, m_terms.type, m_terms.video};
    m_added.removeAll(quad);
    m_deletes.append(quad);
    m_turn.start();
}

void ChangeFeed::valueChanged(int id, int predicate)
{
    const StoreQuad quad{0, id, predicate, -1};
    if (!m_changes.contains(quad))
        m_changes.append(quad);
    m_turn.start();
}

void ChangeFeed::clear()
{
    m_deletes.clear();
    m_changes.clear();
    m_added.clear();
    m_turn.stop();
    m_gather.stop();
}

void ChangeFeed::send()
{
    QList<StoreQuad> inserts;
    inserts.swap(m_changes);
    if (!m_added.isEmpty() && !m_gather.isActive()) {
        inserts.append(m_added);
        m_added.clear();
        m_gather.start();
    }
    QList<StoreQuad> deletes;
    deletes.swap(m_deletes);
    if (!deletes.isEmpty() || !inserts.isEmpty())
        Q_EMIT changed(deletes, inserts);
}

void ChangeFeed::sendAdded()
{
    if (!m_added.isEmpty())
        send(); // the timer has just run out: everything goes
}

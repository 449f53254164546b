// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "changenotifier.h"

#include <QElapsedTimer>
#include <QTimer>

// Hands quads on so that whoever waits for a quiet second between additions gets it during a long scan: new
// resources are gathered and handed on at most once an interval, the first at once. All else goes on at once.
class QuadGatherer : public QObject
{
    Q_OBJECT

public:
    using Quads = QList<ChangeNotifier::Quad>;
    static constexpr int defaultIntervalMs = 1300;

    explicit QuadGatherer(QObject *parent = nullptr, int intervalMs = defaultIntervalMs);

    void take(const Quads &deletes, const Quads &inserts);
    // Forgets what is gathered.
    void clear();

Q_SIGNALS:
    void ready(QList<ChangeNotifier::Quad> deletes, QList<ChangeNotifier::Quad> inserts);

private:
    void handOn();

    QTimer m_timer;
    Quads m_gathered;
};

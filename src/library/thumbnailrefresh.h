// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QSet>
#include <QString>
#include <QTimer>

class ThumbnailHelper;

namespace toolkit {
class List;
}

// Sees to it that every cell on the screen gets its picture without being scrolled: the queue of picture
// requests is short and drops what comes too fast, so cells without a picture are filled again, a few at a
// turn, whenever the queue moved on or the list came to rest. A queue that was given up altogether reports
// nothing: what is still missing after a while is asked for again.
class ThumbnailRefresh : public QObject
{
    Q_OBJECT

public:
    static constexpr int SettleTime = 1000; // ms
    // Cells filled again in one turn: no more than the queue holds.
    static constexpr int CellsATurn = 4;

    ThumbnailRefresh(toolkit::List *list, ThumbnailHelper *thumbnails, QObject *parent);

public Q_SLOTS:
    // Has a turn when the event loop is reached next.
    void schedule();

private Q_SLOTS:
    void thumbnailReady(const QString &resourceUrl);
    void thumbnailFailed(const QString &resourceUrl);
    void fillCells();

private:
    [[nodiscard]] bool isUnreadable(const QModelIndex &index) const;
    [[nodiscard]] bool isMissing(const QModelIndex &index) const;

    toolkit::List *m_list;
    QTimer m_settle;
    QSet<QString> m_failed; // addresses that have no picture: asked for again only when they are scrolled in
    bool m_scheduled = false;
};

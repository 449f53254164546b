// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "videofacts.h"

#include <QObject>

class QDBusPendingCallWatcher;

// Has the file of a stored video read by the store service, in its jail, without ever waiting for it.
class FactsReader : public QObject
{
    Q_OBJECT

public:
    explicit FactsReader(QObject *parent = nullptr);

    // A non-zero id that factsRead() carries; 0 when nothing can be asked.
    int read(const QString &urn);

Q_SIGNALS:
    // Empty when the file could not be read.
    void factsRead(VideoFacts facts, int id);

private:
    int m_lastId = 0;
};

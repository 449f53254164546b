// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <platform/sparql/rowtable.h>

#include <QObject>
#include <QString>

#include <memory>

// What the store's door hears beside the answers to its clients.
class StoreNews : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    // False while the store is known not to answer.
    [[nodiscard]] bool isReachable() const { return m_isReachable; }
    void setReachable(bool reachable)
    {
        m_isReachable = reachable;
        Q_EMIT reachableChanged(reachable);
    }

    // Is connected to TrackerInterface::allVideosFinished() and has no need of it for what listLoaded()
    // tells.
    void addTableReader(const QObject *reader)
    {
        ++m_tableReaders;
        connect(reader, &QObject::destroyed, this, [this] { --m_tableReaders; });
    }
    [[nodiscard]] int tableReaders() const { return m_tableReaders; }
    // While TrackerInterface::allVideosFinished() tells what listLoaded() told.
    [[nodiscard]] bool isToldAgain() const { return m_isToldAgain; }
    void setToldAgain(bool again) { m_isToldAgain = again; }

Q_SIGNALS:
    void reachableChanged(bool reachable);
    // The answer to a request for the library, packed as it came, eight columns of VideoColumn; a title may
    // be empty. Goes before TrackerInterface::allVideosFinished(), which does not come at all when only table
    // readers are connected to it.
    void listLoaded(std::shared_ptr<const RowTable> table, int id);
    // The library was asked for, and that failed.
    void listFailed();
    // The store took an update of this property ("nie:title") of a video.
    void propertyStored(QString urn, QString property);

private:
    bool m_isReachable = true;
    int m_tableReaders = 0;
    bool m_isToldAgain = false;
};

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QString>

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

Q_SIGNALS:
    void reachableChanged(bool reachable);
    // The library was asked for, and that failed.
    void listFailed();
    // The store took an update of this property ("nie:title") of a video.
    void propertyStored(QString urn, QString property);

private:
    bool m_isReachable = true;
};

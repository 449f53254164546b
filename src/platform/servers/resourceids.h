// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QHash>
#include <QString>

#include <vector>

// Numbers for IRIs, as the program's lists of changed videos need them and a server does not have them. A
// number belongs to one IRI as long as the process lives, counts from 1, and is given again to nobody.
class ResourceIds
{
public:
    // What every connection of this process and the watch over changes share.
    [[nodiscard]] static ResourceIds &shared();

    // The number of the IRI, which gets one now if it has none. 0 for the empty IRI, and when 2^31 - 1 are
    // given.
    [[nodiscard]] int idOf(const QString &iri) { return idOf(QByteArrayView(iri.toUtf8())); }
    [[nodiscard]] int idOf(QByteArrayView utf8);
    // Without brackets; null when nothing has this number.
    [[nodiscard]] QString iriOf(int id) const;
    [[nodiscard]] int count() const { return int(m_iris.size()); }

private:
    QHash<QByteArray, int> m_ids; // shares its keys with m_iris
    std::vector<QByteArray> m_iris;
};

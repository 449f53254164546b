// SPDX-License-Identifier: GPL-3.0-or-later
#include "resourceids.h"

#include <limits>

ResourceIds &ResourceIds::shared()
{
    static ResourceIds ids;
    return ids;
}

int ResourceIds::idOf(QByteArrayView utf8)
{
    if (utf8.isEmpty())
        return 0;
    if (const auto known = m_ids.constFind(QByteArray::fromRawData(utf8.data(), utf8.size()));
        known != m_ids.constEnd())
        return *known;
    if (m_iris.size() >= size_t(std::numeric_limits<int>::max()))
        return 0;
    const QByteArray key = utf8.toByteArray();
    m_iris.push_back(key);
    m_ids.insert(key, count());
    return count();
}

QString ResourceIds::iriOf(int id) const
{
    return id > 0 && id <= count() ? QString::fromUtf8(m_iris[size_t(id) - 1]) : QString();
}

// SPDX-License-Identifier: GPL-3.0-or-later
#include "videotable.h"

void VideoTable::put(const VideoRecord &record)
{
    remove(record.urn);
    m_records.insert(record.urn, record);
    if (!record.path.isEmpty())
        m_urnByPath.insert(record.path, record.urn);
    if (record.id != 0)
        m_urnById.insert(record.id, record.urn);
    if (record.id != 0 && record.created.isValid())
        m_idsByCreation.insert(record.created.toSecsSinceEpoch(), record.id);
    m_urnsByInode.insert(Inode(record.identity.device, record.identity.inode), record.urn);
    if (!record.identity.digest.isEmpty()) {
        m_urnsByDigest.insert(record.identity.digest, record.urn);
        ++m_digestsBySize[record.identity.size];
    }
}

void VideoTable::remove(const QString &urn)
{
    const auto found = m_records.constFind(urn);
    if (found == m_records.cend())
        return;
    const FileIdentity &identity = found->identity;
    m_urnsByInode.remove(Inode(identity.device, identity.inode), urn);
    if (!identity.digest.isEmpty()) {
        m_urnsByDigest.remove(identity.digest, urn);
        if (--m_digestsBySize[identity.size] == 0)
            m_digestsBySize.remove(identity.size);
    }
    m_urnById.remove(found->id);
    if (found->created.isValid())
        m_idsByCreation.remove(found->created.toSecsSinceEpoch(), found->id);
    // Another video may have taken the path meanwhile.
    if (m_urnByPath.value(found->path) == urn)
        m_urnByPath.remove(found->path);
    m_records.erase(found);
}

void VideoTable::clear()
{
    *this = VideoTable();
}

const VideoRecord *VideoTable::byUrn(const QString &urn) const
{
    const auto found = m_records.constFind(urn);
    return found == m_records.cend() ? nullptr : &*found;
}

const VideoRecord *VideoTable::byPath(const QString &path) const
{
    const auto found = m_urnByPath.constFind(path);
    return found == m_urnByPath.cend() ? nullptr : byUrn(*found);
}

const VideoRecord *VideoTable::byId(int id) const
{
    const auto found = m_urnById.constFind(id);
    return found == m_urnById.cend() ? nullptr : byUrn(*found);
}

QStringList VideoTable::urnsUnder(const QString &folder) const
{
    const QString prefix = folder.endsWith(u'/') ? folder : folder + u'/';
    QStringList urns;
    for (auto it = m_urnByPath.lowerBound(prefix); it != m_urnByPath.cend() && it.key().startsWith(prefix);
         ++it)
        urns.append(it.value());
    return urns;
}

QStringList VideoTable::urnsOfInode(const FileIdentity &identity) const
{
    return m_urnsByInode.values(Inode(identity.device, identity.inode));
}

QStringList VideoTable::urnsOfContent(const FileIdentity &identity) const
{
    QStringList urns;
    const QStringList candidates = m_urnsByDigest.values(identity.digest);
    for (const QString &urn : candidates) {
        if (byUrn(urn)->identity.sameContent(identity))
            urns.append(urn);
    }
    return urns;
}

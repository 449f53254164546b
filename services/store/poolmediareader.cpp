// SPDX-License-Identifier: GPL-3.0-or-later
#include "poolmediareader.h"

PoolMediaReader::PoolMediaReader(QObject *parent) : MediaReader(parent), m_pool(MediaWorkerPool::Limits())
{
    connect(&m_pool, &MediaWorkerPool::finished, this, &MediaReader::finished);
}

int PoolMediaReader::read(const QString &path, bool urgent)
{
    MediaRequest request;
    request.path = path;
    return m_pool.submit(request, urgent);
}

int PoolMediaReader::readStreams(const QString &path)
{
    MediaRequest request;
    request.path = path;
    request.wantStreams = true;
    return m_pool.submit(request, true);
}

void PoolMediaReader::releaseFilesUnder(const QString &folder)
{
    m_pool.releaseFilesUnder(folder);
}

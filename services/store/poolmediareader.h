// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "mediareader.h"

class PoolMediaReader : public MediaReader
{
    Q_OBJECT

public:
    explicit PoolMediaReader(QObject *parent = nullptr);

    int read(const QString &path, bool urgent) override;
    int readStreams(const QString &path) override;
    void releaseFilesUnder(const QString &folder) override;

private:
    MediaWorkerPool m_pool;
};

// SPDX-License-Identifier: GPL-3.0-or-later
#include "stillfiles.h"

#include <QFile>
#include <QStandardPaths>

using namespace Qt::Literals::StringLiterals;

QString StillFiles::next()
{
    if (!m_directory) {
        for (const auto location : {QStandardPaths::RuntimeLocation, QStandardPaths::TempLocation}) {
            const QString base = QStandardPaths::writableLocation(location);
            if (base.isEmpty())
                continue;
            m_directory = std::make_unique<QTemporaryDir>(base + u"/paused-frame-XXXXXX"_s);
            if (m_directory->isValid())
                break;
        }
    }
    if (!m_directory || !m_directory->isValid())
        return {};
    const auto name = [this](int number) { return m_directory->filePath(u"frame-%1.jpg"_s.arg(number)); };
    if (m_counter >= Kept)
        QFile::remove(name(m_counter - Kept));
    return name(m_counter++);
}

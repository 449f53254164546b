// SPDX-License-Identifier: GPL-3.0-or-later
#include "sysfsbacklightcontrol.h"

#include "systemlog.h"

#include <QFile>

using namespace Qt::Literals::StringLiterals;

namespace {

enum Mode { AsBefore = 0, UserInterface = 1, MovingImage = 3 };

} // namespace

SysfsBacklightControl::SysfsBacklightControl(BacklightSwitch backlightSwitch)
    : m_switch(std::move(backlightSwitch))
{
    m_writer.setMaxThreadCount(1);
}

SysfsBacklightControl::~SysfsBacklightControl()
{
    if (m_asked != AsBefore) {
        m_wanted = AsBefore;
        m_writer.start([this] { apply(); });
    }
    m_writer.waitForDone();
}

void SysfsBacklightControl::set(int mode)
{
    if ((mode != UserInterface && mode != MovingImage) || mode == m_asked)
        return;
    m_asked = mode;
    m_wanted = mode;
    m_writer.start([this] { apply(); });
}

void SysfsBacklightControl::apply()
{
    if (m_original.isNull()) {
        QFile file(m_switch.path);
        if (file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
            m_original = file.read(64).trimmed();
        m_written = m_original = m_original.isNull() ? QByteArray("") : m_original;
    }
    const int mode = m_wanted;
    if (mode == MovingImage)
        write(m_switch.movingImage);
    else if (mode == UserInterface && !m_switch.userInterface.isEmpty())
        write(m_switch.userInterface);
    else
        write(m_original);
}

void SysfsBacklightControl::write(const QByteArray &value)
{
    if (value.isEmpty() || value == m_written)
        return;
    QFile file(m_switch.path);
    if (file.open(QIODevice::WriteOnly | QIODevice::ExistingOnly | QIODevice::Unbuffered)
        && file.write(value) == value.size()) {
        m_written = value;
        m_failed = false;
        return;
    }
    if (!std::exchange(m_failed, true))
        qCWarning(systemLog, "content-adaptive backlight: %ls does not take \"%s\": %ls",
                  qUtf16Printable(m_switch.path), value.constData(), qUtf16Printable(file.errorString()));
}

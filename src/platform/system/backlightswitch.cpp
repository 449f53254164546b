// SPDX-License-Identifier: GPL-3.0-or-later
#include "backlightswitch.h"

#include "videoroute.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <array>

using namespace Qt::Literals::StringLiterals;

namespace {

// How a switch is told the mode.
enum class Words {
    Names, // "off", "ui", "still-image", "moving-image", as the file beside it lists them
    Numbers, // the panel's own command: 0 off, 1 user interface, 2 still picture, 3 moving image
    Levels, // how much picture quality may go for brightness, 0 to 4
};

struct KnownSwitch
{
    QLatin1StringView folder; // below the root
    QLatin1StringView devices;
    QLatin1StringView file;
    Words words;
};

constexpr std::array knownSwitches{
    // Handset panels whose driver offers the modes by name: beside the frame buffer, or with the brightness.
    KnownSwitch{"class/graphics"_L1, "fb*"_L1, "device/panel/cabc_mode"_L1, Words::Names},
    KnownSwitch{"class/graphics"_L1, "fb*"_L1, "device/cabc_mode"_L1, Words::Names},
    KnownSwitch{"class/backlight"_L1, "*"_L1, "cabc_mode"_L1, Words::Names},
    KnownSwitch{"class/backlight"_L1, "*"_L1, "device/cabc_mode"_L1, Words::Names},
    // Panels of the display command set (command 55h): the number goes to the panel as it is.
    KnownSwitch{"class/drm"_L1, "card*-*"_L1, "cabc"_L1, Words::Numbers},
    KnownSwitch{"class/graphics"_L1, "fb*"_L1, "cabc"_L1, Words::Numbers},
    // Adaptive backlight management of amdgpu: the level that the user or a power daemon has set stands for
    // the user interface; a moving picture bears the one before the strongest.
    KnownSwitch{"class/drm"_L1, "card*-eDP-*"_L1, "amdgpu/panel_power_savings"_L1, Words::Levels},
};

bool offersMovingImage(const QString &path)
{
    QFile modes(QFileInfo(path).path() + u"/cabc_available_modes"_s);
    if (!modes.exists())
        return true;
    return QFileInfo(modes).isFile() && modes.open(QIODevice::ReadOnly)
        && modes.read(256).contains("moving-image");
}

BacklightSwitch switchAt(const QString &path, Words words)
{
    switch (words) {
    case Words::Names:
        return {path, "ui", "moving-image"};
    case Words::Numbers:
        return {path, "1", "3"};
    case Words::Levels:
        break;
    }
    return {path, QByteArray(), "3"};
}

} // namespace

std::optional<BacklightSwitch> findBacklightSwitch(const QString &sysRoot)
{
    for (const KnownSwitch &known : knownSwitches) {
        const QDir folder(sysRoot + u'/' + known.folder);
        const QStringList devices
            = folder.entryList({known.devices}, QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name);
        for (const QString &device : devices) {
            if (known.folder == "class/drm"_L1 && outputKind(device) != OutputKind::BuiltIn)
                continue;
            const QString path = folder.filePath(device) + u'/' + known.file;
            const QFileInfo file(path);
            if (!file.isFile() || !file.isWritable())
                continue;
            if (known.words != Words::Names || offersMovingImage(path))
                return switchAt(path, known.words);
        }
    }
    return std::nullopt;
}

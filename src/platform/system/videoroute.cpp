// SPDX-License-Identifier: GPL-3.0-or-later
#include "videoroute.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>
#include <array>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int MostConnectors = 64;

template <std::size_t Size>
bool contains(const std::array<QLatin1StringView, Size> &names, const QString &name)
{
    return std::any_of(names.begin(), names.end(),
                       [&name](QLatin1StringView known) { return name == known; });
}

bool anyConnector(const QList<DrmConnector> &connectors, OutputKind kind, bool DrmConnector::*state)
{
    return std::any_of(connectors.begin(), connectors.end(), [kind, state](const DrmConnector &c) {
        return outputKind(c.name) == kind && c.*state;
    });
}

QList<QRect> areasOf(const QList<ScreenArea> &screens, OutputKind kind)
{
    QList<QRect> areas;
    for (const ScreenArea &screen : screens) {
        if (outputKind(screen.name) == kind)
            areas.append(screen.geometry);
    }
    return areas;
}

bool shareAnArea(const QList<QRect> &some, const QList<QRect> &others)
{
    return std::any_of(some.begin(), some.end(),
                       [&others](const QRect &area) { return others.contains(area); });
}

// A regular file's first bytes, without what is wrapped around them.
QByteArray readWord(const QString &path)
{
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return {};
    return file.read(32).trimmed();
}

} // namespace

OutputKind outputKind(const QString &connector)
{
    static constexpr std::array builtIn{"EDP"_L1, "LVDS"_L1, "DSI"_L1, "DPI"_L1};
    static constexpr std::array external{"HDMI"_L1,        "HDMI-A"_L1,    "HDMI-B"_L1,    "DP"_L1,
                                         "DISPLAYPORT"_L1, "TV"_L1,        "SVIDEO"_L1,    "S-VIDEO"_L1,
                                         "DIN"_L1,         "COMPOSITE"_L1, "COMPONENT"_L1, "DVI"_L1,
                                         "DVI-I"_L1,       "DVI-D"_L1,     "DVI-A"_L1,     "VGA"_L1};
    static const QRegularExpression card(u"^CARD\\d+-"_s);
    static const QRegularExpression numbers(u"(-?\\d+)+$"_s);
    const QString type = connector.toUpper().remove(card).remove(numbers);
    if (contains(builtIn, type))
        return OutputKind::BuiltIn;
    return contains(external, type) ? OutputKind::External : OutputKind::Other;
}

QString videoRoute(const QList<ScreenArea> &screens, const QList<DrmConnector> &connectors)
{
    const QList<QRect> panels = areasOf(screens, OutputKind::BuiltIn);
    const QList<QRect> externals = areasOf(screens, OutputKind::External);
    if (panels.isEmpty() && !anyConnector(connectors, OutputKind::BuiltIn, &DrmConnector::connected))
        return {};
    if (!panels.isEmpty() && !externals.isEmpty())
        return shareAnArea(panels, externals) ? u"builtinandtvout"_s : QString();

    // One of a pair that shows the same may be all that the window system lists.
    const bool panelLit
        = !panels.isEmpty() || anyConnector(connectors, OutputKind::BuiltIn, &DrmConnector::enabled);
    const bool externalLit
        = !externals.isEmpty() || anyConnector(connectors, OutputKind::External, &DrmConnector::enabled);
    if (!externalLit)
        return {};
    if (!panelLit)
        return u"tvout"_s;
    return screens.size() <= 1 ? u"builtinandtvout"_s : QString();
}

QList<DrmConnector> readDrmConnectors(const QString &sysRoot)
{
    const QDir drm(sysRoot + u"/class/drm"_s);
    const QStringList names = drm.entryList({u"card*-*"_s}, QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name);
    QList<DrmConnector> connectors;
    for (const QString &name : names.first(std::min<qsizetype>(names.size(), MostConnectors))) {
        const QString folder = drm.filePath(name);
        connectors.append({name.section(u'-', 1), readWord(folder + u"/status"_s) == "connected",
                           readWord(folder + u"/enabled"_s) == "enabled"});
    }
    return connectors;
}

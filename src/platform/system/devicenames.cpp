// SPDX-License-Identifier: GPL-3.0-or-later
#include "devicenames.h"

#include <QFile>

#include <array>

using namespace Qt::Literals::StringLiterals;

namespace {
// Boards ship with these where their maker filled nothing in.
bool isFiller(const QString &text)
{
    static const std::array fillers = {"To be filled by O.E.M."_L1,
                                       "Default string"_L1,
                                       "System manufacturer"_L1,
                                       "System Product Name"_L1,
                                       "Not Specified"_L1,
                                       "O.E.M."_L1,
                                       "None"_L1,
                                       "Unknown"_L1};
    for (const QLatin1StringView filler : fillers) {
        if (text.compare(filler, Qt::CaseInsensitive) == 0)
            return true;
    }
    return false;
}

QByteArray readSmallFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.read(4096) : QByteArray();
}

QString readName(const QString &path)
{
    // Device tree strings end in a zero byte, DMI ones in a line feed.
    QByteArray bytes = readSmallFile(path);
    bytes.truncate(bytes.indexOf('\0') < 0 ? bytes.size() : bytes.indexOf('\0'));
    const QString text = QString::fromUtf8(bytes).simplified();
    return isFiller(text) ? QString() : text;
}

DeviceNames readDmi(const QString &sysRoot)
{
    const QString dmi = sysRoot + u"/class/dmi/id/"_s;
    return {readName(dmi + u"sys_vendor"_s), readName(dmi + u"product_name"_s),
            readName(dmi + u"board_version"_s)};
}

// "purism,librem5r4\0purism,librem5\0fsl,imx8mq\0": the first entry is the machine's own.
DeviceNames readDeviceTree(const QString &sysRoot, const QString &procRoot)
{
    const QString tree = procRoot + u"/device-tree/"_s;
    const QString compatible = readName(tree + u"compatible"_s);
    DeviceNames names;
    names.manufacturer = compatible.section(u',', 0, 0);
    names.model = readName(tree + u"model"_s);
    if (names.model.isEmpty())
        names.model = compatible.section(u',', 1);
    names.hardwareBuild = readName(sysRoot + u"/devices/soc0/revision"_s);
    return names;
}

bool needsEncoding(char byte)
{
    const auto code = static_cast<unsigned char>(byte);
    return code <= 0x20 || code == 0x7f || QByteArrayView("<>\"{}|\\^`%").contains(byte);
}
} // namespace

QString iriEncodedName(const QString &name)
{
    QByteArray encoded;
    const QByteArray utf8 = name.toUtf8();
    for (const char byte : utf8) {
        if (needsEncoding(byte))
            encoded += '%' + QByteArray(1, byte).toHex().toUpper();
        else
            encoded += byte;
    }
    return QString::fromUtf8(encoded);
}

DeviceNames readDeviceNames(const QString &sysRoot, const QString &procRoot)
{
    DeviceNames names = readDmi(sysRoot);
    const DeviceNames tree = readDeviceTree(sysRoot, procRoot);
    if (names.hardwareBuild.isEmpty())
        names.hardwareBuild = tree.hardwareBuild;
    if (!names.isComplete() && tree.isComplete()) {
        names.manufacturer = tree.manufacturer;
        names.model = tree.model;
    }
    return names;
}

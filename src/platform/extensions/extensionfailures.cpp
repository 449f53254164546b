// SPDX-License-Identifier: GPL-3.0-or-later
#include "extensionfailures.h"

#include "extensionslog.h"

#include <QDebug>

#include <algorithm>

namespace {

constexpr qsizetype LongestDetail = 500; // an extension may have written it

QString pattern(ExtensionFailure::Kind kind)
{
    using Kind = ExtensionFailure::Kind;
    switch (kind) {
    case Kind::Description:
        return qtTrId("qtn_extension_description");
    case Kind::LibraryMissing:
        return qtTrId("qtn_extension_missing");
    case Kind::OtherQt:
        return qtTrId("qtn_extension_qt");
    case Kind::OtherInterface:
        return qtTrId("qtn_extension_interface");
    case Kind::Start:
        return qtTrId("qtn_extension_start");
    case Kind::NoWidget:
    case Kind::WidgetGone:
        return qtTrId("qtn_extension_empty");
    case Kind::Call:
        return qtTrId("qtn_extension_call");
    case Kind::Nonsense:
        return qtTrId("qtn_extension_nonsense");
    case Kind::Crashed:
        return qtTrId("qtn_extension_crashed");
    case Kind::Hung:
        return qtTrId("qtn_extension_hung");
    }
    return {};
}

} // namespace

QString ExtensionFailure::text() const
{
    return pattern(kind).arg(name);
}

bool ExtensionFailure::canBeTriedAgain() const
{
    return kind == Kind::Crashed || kind == Kind::Hung;
}

QDebug operator<<(QDebug debug, const ExtensionFailure &failure)
{
    const QDebugStateSaver saver(debug);
    debug.nospace() << "ExtensionFailure(" << failure.file << ", " << failure.name << ", kind "
                    << int(failure.kind) << ", " << failure.detail << ')';
    return debug;
}

QStringList ExtensionFailures::texts() const
{
    QStringList texts;
    for (const ExtensionFailure &failure : m_list)
        texts.append(failure.text());
    texts.removeDuplicates();
    return texts;
}

void ExtensionFailures::add(const ExtensionFailure &failure)
{
    const bool isKnown = std::any_of(m_list.cbegin(), m_list.cend(), [&](const ExtensionFailure &known) {
        return known.file == failure.file && known.path == failure.path && known.kind == failure.kind;
    });
    if (isKnown)
        return;
    qCWarning(extensionsLog, "extension “%ls” (%ls): %ls", qUtf16Printable(failure.name),
              qUtf16Printable(failure.file),
              qUtf16Printable(failure.detail.left(LongestDetail).simplified()));
    m_list.append(failure);
    Q_EMIT changed();
}

void ExtensionFailures::rename(const QString &path, const QString &name)
{
    bool isRenamed = false;
    for (ExtensionFailure &failure : m_list) {
        if (failure.path != path || failure.name == name)
            continue;
        failure.name = name;
        isRenamed = true;
    }
    if (isRenamed)
        Q_EMIT changed();
}

void ExtensionFailures::remove(const QString &file)
{
    if (m_list.removeIf([&](const ExtensionFailure &failure) { return failure.file == file; }) > 0)
        Q_EMIT changed();
}

void ExtensionFailures::clear()
{
    if (m_list.isEmpty())
        return;
    m_list.clear();
    Q_EMIT changed();
}

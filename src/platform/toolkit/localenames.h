// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "locale.h"

#include <QHash>
#include <QStringList>

namespace toolkit {

// The names of a locale's categories, from settings of the form LANG=de_DE.UTF-8.
class LocaleNames
{
public:
    // Of the process's environment.
    [[nodiscard]] static LocaleNames ofEnvironment();
    // A list with a LANG is the whole of the settings, as the system's locale service tells them; any other
    // changes only what it names.
    void apply(const QStringList &settings);

    // "de_DE", without encoding and modifier; "C" where nothing is set.
    [[nodiscard]] QString category(Locale::Category category) const;
    [[nodiscard]] QStringList languages() const;

    [[nodiscard]] bool operator==(const LocaleNames &other) const = default;

private:
    QHash<QString, QString> m_settings;
};

} // namespace toolkit

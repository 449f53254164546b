// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

#include <functional>

using GSettings = struct _GSettings;

// One GSettings schema, or nothing when no directory and no system source has it: every read then gives its
// default, as it does for a key that an older installed schema lacks.
class GSettingsStore
{
public:
    // Where the program's own schemas are, those of the build tree or the installation: they go before the
    // system's, which may be older.
    [[nodiscard]] static QStringList ownDirectories();

    // Looks in `directories` (of compiled schemas) in order, then where the system has its own.
    GSettingsStore(const QString &schemaId, const QStringList &directories, std::function<void()> changed);
    ~GSettingsStore();
    GSettingsStore(const GSettingsStore &) = delete;
    GSettingsStore &operator=(const GSettingsStore &) = delete;

    [[nodiscard]] bool isFound() const { return m_settings != nullptr; }
    [[nodiscard]] int intValue(const char *key, int defaultValue) const;
    [[nodiscard]] bool boolValue(const char *key, bool defaultValue) const;
    [[nodiscard]] QString stringValue(const char *key, const QString &defaultValue) const;

private:
    [[nodiscard]] bool has(const char *key, const char *type) const;

    GSettings *m_settings = nullptr;
    std::function<void()> m_changed;
};

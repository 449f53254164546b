// SPDX-License-Identifier: GPL-3.0-or-later
#include "gsettingsstore.h"

#include "systemlog.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>

#include <gio/gio.h>

#include <memory>

using namespace Qt::Literals::StringLiterals;

namespace {
struct SchemaUnref
{
    void operator()(GSettingsSchema *schema) const { g_settings_schema_unref(schema); }
};
using SchemaPointer = std::unique_ptr<GSettingsSchema, SchemaUnref>;

struct SourceUnref
{
    void operator()(GSettingsSchemaSource *source) const { g_settings_schema_source_unref(source); }
};

SchemaPointer lookUpIn(const QString &directory, const char *schemaId)
{
    const std::unique_ptr<GSettingsSchemaSource, SourceUnref> source(
        g_settings_schema_source_new_from_directory(QFile::encodeName(directory).constData(),
                                                    g_settings_schema_source_get_default(), TRUE, nullptr));
    return SchemaPointer(source ? g_settings_schema_source_lookup(source.get(), schemaId, FALSE) : nullptr);
}

SchemaPointer lookUp(const QStringList &directories, const char *schemaId)
{
    for (const QString &directory : directories) {
        if (SchemaPointer schema = lookUpIn(directory, schemaId))
            return schema;
    }
    GSettingsSchemaSource *const system = g_settings_schema_source_get_default();
    return SchemaPointer(system ? g_settings_schema_source_lookup(system, schemaId, TRUE) : nullptr);
}

void keyChanged(GSettings *, const char *, gpointer changed)
{
    (*static_cast<std::function<void()> *>(changed))();
}
} // namespace

QStringList GSettingsStore::ownDirectories()
{
    const QString programs = QCoreApplication::applicationDirPath();
    const bool isService = QDir(programs).dirName() == "kestrel"_L1; // of an installation
    const QString data
        = isService ? QStringLiteral(KESTREL_DATA_FROM_LIBEXEC) : QStringLiteral(KESTREL_DATA_FROM_BIN);
    return {programs + u'/' + data + u"/glib-2.0/schemas"_s, programs + u"/schemas"_s};
}

GSettingsStore::GSettingsStore(const QString &schemaId, const QStringList &directories,
                               std::function<void()> changed)
    : m_changed(std::move(changed))
{
    const SchemaPointer schema = lookUp(directories, schemaId.toUtf8().constData());
    if (!schema) {
        qCWarning(systemLog, "settings schema %ls not found: defaults hold", qUtf16Printable(schemaId));
        return;
    }
    m_settings = g_settings_new_full(schema.get(), nullptr, nullptr);
    g_signal_connect(m_settings, "changed", G_CALLBACK(keyChanged), &m_changed);
    // A back end reports only changes of keys that were read since the signal was connected.
    const std::unique_ptr<gchar *, decltype(&g_strfreev)> keys(g_settings_schema_list_keys(schema.get()),
                                                               g_strfreev);
    for (gchar **key = keys.get(); *key; ++key)
        g_variant_unref(g_settings_get_value(m_settings, *key));
}

GSettingsStore::~GSettingsStore()
{
    if (!m_settings)
        return;
    g_signal_handlers_disconnect_by_data(m_settings, &m_changed);
    g_object_unref(m_settings);
}

// Reading a key that the schema lacks, or in another type, ends the process: ask first.
bool GSettingsStore::has(const char *key, const char *type) const
{
    if (!m_settings)
        return false;
    GSettingsSchema *schema = nullptr;
    g_object_get(m_settings, "settings-schema", &schema, nullptr);
    const SchemaPointer owner(schema);
    if (!g_settings_schema_has_key(schema, key))
        return false;
    GSettingsSchemaKey *const schemaKey = g_settings_schema_get_key(schema, key);
    const bool matches
        = g_variant_type_equal(g_settings_schema_key_get_value_type(schemaKey), G_VARIANT_TYPE(type));
    g_settings_schema_key_unref(schemaKey);
    return matches;
}

int GSettingsStore::intValue(const char *key, int defaultValue) const
{
    return has(key, "i") ? g_settings_get_int(m_settings, key) : defaultValue;
}

bool GSettingsStore::boolValue(const char *key, bool defaultValue) const
{
    return has(key, "b") ? g_settings_get_boolean(m_settings, key) != FALSE : defaultValue;
}

QString GSettingsStore::stringValue(const char *key, const QString &defaultValue) const
{
    if (!has(key, "s"))
        return defaultValue;
    const std::unique_ptr<gchar, decltype(&g_free)> text(g_settings_get_string(m_settings, key), g_free);
    return QString::fromUtf8(text.get());
}

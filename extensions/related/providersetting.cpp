// SPDX-License-Identifier: GPL-3.0-or-later
#include "providersetting.h"

#include <QCoreApplication>
#include <QFile>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr char schemaId[] = "com.harrow.kestrel";
constexpr char providerKey[] = "related-videos-provider";
constexpr char modeKey[] = "online-content-mode";

struct SchemaUnref
{
    void operator()(GSettingsSchema *schema) const { g_settings_schema_unref(schema); }
    void operator()(GSettingsSchemaKey *key) const { g_settings_schema_key_unref(key); }
    void operator()(GSettingsSchemaSource *source) const { g_settings_schema_source_unref(source); }
};
using Schema = std::unique_ptr<GSettingsSchema, SchemaUnref>;

Schema schemaOf(const QString &folder)
{
    const std::unique_ptr<GSettingsSchemaSource, SchemaUnref> source(
        g_settings_schema_source_new_from_directory(QFile::encodeName(folder).constData(), nullptr, TRUE,
                                                    nullptr));
    return Schema(source ? g_settings_schema_source_lookup(source.get(), schemaId, FALSE) : nullptr);
}

// The program's own before the system's, which may be of another version.
Schema findSchema(const QStringList &folders)
{
    for (const QString &folder : folders) {
        if (Schema schema = schemaOf(folder))
            return schema;
    }
    GSettingsSchemaSource *system = g_settings_schema_source_get_default();
    return Schema(system ? g_settings_schema_source_lookup(system, schemaId, TRUE) : nullptr);
}

// Asking for a key that is not there, or of another type, ends the process.
bool has(GSettingsSchema *schema, const char *name, const GVariantType *type)
{
    if (!g_settings_schema_has_key(schema, name))
        return false;
    const std::unique_ptr<GSettingsSchemaKey, SchemaUnref> key(g_settings_schema_get_key(schema, name));
    return g_variant_type_equal(g_settings_schema_key_get_value_type(key.get()), type);
}

} // namespace

QStringList ProviderSetting::programFolders()
{
    const QString program = QCoreApplication::applicationDirPath();
    return {program + u"/../share/glib-2.0/schemas"_s, program + u"/schemas"_s};
}

ProviderSetting::ProviderSetting(const QStringList &schemaFolders, QObject *parent) : QObject(parent)
{
    const Schema schema = findSchema(schemaFolders);
    if (!schema || !has(schema.get(), providerKey, G_VARIANT_TYPE_STRING)
        || !has(schema.get(), modeKey, G_VARIANT_TYPE_INT32))
        return;
    m_settings.reset(g_settings_new_full(schema.get(), nullptr, nullptr));
    g_signal_connect(m_settings.get(), "changed", G_CALLBACK(onChanged), this);
    read(); // after that: a back end tells of changes of what was read since
}

ProviderSetting::~ProviderSetting()
{
    if (m_settings)
        g_signal_handlers_disconnect_by_data(m_settings.get(), this);
}

void ProviderSetting::onChanged(GSettings *, const gchar *, gpointer self)
{
    auto *setting = static_cast<ProviderSetting *>(self);
    const QUrl before = setting->m_address;
    setting->read();
    if (setting->m_address != before)
        Q_EMIT setting->changed();
}

void ProviderSetting::read()
{
    const bool isWanted = g_settings_get_int(m_settings.get(), modeKey) == 1;
    const std::unique_ptr<gchar, decltype(&g_free)> text(g_settings_get_string(m_settings.get(), providerKey),
                                                         g_free);
    m_address = isWanted ? QUrl(QString::fromUtf8(text.get()).trimmed()) : QUrl();
}

// SPDX-License-Identifier: GPL-3.0-or-later
#include "localenames.h"

#include <algorithm>
#include <array>

using namespace Qt::Literals::StringLiterals;

namespace toolkit {

namespace {

QString variable(Locale::Category category)
{
    switch (category) {
    case Locale::Category::Messages:
        return u"LC_MESSAGES"_s;
    case Locale::Category::Time:
        return u"LC_TIME"_s;
    case Locale::Category::Collate:
        return u"LC_COLLATE"_s;
    case Locale::Category::Numeric:
        return u"LC_NUMERIC"_s;
    }
    return {};
}

QString plainName(const QString &value)
{
    const QString name = value.section(u'.', 0, 0).section(u'@', 0, 0);
    return name == "POSIX"_L1 || name.isEmpty() ? u"C"_s : name;
}

} // namespace

LocaleNames LocaleNames::ofEnvironment()
{
    LocaleNames names;
    static constexpr std::array variables{"LANG",    "LANGUAGE",   "LC_ALL",    "LC_MESSAGES",
                                          "LC_TIME", "LC_COLLATE", "LC_NUMERIC"};
    for (const char *name : variables) {
        const QString value = qEnvironmentVariable(name);
        if (!value.isEmpty())
            names.m_settings.insert(QString::fromLatin1(name), value);
    }
    return names;
}

void LocaleNames::apply(const QStringList &settings)
{
    const bool isWhole = std::any_of(settings.begin(), settings.end(),
                                     [](const QString &setting) { return setting.startsWith("LANG="_L1); });
    if (isWhole)
        m_settings.clear(); // what the list does not name follows LANG again
    for (const QString &setting : settings)
        m_settings.insert(setting.section(u'=', 0, 0), setting.section(u'=', 1));
}

QString LocaleNames::category(Locale::Category category) const
{
    for (const QString &name : {u"LC_ALL"_s, variable(category), u"LANG"_s}) {
        const QString value = m_settings.value(name);
        if (!value.isEmpty())
            return plainName(value);
    }
    return u"C"_s;
}

QStringList LocaleNames::languages() const
{
    const QString messages = category(Locale::Category::Messages);
    if (messages == "C"_L1)
        return {}; // the language list counts only in a real locale
    QStringList languages;
    const QStringList wished = m_settings.value(u"LANGUAGE"_s).split(u':', Qt::SkipEmptyParts);
    for (const QString &language : wished)
        languages.append(plainName(language));
    if (!languages.contains(messages))
        languages.append(messages);
    return languages;
}

} // namespace toolkit

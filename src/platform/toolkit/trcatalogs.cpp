// SPDX-License-Identifier: GPL-3.0-or-later
#include "trcatalogs.h"

#include "datafile.h"
#include "toolkitlog.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QLocale>
#include <QStandardPaths>

using namespace Qt::Literals::StringLiterals;

namespace toolkit {

namespace {

QString catalogFile(const QString &name, const QString &language)
{
    const QStringList folders = TrCatalogs::folders();
    for (const QString &folder : folders) {
        const QString path = folder + u'/' + name + u'_' + language + u".qm"_s;
        if (QFileInfo::exists(path))
            return path;
    }
    return {};
}

// "pt_BR", then "pt". Chinese is written in two scripts, which differ more than two countries do: "zh_SG" is
// read as "zh_CN", "zh_TW" is not.
QStringList spellings(const QString &language)
{
    QStringList names{language, language.section(u'_', 0, 0)};
    const QLocale locale(language);
    if (locale.language() == QLocale::Chinese)
        names.append(locale.script() == QLocale::SimplifiedChineseScript ? u"zh_CN"_s : u"zh_TW"_s);
    return names;
}

QString catalogLanguage(const QString &name, const QStringList &languages)
{
    for (const QString &language : languages) {
        const QStringList names = spellings(language);
        for (const QString &spelling : names) {
            if (!catalogFile(name, spelling).isEmpty())
                return spelling;
        }
    }
    return {};
}

} // namespace

TrCatalogs::~TrCatalogs()
{
    uninstall();
}

QStringList TrCatalogs::folders()
{
    QStringList folders;
    const QString chosen = qEnvironmentVariable("KESTREL_TRANSLATIONS");
    if (!chosen.isEmpty())
        folders.append(chosen);
    folders.append(installedDataFolder() + u"/translations"_s);
    folders.append(u":/translations"_s);
    // More languages; texts of another version of the program must not hide its own.
    folders.append(QStandardPaths::locateAll(QStandardPaths::GenericDataLocation, u"kestrel/translations"_s,
                                             QStandardPaths::LocateDirectory));
    return folders;
}

void TrCatalogs::add(const QString &name)
{
    if (!m_names.contains(name))
        m_names.append(name);
}

void TrCatalogs::install(const QStringList &languages)
{
    uninstall();
    for (const QString &name : m_names)
        load(name, u"en"_s);
    // Texts of the language lie over those of all English catalogs.
    for (const QString &name : m_names) {
        const QString language = catalogLanguage(name, languages);
        if (!language.isEmpty() && language != "en"_L1)
            load(name, language);
    }
}

void TrCatalogs::uninstall()
{
    if (QCoreApplication::instance() != nullptr) {
        for (const auto &translator : m_translators)
            QCoreApplication::removeTranslator(translator.get());
    }
    m_translators.clear();
}

void TrCatalogs::load(const QString &name, const QString &language)
{
    const QString path = catalogFile(name, language);
    auto translator = std::make_unique<QTranslator>();
    if (path.isEmpty() || !translator->load(path)) {
        qCWarning(lcToolkit) << "no catalog" << name << "for" << language;
        return;
    }
    QCoreApplication::installTranslator(translator.get());
    m_translators.push_back(std::move(translator));
}

} // namespace toolkit

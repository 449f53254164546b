// SPDX-License-Identifier: GPL-3.0-or-later
#include "locale.h"

#include "localenames.h"
#include "localewatcher.h"
#include "trcatalogs.h"

#include <QGuiApplication>
#include <QPointer>

using namespace Qt::Literals::StringLiterals;

namespace toolkit {

namespace {

QPointer<Locale> defaultLocale;

} // namespace

class Locale::Private
{
public:
    void install();

    LocaleNames names = LocaleNames::ofEnvironment();
    TrCatalogs catalogs;
    LocaleWatcher *watcher = nullptr;
    bool isDefault = false;
};

void Locale::Private::install()
{
    // Numbers and dates follow the region, the direction of the pages the language of their texts.
    QLocale::setDefault(QLocale(names.category(Category::Numeric)));
    catalogs.install(names.languages());
    const QLocale texts(names.languages().value(0, u"C"_s));
    QGuiApplication::setLayoutDirection(texts.textDirection());
}

Locale::Locale(QObject *parent) : QObject(parent), d(std::make_unique<Private>()) { }

Locale::~Locale() = default;

void Locale::installTrCatalog(const QString &name)
{
    d->catalogs.add(name);
    if (d->isDefault)
        d->install();
}

void Locale::setDefault(Locale *locale)
{
    if (defaultLocale != nullptr && defaultLocale != locale) {
        defaultLocale->d->catalogs.uninstall();
        defaultLocale->d->isDefault = false;
    }
    defaultLocale = locale;
    if (locale == nullptr)
        return;
    locale->d->isDefault = true;
    locale->d->install();
}

QLocale Locale::current()
{
    return QLocale();
}

QLocale Locale::ofTexts()
{
    return defaultLocale ? QLocale(defaultLocale->d->names.languages().value(0, u"C"_s)) : current();
}

QLocale Locale::ofDates()
{
    return defaultLocale ? QLocale(defaultLocale->d->names.category(Category::Time)) : current();
}

QStringList Locale::messageLanguages() const
{
    return d->names.languages();
}

QString Locale::categoryName(Category category) const
{
    return d->names.category(category);
}

void Locale::connectSettings()
{
    if (d->watcher != nullptr)
        return;
    d->watcher = new LocaleWatcher(this);
    connect(d->watcher, &LocaleWatcher::changed, this, [this](const QStringList &settings) {
        if (settings.isEmpty())
            d->names = LocaleNames::ofEnvironment();
        else
            d->names.apply(settings);
        if (d->isDefault)
            d->install();
        Q_EMIT settingsChanged();
    });
}

QCollator Locale::collator() const
{
    // The plain C order knows neither letters nor numbers, only codes: nobody wants a list in it.
    const QString name = categoryName(Category::Collate);
    QCollator collator(QLocale(name == "C"_L1 ? u"en_US"_s : name));
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    collator.setNumericMode(true);
    return collator;
}

} // namespace toolkit

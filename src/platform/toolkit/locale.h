// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QCollator>
#include <QLocale>
#include <QObject>

#include <memory>

namespace toolkit {

// The user's locale: translation catalogs with ID-based texts, collation, change notification.
class Locale : public QObject
{
    Q_OBJECT

public:
    enum class Category { Messages, Time, Collate, Numeric };

    explicit Locale(QObject *parent = nullptr); // of the system
    ~Locale() override;

    // The catalog of this name in the locale's messages language, over the English one, so that no id ever
    // shows.
    void installTrCatalog(const QString &name);
    // Makes it QLocale's default, installs its catalogs into the application, sets the layout direction.
    static void setDefault(Locale *locale);
    [[nodiscard]] static QLocale current();
    // The language of the texts, which is not always that of numbers and dates; current() when none is the
    // default.
    [[nodiscard]] static QLocale ofTexts();
    // The same for how dates and times are written.
    [[nodiscard]] static QLocale ofDates();

    // Languages in which texts are looked for, the first first; English is not listed unless it was asked
    // for.
    [[nodiscard]] QStringList messageLanguages() const;

    [[nodiscard]] QString categoryName(Category category) const; // for example "de_DE"
    // Follows the system's settings; settingsChanged() tells.
    void connectSettings();
    // A collator of the locale's collation category: case-insensitive first, numeric.
    [[nodiscard]] QCollator collator() const;

Q_SIGNALS:
    void settingsChanged();

private:
    class Private;
    std::unique_ptr<Private> d;
};

} // namespace toolkit

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringList>
#include <QTranslator>

#include <memory>
#include <vector>

namespace toolkit {

// Catalogs of ID-based texts, <name>_<language>.qm. The English one of a name lies below the one of the
// language, so that a text that is not translated yet shows in English and never as its id.
class TrCatalogs
{
public:
    TrCatalogs() = default;
    ~TrCatalogs();
    Q_DISABLE_COPY_MOVE(TrCatalogs)

    void add(const QString &name);
    // Loads the catalogs for the first language there is one for, and installs them in place of the former
    // ones.
    void install(const QStringList &languages);
    void uninstall();

    // Where catalogs are looked for, the first first.
    [[nodiscard]] static QStringList folders();

private:
    void load(const QString &name, const QString &language);

    QStringList m_names;
    std::vector<std::unique_ptr<QTranslator>> m_translators;
};

} // namespace toolkit

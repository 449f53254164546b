// SPDX-License-Identifier: GPL-3.0-or-later
#include "theme.h"

#include "colormath.h"
#include "datafile.h"
#include "desktopappearance.h"
#include "iconstore.h"
#include "themefile.h"
#include "themewatcher.h"
#include "toolkitlog.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>

#include <optional>

using namespace Qt::Literals::StringLiterals;

namespace toolkit {

Q_LOGGING_CATEGORY(lcWidgets, "kestrel.toolkit.widgets")

namespace {

constexpr qreal plainContrast = 4.5;
constexpr qreal strongContrast = 7;

// Only who works on the look needs that; a theme that is installed changes with the program.
#ifdef KESTREL_SOURCE_THEME
constexpr bool WatchesFiles = true;
#else
constexpr bool WatchesFiles = false;
#endif

// Where the theme may stand, the first that is one wins.
QStringList themeFiles()
{
    const QString own = u"theme/kestrel.theme.json"_s;
    QStringList files{qEnvironmentVariable("KESTREL_THEME")};
#ifdef KESTREL_SOURCE_THEME
    // A development build shows a change of the look when the file is saved.
    if (QFile::exists(QStringLiteral(KESTREL_SOURCE_THEME)))
        files.append(QStringLiteral(KESTREL_SOURCE_THEME));
#endif
    files.append({dataFile(own), u":/"_s + own});
    files.removeAll(QString());
    files.removeDuplicates();
    return files;
}

} // namespace

class Theme::Private
{
public:
    ThemeFile file;
    QString path;
    DesktopAppearance desktop;
    ThemeWatcher watcher;
    IconStore icons;
    QColor ownAccent; // set by the program; wins over the desktop's
    std::optional<bool> dark;
    std::optional<bool> contrast;
    std::optional<bool> reducedMotion;
    std::optional<qreal> textScale;
    QHash<std::pair<QString, int>, Style> styles; // by name and by orientation and ground

    [[nodiscard]] bool isDark() const { return dark.value_or(desktop.isDark()); }
    [[nodiscard]] bool highContrast() const { return contrast.value_or(desktop.highContrast()); }
    [[nodiscard]] qreal scale() const { return textScale.value_or(desktop.textScale()); }
    [[nodiscard]] QColor accent(bool onDark) const
    {
        QColor color = ownAccent.isValid() ? ownAccent : desktop.accentColor();
        if (!color.isValid())
            color = file.token(u"accent"_s, onDark, highContrast());
        // On the ground of fields, menus and pressed cells, too: of all that it is drawn on the nearest to
        // it.
        QColor ground = file.token(u"surface2"_s, onDark, highContrast());
        if (!ground.isValid())
            ground = file.token(u"background"_s, onDark, highContrast());
        return legibleAccent(color, ground, highContrast() ? strongContrast : plainContrast);
    }
    [[nodiscard]] ThemeFile::Context context(Qt::Orientation orientation, bool inverted) const
    {
        return {isDark(), orientation, scale(), highContrast(), accent(true), accent(false), inverted};
    }
};

Theme *Theme::instance()
{
    // Belongs to the application: pixmaps must not outlive it, and the next application of a process starts
    // afresh.
    static Theme *theme = nullptr;
    if (theme == nullptr) {
        theme = new Theme;
        connect(theme, &QObject::destroyed, [] { theme = nullptr; });
        if (auto *application = QCoreApplication::instance())
            theme->setParent(application);
    }
    return theme;
}

Theme::Theme() : d(std::make_unique<Private>())
{
    for (const QString &file : themeFiles()) {
        if (loadFile(file))
            break;
    }
    connect(&d->desktop, &DesktopAppearance::changed, this, [this] { announce(); });
    connect(&d->watcher, &ThemeWatcher::changed, this, [this] {
        if (QFile::exists(d->path))
            loadFile(d->path);
    });
}

Theme::~Theme() = default;

void Theme::announce()
{
    d->styles.clear();
    Q_EMIT stylesChanged();
    Q_EMIT themeChangeCompleted();
}

bool Theme::loadFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        qCWarning(lcWidgets) << "theme:" << path << "cannot be read:" << file.errorString();
        return false;
    }
    QString error;
    if (!d->file.parse(file.readAll(), &error)) {
        qCWarning(lcWidgets) << "theme:" << path << "is no theme:" << error;
        return false;
    }
    const bool bundled = path.startsWith(u':');
    const QString icons = bundled ? QString() : QFileInfo(path).absolutePath() + u"/icons"_s;
    d->icons.setFolder(icons);
    if (WatchesFiles && path != d->path)
        d->watcher.watch(bundled ? QString() : path, icons);
    d->path = path;
    announce();
    return true;
}

Style Theme::style(const QString &styleName, Qt::Orientation screen, bool inverted) const
{
    const auto key = std::pair(styleName, 2 * int(screen) + (inverted ? 1 : 0));
    const auto kept = d->styles.constFind(key);
    if (kept != d->styles.constEnd())
        return *kept;
    if (!styleName.isEmpty() && !d->file.contains(styleName))
        qCWarning(lcWidgets) << "theme: no style" << styleName;
    const Style style = d->file.resolve(styleName, d->context(screen, inverted));
    d->styles.insert(key, style);
    return style;
}

bool Theme::hasStyle(const QString &styleName) const
{
    return d->file.contains(styleName);
}

QStringList Theme::styleNames() const
{
    return d->file.styleNames();
}

QColor Theme::token(const QString &name) const
{
    return name == "accent"_L1 ? d->accent(isDark()) : d->file.token(name, isDark(), highContrast());
}

QColor Theme::accentColor(int index) const
{
    // The palette's further accents are shades of the first.
    const QColor first = d->accent(isDark());
    return index <= 0 ? first : legibleAccent(first.darker(100 + 20 * index), token(u"surface2"_s));
}

bool Theme::isDark() const
{
    return d->isDark();
}

void Theme::setAccentColor(const QColor &color)
{
    const QColor before = accentColor();
    d->ownAccent = color;
    if (accentColor() != before)
        announce();
}

void Theme::setDark(bool dark)
{
    const bool before = isDark();
    d->dark = dark;
    if (isDark() != before)
        announce();
}

bool Theme::highContrast() const
{
    return d->highContrast();
}

void Theme::setHighContrast(bool high)
{
    const bool before = highContrast();
    d->contrast = high;
    if (highContrast() != before)
        announce();
}

void Theme::setTextScale(qreal scale)
{
    const qreal before = textScale();
    d->textScale = scale;
    if (!qFuzzyCompare(textScale(), before))
        announce();
}

void Theme::setReducedMotion(bool reduced)
{
    const bool before = reducedMotion();
    d->reducedMotion = reduced;
    if (reducedMotion() != before)
        announce();
}

bool Theme::reducedMotion() const
{
    return d->reducedMotion.value_or(d->desktop.reducedMotion());
}

qreal Theme::textScale() const
{
    return d->scale();
}

QPixmap Theme::icon(const QString &iconId, const QSize &size, const QColor &color) const
{
    return d->icons.pixmap(iconId, size, color);
}

bool Theme::isDirectional(const QString &iconId) const
{
    return d->file.isDirectional(iconId);
}

bool Theme::hasIcon(const QString &iconId) const
{
    return d->icons.contains(iconId);
}

} // namespace toolkit

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "style.h"

#include <QIcon>
#include <QObject>
#include <QPixmap>

#include <memory>

namespace toolkit {

// The theme file (style name -> metrics, fonts, colours, images), the accent colour and the icons.
class Theme : public QObject
{
    Q_OBJECT

public:
    [[nodiscard]] static Theme *instance();
    ~Theme() override;

    // Inverted: as it looks on something that is dark in both schemes, light on dark; where the file has a
    // style of this name that ends in Inverted, that one.
    [[nodiscard]] Style style(const QString &styleName, Qt::Orientation screen = Qt::Vertical,
                              bool inverted = false) const;
    // Accent colours of the palette; index 0 is the first (the desktop's when it has one).
    [[nodiscard]] QColor accentColor(int index = 0) const;
    [[nodiscard]] bool isDark() const;
    void setAccentColor(const QColor &color); // emits themeChangeCompleted() when it is another
    [[nodiscard]] bool highContrast() const;
    [[nodiscard]] bool reducedMotion() const;
    // Duration for an animation of `ms`: 0 with reduced motion.
    [[nodiscard]] int motion(int ms) const { return reducedMotion() ? 0 : ms; }
    [[nodiscard]] qreal textScale() const;

    // Reads a theme file in place of the bundled one; icons in the folder "icons" beside it are taken before
    // the program's own. A development build reads it again whenever it changes. False, and nothing changes,
    // when it cannot be read or is no theme; the log says why.
    bool loadFile(const QString &path);
    [[nodiscard]] bool hasStyle(const QString &styleName) const;
    [[nodiscard]] QStringList styleNames() const;
    // A colour of the theme by token name ("background", "text1", ...), of the scheme in force.
    [[nodiscard]] QColor token(const QString &name) const;
    // Overrides of what the desktop says: for the settings and for tests.
    void setDark(bool dark);
    void setHighContrast(bool high);
    void setTextScale(qreal scale);
    void setReducedMotion(bool reduced);

    // One of the project's SVG icons by id, drawn at `size` device pixels in `color` (its own colour when
    // invalid).
    [[nodiscard]] QPixmap icon(const QString &iconId, const QSize &size,
                               const QColor &color = QColor()) const;
    [[nodiscard]] bool hasIcon(const QString &iconId) const;
    // Whether an icon points along the line, so that it is mirrored where lines run from right to left.
    [[nodiscard]] bool isDirectional(const QString &iconId) const;

Q_SIGNALS:
    // Styles answer anew: widgets read theirs. themeChangeCompleted() follows when they have.
    void stylesChanged();
    void themeChangeCompleted();

private:
    Theme();
    void announce();
    class Private;
    std::unique_ptr<Private> d;
};

} // namespace toolkit

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QFont>
#include <QHash>
#include <QMarginsF>
#include <QSizeF>
#include <QString>

namespace toolkit {

// What the theme file says of one style name, in one orientation. A value that the file does not give is
// invalid (sizes -1, colours invalid, strings empty).
struct Style
{
    QString name;
    QSizeF minimumSize{-1, -1};
    QSizeF preferredSize{-1, -1};
    QSizeF maximumSize{-1, -1};
    QMarginsF margins; // inside the widget, around its content
    qreal spacing = 0; // between the items of a layout policy
    qreal radius = 0;
    QFont font; // pixel size in logical pixels, text scale applied
    qreal lineHeight = -1; // logical pixels; -1: the font's own
    int maximumLines = 0; // 0: any number
    Qt::Alignment alignment = Qt::AlignLeft | Qt::AlignVCenter;
    QHash<QString, QColor> colors; // "text", "background", "pressed", "accent", "line", ...
    QHash<QString, QString> images; // "background", "icon", ... -> icon id or path
    QHash<QString, double> numbers; // anything else
    bool inverted = false; // light on dark in both schemes, and so is what stands in it

    [[nodiscard]] QColor color(const QString &key, const QColor &fallback = QColor()) const
    {
        return colors.value(key, fallback);
    }
    [[nodiscard]] double number(const QString &key, double fallback = 0) const
    {
        return numbers.value(key, fallback);
    }
};

} // namespace toolkit

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "style.h"

#include <QJsonObject>
#include <QStringList>

namespace toolkit {

// The theme file, parsed: turns a style name into a Style. Knows nothing of the desktop; what it needs comes
// in the Context.
class ThemeFile
{
public:
    struct Context
    {
        bool dark = true;
        Qt::Orientation orientation = Qt::Vertical;
        qreal textScale = 1;
        bool highContrast = false;
        QColor darkAccent; // invalid: the file's own
        QColor lightAccent;
        bool inverted = false; // for what stands on something that is dark in both schemes
    };

    // False, with a reason, when the text is no theme; the object keeps what it had.
    [[nodiscard]] bool parse(const QByteArray &json, QString *error);
    [[nodiscard]] bool isEmpty() const { return m_styles.isEmpty(); }
    [[nodiscard]] bool contains(const QString &styleName) const { return m_styles.contains(styleName); }
    [[nodiscard]] QStringList styleNames() const { return m_styles.keys(); }
    [[nodiscard]] QColor token(const QString &name, bool dark, bool highContrast = false) const;
    [[nodiscard]] bool isDirectional(const QString &iconId) const { return m_directional.contains(iconId); }
    [[nodiscard]] Style resolve(const QString &wantedName, const Context &context) const;

private:
    [[nodiscard]] QString variant(const QString &styleName, const Context &context) const;
    [[nodiscard]] QJsonObject merged(const QString &styleName, const Context &context, int depth) const;
    [[nodiscard]] QColor parseColor(const QString &text, bool dark, const Context &context) const;
    void applyType(Style &style, const QString &type, const Context &context) const;
    [[nodiscard]] qreal typeScale(const QJsonObject &type, const Context &context) const;
    void applyFit(Style &style, const QJsonObject &fit, const Context &context) const;

    QJsonObject m_tokens;
    QJsonObject m_types;
    QJsonObject m_styles;
    QStringList m_families;
    QStringList m_directional; // icons that point along the line
};

} // namespace toolkit

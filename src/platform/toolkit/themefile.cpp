// SPDX-License-Identifier: GPL-3.0-or-later
#include "themefile.h"

#include "toolkitlog.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QtMath>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace toolkit {

namespace {

constexpr int deepestInheritance = 8;
constexpr qreal largeTextFrom = 1.4;
constexpr auto invertedSuffix = "Inverted"_L1;

// Objects are merged key by key (colours, numbers, images), anything else is replaced.
void mergeOver(QJsonObject &base, const QJsonObject &over)
{
    for (auto it = over.begin(); it != over.end(); ++it) {
        if (it->isObject() && base.value(it.key()).isObject()) {
            QJsonObject inner = base.value(it.key()).toObject();
            mergeOver(inner, it->toObject());
            base.insert(it.key(), inner);
        } else {
            base.insert(it.key(), *it);
        }
    }
}

QSizeF sizeOf(const QJsonValue &value)
{
    const QJsonArray pair = value.toArray();
    return pair.size() == 2 ? QSizeF(pair.at(0).toDouble(-1), pair.at(1).toDouble(-1)) : QSizeF(-1, -1);
}

QMarginsF marginsOf(const QJsonValue &value)
{
    const QJsonArray four = value.toArray();
    if (four.size() != 4)
        return {};
    return {four.at(0).toDouble(), four.at(1).toDouble(), four.at(2).toDouble(), four.at(3).toDouble()};
}

Qt::Alignment alignmentOf(const QString &text)
{
    static const QHash<QString, Qt::AlignmentFlag> names{
        {u"left"_s, Qt::AlignLeft}, {u"right"_s, Qt::AlignRight},   {u"hcenter"_s, Qt::AlignHCenter},
        {u"top"_s, Qt::AlignTop},   {u"bottom"_s, Qt::AlignBottom}, {u"vcenter"_s, Qt::AlignVCenter}};
    Qt::Alignment alignment;
    for (const QString &word : text.split(u' ', Qt::SkipEmptyParts))
        alignment |= names.value(word, Qt::AlignLeft);
    return alignment;
}

} // namespace

bool ThemeFile::parse(const QByteArray &json, QString *error)
{
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(json, &parseError);
    if (parseError.error != QJsonParseError::NoError) {
        *error = u"%1 at offset %2"_s.arg(parseError.errorString()).arg(parseError.offset);
        return false;
    }
    const QJsonObject root = document.object();
    const QJsonObject tokens = root.value(u"tokens"_s).toObject();
    if (!tokens.value(u"dark"_s).isObject() || !tokens.value(u"light"_s).isObject()) {
        *error = u"no tokens for dark and light"_s;
        return false;
    }
    if (root.value(u"styles"_s).toObject().isEmpty()) {
        *error = u"no styles"_s;
        return false;
    }
    m_tokens = tokens;
    m_types = root.value(u"type"_s).toObject();
    m_styles = root.value(u"styles"_s).toObject();
    m_families.clear();
    for (const QJsonValue &family : root.value(u"fonts"_s).toArray())
        m_families.append(family.toString());
    m_directional.clear();
    for (const QJsonValue &icon : root.value(u"directionalIcons"_s).toArray())
        m_directional.append(icon.toString());
    return true;
}

QColor ThemeFile::token(const QString &name, bool dark, bool highContrast) const
{
    const QString scheme = dark ? u"dark"_s : u"light"_s;
    QString text = m_tokens.value(scheme).toObject().value(name).toString();
    if (highContrast)
        text = m_tokens.value(scheme + u"Contrast"_s).toObject().value(name).toString(text);
    return text.isEmpty() ? QColor() : QColor(text);
}

QColor ThemeFile::parseColor(const QString &text, bool dark, const Context &context) const
{
    if (!text.startsWith(u'$'))
        return QColor(text);
    const QString name = text.mid(1).section(u'@', 0, 0);
    const QString opacity = text.section(u'@', 1, 1);
    QColor color;
    if (name == "accent"_L1)
        color = dark ? context.darkAccent : context.lightAccent;
    if (!color.isValid())
        color = token(name, dark, context.highContrast);
    if (color.isValid() && !opacity.isEmpty())
        color.setAlphaF(std::clamp(opacity.toFloat(), 0.0F, 1.0F));
    return color;
}

QJsonObject ThemeFile::merged(const QString &styleName, const Context &context, int depth) const
{
    QJsonObject own = m_styles.value(styleName).toObject();
    QJsonObject result;
    const QString parent = own.value(u"inherits"_s).toString();
    if (!parent.isEmpty() && depth < deepestInheritance)
        result = merged(parent, context, depth + 1);
    QJsonObject overrides;
    for (const auto &[key, active] :
         {std::pair{context.orientation == Qt::Horizontal ? u"landscape"_s : u"portrait"_s, true},
          std::pair{context.dark || context.inverted ? u"dark"_s : u"light"_s, true},
          std::pair{u"contrast"_s, context.highContrast},
          std::pair{u"largeText"_s, context.textScale >= largeTextFrom}}) {
        if (active)
            mergeOver(overrides, own.value(key).toObject());
    }
    for (const QString &key :
         {u"landscape"_s, u"portrait"_s, u"dark"_s, u"light"_s, u"contrast"_s, u"largeText"_s})
        own.remove(key);
    mergeOver(result, own);
    mergeOver(result, overrides);
    return result;
}

qreal ThemeFile::typeScale(const QJsonObject &type, const Context &context) const
{
    return std::min(context.textScale, type.value(u"maximumScale"_s).toDouble(4));
}

void ThemeFile::applyType(Style &style, const QString &typeName, const Context &context) const
{
    const QJsonObject type = m_types.value(typeName).toObject();
    const qreal scale = typeScale(type, context);
    style.font.setFamilies(m_families);
    style.font.setStyleHint(QFont::SansSerif);
    style.font.setPixelSize(std::max(1, qRound(type.value(u"size"_s).toDouble(20) * scale)));
    style.font.setWeight(QFont::Weight(type.value(u"weight"_s).toInt(400)));
    style.font.setHintingPreference(QFont::PreferNoHinting);
    style.lineHeight = type.contains("line"_L1) ? type.value(u"line"_s).toDouble() * scale : -1;
    if (type.value(u"tabular"_s).toBool())
        style.numbers.insert(u"tabular"_s, 1);
    style.numbers.insert(u"textScale"_s, scale);
}

// "fit": the height has room for so many lines of a type, however large the user's text is.
void ThemeFile::applyFit(Style &style, const QJsonObject &fit, const Context &context) const
{
    if (fit.isEmpty())
        return;
    const QJsonObject type = m_types.value(fit.value(u"type"_s).toString()).toObject();
    const qreal line = type.value(u"line"_s).toDouble() * typeScale(type, context);
    const qreal height = qCeil(fit.value(u"lines"_s).toDouble() * line + fit.value(u"padding"_s).toDouble());
    style.preferredSize.setHeight(std::max(style.preferredSize.height(), height));
    style.minimumSize.setHeight(std::max(style.minimumSize.height(), height));
}

// Of a style the file may have a variant for dark grounds; another one is drawn in the dark scheme's colours.
QString ThemeFile::variant(const QString &styleName, const Context &context) const
{
    const QString inverted = styleName + invertedSuffix;
    const bool wanted = context.inverted && !styleName.isEmpty() && !styleName.endsWith(invertedSuffix);
    return wanted && m_styles.contains(inverted) ? inverted : styleName;
}

Style ThemeFile::resolve(const QString &wantedName, const Context &context) const
{
    const QString styleName = variant(wantedName, context);
    Style style;
    style.name = styleName;
    const QJsonObject object = merged(m_styles.contains(styleName) ? styleName : QString(), context, 0);
    const QString scheme = object.value(u"scheme"_s).toString();
    style.inverted
        = context.inverted || scheme == "dark"_L1 || (scheme.isEmpty() && styleName.endsWith(invertedSuffix));
    const bool dark = style.inverted || (context.dark && scheme.isEmpty());

    style.minimumSize = sizeOf(object.value(u"minimum"_s));
    style.preferredSize = sizeOf(object.value(u"preferred"_s));
    style.maximumSize = sizeOf(object.value(u"maximum"_s));
    style.margins = marginsOf(object.value(u"margins"_s));
    style.spacing = object.value(u"spacing"_s).toDouble();
    style.radius = object.value(u"radius"_s).toDouble();
    style.maximumLines = object.value(u"maximumLines"_s).toInt();
    if (object.contains("alignment"_L1))
        style.alignment = alignmentOf(object.value(u"alignment"_s).toString());
    const QJsonObject colors = object.value(u"colors"_s).toObject();
    for (auto it = colors.begin(); it != colors.end(); ++it) {
        const QColor color = parseColor(it->toString(), dark, context);
        if (color.isValid())
            style.colors.insert(it.key(), color);
        else
            qCWarning(lcWidgets) << "theme: style" << styleName << "has no such colour:" << it->toString();
    }
    const QJsonObject images = object.value(u"images"_s).toObject();
    for (auto it = images.begin(); it != images.end(); ++it)
        style.images.insert(it.key(), it->toString());
    const QJsonObject numbers = object.value(u"numbers"_s).toObject();
    for (auto it = numbers.begin(); it != numbers.end(); ++it)
        style.numbers.insert(it.key(), it->toDouble());
    applyType(style, object.value(u"type"_s).toString(u"secondary"_s), context);
    applyFit(style, object.value(u"fit"_s).toObject(), context);
    return style;
}

} // namespace toolkit

// SPDX-License-Identifier: GPL-3.0-or-later
#include "languages.h"

#include <platform/toolkit/locale.h>

#include <QHash>
#include <QLocale>

#include <unicode/uloc.h>

using namespace Qt::Literals::StringLiterals;

namespace languages {

namespace {

constexpr int NameCapacity = 160;
constexpr qsizetype LongestTag = 40;

// English names, which files bear too: "Film.German.srt".
QString codeOfName(const QString &name)
{
    static const QHash<QString, QString> codes = [] {
        QHash<QString, QString> result;
        for (int language = QLocale::C + 1; language <= QLocale::LastLanguage; ++language) {
            const auto value = QLocale::Language(language);
            const QString code = QLocale::languageToCode(value);
            if (!code.isEmpty())
                result.insert(QLocale::languageToString(value).toLower(), code);
        }
        return result;
    }();
    return codes.value(name.toLower());
}

// The shortest code for it.
QString codeOf(const QString &primary)
{
    // Known twice in ISO 639-2: what libraries write, and what everybody else does.
    static const QHash<QString, QString> bibliographic{
        {u"alb"_s, u"sq"_s}, {u"arm"_s, u"hy"_s}, {u"baq"_s, u"eu"_s}, {u"bur"_s, u"my"_s},
        {u"chi"_s, u"zh"_s}, {u"cze"_s, u"cs"_s}, {u"dut"_s, u"nl"_s}, {u"fre"_s, u"fr"_s},
        {u"geo"_s, u"ka"_s}, {u"ger"_s, u"de"_s}, {u"gre"_s, u"el"_s}, {u"ice"_s, u"is"_s},
        {u"mac"_s, u"mk"_s}, {u"may"_s, u"ms"_s}, {u"per"_s, u"fa"_s}, {u"rum"_s, u"ro"_s},
        {u"slo"_s, u"sk"_s}, {u"tib"_s, u"bo"_s}, {u"wel"_s, u"cy"_s}};
    const QString lower = primary.toLower();
    if (lower == "und"_L1 || lower == "mul"_L1 || lower == "zxx"_L1 || lower == "mis"_L1)
        return {};
    if (const auto found = bibliographic.constFind(lower); found != bibliographic.constEnd())
        return *found;
    if (lower.size() == 2 || lower.size() == 3) {
        const QLocale::Language language = QLocale::codeToLanguage(lower);
        return language == QLocale::AnyLanguage || language == QLocale::C ? QString()
                                                                          : QLocale::languageToCode(language);
    }
    return codeOfName(lower);
}

} // namespace

QString normalized(const QString &language)
{
    const QString tag = language.left(LongestTag).replace(u'_', u'-');
    const QString code = codeOf(tag.section(u'-', 0, 0));
    if (code.isEmpty())
        return {};
    QString result = code;
    const QStringList rest = tag.section(u'-', 1).split(u'-', Qt::SkipEmptyParts);
    for (const QString &part : rest) {
        if (part.size() == 2 || (part.size() == 3 && part.at(0).isDigit()))
            result += u'-' + part.toUpper();
        else if (part.size() == 4)
            result += u'-' + part.left(1).toUpper() + part.mid(1).toLower();
        else
            break;
    }
    return result;
}

bool areAlike(const QString &one, const QString &other)
{
    const QString first = normalized(one).section(u'-', 0, 0);
    return !first.isEmpty() && first == normalized(other).section(u'-', 0, 0);
}

QString nameInText(const QString &language)
{
    const QString tag = normalized(language);
    if (tag.isEmpty())
        return {};
    char16_t buffer[NameCapacity];
    UErrorCode status = U_ZERO_ERROR;
    const int32_t length = uloc_getDisplayName(QString(tag).replace(u'-', u'_').toLatin1().constData(),
                                               toolkit::Locale::ofTexts().name().toLatin1().constData(),
                                               buffer, NameCapacity, &status);
    if (U_FAILURE(status) || length <= 0 || length > NameCapacity)
        return QLocale::languageToString(QLocale(tag).language());
    return QString(reinterpret_cast<const QChar *>(buffer), length);
}

QString displayName(const QString &language)
{
    const QString name = nameInText(language);
    return toolkit::Locale::ofTexts().toUpper(name.left(1)) + name.mid(1);
}

QStringList ofUser()
{
    QStringList result = QLocale().uiLanguages();
    result += QLocale::system().uiLanguages();
    for (QString &language : result)
        language = normalized(language);
    result.removeAll(QString());
    result.removeDuplicates();
    return result;
}

int rank(const QString &language, const QStringList &wanted)
{
    const QString tag = normalized(language);
    if (tag.isEmpty())
        return -1;
    for (qsizetype i = 0; i < wanted.size(); ++i) {
        if (areAlike(tag, wanted.at(i)))
            return int(i);
    }
    return -1;
}

} // namespace languages

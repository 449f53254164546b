// SPDX-License-Identifier: GPL-3.0-or-later
#include "relatedtexts.h"

#include <QTranslator>

using namespace Qt::Literals::StringLiterals;

namespace {

const QString folder = u":/kestrel-related"_s;

} // namespace

RelatedTexts::RelatedTexts()
    : m_texts(std::make_unique<QTranslator>()),
      m_english(std::make_unique<QTranslator>())
{
    (void)m_english->load(u"related_en"_s, folder);
}

RelatedTexts::~RelatedTexts() = default;

void RelatedTexts::setLanguage(const QLocale &locale)
{
    m_texts = std::make_unique<QTranslator>();
    // Not by the locale itself: of a person's several languages the program has chosen one already.
    if (!m_texts->load(u"related_"_s + locale.name(), folder))
        (void)m_texts->load(u"related_en"_s, folder);
}

QString RelatedTexts::text(const char *id) const
{
    const QString text = m_texts->translate("", id);
    return text.isEmpty() ? m_english->translate("", id) : text;
}

QString timeText(int seconds)
{
    const QLocale locale;
    const auto twoDigits = [&locale](int number) {
        return number > 9 ? locale.toString(number) : locale.toString(0) + locale.toString(number);
    };
    QString text;
    if (seconds >= 3600)
        text = locale.toString(seconds / 3600) + u':';
    text += twoDigits(seconds % 3600 / 60) + u':' + twoDigits(seconds % 60);
    // Some locales put marks of direction around numbers, which would tear the time apart.
    text.removeIf([](QChar character) { return character.category() == QChar::Other_Format; });
    return text;
}

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLocale>
#include <QString>

#include <memory>

class QTranslator;

// The extension's own texts, in the language that the person reads. They are carried in the plug-in, and are
// not installed into the program, whose texts are its own.
class RelatedTexts
{
public:
    RelatedTexts();
    ~RelatedTexts();

    void setLanguage(const QLocale &locale);
    // English where the language is none of ours.
    [[nodiscard]] QString text(const char *id) const;

private:
    std::unique_ptr<QTranslator> m_texts;
    std::unique_ptr<QTranslator> m_english;
};

// "12:05", "1:02:05", in the digits of QLocale().
[[nodiscard]] QString timeText(int seconds);

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <QStringView>

namespace subtitles {

// The lines of a text, one after the other, without copies; \n, \r\n and \r end them.
class Lines
{
public:
    explicit Lines(QStringView text) : m_text(text) { }
    [[nodiscard]] bool next(QStringView *line);

private:
    QStringView m_text;
    qsizetype m_at = 0;
};

// A line that describes is no longer than this.
constexpr qsizetype LongestHead = 2'000; // characters

// Of a script's line "Format: Name, Fontname" what it lists, in lower case.
[[nodiscard]] QStringList formatFields(QStringView line);

// At most `count` fields; the last takes the rest with its commas.
[[nodiscard]] QList<QStringView> splitFields(QStringView text, qsizetype count);

// Without MicroDVD's codes in braces ("{c:$0000ff}").
[[nodiscard]] QString withoutCodes(const QString &text);

} // namespace subtitles

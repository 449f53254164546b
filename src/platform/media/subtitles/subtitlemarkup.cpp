// SPDX-License-Identifier: GPL-3.0-or-later
#include "subtitlemarkup.h"

#include "subtitlewriter.h"

using namespace Qt::Literals::StringLiterals;

namespace subtitles {

namespace {

constexpr int LongestTag = 400;
constexpr int LongestReference = 12;

// A tag's name, in lower case: of "</Font>" "/font".
QString tagName(QStringView tag)
{
    qsizetype end = tag.startsWith(u'/') ? 1 : 0;
    while (end < tag.size() && tag.at(end).isLetterOrNumber())
        ++end;
    return tag.left(end).toString().toLower();
}

// Where the tag that begins at `at` ends: at its ">"; negative when it is none.
qsizetype tagEnd(QStringView text, qsizetype at)
{
    if (at + 1 >= text.size())
        return -1;
    const QChar first = text.at(at + 1);
    if (!first.isLetterOrNumber() && first != u'/')
        return -1;
    const qsizetype end = text.mid(at, LongestTag).indexOf(u'>');
    return end < 0 ? -1 : at + end;
}

void obeyTag(Writer &writer, QStringView tag)
{
    const QString name = tagName(tag);
    if (name == "b"_L1 || name == "/b"_L1)
        writer.bold = !name.startsWith(u'/');
    else if (name == "i"_L1 || name == "/i"_L1)
        writer.italic = !name.startsWith(u'/');
    else if (name == "u"_L1 || name == "/u"_L1)
        writer.underlined = !name.startsWith(u'/');
    else if (name == "br"_L1)
        writer.add(u'\n');
}

// Of "&amp;" "&"; null when it is no reference.
QString referenceText(QStringView name)
{
    static const struct
    {
        QLatin1StringView name;
        char16_t character;
    } known[] = {{"amp"_L1, u'&'},   {"lt"_L1, u'<'},     {"gt"_L1, u'>'},    {"quot"_L1, u'"'},
                 {"apos"_L1, u'\''}, {"nbsp"_L1, 0x00a0}, {"lrm"_L1, 0x200e}, {"rlm"_L1, 0x200f}};
    for (const auto &reference : known) {
        if (name == reference.name)
            return QString(QChar(reference.character));
    }
    if (!name.startsWith(u'#'))
        return {};
    bool ok = false;
    const bool hexadecimal = name.mid(1).startsWith(u'x', Qt::CaseInsensitive);
    const uint code = name.mid(hexadecimal ? 2 : 1).toUInt(&ok, hexadecimal ? 16 : 10);
    if (!ok || code < 0x20 || code > 0x10ffff || (code >= 0xd800 && code < 0xe000))
        return {};
    const char32_t character = code;
    return QString::fromUcs4(&character, 1);
}

// What is in one pair of braces: \i1\an8 and so on. True: the text that follows is a drawing; unset: as
// before.
void obeyOverrides(Writer &writer, QStringView overrides, const BaseStyle &base, bool &drawing)
{
    const auto on = [](QStringView value, bool usual) { return value.isEmpty() ? usual : value != u"0"; };
    for (const QStringView part : overrides.split(u'\\', Qt::SkipEmptyParts)) {
        qsizetype letters = 0;
        while (letters < part.size() && part.at(letters).isLetter())
            ++letters;
        const QStringView name = part.left(letters);
        const QStringView value = part.mid(letters).trimmed();
        if (name == u"i") {
            writer.italic = on(value, base.italic);
        } else if (name == u"b") {
            writer.bold = on(value, base.bold) && (value.size() < 3 || value.toInt() >= 600);
        } else if (name == u"u") {
            writer.underlined = on(value, base.underlined);
        } else if (name == u"an") {
            writer.above = value.toInt() >= 7;
        } else if (name == u"a") {
            writer.above = value.toInt() >= 5 && value.toInt() <= 7;
        } else if (name == u"p") {
            drawing = value.toInt() > 0;
        } else if (name.startsWith(u'r')) {
            writer.bold = base.bold;
            writer.italic = base.italic;
            writer.underlined = base.underlined;
        }
    }
}

} // namespace

SubtitleText parseTagged(QStringView text)
{
    Writer writer;
    bool drawing = false;
    for (qsizetype i = 0; i < text.size() && !writer.isFull(); ++i) {
        const QChar character = text.at(i);
        if (character == u'<') {
            if (const qsizetype end = tagEnd(text, i); end >= 0) {
                obeyTag(writer, text.mid(i + 1, end - i - 1));
                i = end;
                continue;
            }
        } else if (character == u'&') {
            const QStringView rest = text.mid(i + 1, LongestReference);
            const qsizetype end = rest.indexOf(u';');
            const QString meant = end > 0 ? referenceText(rest.left(end)) : QString();
            if (!meant.isEmpty()) {
                writer.add(meant);
                i += end + 1;
                continue;
            }
        } else if (character == u'{' && text.mid(i + 1).startsWith(u'\\')) {
            const qsizetype end = text.mid(i, LongestTag).indexOf(u'}');
            if (end > 0) {
                obeyOverrides(writer, text.mid(i + 1, end - 1), {}, drawing);
                i += end;
                continue;
            }
        }
        writer.add(character);
    }
    return writer.take();
}

SubtitleText parseOverrides(QStringView text, const BaseStyle &base)
{
    Writer writer;
    writer.bold = base.bold;
    writer.italic = base.italic;
    writer.underlined = base.underlined;
    writer.above = base.above;
    bool drawing = false;
    for (qsizetype i = 0; i < text.size() && !writer.isFull(); ++i) {
        const QChar character = text.at(i);
        const QChar next = i + 1 < text.size() ? text.at(i + 1) : QChar();
        if (character == u'{') {
            const qsizetype end = text.mid(i, LongestText).indexOf(u'}');
            if (end > 0) {
                obeyOverrides(writer, text.mid(i + 1, end - 1), base, drawing);
                i += end;
                continue;
            }
        } else if (character == u'\\' && (next == u'N' || next == u'n' || next == u'h')) {
            writer.add(next == u'h' ? QChar(QChar::Nbsp) : QChar(u'\n'));
            ++i;
            continue;
        }
        if (!drawing)
            writer.add(character);
    }
    return writer.take();
}

SubtitleText parsePlain(QStringView text)
{
    Writer writer;
    writer.add(text);
    return writer.take();
}

} // namespace subtitles

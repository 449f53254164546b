// SPDX-License-Identifier: GPL-3.0-or-later
#include "subtitleparser.h"

#include "subtitlelines.h"

#include <algorithm>
#include <optional>

using namespace std::chrono_literals;
using namespace Qt::Literals::StringLiterals;

namespace subtitles {

namespace {

constexpr double UsualFramesPerSecond = 23.976;
constexpr double LongestPlace = 360'000; // seconds
constexpr qsizetype LongestLine = 4 * LongestText; // with its markup, of what may become a cue
constexpr qsizetype LongestTime = 20; // "123:45:67.890" and blanks
constexpr qsizetype LongestTimes = 2 * LongestTime;
constexpr int UpperLines = 8; // of those that WebVTT counts from the top
constexpr int LinesLookedAt = 60; // until the kind of file is known

struct Gathered
{
    QList<SubtitleCue> cues;
    qint64 characters = 0;

    [[nodiscard]] bool isFull() const { return cues.size() >= MostCues || characters >= MostCharacters; }
    void add(MediaTime start, MediaTime end, const SubtitleText &text)
    {
        if (end <= start || text.isEmpty() || isFull())
            return;
        characters += text.words.size();
        cues.append({start, end, text});
    }
};

struct Span
{
    MediaTime start{0};
    MediaTime end{0};
};

MediaTime seconds(double value)
{
    return MediaTime(qint64(std::clamp(value, 0.0, LongestPlace) * 1e9));
}

// "1:02:03,450", "02:03.45"; negative: it is no time.
MediaTime parseTime(QStringView text)
{
    const QStringView trimmed = text.trimmed();
    if (trimmed.isEmpty() || trimmed.size() > LongestTime)
        return -1ns;
    double whole = 0;
    double value = 0;
    double unit = 0; // of the next digit behind the point
    int parts = 1;
    for (const QChar character : trimmed) {
        const int digit
            = character.unicode() >= u'0' && character.unicode() <= u'9' ? character.unicode() - u'0' : -1;
        if (digit >= 0 && unit == 0) {
            value = value * 10 + digit;
        } else if (digit >= 0) {
            value += digit * unit;
            unit /= 10;
        } else if (character == u':' && unit == 0 && parts < 3) {
            whole = (whole + value) * 60;
            value = 0;
            ++parts;
        } else if ((character == u',' || character == u'.') && unit == 0 && parts > 1) {
            unit = 0.1;
        } else {
            return -1ns;
        }
    }
    return parts > 1 ? seconds(whole + value) : -1ns;
}

// "00:00:01,000 --> 00:00:02,500 line:10%": the times, and what follows them.
std::optional<Span> parseArrow(QStringView line, QStringView *settings)
{
    const qsizetype arrow = line.indexOf(u"-->");
    if (arrow < 0 || arrow > LongestTimes)
        return {};
    const QStringView rest = line.mid(arrow + 3).trimmed();
    qsizetype end = rest.indexOf(u' ');
    if (end < 0)
        end = rest.size();
    const Span span{parseTime(line.left(arrow)), parseTime(rest.left(end))};
    if (span.start < 0ns || span.end < 0ns)
        return {};
    *settings = rest.mid(end);
    return span;
}

// "line:10%" and "line:0": in the upper half.
bool isAbove(QStringView settings)
{
    const qsizetype at = settings.indexOf(u"line:");
    if (at < 0)
        return false;
    const QStringView value = settings.mid(at + 5, 20).split(u' ').first().split(u',').first();
    bool ok = false;
    if (value.endsWith(u'%'))
        return value.chopped(1).toDouble(&ok) < 50 && ok;
    const int line = value.toInt(&ok);
    return ok && line >= 0 && line < UpperLines;
}

bool isNumber(QStringView line)
{
    const QStringView text = line.trimmed();
    return !text.isEmpty() && text.size() <= 9
        && std::all_of(text.begin(), text.end(), [](QChar c) { return c.isDigit(); });
}

// SubRip and WebVTT. In the former blank lines may stand within a cue; what stands before the next one's
// times is its number.
void parseArrows(Lines lines, bool blankLineEnds, Gathered *gathered)
{
    std::optional<Span> span;
    QString text;
    bool above = false;
    bool open = false; // more lines belong to the cue
    const auto finish = [&] {
        if (!span)
            return;
        SubtitleText parsed = parseTagged(text);
        parsed.above = parsed.above || above;
        gathered->add(span->start, span->end, parsed);
        span.reset();
    };
    QStringView line;
    while (!gathered->isFull() && lines.next(&line)) {
        QStringView settings;
        if (const auto found = parseArrow(line, &settings)) {
            const qsizetype last = text.lastIndexOf(u'\n');
            if (!blankLineEnds && last >= 0 && isNumber(QStringView(text).mid(last + 1)))
                text.truncate(last);
            finish();
            span = found;
            above = isAbove(settings);
            text.clear();
            open = true;
        } else if (line.trimmed().isEmpty()) {
            open = open && !blankLineEnds;
        } else if (open && text.size() < LongestLine) {
            text.append(u'\n');
            text.append(line.left(LongestLine));
        }
    }
    finish();
}

// The events of a script: what stands where in them its "Format" line says.
void parseScript(QStringView all, Gathered *gathered)
{
    const ScriptStyles styles(all);
    Lines lines(all);
    qsizetype startAt = 1;
    qsizetype endAt = 2;
    qsizetype styleAt = 3;
    qsizetype textAt = 9;
    QStringView line;
    while (!gathered->isFull() && lines.next(&line)) {
        if (line.startsWith(u"Format:", Qt::CaseInsensitive) && line.contains(u"Text", Qt::CaseInsensitive)) {
            const QStringList names = formatFields(line);
            startAt = names.indexOf(u"start"_s);
            endAt = names.indexOf(u"end"_s);
            styleAt = names.indexOf(u"style"_s);
            textAt = names.size() - 1;
        } else if (line.startsWith(u"Dialogue:", Qt::CaseInsensitive)) {
            const QList<QStringView> fields = splitFields(line.mid(line.indexOf(u':') + 1), textAt + 1);
            const MediaTime start = parseTime(fields.value(startAt));
            const MediaTime end = parseTime(fields.value(endAt));
            if (fields.size() == textAt + 1 && start >= 0ns)
                gathered->add(start, end,
                              parseOverrides(fields.last(), styles.style(fields.value(styleAt).trimmed())));
        }
    }
}

// "{123}{456}text|text": MicroDVD, in pictures; "[123][456]": MPL2, in tenths of a second.
void parseBracketed(Lines lines, QChar opening, QChar closing, double framesPerSecond, Gathered *gathered)
{
    double unit = opening == u'[' ? 0.1 : 1 / (framesPerSecond > 0 ? framesPerSecond : UsualFramesPerSecond);
    QStringView line;
    while (!gathered->isFull() && lines.next(&line)) {
        const qsizetype first = line.indexOf(closing);
        const qsizetype second = line.indexOf(closing, first + 1);
        if (!line.startsWith(opening) || first < 0 || second < 0 || second > 30
            || line.at(first + 1) != opening)
            continue;
        bool ok = false;
        bool endKnown = false;
        const double start = line.mid(1, first - 1).toDouble(&ok);
        const double end = line.mid(first + 2, second - first - 2).toDouble(&endKnown);
        QString text = line.mid(second + 1, LongestLine).toString();
        const double said = text.toDouble();
        if (ok && start <= 1 && opening == u'{' && said >= 5 && said <= 120) { // how many a second has
            unit = 1 / said;
            continue;
        }
        bool italic = false;
        while (text.startsWith(u"{y:i}"_s, Qt::CaseInsensitive) || text.startsWith(u'/')) {
            text.remove(0, text.startsWith(u'/') ? 1 : 5);
            italic = true;
        }
        text.replace(u'|', u'\n');
        if (italic)
            text = u"<i>"_s + text + u"</i>"_s;
        if (ok)
            gathered->add(seconds(start * unit), seconds((endKnown ? end : start + 3 / unit) * unit),
                          parseTagged(withoutCodes(text)));
    }
}

// "00:00:01.00,00:00:03.00", and the words in the next line.
void parsePairs(Lines lines, Gathered *gathered)
{
    QStringView line;
    while (!gathered->isFull() && lines.next(&line)) {
        const qsizetype comma = line.indexOf(u',');
        if (comma < 0 || line.size() > LongestTimes)
            continue;
        const Span span{parseTime(line.left(comma)), parseTime(line.mid(comma + 1))};
        QStringView words;
        if (span.start >= 0ns && span.end >= 0ns && lines.next(&words)) {
            QString text = words.left(LongestLine).toString();
            text.replace(u"[br]"_s, u"\n"_s, Qt::CaseInsensitive);
            gathered->add(span.start, span.end, parseTagged(text));
        }
    }
}

bool isPair(QStringView line)
{
    const qsizetype comma = line.indexOf(u',');
    return comma > 0 && line.size() <= LongestTimes && parseTime(line.left(comma)) >= 0ns
        && parseTime(line.mid(comma + 1)) >= 0ns;
}

} // namespace

QList<SubtitleCue> parseFile(QStringView text, double framesPerSecond)
{
    Gathered gathered;
    Lines lines(text);
    QStringView line;
    QStringView settings;
    for (int i = 0; i < LinesLookedAt && lines.next(&line); ++i) {
        if (line.startsWith(u"WEBVTT")) {
            parseArrows(Lines(text), true, &gathered);
        } else if (parseArrow(line, &settings)) {
            parseArrows(Lines(text), false, &gathered);
        } else if (line.startsWith(u"[Script Info]", Qt::CaseInsensitive)
                   || line.startsWith(u"Dialogue:", Qt::CaseInsensitive)) {
            parseScript(text, &gathered);
        } else if (line.startsWith(u'{') && line.size() > 3 && (line.at(1).isDigit() || line.at(1) == u'}')) {
            parseBracketed(Lines(text), u'{', u'}', framesPerSecond, &gathered);
        } else if (line.startsWith(u'[') && line.size() > 3 && line.at(1).isDigit()) {
            parseBracketed(Lines(text), u'[', u']', framesPerSecond, &gathered);
        } else if (isPair(line)) {
            parsePairs(Lines(text), &gathered);
        } else {
            continue;
        }
        break;
    }
    std::stable_sort(gathered.cues.begin(), gathered.cues.end(),
                     [](const SubtitleCue &a, const SubtitleCue &b) { return a.start < b.start; });
    return gathered.cues;
}

} // namespace subtitles

// SPDX-License-Identifier: GPL-3.0-or-later
// The styles of a script, and its events where a container keeps them.
#include "subtitlelines.h"
#include "subtitleparser.h"

#include <QStringList>

using namespace Qt::Literals::StringLiterals;

namespace subtitles {

namespace {

constexpr int MostStyles = 500;
constexpr int FieldsOfEvent = 9;

bool isOn(QStringView field)
{
    return !field.trimmed().isEmpty() && field.trimmed() != u"0";
}

// In SSA 5 to 7 are above; in ASS, as on a number pad, 7 to 9.
bool isAbove(QStringView alignment, bool newer)
{
    const int number = alignment.trimmed().toInt();
    return newer ? number >= 7 && number <= 9 : number >= 5 && number <= 7;
}

} // namespace

ScriptStyles::ScriptStyles(QStringView head)
{
    Lines lines(head);
    QStringView line;
    QStringList names;
    bool newer = true;
    bool inStyles = false;
    while (m_styles.size() < MostStyles && lines.next(&line)) {
        if (line.startsWith(u'[')) {
            if (line.contains(u"Events", Qt::CaseInsensitive))
                break;
            inStyles = line.contains(u"Styles", Qt::CaseInsensitive);
            newer = line.contains(u'+');
        } else if (inStyles && line.startsWith(u"Format:", Qt::CaseInsensitive)) {
            names = formatFields(line);
        } else if (inStyles && line.startsWith(u"Style:", Qt::CaseInsensitive)) {
            const QList<QStringView> fields = line.mid(line.indexOf(u':') + 1, LongestHead).split(u',');
            const auto field
                = [&](const QString &name) { return fields.value(names.indexOf(name), QStringView()); };
            m_styles.insert(field(u"name"_s).trimmed().toString(),
                            {isOn(field(u"bold"_s)), isOn(field(u"italic"_s)), isOn(field(u"underline"_s)),
                             isAbove(field(u"alignment"_s), newer)});
        }
    }
}

BaseStyle ScriptStyles::style(QStringView name) const
{
    return m_styles.value(name.startsWith(u'*') ? name.mid(1).toString() : name.toString());
}

SubtitleText parseEvent(QStringView event, const ScriptStyles &styles)
{
    const QList<QStringView> fields = splitFields(event, FieldsOfEvent);
    if (fields.size() < FieldsOfEvent)
        return {};
    return parseOverrides(fields.last(), styles.style(fields.at(2).trimmed()));
}

} // namespace subtitles

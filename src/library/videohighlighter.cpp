// SPDX-License-Identifier: GPL-3.0-or-later
#include "videohighlighter.h"

#include "platform/toolkit/theme.h"

#include <QColor>
#include <QStringList>

using namespace Qt::Literals::StringLiterals;

namespace {

QString markFirst(const QString &item, const QString &wanted)
{
    const qsizetype at = item.indexOf(wanted, 0, Qt::CaseInsensitive);
    if (at < 0)
        return item.toHtmlEscaped();
    return item.left(at).toHtmlEscaped() + "<highlight>"_L1 + item.mid(at, wanted.size()).toHtmlEscaped()
        + "</highlight>"_L1 + item.mid(at + wanted.size()).toHtmlEscaped();
}

} // namespace

VideoHighlighter::VideoHighlighter(QObject *parent) : QObject(parent)
{
    setHighlightColor();
    connect(toolkit::Theme::instance(), &toolkit::Theme::themeChangeCompleted, this,
            &VideoHighlighter::setHighlightColor);
}

QString VideoHighlighter::styleBlock(const QColor &accent)
{
    // Components are not padded; the theme keeps those of its accent colours at 0x10 or more.
    return u"<style>highlight{color:#%1%2%3;font-weight:bold;text-decoration:underline}</style>"_s
        .arg(accent.red(), 0, 16)
        .arg(accent.green(), 0, 16)
        .arg(accent.blue(), 0, 16);
}

void VideoHighlighter::setHighlightColor()
{
    m_style = styleBlock(toolkit::Theme::instance()->accentColor(0));
}

QString VideoHighlighter::highlight(const QString &text, const QString &filter) const
{
    if (filter.isEmpty())
        return text;
    qsizetype blanks = 0;
    while (blanks < filter.size() && filter.at(blanks) == u' ')
        ++blanks;
    const QString wanted = filter.mid(blanks);
    QStringList items = wanted.contains(u' ') ? QStringList(text) : text.split(u' ', Qt::KeepEmptyParts);
    for (QString &item : items)
        item = markFirst(item, wanted);
    return m_style + items.join(u' ');
}

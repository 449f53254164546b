// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QStringList>
#include <QtGlobal>

// What the program logs in one category while this lives, line by line. One at a time.
class LogLines
{
public:
    explicit LogLines(const char *category)
    {
        s_category = QLatin1StringView(category);
        s_lines.clear();
        s_previous = qInstallMessageHandler(&LogLines::take);
    }
    ~LogLines() { qInstallMessageHandler(s_previous); }
    Q_DISABLE_COPY_MOVE(LogLines)

    [[nodiscard]] qsizetype count(const QString &line) const { return s_lines.count(line); }
    [[nodiscard]] bool contains(const QString &line) const { return s_lines.contains(line); }
    [[nodiscard]] QStringList all() const { return s_lines; }

private:
    static void take(QtMsgType type, const QMessageLogContext &context, const QString &text)
    {
        if (s_category == QLatin1StringView(context.category))
            s_lines.append(text);
        s_previous(type, context, text);
    }

    static inline QtMessageHandler s_previous = nullptr;
    static inline QLatin1StringView s_category;
    static inline QStringList s_lines;
};

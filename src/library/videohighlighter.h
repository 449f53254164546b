// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QString>

class QColor;

// Marks the part of a title that the filter text found, as rich text for a label: <highlight> elements,
// looked after by a style block in front of the text.
class VideoHighlighter : public QObject
{
    Q_OBJECT

public:
    explicit VideoHighlighter(QObject *parent = nullptr);

    // What says how the marked part looks.
    [[nodiscard]] static QString styleBlock(const QColor &accent);
    // Plain text, as it came, when `filter` is empty; rich text otherwise.
    [[nodiscard]] QString highlight(const QString &text, const QString &filter) const;

public Q_SLOTS:
    // Takes the accent colour of the theme into the style block.
    void setHighlightColor();

private:
    QString m_style;
};

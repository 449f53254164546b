// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <data/videodetails.h>
#include <platform/toolkit/widget.h>

#include <QList>
#include <QStringList>

namespace toolkit {
class Label;
class LinearLayoutPolicy;
} // namespace toolkit

// The labels that tell of a video: its title, then what the store knows of it, then what was read in its
// file.
class VideoDetailsContainer : public toolkit::Widget
{
    Q_OBJECT

public:
    explicit VideoDetailsContainer(QGraphicsItem *parent = nullptr);
    ~VideoDetailsContainer() override;

    // Takes the place of everything that was shown; an empty URN says that there are no details.
    void setDetails(const VideoDetails &details);
    // What was read in the file: a heading and a line for each fact, below the details and gone with them. No
    // lines: no heading either.
    void setFacts(const QString &heading, const QStringList &facts);

    // As they are shown, from the first to the last.
    [[nodiscard]] const QList<toolkit::Label *> &labels() const { return m_labels; }
    [[nodiscard]] toolkit::LinearLayoutPolicy *landscapePolicy() const { return m_landscape; }
    [[nodiscard]] toolkit::LinearLayoutPolicy *portraitPolicy() const { return m_portrait; }

private:
    void refill(const VideoDetails &details);
    void clear(qsizetype keep = 0);
    void add(toolkit::Label *label);
    [[nodiscard]] toolkit::Label *singleValue(const QString &caption, const QString &value) const;
    [[nodiscard]] toolkit::Label *twoValues(const QString &caption, const QString &first,
                                            const QString &second) const;
    [[nodiscard]] toolkit::Label *captionAndValue(const QString &caption, const QString &value) const;

    // The labels have one parent and stand in both.
    toolkit::LinearLayoutPolicy *m_landscape;
    toolkit::LinearLayoutPolicy *m_portrait;
    QList<toolkit::Label *> m_labels;
    qsizetype m_detailLabels = 0; // the first of them; facts follow
};

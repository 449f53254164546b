// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "relatedfinder.h"
#include "relatedvideo.h"

#include <QList>
#include <QObject>

class Pictures;
class RelatedTexts;
class TouchRow;

// Makes the rows of a list of related videos, in every state that it can be in.
class RelatedRows : public QObject
{
    Q_OBJECT

public:
    RelatedRows(const RelatedTexts &texts, Pictures &pictures, QObject *parent = nullptr);

    // A few of them below a title, for the details page.
    [[nodiscard]] QList<TouchRow *> few(RelatedFinder::State state, const QList<RelatedEntry> &entries);
    // All, for a page of their own.
    [[nodiscard]] QList<TouchRow *> all(RelatedFinder::State state, const QList<RelatedEntry> &entries);

    static constexpr int fewEntries = 4;

Q_SIGNALS:
    void chosen(QString url);
    void allWanted();
    void againWanted();

private:
    void appendVideos(QList<TouchRow *> &rows, const QList<RelatedEntry> &entries);
    void appendState(QList<TouchRow *> &rows, RelatedFinder::State state, bool isEmpty);

    const RelatedTexts &m_texts;
    Pictures &m_pictures;
};

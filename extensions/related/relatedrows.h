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

    // What the list is made of: the state of the library's part, the entries of both parts, and whether the
    // provider on the network failed.
    struct List
    {
        RelatedFinder::State state = RelatedFinder::State::Found;
        QList<RelatedEntry> entries;
        bool hasProviderFailed = false;
    };
    // A few of them below a title, for the details page.
    [[nodiscard]] QList<TouchRow *> few(const List &list);
    // All, for a page of their own.
    [[nodiscard]] QList<TouchRow *> all(const List &list);

    static constexpr int fewEntries = 4;

Q_SIGNALS:
    void chosen(QString url);
    void allWanted();
    // From what failed.
    void againWanted();

private:
    void appendVideos(QList<TouchRow *> &rows, const QList<RelatedEntry> &entries);
    void appendState(QList<TouchRow *> &rows, const List &list);
    void appendFailure(QList<TouchRow *> &rows, const List &list);
    void appendAgain(QList<TouchRow *> &rows);
    void appendMessage(QList<TouchRow *> &rows, const char *id);

    const RelatedTexts &m_texts;
    Pictures &m_pictures;
};

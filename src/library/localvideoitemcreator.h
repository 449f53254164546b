// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "platform/toolkit/list.h"
#include "picturecache.h"
#include "videohighlighter.h"

#include <QObject>

class GridItemWidget;
class ThumbnailHelper;

// Makes the cells of the list and fills them from rows of the filtered model.
class LocalVideoItemCreator : public QObject, public toolkit::CellCreator
{
    Q_OBJECT

public:
    explicit LocalVideoItemCreator(QObject *parent = nullptr);
    ~LocalVideoItemCreator() override;

    toolkit::Widget *createCell(const QModelIndex &index, toolkit::CellRecycler &recycler) const override;
    void updateCell(const QModelIndex &index, toolkit::Widget *cell) const override;
    [[nodiscard]] QSizeF cellSize() const override;
    // The title, and how long the video is or what of it is left to watch.
    [[nodiscard]] QString accessibleName(const QModelIndex &index) const override;
    [[nodiscard]] QString accessibleDescription(const QModelIndex &index) const override;

public Q_SLOTS:
    // Gives up every picture that was asked for.
    void cancelThumbnailing();
    void panningStarted();
    void panningStopped();
    void updateHighlightedText(const QString &newText);

private:
    void readSizes();
    void showPicture(const QModelIndex &index, GridItemWidget *cell) const;
    // Of the screen's resolution.
    [[nodiscard]] QPixmap placeHolder(const QSize &size) const;

    VideoHighlighter m_highlighter;
    QString m_filterText;
    ThumbnailHelper *m_thumbnails;
    QSize m_cellSize; // logical pixels
    QSize m_thumbnailSize;
    mutable PictureCache m_pictures;
    mutable QPixmap m_placeHolder; // drawn once a size
};

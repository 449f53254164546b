// SPDX-License-Identifier: GPL-3.0-or-later
#include "localvideoitemcreator.h"

#include "data/thumbnailhelper.h"
#include "data/videoinfo.h"
#include "data/videotimehelper.h"
#include "griditemwidget.h"
#include "platform/toolkit/application.h"
#include "platform/toolkit/applicationwindow.h"
#include "platform/toolkit/theme.h"

#include <QCoreApplication>

#include <cmath>

using namespace Qt::Literals::StringLiterals;

namespace {

QSize themedSize(const QString &styleName)
{
    toolkit::Widget widget;
    widget.setStyleName(styleName);
    const QSizeF size = widget.preferredSize();
    return {qRound(size.width()), qRound(size.height())};
}

// Device pixels of a logical one: pictures are decoded no smaller than they are seen.
qreal screenScale()
{
    const toolkit::ApplicationWindow *window = toolkit::Application::activeApplicationWindow();
    if (!window)
        return 1.0;
    const QTransform transform = window->viewportTransform();
    return std::hypot(transform.m11(), transform.m12()) * window->devicePixelRatioF();
}

} // namespace

LocalVideoItemCreator::LocalVideoItemCreator(QObject *parent)
    : QObject(parent),
      m_thumbnails(ThumbnailHelper::instance())
{
    readSizes();
    connect(toolkit::Theme::instance(), &toolkit::Theme::themeChangeCompleted, this,
            &LocalVideoItemCreator::readSizes);
    // A file that was written again keeps its name.
    connect(m_thumbnails, &ThumbnailHelper::newThumbnailReady, this,
            [this](const QString &, const QString &path) { m_pictures.forget(path); });
    connect(m_thumbnails, &ThumbnailHelper::pauseThumbnailCreated, this,
            [this](const QString &, const QString &path) { m_pictures.forget(path); });
}

LocalVideoItemCreator::~LocalVideoItemCreator() = default;

void LocalVideoItemCreator::readSizes()
{
    m_cellSize = themedSize(u"KestrelGridItem"_s);
    m_thumbnailSize = themedSize(u"KestrelGridCellThumbnail"_s);
}

toolkit::Widget *LocalVideoItemCreator::createCell(const QModelIndex &index,
                                                   toolkit::CellRecycler &recycler) const
{
    toolkit::Widget *cell = recycler.take();
    if (!cell)
        cell = new GridItemWidget;
    updateCell(index, cell);
    return cell;
}

void LocalVideoItemCreator::updateCell(const QModelIndex &index, toolkit::Widget *cell) const
{
    auto *item = qobject_cast<GridItemWidget *>(cell);
    if (!item || !index.isValid() || index.row() < 0 || index.column() < 0 || !index.model())
        return;
    const auto value = [&index](int column) { return index.siblingAtColumn(column).data(Qt::DisplayRole); };
    item->setItemKey(value(VideoColumn::Urn).toString());
    item->setTitleFormat(m_filterText.isEmpty() ? Qt::PlainText : Qt::RichText);
    item->setTitle(m_highlighter.highlight(value(VideoColumn::Title).toString(), m_filterText));
    showPicture(index, item);
    const int position = value(VideoColumn::PlayPosition).toInt();
    const int duration = value(VideoColumn::Duration).toInt();
    const bool paused = position > 0 && position < duration;
    if (paused) {
        item->setWatched(qreal(position) / duration);
        item->setTime(duration - position, GridItemWidget::RemainingTime);
    } else {
        item->setTime(duration, GridItemWidget::FullDuration);
    }
}

void LocalVideoItemCreator::showPicture(const QModelIndex &index, GridItemWidget *cell) const
{
    const auto text
        = [&index](int column) { return index.siblingAtColumn(column).data(Qt::DisplayRole).toString(); };
    const bool atStart = text(VideoColumn::PlayPosition).toInt() == 0;
    QString path = text(atStart ? VideoColumn::DefaultThumbnail : VideoColumn::PauseThumbnail);
    if (path.isEmpty())
        path = m_thumbnails->thumbnail(text(VideoColumn::Url), text(VideoColumn::MimeType));
    const qreal scale = screenScale();
    const QSize size(std::lround(m_thumbnailSize.width() * scale),
                     std::lround(m_thumbnailSize.height() * scale));
    const QPixmap picture = path.isEmpty() ? QPixmap() : m_pictures.picture(path, size);
    if (picture.isNull())
        cell->setPlaceHolder(placeHolder(size));
    else
        cell->setPicture(picture);
}

QPixmap LocalVideoItemCreator::placeHolder(const QSize &size) const
{
    if (m_placeHolder.size() != size)
        m_placeHolder = m_thumbnails->placeHolder(size);
    return m_placeHolder;
}

QSizeF LocalVideoItemCreator::cellSize() const
{
    return m_cellSize;
}

QString LocalVideoItemCreator::accessibleName(const QModelIndex &index) const
{
    const auto text
        = [&index](int column) { return index.siblingAtColumn(column).data(Qt::DisplayRole).toString(); };
    const QString title = text(VideoColumn::Title);
    return title.trimmed().isEmpty() ? text(VideoColumn::FileName) : title;
}

QString LocalVideoItemCreator::accessibleDescription(const QModelIndex &index) const
{
    const auto seconds
        = [&index](int column) { return index.siblingAtColumn(column).data(Qt::DisplayRole).toInt(); };
    const int position = seconds(VideoColumn::PlayPosition);
    const int duration = seconds(VideoColumn::Duration);
    if (position > 0 && position < duration)
        return qtTrId("qtn_vide_access_remaining").arg(VideoTimeHelper::formatDuration(duration - position));
    return qtTrId("qtn_vide_access_duration").arg(VideoTimeHelper::formatDuration(duration));
}

void LocalVideoItemCreator::cancelThumbnailing()
{
    m_thumbnails->cancel(true);
}

void LocalVideoItemCreator::panningStarted()
{
    m_thumbnails->setHoldRequests(true);
}

void LocalVideoItemCreator::panningStopped()
{
    m_thumbnails->setHoldRequests(false);
}

void LocalVideoItemCreator::updateHighlightedText(const QString &newText)
{
    m_filterText = newText;
}

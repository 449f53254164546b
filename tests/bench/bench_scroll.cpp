// SPDX-License-Identifier: GPL-3.0-or-later
// Scrolls 100,000 rows with cells like those of the library through a raster view of 480 x 854 and measures
// what one frame costs: moving the content, making and filling cells, painting.
#include "platform/toolkit/accessibility.h"
#include "platform/toolkit/imagewidget.h"
#include "platform/toolkit/label.h"
#include "platform/toolkit/list.h"
#include "platform/toolkit/pannableviewport.h"
#include "platform/toolkit/theme.h"

#include <QAbstractListModel>
#include <QAccessible>
#include <QApplication>
#include <QElapsedTimer>
#include <QGraphicsScene>
#include <QGraphicsView>
#include <QPainter>

#include <algorithm>
#include <cstdio>
#include <ctime>

using namespace Qt::Literals::StringLiterals;
using namespace toolkit;

namespace {

constexpr int rows = 100000;
constexpr int frames = 3000;
constexpr int pictures = 64;

class Videos : public QAbstractListModel
{
public:
    int rowCount(const QModelIndex &parent) const override { return parent.isValid() ? 0 : rows; }
    QVariant data(const QModelIndex &index, int role) const override
    {
        static const QStringList words{
            u"Autumn in the harbour"_s,
            u"Birthday, the candles and the second cake"_s,
            u"Climbing the north face"_s,
            u"عطلة على الشاطئ"_s,
            u"Evening concert, encore"_s,
            u"A title that is so long that it has to be elided in its second line"_s};
        return role == Qt::DisplayRole
            ? words.at(index.row() % words.size()) + u' ' + QString::number(index.row())
            : QVariant();
    }
};

class Cell : public Widget
{
public:
    Cell() : picture(new ImageWidget(this)), title(new Label(this)), time(new Label(this))
    {
        setStyleName(u"KestrelGridItem"_s);
        picture->setStyleName(u"KestrelGridCellThumbnail"_s);
        title->setStyleName(u"KestrelGridCellTitleLabel"_s);
        time->setTextFormat(Qt::PlainText);
    }
    void resizeEvent(QGraphicsSceneResizeEvent *event) override
    {
        Widget::resizeEvent(event);
        picture->setGeometry(QRectF(16, 10, 206, 116));
        title->setGeometry(QRectF(238, 10, size().width() - 254, 116));
    }

    ImageWidget *picture;
    Label *title;
    Label *time;
};

class Creator : public CellCreator
{
public:
    explicit Creator(bool marked) : m_marked(marked)
    {
        for (int i = 0; i < pictures; ++i) {
            QPixmap pixmap(412, 232);
            pixmap.fill(QColor::fromHsv(i * 359 / pictures, 120, 160));
            m_pictures.append(pixmap);
        }
    }
    Widget *createCell(const QModelIndex &index, CellRecycler &recycler) const override
    {
        Widget *cell = recycler.take();
        if (cell == nullptr)
            cell = new Cell;
        updateCell(index, cell);
        return cell;
    }
    void updateCell(const QModelIndex &index, Widget *widget) const override
    {
        auto *cell = static_cast<Cell *>(widget);
        const int row = index.row();
        QString title = index.data().toString();
        if (m_marked)
            title
                = u"<style>highlight{color:#4fa3ff;font-weight:bold;text-decoration:underline}</style><highlight>"_s
                + title.left(3) + u"</highlight>"_s + title.mid(3).toHtmlEscaped();
        cell->title->setTextFormat(m_marked ? Qt::RichText : Qt::PlainText);
        cell->title->setText(title);
        cell->picture->setPixmap(m_pictures.at(row % pictures));
        cell->time->setStyleName(row % 3 == 0 ? u"KestrelGridCellTimeLabelPaused"_s
                                              : u"KestrelGridCellTimeLabel"_s);
        cell->time->setText(QString::asprintf("%02d:%02d", row % 60, row % 59));
        const QSizeF pill = cell->time->effectiveSizeHint(Qt::PreferredSize);
        cell->time->setGeometry(QRectF(QPointF(216 - pill.width(), 120 - pill.height()), pill));
    }
    QSizeF cellSize() const override { return {480, 136}; }

private:
    bool m_marked;
    QList<QPixmap> m_pictures;
};

// Milliseconds of the processor that this thread has used: what a frame costs also where other programs run.
double processorTime()
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return double(time.tv_sec) * 1e3 + double(time.tv_nsec) / 1e6;
}

// Milliseconds a frame, sorted.
struct Times
{
    QList<double> wall;
    QList<double> processor;
};

// Where assistive technology is asked for it is there before the first frame.
void letReadersIn()
{
    accessibility::install();
    QElapsedTimer timer;
    timer.start();
    while (qEnvironmentVariableIsSet("QT_LINUX_ACCESSIBILITY_ALWAYS_ON") && !QAccessible::isActive()) {
        QCoreApplication::processEvents();
        if (timer.elapsed() > 10000)
            qFatal("no accessibility bus");
    }
}

// As a reader does: the list and its first rows are held on to while it scrolls.
void read(List *list)
{
    if (!QAccessible::isActive())
        return;
    const QAccessibleInterface *told = QAccessible::queryAccessibleInterface(list);
    for (int row = 0; row < 20; ++row)
        static_cast<void>(told->child(row)->text(QAccessible::Name));
}

Times measure(bool marked, qreal step)
{
    QGraphicsScene scene(0, 0, 480, 854);
    scene.setItemIndexMethod(QGraphicsScene::NoIndex);
    scene.setBackgroundBrush(Theme::instance()->token(u"background"_s));
    QGraphicsView view(&scene);
    view.setFrameShape(QFrame::NoFrame);
    view.setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    view.setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    view.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing
                        | QPainter::SmoothPixmapTransform);
    view.resize(480, 854);
    view.show();
    Videos model;
    Creator creator(marked);
    auto *viewport = new PannableViewport;
    scene.addItem(viewport);
    viewport->setGeometry(QRectF(0, 0, 480, 854));
    auto *list = new List;
    list->setCellCreator(&creator);
    list->setItemModel(&model);
    viewport->setWidget(list);
    QCoreApplication::processEvents();
    read(list);

    QImage frame(480, 854, QImage::Format_RGB32);
    Times times;
    for (int i = 0; i < frames; ++i) {
        QElapsedTimer timer;
        timer.start();
        const double before = processorTime();
        viewport->setPosition({0, 1 + i * step});
        QCoreApplication::sendPostedEvents();
        QPainter painter(&frame);
        view.render(&painter, QRectF(frame.rect()), view.viewport()->rect());
        painter.end();
        times.wall.append(double(timer.nsecsElapsed()) / 1e6);
        times.processor.append(processorTime() - before);
    }
    list->setItemModel(nullptr);
    scene.clear();
    std::sort(times.wall.begin(), times.wall.end());
    std::sort(times.processor.begin(), times.processor.end());
    return times;
}

void print(const char *name, const Times &times)
{
    std::printf("%s median %.2f ms\n", name, times.wall.at(times.wall.size() / 2));
    std::printf("%s p99 %.2f ms\n", name, times.wall.at(times.wall.size() * 99 / 100));
    std::printf("%s-processor p99 %.2f ms\n", name, times.processor.at(times.processor.size() * 99 / 100));
}

} // namespace

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM") && qEnvironmentVariableIsEmpty("DISPLAY"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    letReadersIn();
    measure(false, 37); // fonts, icons and glyphs are there now, as after the first second of use
    print("scroll", measure(false, 37)); // a slow drag
    print("scroll-fling", measure(false, 411)); // three new cells a frame
    print("scroll-filtered", measure(true, 137)); // marked titles, one new cell a frame
    return 0;
}

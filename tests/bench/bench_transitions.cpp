// SPDX-License-Identifier: GPL-3.0-or-later
// Slides a page onto a list like that of the library and off again, and lets a sheet and a menu rise over it,
// in a window of 480 x 854, and measures what one frame of that costs: moving what moves, laying out,
// painting what has changed to the screen. The animations go by a clock that is driven here, a sixtieth of a
// second a frame, so that a slow machine shows the same frames.
#include "library/griditemwidget.h"
#include "frametimes.h"

#include "platform/toolkit/action.h"
#include "platform/toolkit/applicationpage.h"
#include "platform/toolkit/applicationwindow.h"
#include "platform/toolkit/label.h"
#include "platform/toolkit/list.h"
#include "platform/toolkit/objectmenu.h"
#include "platform/toolkit/sheet.h"
#include "platform/toolkit/textedit.h"
#include "platform/toolkit/theme.h"

#include <QAbstractListModel>
#include <QAnimationDriver>
#include <QApplication>

#include <functional>

using namespace Qt::Literals::StringLiterals;
using namespace toolkit;

namespace {

constexpr int rounds = 60;
constexpr int mostFrames = 60; // of one transition, which has 15
constexpr double frameTime = 1000.0 / 60;

class DrivenAnimations : public QAnimationDriver
{
public:
    qint64 elapsed() const override { return qint64(m_elapsed); }
    void start() override
    {
        m_elapsed = 0;
        QAnimationDriver::start();
    }
    void step()
    {
        m_elapsed += frameTime;
        advance();
    }

private:
    double m_elapsed = 0;
};

class Rows : public QAbstractListModel
{
public:
    int rowCount(const QModelIndex &parent) const override { return parent.isValid() ? 0 : 1000; }
    QVariant data(const QModelIndex &, int) const override { return {}; }
};

class Cells : public CellCreator
{
public:
    Cells() : m_picture(412, 232) { m_picture.fill(QColor(60, 90, 120)); }
    Widget *createCell(const QModelIndex &index, CellRecycler &recycler) const override
    {
        Widget *cell = recycler.take();
        if (cell == nullptr)
            cell = new GridItemWidget;
        updateCell(index, cell);
        return cell;
    }
    void updateCell(const QModelIndex &index, Widget *widget) const override
    {
        auto *cell = static_cast<GridItemWidget *>(widget);
        cell->setTitle(u"A title that goes on into its second line, number %1"_s.arg(index.row()));
        cell->setTime(index.row() % 3600, index.row() % 3 == 0 ? 1 : 0);
        cell->setPicture(m_picture);
    }
    QSizeF cellSize() const override { return {480, 136}; }

private:
    QPixmap m_picture;
};

class ListPage : public ApplicationPage
{
public:
    ListPage()
    {
        setTitle(u"Videos"_s);
        setStyleName(u"VideoApplicationPage"_s);
        m_list = new List;
        m_list->setStyleName(u"KestrelList"_s);
        m_list->setCellCreator(&m_creator);
        m_list->setItemModel(&m_model);
        setCentralWidget(m_list);
    }
    ~ListPage() override { m_list->setItemModel(nullptr); }

private:
    Rows m_model;
    Cells m_creator;
    List *m_list;
};

class TextPage : public ApplicationPage
{
public:
    TextPage()
    {
        setTitle(u"Autumn in the harbour"_s);
        setStyleName(u"VideoApplicationPage"_s);
        auto *text = new Label;
        text->setWordWrap(true);
        text->setText(
            u"A picture, a title, a length, a date, a size and a few more lines of text. "_s.repeated(12));
        setCentralWidget(text);
    }
};

class PaintCounter : public QObject
{
public:
    bool eventFilter(QObject *, QEvent *event) override
    {
        paints += event->type() == QEvent::Paint ? 1 : 0;
        return false;
    }
    int paints = 0;
};

class Stage
{
public:
    Stage()
    {
        window.viewport()->installEventFilter(&counter);
        window.setProfile(ApplicationWindow::Profile::Desktop);
        window.resize(480, 854);
        list.appear(&window, Appearance::Immediate);
        window.showForProfile();
        while (!window.isOnDisplay())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
        animations.install();
        settle();
    }
    ~Stage() { animations.uninstall(); }

    // What was begun, to its end, a frame at a time.
    void play(FrameTimes &times, const std::function<void()> &begin)
    {
        begin();
        for (int frame = 0; frame < mostFrames && (frame == 0 || animations.isRunning()); ++frame) {
            const int before = counter.paints;
            times.begin();
            animations.step();
            QCoreApplication::sendPostedEvents();
            QCoreApplication::sendPostedEvents(nullptr, QEvent::UpdateRequest);
            if (counter.paints == before)
                continue; // before the first movement, or behind the last
            times.end();
            ++frames;
        }
        ++transitions;
        settle();
    }
    void settle()
    {
        for (int turn = 0; turn < 10; ++turn)
            QCoreApplication::processEvents();
    }

    // Of the 15 that a transition has, or 10 of a menu. Figures of frames that nobody saw would be none.
    [[nodiscard]] double framesPerTransition() const { return double(frames) / transitions; }

    DrivenAnimations animations;
    PaintCounter counter;
    ApplicationWindow window;
    ListPage list;
    int frames = 0; // that were painted
    int transitions = 0;
};

FrameTimes slides(Stage &stage)
{
    TextPage page;
    FrameTimes times;
    for (int round = 0; round < rounds; ++round) {
        stage.play(times, [&] { page.appear(&stage.window); });
        stage.play(times, [&] { page.dismiss(); });
    }
    return times;
}

FrameTimes sheets(Stage &stage)
{
    Sheet sheet;
    sheet.setTitle(u"Rename"_s);
    sheet.setPositiveAction(u"Save"_s);
    sheet.setNegativeAction(u"Cancel"_s);
    auto *field = new TextEdit;
    field->setText(u"Autumn in the harbour"_s);
    sheet.setCentralWidget(field);
    FrameTimes times;
    for (int round = 0; round < rounds; ++round) {
        stage.play(times, [&] { sheet.appear(&stage.window); });
        stage.play(times, [&] { sheet.reject(); });
    }
    return times;
}

FrameTimes menus(Stage &stage)
{
    ObjectMenu menu;
    for (const QString &text : {u"Details"_s, u"Share"_s, u"Rename"_s, u"Delete"_s}) {
        auto *action = new Action(&menu);
        action->setText(text);
        action->setLocation(Action::ObjectMenuLocation);
        menu.addAction(action);
    }
    menu.setCursorPosition({240, 400});
    FrameTimes times;
    for (int round = 0; round < rounds; ++round) {
        stage.play(times, [&] { menu.appear(&stage.window); });
        stage.play(times, [&] { menu.disappear(); });
    }
    return times;
}

void print(const char *name, const FrameTimes &times)
{
    for (const int percent : {50, 95, 99}) {
        const QByteArray figure = percent == 50 ? "median" : 'p' + QByteArray::number(percent);
        const double value = times.wall(percent);
        std::printf("%s %s %.2f ms | frame of 60 a second %.2f ms | ratio %.2f\n", name, figure.constData(),
                    value, frameTime, value / frameTime);
    }
    std::printf("%s-processor p99 %.2f ms\n", name, times.processor(99));
}

} // namespace

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    Theme::instance()->setReducedMotion(false);
    Stage stage;
    slides(stage); // fonts, icons and glyphs are there now, as after the first second of use
    print("transitions-page", slides(stage));
    print("transitions-sheet", sheets(stage));
    print("transitions-menu", menus(stage));
    std::fprintf(stderr, "bench_transitions: %.1f frames painted a transition\n",
                 stage.framesPerTransition());
    return stage.framesPerTransition() >= 9 ? 0 : 1;
}

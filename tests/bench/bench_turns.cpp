// SPDX-License-Identifier: GPL-3.0-or-later
// turns [VIDEOS ...]: how long the window's thread is held at most while a long list, as it comes from a
// server, is put into the library page's widget, searched and changed. Without a store; what is measured
// begins with the answer.
#include "data/allvideosmodel.h"
#include "data/storenews.h"
#include "data/trackerinterface.h"
#include "library/filteredmodel.h"
#include "library/myallvideoswidget.h"
#include "platform/sparql/changenotifier.h"
#include "platform/sparql/rowtable.h"
#include "turns.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QGraphicsScene>
#include <QGraphicsView>
#include <QLoggingCategory>
#include <QRandomGenerator>

#include <algorithm>
#include <cstdio>
#include <functional>

using namespace Qt::Literals::StringLiterals;

namespace {

using Window = Turns<QApplication>;

qint64 memory(const char *line)
{
    QFile status(u"/proc/self/status"_s);
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    const QByteArray text = status.readAll();
    const qsizetype at = text.indexOf(line) + qsizetype(qstrlen(line));
    return text.mid(at, text.indexOf("kB", at) - at).trimmed().toLongLong() / 1024;
}

std::shared_ptr<const RowTable> makeTable(int videos)
{
    static const QByteArrayList words
        = {"Summer", "autumn", "Holiday", "concert", "birthday", "Ägäis", "harbour",
           "école",  "School", "lake",    "steps",   "VID",      "clip",  "face"};
    QRandomGenerator random(1);
    RowTable table(VideoColumn::RowSize);
    for (int i = 1; i <= videos; ++i) {
        const QByteArray number = QByteArray::number(i);
        QByteArray title;
        for (int word = 2 + int(random.bounded(3)); word > 0; --word)
            title += words.at(random.bounded(int(words.size()))) + ' ';
        title += QByteArray::number(random.bounded(2030));
        using Type = RowTable::Type;
        const bool fits = table.append(Type::Text, "http://videos.example.org/video/" + number)
            && table.append(Type::Text, title) && table.append(Type::Text, "video-" + number + ".mp4")
            && table.append(Type::Integer, QByteArray::number(random.bounded(7200)))
            && table.append(Type::Unbound, {}) && table.append(Type::Text, "video/mp4")
            && table.append(Type::Text, "http://videos.example.org/files/video-" + number + ".mp4")
            && table.append(Type::Integer, number);
        if (!fits)
            qFatal("the table is full");
    }
    return std::make_shared<const RowTable>(std::move(table));
}

// What is done in one go, and then until the list stands again.
void measure(Window &window, const MyAllVideosWidget &widget, int videos, const char *what,
             const std::function<void()> &act)
{
    window.takeLongest();
    QElapsedTimer all;
    all.start();
    act();
    window.note(double(all.nsecsElapsed()) / 1e6);
    const auto settle = [&widget] {
        do
            QCoreApplication::processEvents(QEventLoop::AllEvents);
        while (!widget.proxy()->isSettled() || widget.model()->rowCount() == 0);
    };
    settle();
    const double elapsed = double(all.nsecsElapsed()) / 1e6;
    for (int i = 0; i < 20; ++i)
        settle();
    std::printf("turns %s, %d videos longest %.1f ms, all of it %.0f ms\n", what, videos,
                window.takeLongest(), elapsed);
    std::fflush(stdout);
}

void measure(Window &window, int videos)
{
    auto table = makeTable(videos);
    QGraphicsScene scene;
    QGraphicsView view(&scene);
    view.resize(864, 480);
    view.show();
    MyAllVideosWidget widget;
    widget.setGeometry(0, 0, 864, 480);
    scene.addItem(&widget);
    AllVideosModel &model = *widget.model();
    FilteredModel &proxy = *widget.proxy();
    StoreNews *news = TrackerInterface::instance()->news();
    const qint64 before = memory("VmRSS:");
    measure(window, widget, videos, "list", [&] { Q_EMIT news->listLoaded(std::exchange(table, {}), 1); });
    std::printf("turns memory, %d videos %lld MiB with the answer, %lld MiB then, %lld MiB at most\n", videos,
                before, memory("VmRSS:"), memory("VmHWM:"));
    for (const QString &text : {u"e"_s, u"ec"_s, u"x"_s, u"VID"_s, QString()}) {
        measure(window, widget, videos, qPrintable(u"filter '%1'"_s.arg(text)), [&] {
            proxy.setFilterFixedString(text);
            proxy.invalidate();
        });
    }
    const auto row = [&model](int number) {
        QStringList texts;
        for (int column = 0; column < VideoColumn::RowSize; ++column)
            texts.append(model.text(number, column));
        return texts;
    };
    measure(window, widget, videos, "one title", [&] {
        QStringList changed = row(videos / 2);
        changed[VideoColumn::Title] = u"another"_s;
        model.videosChanged({changed});
    });
    measure(window, widget, videos, "two titles far apart", [&] {
        QStringList first = row(1);
        QStringList last = row(videos - 1);
        first[VideoColumn::Title] = last[VideoColumn::Title] = u"another"_s;
        model.videosChanged({first, last});
    });
    measure(window, widget, videos, "a video more", [&] {
        QStringList added = row(1);
        added[VideoColumn::Urn] = u"urn:new"_s;
        model.videosChanged({added});
    });
    measure(window, widget, videos, "a video less", [&] { model.videosDeleted({videos / 3}); });
}

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    ChangeNotifier::setSource([](ChangeNotifier *) {});
    Window window(argc, argv);
    QLoggingCategory::setFilterRules(u"kestrel.*=false"_s);
    if (argc < 2)
        measure(window, 100000);
    for (int i = 1; i < argc; ++i)
        measure(window, QByteArray(argv[i]).toInt());
    return 0;
}

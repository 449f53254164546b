// SPDX-License-Identifier: GPL-3.0-or-later
// related [VIDEOS]: from a video to the list of those that belong to it, in a library of 100,000 beside the
// real store service, and one plain question for as many rows over the same kind of connection. Once in a
// library as people have it, and once where all videos are alike. Prints medians, and on the standard error
// stream medians and worst times of each step, and how long the event loop did not turn meanwhile.
#include "relatedlibrary.h"

#include "candidatesearch.h"
#include "libraryquestions.h"
#include "relatedfinder.h"
#include "relatedranking.h"
#include "videolookup.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QProcess>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <vector>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int rounds = 51;

using Times = std::vector<double>;

double median(Times values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

double milliseconds(const QElapsedTimer &timer)
{
    return double(timer.nsecsElapsed()) / 1e6;
}

void tell(const char *what, const Times &times)
{
    std::fprintf(stderr, "    %-34s median %6.1f ms, worst %6.1f ms\n", what, median(times),
                 *std::max_element(times.begin(), times.end()));
}

// The time until `isDone`; the longest turn of the event loop on the way goes to `turns`.
double waitFor(const std::function<bool()> &isDone, Times *turns = nullptr)
{
    QElapsedTimer timer;
    timer.start();
    double longest = 0;
    while (!isDone()) {
        QElapsedTimer turn;
        turn.start();
        if (!QCoreApplication::eventDispatcher()->processEvents(QEventLoop::AllEvents)) {
            if (!isDone())
                QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
            continue; // waiting is not working
        }
        longest = std::max(longest, milliseconds(turn));
    }
    if (turns)
        turns->push_back(longest);
    return milliseconds(timer);
}

// The real service with a library of its own.
class Service
{
public:
    Service(RelatedLibrary kind, int videos)
    {
        qputenv("XDG_DATA_HOME", m_data.path().toUtf8());
        fillRelatedLibrary(kind, videos);
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start(qEnvironmentVariable("KESTREL_BIN_DIR", QStringLiteral(KESTREL_BIN_DIR))
                        + u"/kestrel-store"_s);
        if (!m_process.waitForStarted())
            qFatal("the store service did not start");
    }
    ~Service()
    {
        m_process.terminate();
        m_process.waitForFinished();
    }
    Q_DISABLE_COPY_MOVE(Service)

private:
    QTemporaryDir m_data;
    QProcess m_process;
};

struct Figures
{
    Times plain, first, list, itself, search, details, ranking, turns;
    size_t candidates = 0;
};

double ask(StorePeer &store, const QString &question, QList<QStringList> *rows)
{
    bool isDone = false;
    store.ask(question, [&](const QList<QStringList> &answer, const QString &error) {
        if (!error.isEmpty())
            qFatal("%s", qPrintable(error));
        *rows = answer;
        isDone = true;
    });
    return waitFor([&isDone] { return isDone; });
}

double look(VideoLookup &lookup, const QList<int> &ids, QList<RelatedVideo> *videos)
{
    bool isDone = false;
    lookup.clear();
    lookup.look(ids, [&](const QList<RelatedVideo> &found) {
        *videos = found;
        isDone = true;
    });
    return waitFor([&isDone] { return isDone; });
}

void findRelated(RelatedFinder &finder, const QString &url, Figures &figures)
{
    QElapsedTimer timer;
    timer.start();
    finder.look(ContentRecord(url, QString(), QString(), QString()));
    double first = 0;
    const double list = waitFor(
        [&] {
            if (first == 0 && !finder.entries().isEmpty())
                first = milliseconds(timer);
            return finder.state() != RelatedFinder::State::Looking;
        },
        &figures.turns);
    if (finder.state() != RelatedFinder::State::Found || finder.entries().isEmpty())
        qFatal("nothing belongs to %s", qPrintable(url));
    figures.list.push_back(list);
    figures.first.push_back(first);
}

// The steps one by one.
void measureSteps(StorePeer &store, const QString &url, Figures &figures)
{
    VideoLookup lookup(store);
    CandidateSearch search(store);
    QList<QStringList> rows;
    QList<RelatedVideo> videos;
    const double found = ask(store, LibraryQuestions::ofUrl(url), &rows);
    figures.itself.push_back(found + look(lookup, {rows.value(0).value(0).toInt()}, &videos));
    const RelatedVideo video = videos.constFirst();
    search.start(video);
    figures.search.push_back(waitFor([&search] { return !search.isRunning(); }));
    figures.details.push_back(look(lookup, search.ids(), &videos));
    figures.candidates = std::max(figures.candidates, size_t(videos.size()));
    QElapsedTimer timer;
    timer.start();
    const auto entries = ranked(video, videos, RelatedFinder::mostEntries);
    figures.ranking.push_back(milliseconds(timer));
    if (entries.isEmpty())
        qFatal("no steps lead from %s", qPrintable(url));
}

Figures measure(RelatedLibrary kind, int videos)
{
    const Service service(kind, videos);
    Figures figures;
    StorePeer store;
    store.start();
    waitFor([&store] { return store.isOpen(); });
    RelatedFinder finder;
    Figures warmUp; // connects, and the service reads its table
    findRelated(finder, relatedUrl(kind, videos - 1), warmUp);
    std::fprintf(stderr, "    %-34s %.1f ms\n", "the very first, with connecting", warmUp.list.front());
    QList<QStringList> rows;
    for (int round = 0; round < rounds; ++round) {
        const QString url = relatedUrl(kind, round * (videos / (rounds + 1)) + round % 10);
        figures.plain.push_back(
            ask(store, u"SELECT nie:url(?v) nfo:fileName(?v) nie:title(?v) { ?v a nmm:Video } LIMIT 100"_s,
                &rows));
        findRelated(finder, url, figures);
        measureSteps(store, relatedUrl(kind, round * (videos / (rounds + 1)) + 10 + round % 10), figures);
    }
    tell("list", figures.list);
    tell("first rows of it", figures.first);
    tell("step: the video itself", figures.itself);
    tell("step: candidates", figures.search);
    tell("step: what is known of them", figures.details);
    tell("step: their order", figures.ranking);
    tell("longest turn of the event loop", figures.turns);
    std::fprintf(stderr, "    at most %zu candidates\n", figures.candidates);
    return figures;
}

void print(const char *name, const Figures &figures)
{
    std::printf("%s %.1f ms | plain query %.1f ms | ratio %.2f\n", name, median(figures.list),
                median(figures.plain), median(figures.list) / median(figures.plain));
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const int videos = argc > 1 ? QByteArray(argv[1]).toInt() : 100'000;
    std::fprintf(stderr, "%d videos as people have them\n", videos);
    const Figures mixed = measure(RelatedLibrary::Mixed, videos);
    std::fprintf(stderr, "%d videos that are alike\n", videos);
    const Figures alike = measure(RelatedLibrary::Alike, videos);
    print("related", mixed);
    print("related-alike", alike);
    return 0;
}

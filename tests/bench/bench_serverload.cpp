// SPDX-License-Identifier: GPL-3.0-or-later
// Steps of bench_endpoint.py and bench_virtuoso.py, which set a server up. What is written is one line of
// numbers.
//     text          what the server is asked for the whole library
//     load DRIVER   rows, ms from the connection to the last cell read, peaks in KiB of this program and its
//                   helpers
//     turn DRIVER   the same with the longest turn of the event loop, in ms, until a sorted list of them
//     stands title DRIVER  the same with ms from the new title to its row of the model, median of five
#include <app/serverlibrary.h>
#include <data/allvideosmodel.h>
#include <data/sparqltemplates.h>
#include <data/trackerinterface.h>
#include <data/videoinfo.h>
#include <library/filteredmodel.h>
#include <platform/servers/serverdrivers.h>
#include <platform/servers/serversettings.h>
#include <platform/servers/standarddialect.h>
#include <platform/sparql/sparqlconnection.h>
#include <platform/sparql/sparqlresult.h>

#include "turns.h"

#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QGuiApplication>
#include <QLoggingCategory>

#include <algorithm>
#include <cstdio>
#include <vector>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int columns = 8;
constexpr int titles = 5;

QString libraryText()
{
    QString text = SparqlTemplates::Library.arg(u"<urn:equipment:Bench:Device:>"_s);
    return text.replace(u"_FILTER_"_s, QString());
}

qint64 peakOf(const QString &process)
{
    QFile status(u"/proc/%1/status"_s.arg(process));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    const QByteArray text = status.readAll();
    const qsizetype at = text.indexOf("VmHWM:");
    return at < 0 ? 0 : text.mid(at + 6, text.indexOf("kB", at) - at - 6).trimmed().toLongLong();
}

// Of the programs that this one has started and that run.
qint64 peakOfHelpers()
{
    qint64 peak = 0;
    const QString self = u"/proc/self/task"_s;
    for (const QString &task : QDir(self).entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        QFile children(u"%1/%2/children"_s.arg(self, task));
        if (!children.open(QIODevice::ReadOnly))
            continue;
        for (const QByteArray &child : children.readAll().split(' ')) {
            if (!child.trimmed().isEmpty())
                peak += peakOf(QString::fromLatin1(child));
        }
    }
    return peak;
}

void report(qint64 rows, double milliseconds)
{
    std::printf("%lld %.1f %lld %lld\n", rows, milliseconds, peakOf(u"self"_s), peakOfHelpers());
}

void load(const QString &driver)
{
    QElapsedTimer timer;
    timer.start();
    SparqlConnection connection(driver);
    SparqlResult *result = connection.exec(SparqlQuery(libraryText()));
    QEventLoop loop;
    QObject::connect(result, &SparqlResult::finished, &loop, &QEventLoop::quit);
    loop.exec();
    if (result->hasError())
        qFatal("%ls", qUtf16Printable(result->errorMessage()));
    qint64 signs = 0;
    while (result->next()) {
        for (int column = 0; column < columns; ++column)
            signs += result->stringValue(column).size();
    }
    const double elapsed = double(timer.nsecsElapsed()) / 1e6;
    if (signs == 0)
        qFatal("the library is empty");
    report(result->size(), elapsed);
}

// The parts of the program that hold a list from a server.
class Library
{
public:
    explicit Library(const QString &driver, FilteredModel *proxy = nullptr)
        : m_server((TrackerInterface::setTrackerMode(driver), driver))
    {
        m_server.follow(TrackerInterface::instance());
        m_model = std::make_unique<AllVideosModel>(nullptr);
        if (proxy)
            proxy->setSourceModel(m_model.get());
        // Not a loop in a loop: each event is delivered by itself.
        while (m_model->rowCount() == 0)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }

    [[nodiscard]] AllVideosModel &model() { return *m_model; }

private:
    ServerLibrary m_server;
    std::unique_ptr<AllVideosModel> m_model;
};

void turn(Turns<QGuiApplication> &turns, const QString &driver)
{
    FilteredModel proxy;
    const Library library(driver, &proxy);
    while (!proxy.isSettled())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    report(proxy.rowCount(), turns.takeLongest());
}

void title(const QString &driver)
{
    Library library(driver);
    AllVideosModel &model = library.model();
    const int row = model.rowCount() / 2;
    std::vector<double> times;
    for (int turn = 0; turn < titles; ++turn) {
        const QString text = u"Renamed %1"_s.arg(turn);
        QElapsedTimer timer;
        timer.start();
        QEventLoop loop;
        QObject::connect(&model, &QAbstractItemModel::dataChanged, &loop, [&] {
            if (model.text(row, VideoColumn::Title) == text)
                loop.quit();
        });
        if (!TrackerInterface::instance()->setTitle(model.text(row, VideoColumn::Urn), text))
            qFatal("the title was not taken");
        loop.exec();
        times.push_back(double(timer.nsecsElapsed()) / 1e6);
    }
    std::sort(times.begin(), times.end());
    report(model.rowCount(), times[titles / 2]);
}

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    Turns<QGuiApplication> application(argc, argv);
    QLoggingCategory::setFilterRules(u"kestrel.*.info=false"_s);
    registerServerDrivers();
    const QStringList arguments = application.arguments();
    const QString step = arguments.value(1);
    const QString driver = arguments.value(2);
    if (step == "text"_L1)
        std::puts(
            qUtf8Printable(adaptToStandard(SparqlQuery(libraryText()),
                                           {ServerSettings::ofEndpoint().graph, {}}, ResourceIds::shared())
                               .text));
    else if (step == "load"_L1)
        load(driver);
    else if (step == "turn"_L1)
        turn(application, driver);
    else if (step == "title"_L1)
        title(driver);
    else
        return 2;
    return 0;
}

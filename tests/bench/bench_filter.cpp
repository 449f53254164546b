// SPDX-License-Identifier: GPL-3.0-or-later
// One key press in the filter field: from the text given to the model to the model settled, beside a plain
// QSortFilterProxyModel that compares with QCollator. Prints the figures that docs/performance.md keeps.
#include "data/videoinfo.h"
#include "library/filteredmodel.h"
#include "platform/toolkit/locale.h"

#include <QAbstractListModel>
#include <QCollator>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QRandomGenerator>

#include <algorithm>
#include <cstdio>

using namespace Qt::Literals::StringLiterals;

namespace {

class Titles : public QAbstractTableModel
{
public:
    explicit Titles(int count)
    {
        static const QStringList words
            = {u"Summer"_s, u"autumn"_s,  u"Holiday"_s, u"concert"_s, u"birthday"_s,
               u"the"_s,    u"Ägäis"_s,   u"harbour"_s, u"of"_s,      u"mountains"_s,
               u"école"_s,  u"School"_s,  u"lake"_s,    u"first"_s,   u"steps"_s,
               u"Åre"_s,    u"evening"_s, u"VID"_s,     u"clip"_s,    u"north face"_s};
        QRandomGenerator random(1);
        for (int i = 0; i < count; ++i) {
            QStringList title;
            for (int word = 2 + random.bounded(3); word > 0; --word)
                title.append(words.at(random.bounded(int(words.size()))));
            title.append(QString::number(random.bounded(2030)));
            m_titles.append(title.join(u' '));
        }
    }
    int rowCount(const QModelIndex &parent = QModelIndex()) const override
    {
        return parent.isValid() ? 0 : int(m_titles.size());
    }
    int columnCount(const QModelIndex & = QModelIndex()) const override { return VideoColumn::Count; }
    QVariant data(const QModelIndex &index, int) const override
    {
        return index.column() == VideoColumn::Title ? m_titles.at(index.row()) : QString();
    }

private:
    QStringList m_titles;
};

class PlainProxy : public QSortFilterProxyModel
{
public:
    PlainProxy() : m_collator(toolkit::Locale().collator())
    {
        setFilterKeyColumn(VideoColumn::Title);
        setFilterCaseSensitivity(Qt::CaseInsensitive);
        sort(VideoColumn::Title);
    }

protected:
    bool lessThan(const QModelIndex &left, const QModelIndex &right) const override
    {
        return m_collator.compare(left.data().toString(), right.data().toString()) < 0;
    }

private:
    QCollator m_collator;
};

void settle(const PlainProxy &proxy)
{
    static_cast<void>(proxy.rowCount());
}

void settle(const FilteredModel &proxy)
{
    while (!proxy.isSettled())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

// Milliseconds of one key.
template <typename Proxy> double press(Proxy &proxy, const QString &text)
{
    QElapsedTimer timer;
    timer.start();
    proxy.setFilterFixedString(text);
    proxy.invalidate();
    settle(proxy);
    return double(timer.nsecsElapsed()) / 1e6;
}

// Milliseconds until a model that is new to the proxy stands sorted.
template <typename Proxy> double firstTime(Proxy &proxy, QAbstractItemModel &source)
{
    QElapsedTimer timer;
    timer.start();
    proxy.setSourceModel(&source);
    settle(proxy);
    return double(timer.nsecsElapsed()) / 1e6;
}

struct Times
{
    QList<double> keys; // one, two and three letters
    QList<double> clears;
};

// Types the first three letters of each word, then clears the field.
template <typename Proxy> Times type(Proxy &proxy, const QStringList &words)
{
    Times times;
    for (const QString &word : words) {
        for (int letters = 1; letters <= 3; ++letters)
            times.keys.append(press(proxy, word.left(letters)));
        times.clears.append(press(proxy, QString()));
    }
    return times;
}

double percentile(QList<double> values, double share)
{
    std::sort(values.begin(), values.end());
    return values.at(qMin(values.size() - 1, qsizetype(share * double(values.size()))));
}

void measure(int count, int rounds)
{
    static const QStringList words
        = {u"sum"_s, u"Aut"_s, u"the"_s, u"con"_s, u"äg"_s, u"202"_s, u"xyz"_s, u"eve"_s};
    Titles titles(count);
    FilteredModel model;
    PlainProxy plain;
    const double firstSort = firstTime(model, titles);
    const double plainSort = firstTime(plain, titles);

    Times ours;
    for (int i = 0; i < rounds; ++i) {
        const Times round = type(model, words);
        ours.keys += round.keys;
        ours.clears += round.clears;
    }
    // The plain proxy takes seconds a key: fewer words give the same medians.
    const Times theirs = type(plain, count > 20000 ? words.mid(0, 2) : words);
    const auto row = [count](const char *what, const QList<double> &mine, const QList<double> &other,
                             double share) {
        const double a = percentile(mine, share);
        const double b = percentile(other, share);
        std::printf(
            "filter %s, %d titles %.2f ms | QSortFilterProxyModel with QCollator %.2f ms | ratio %.4f\n",
            what, count, a, b, a / b);
    };
    row("key median", ours.keys, theirs.keys, 0.5);
    row("key p99", ours.keys, theirs.keys, 0.99);
    row("cleared median", ours.clears, theirs.clears, 0.5);
    row("cleared p99", ours.clears, theirs.clears, 0.99);
    std::printf(
        "filter first sort, %d titles %.2f ms | QSortFilterProxyModel with QCollator %.2f ms | ratio %.4f\n",
        count, firstSort, plainSort, firstSort / plainSort);
    std::fflush(stdout);
}

} // namespace

int main(int argc, char **argv)
{
    qputenv("LC_ALL", "en_GB.UTF-8");
    QGuiApplication application(argc, argv);
    measure(10000, 10);
    measure(100000, 5);
}

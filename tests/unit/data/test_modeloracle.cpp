// SPDX-License-Identifier: GPL-3.0-or-later
#include "allvideosmodelfixture.h"

#include <data/storenews.h>

#include <QRandomGenerator>
#include <QTest>
#include <QThreadPool>

#include <algorithm>
#include <optional>

using namespace Qt::Literals::StringLiterals;
using namespace VideoRows;

namespace {

constexpr int Wait = 30000; // ms
constexpr int Numbers = 60; // of videos, so that most are there already
constexpr int Steps = 1500;

// Rows as they are described: a list, searched from the first to the last.
struct PlainModel
{
    QList<QStringList> rows;
    QStringList removed; // as filesRemoved() tells them
    int updates = 0;

    [[nodiscard]] int find(int column, const QString &text) const
    {
        for (int row = 0; row < rows.size(); ++row) {
            if (rows.at(row).at(column) == text)
                return row;
        }
        return -1;
    }
    void reset(const QList<QStringList> &all)
    {
        rows.clear();
        for (const QStringList &row : all)
            rows.append(extended(row));
        ++updates;
    }
    static QStringList extended(QStringList row)
    {
        row.resize(VideoColumn::Count);
        return row;
    }
    void change(const QList<QStringList> &changed)
    {
        QList<QStringList> added;
        for (const QStringList &row : changed) {
            const int old = find(VideoColumn::Urn, row.value(VideoColumn::Urn));
            if (old < 0) {
                added.append(extended(row));
                continue;
            }
            for (int column = 0; column < VideoColumn::RowSize; ++column)
                rows[old][column] = row.value(column);
        }
        rows += added;
        updates += added.isEmpty() ? 0 : 1;
    }
    void remove(const QList<int> &ids)
    {
        QList<QStringList> gone;
        for (const int id : ids) {
            if (const int row = find(VideoColumn::TrackerId, QString::number(id)); row >= 0)
                gone.append(rows.at(row));
        }
        if (ids.isEmpty() || (ids.size() == 1 && gone.isEmpty()))
            return;
        rows.removeIf([&gone](const QStringList &row) { return gone.contains(row); });
        for (const QStringList &row : std::as_const(gone))
            removed.append(row.at(VideoColumn::Url));
        ++updates;
    }
    void removeUrl(const QString &url)
    {
        const int row = find(VideoColumn::Url, url);
        if (row < 0)
            return;
        rows.removeAll(QStringList(rows.at(row)));
        removed.append(url);
        ++updates;
    }
    void setPicture(const QString &url, int column, const QString &path)
    {
        if (const int row = find(VideoColumn::Url, url); row >= 0)
            rows[row][column] = path;
    }
};

std::shared_ptr<const RowTable> tableOf(const QList<QStringList> &rows)
{
    RowTable table(VideoColumn::RowSize);
    for (const QStringList &row : rows) {
        for (int column = 0; column < VideoColumn::RowSize; ++column) {
            const QString text = row.value(column);
            const auto type = text.isNull() ? RowTable::Type::Unbound : RowTable::Type::Text;
            if (!table.append(type, text.toUtf8()))
                qFatal("the table is full");
        }
    }
    return std::make_shared<const RowTable>(std::move(table));
}

} // namespace

// Any run of what the store tells leaves the rows that a plain list would hold, and tells the same of them.
class TestModelOracle : public AllVideosModelFixture
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { startStore(); }
    void init();
    void cleanup() { stopModel(); }
    void anyRunOfNewsAgreesWithAPlainList_data();
    void anyRunOfNewsAgreesWithAPlainList();
    void newsWhileALongListIsMadeAgreeWithAPlainList_data();
    void newsWhileALongListIsMadeAgreeWithAPlainList();

private:
    QStringList randomRow();
    QList<QStringList> randomRows(int most);
    // The same news to both.
    void tellSomething(std::initializer_list<PlainModel *> plain);
    QString compare(const PlainModel &plain) const;

    QRandomGenerator m_random{1};
    QStringList m_removed;
    int m_updates = 0;
};

void TestModelOracle::init()
{
    startModel();
    m_tester.reset(); // it reads every cell at every signal
    m_removed.clear();
    m_updates = 0;
    connect(m_model.get(), &AllVideosModel::filesRemoved, this,
            [this](const QStringList &urls) { m_removed += urls; });
    connect(m_model.get(), &AllVideosModel::modelUpdated, this, [this] { ++m_updates; });
}

// Now and then another video's address or number, none, or fewer columns.
QStringList TestModelOracle::randomRow()
{
    const int number = m_random.bounded(Numbers);
    QStringList row = videoRow(number, u"Täge %1"_s.arg(m_random.bounded(5)));
    switch (m_random.bounded(12)) {
    case 0:
        row[VideoColumn::Url] = urlOf(m_random.bounded(Numbers));
        break;
    case 1:
        row[VideoColumn::TrackerId] = QString::number(m_random.bounded(Numbers));
        break;
    case 2:
        row[VideoColumn::Url] = m_random.bounded(2) != 0 ? QString() : u""_s;
        break;
    case 3:
        row[VideoColumn::TrackerId] = QString();
        break;
    case 4:
        row.resize(m_random.bounded(1, int(VideoColumn::RowSize)));
        break;
    default:
        break;
    }
    return row;
}

QList<QStringList> TestModelOracle::randomRows(int most)
{
    QList<QStringList> rows;
    for (int left = m_random.bounded(most + 1); left > 0; --left)
        rows.append(left > 1 && m_random.bounded(6) == 0 && !rows.isEmpty() ? rows.first() : randomRow());
    return rows;
}

void TestModelOracle::tellSomething(std::initializer_list<PlainModel *> plain)
{
    const QString url = m_random.bounded(9) == 0 ? QString() : urlOf(m_random.bounded(Numbers));
    const QString path = u"/t/%1.jpeg"_s.arg(m_random.bounded(3));
    switch (m_random.bounded(9)) {
    case 0:
    case 1:
    case 2:
    case 3: {
        const QList<QStringList> changed = randomRows(6);
        m_model->videosChanged(changed);
        for (PlainModel *model : plain)
            model->change(changed);
        break;
    }
    case 4:
    case 5: {
        QList<int> ids;
        for (int left = m_random.bounded(2) != 0 ? 1 : m_random.bounded(8); left > 0; --left)
            ids.append(m_random.bounded(Numbers));
        m_model->videosDeleted(ids);
        for (PlainModel *model : plain)
            model->remove(ids);
        break;
    }
    case 6:
        m_model->removeVideo(url);
        for (PlainModel *model : plain)
            model->removeUrl(url);
        break;
    case 7:
        m_model->defaultThumbnailUpdated(url, path);
        for (PlainModel *model : plain) {
            if (!url.isEmpty())
                model->setPicture(url, VideoColumn::DefaultThumbnail, path);
        }
        break;
    default: {
        const QString still = m_random.bounded(3) == 0 ? QString() : path;
        m_model->pauseThumbnailUpdated(url, still);
        for (PlainModel *model : plain)
            model->setPicture(url, VideoColumn::PauseThumbnail, still);
    }
    }
}

// The first disagreement as text; empty when there is none.
QString TestModelOracle::compare(const PlainModel &plain) const
{
    if (m_model->rowCount() != plain.rows.size())
        return u"%1 rows instead of %2"_s.arg(m_model->rowCount()).arg(plain.rows.size());
    for (int row = 0; row < plain.rows.size(); ++row) {
        for (int column = 0; column < VideoColumn::Count; ++column) {
            if (m_model->text(row, column) != plain.rows.at(row).at(column))
                return u"row %1, column %2: '%3'"_s.arg(row).arg(column).arg(m_model->text(row, column));
        }
    }
    for (int number = -1; number < Numbers; ++number) {
        const QString urn = number < 0 ? QString() : u"urn:%1"_s.arg(number);
        const QString url = number < 0 ? QString() : urlOf(number);
        if (m_model->rowOfUrn(urn) != plain.find(VideoColumn::Urn, urn)
            || m_model->rowOfUrl(url) != plain.find(VideoColumn::Url, url))
            return u"video %1 is found elsewhere"_s.arg(number);
    }
    return {};
}

void TestModelOracle::anyRunOfNewsAgreesWithAPlainList_data()
{
    QTest::addColumn<int>("seed");
    for (const int seed : {1, 2, 3})
        QTest::addRow("%d", seed) << seed;
}

void TestModelOracle::anyRunOfNewsAgreesWithAPlainList()
{
    QFETCH(int, seed);
    m_random.seed(quint32(seed));
    PlainModel plain;
    for (int step = 0; step < Steps; ++step) {
        if (m_random.bounded(150) == 0) {
            const QList<QStringList> rows = randomRows(2 * Numbers);
            if (m_random.bounded(2) != 0)
                Q_EMIT TrackerInterface::instance()->allVideosFinished(rows, m_random.bounded(2));
            else
                m_model->queryFinished(rows);
            plain.reset(rows);
        } else {
            tellSomething({&plain});
        }
        const QString fault = compare(plain);
        QVERIFY2(fault.isEmpty(), qPrintable(u"step %1: %2"_s.arg(step).arg(fault)));
        QCOMPARE(m_removed, plain.removed);
        QCOMPARE(m_updates, plain.updates);
    }
}

void TestModelOracle::newsWhileALongListIsMadeAgreeWithAPlainList_data()
{
    QTest::addColumn<int>("seed");
    for (int seed = 1; seed <= 4; ++seed)
        QTest::addRow("%d", seed) << seed;
}

void TestModelOracle::newsWhileALongListIsMadeAgreeWithAPlainList()
{
    QFETCH(int, seed);
    m_random.seed(quint32(seed));
    PlainModel before;
    PlainModel after;
    QList<QStringList> rows;
    for (int number = Numbers / 2; number < AllVideosModel::RowsAtOnce + Numbers; ++number)
        rows.append(videoRow(number));
    m_model->queryFinished(rows.mid(0, Numbers / 4));
    before.reset(rows.mid(0, Numbers / 4));
    after.reset(rows);
    Q_EMIT TrackerInterface::instance()->news()->listLoaded(tableOf(rows), 1);
    for (int step = 0; step < 60; ++step)
        tellSomething({&before, &after});
    QCOMPARE(compare(before), QString());
    QCOMPARE(m_removed, before.removed);
    QTRY_VERIFY_WITH_TIMEOUT(m_model->rowCount() > AllVideosModel::RowsAtOnce / 2, Wait);
    QCOMPARE(compare(after), QString());
    // Each address that either list lost is told, and none by both.
    QStringList told = before.removed;
    for (const QString &url : std::as_const(after.removed)) {
        if (!before.removed.contains(url))
            told.append(url);
    }
    QCOMPARE(m_removed, told);
}

QTEST_GUILESS_MAIN(TestModelOracle)
#include "test_modeloracle.moc"

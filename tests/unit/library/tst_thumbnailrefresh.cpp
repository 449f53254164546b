// SPDX-License-Identifier: GPL-3.0-or-later
#include "library/griditemwidget.h"
#include "libraryfixture.h"
#include "platform/toolkit/list.h"

#include <QTemporaryDir>

using namespace Qt::Literals::StringLiterals;

namespace {

// Makes cells that never have a picture, and notes which rows are filled.
class BareCellCreator : public toolkit::CellCreator
{
public:
    toolkit::Widget *createCell(const QModelIndex &, toolkit::CellRecycler &recycler) const override
    {
        toolkit::Widget *cell = recycler.take();
        return cell ? cell : new GridItemWidget;
    }
    void updateCell(const QModelIndex &index, toolkit::Widget *) const override
    {
        filled.append(index.row());
    }
    [[nodiscard]] QSizeF cellSize() const override { return {480, 100}; }

    mutable QList<int> filled;
};

} // namespace

// Opened on a folder of new videos, every cell on the screen gets its picture without being scrolled.
class ThumbnailRefreshTest : public QObject
{
    Q_OBJECT

public:
    explicit ThumbnailRefreshTest(LibraryFixture &fixture) : f(fixture) { }

private Q_SLOTS:
    void cleanup() { f.close(); }
    void everyVisibleCellGetsItsPicture();
    void videoWithoutAPictureIsNotAskedForAgainAndAgain();
    void fourCellsAreFilledAtATurnFromTheTop_data();
    void fourCellsAreFilledAtATurnFromTheTop();
    void pictureThatCannotBeReadLeavesTheTurnToTheNext();

private:
    [[nodiscard]] QList<GridItemWidget *> visibleCells() const
    {
        QList<GridItemWidget *> cells;
        for (const QModelIndex &index : f.widget()->list()->visibleIndexes())
            cells.append(qobject_cast<GridItemWidget *>(f.widget()->list()->cell(index)));
        return cells;
    }
    [[nodiscard]] int pictured() const
    {
        int count = 0;
        for (const GridItemWidget *cell : visibleCells())
            count += cell && cell->hasPicture();
        return count;
    }
    static QList<QStringList> videos(const QString &folder)
    {
        QList<QStringList> rows;
        for (int i = 0; i < 30; ++i) {
            rows.append(LibraryFixture::row(i + 1, u"clip %1"_s.arg(i, 2, 10, QChar(u'0'))));
            rows.last()[VideoColumn::Url] = u"file:///%1/%2.mp4"_s.arg(folder).arg(i);
        }
        return rows;
    }

    LibraryFixture &f;
    QTemporaryDir m_folder;
};

void ThumbnailRefreshTest::everyVisibleCellGetsItsPicture()
{
    QImage image(412, 232, QImage::Format_RGB32);
    image.fill(Qt::red);
    const QString path = m_folder.filePath(u"picture.png"_s);
    QVERIFY(image.save(path));
    QVERIFY(f.open(videos(u"good"_s)));
    QTRY_VERIFY(visibleCells().size() >= 5);
    FakeThumbnailerClient *client = FakeThumbnailerClient::last();
    // Answers one at a time, as the thumbnailer does.
    const auto answerNext = [&] {
        if (!client->outstanding.isEmpty())
            client->answer(client->outstanding.first(), path);
        return pictured() == visibleCells().size();
    };
    QTRY_VERIFY_WITH_TIMEOUT(answerNext(), 20000);
}

void ThumbnailRefreshTest::videoWithoutAPictureIsNotAskedForAgainAndAgain()
{
    QVERIFY(f.open(videos(u"broken"_s)));
    QTRY_VERIFY(visibleCells().size() >= 5);
    FakeThumbnailerClient *client = FakeThumbnailerClient::last();
    QMap<QUrl, int> failures;
    const auto failNext = [&] {
        if (!client->outstanding.isEmpty()) {
            const QUrl url = client->outstanding.first();
            ++failures[url];
            client->fail(url, u"broken"_s);
        }
        return failures.size() >= visibleCells().size();
    };
    QTRY_VERIFY_WITH_TIMEOUT(failNext(), 20000);
    while (!client->outstanding.isEmpty())
        failNext();
    const qsizetype asked = client->requests.size();
    QVERIFY(!QTest::qWaitFor([&] { return client->requests.size() > asked + 1; }, 600));
    for (const int times : std::as_const(failures))
        QVERIFY(times <= 3);
}

void ThumbnailRefreshTest::fourCellsAreFilledAtATurnFromTheTop_data()
{
    QTest::addColumn<QString>("event");
    for (const char *event : {"a picture came", "a picture failed", "panning stopped"})
        QTest::newRow(event) << QString::fromLatin1(event);
}

void ThumbnailRefreshTest::fourCellsAreFilledAtATurnFromTheTop()
{
    QFETCH(QString, event);
    BareCellCreator bare; // outlives the page
    QVERIFY(f.open(videos(event)));
    f.widget()->list()->setCellCreator(&bare);
    QTRY_VERIFY(visibleCells().size() >= 6);
    QTRY_VERIFY(!bare.filled.isEmpty()); // the turn that follows upon the rows
    bare.filled.clear();
    ThumbnailHelper *helper = ThumbnailHelper::instance();
    if (event == "a picture came"_L1)
        Q_EMIT helper->newThumbnailReady(u"file:///other.mp4"_s, u"/other.jpeg"_s);
    else if (event == "a picture failed"_L1)
        Q_EMIT helper->newThumbnailError(u"file:///other.mp4"_s, u"broken"_s);
    else
        Q_EMIT f.widget()->list()->panningStopped();
    QVERIFY(bare.filled.isEmpty()); // not from within the report
    QTRY_COMPARE(bare.filled, QList<int>({0, 1, 2, 3}));
    f.close();
}

void ThumbnailRefreshTest::pictureThatCannotBeReadLeavesTheTurnToTheNext()
{
    // The folder of pictures was emptied meanwhile: the first cell used to be filled for ever, and the fifth
    // never was.
    BareCellCreator bare;
    const QList<QStringList> rows = videos(u"unreadable"_s);
    QVERIFY(f.open(rows));
    f.widget()->list()->setCellCreator(&bare);
    QTRY_VERIFY(visibleCells().size() >= 6);
    QTRY_VERIFY(!bare.filled.isEmpty());
    bare.filled.clear();
    Q_EMIT ThumbnailHelper::instance()->newThumbnailReady(rows.first().at(VideoColumn::Url),
                                                          u"/nowhere/picture.jpeg"_s);
    QTRY_VERIFY(bare.filled.contains(3));
    QVERIFY(bare.filled.contains(0));
    QTRY_VERIFY(bare.filled.contains(4));
    f.close();
}

int main(int argc, char **argv)
{
    toolkit::Application application(argc, argv, u"video"_s, nullptr);
    LibraryFixture fixture;
    ThumbnailRefreshTest test(fixture);
    return QTest::qExec(&test, argc, argv);
}
#include "tst_thumbnailrefresh.moc"

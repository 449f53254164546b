// SPDX-License-Identifier: GPL-3.0-or-later
#include "userjournal.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

namespace {

UserData holiday()
{
    return {u"urn:uuid:1"_s,
            u"file:///videos/holiday.mp4"_s,
            {7, 8, 900, 1000, "abc"},
            u"My \"holiday\"\nat the sea"_s,
            125,
            3,
            u"2026-01-02T03:04:05Z"_s};
}

} // namespace

// The database is gone: titles, positions and counts are still there.
class StoreJournal : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }
    void valuesAreThereAgainAfterARestart();
    void theLastValueHolds();
    void aLineThatWasCutOffCostsOnlyItself();
    void aLongJournalIsWrittenAnew();
    void aFileIsFoundByAddressInodeOrContent();
    void brokenFilesAreRememberedBySizeAndTime();
    void anUnwritableJournalSaysSo();

private:
    [[nodiscard]] QString path() const { return m_folder->filePath(u"journal.jsonl"_s); }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void StoreJournal::valuesAreThereAgainAfterARestart()
{
    {
        UserJournal journal(path());
        QVERIFY(journal.open());
        QVERIFY(journal.record(holiday()));
    }
    UserJournal journal(path());
    QVERIFY(journal.open());
    QCOMPARE(journal.entries().size(), 1);
    QVERIFY(*journal.find(u"urn:uuid:1"_s) == holiday());
}

void StoreJournal::theLastValueHolds()
{
    UserData data = holiday();
    {
        UserJournal journal(path());
        QVERIFY(journal.open());
        QVERIFY(journal.record(data));
        data.runTime = 0;
        data.title.reset();
        QVERIFY(journal.record(data));
        data.urn = u"urn:uuid:2"_s;
        QVERIFY(journal.record(data));
        QVERIFY(journal.forget(u"urn:uuid:2"_s));
    }
    UserJournal journal(path());
    QVERIFY(journal.open());
    QVERIFY(!journal.find(u"urn:uuid:2"_s));
    QCOMPARE(journal.find(u"urn:uuid:1"_s)->runTime, 0);
    QVERIFY(!journal.find(u"urn:uuid:1"_s)->title);
}

void StoreJournal::aLineThatWasCutOffCostsOnlyItself()
{
    UserData second = holiday();
    second.urn = u"urn:uuid:2"_s;
    {
        UserJournal journal(path());
        QVERIFY(journal.open());
        QVERIFY(journal.record(holiday()));
    }
    QFile file(path());
    QVERIFY(file.open(QIODevice::Append));
    file.write("{\"video\":\"urn:uu");
    file.close();
    {
        UserJournal journal(path());
        QVERIFY(journal.open());
        QVERIFY(journal.find(u"urn:uuid:1"_s));
        QVERIFY(journal.record(second));
    }
    UserJournal journal(path());
    QVERIFY(journal.open());
    QCOMPARE(journal.entries().size(), 2);
}

void StoreJournal::aLongJournalIsWrittenAnew()
{
    UserData data = holiday();
    {
        UserJournal journal(path());
        QVERIFY(journal.open());
        for (int i = 0; i < 500; ++i) {
            data.runTime = i;
            QVERIFY(journal.record(data));
        }
    }
    const qint64 before = QFile(path()).size();
    UserJournal journal(path());
    QVERIFY(journal.open());
    QVERIFY(QFile(path()).size() < before / 100);
    QCOMPARE(journal.find(u"urn:uuid:1"_s)->runTime, 499);
}

void StoreJournal::aFileIsFoundByAddressInodeOrContent()
{
    UserJournal journal(path());
    QVERIFY(journal.open());
    QVERIFY(journal.record(holiday()));
    const QString elsewhere = u"file:///videos/other.mp4"_s;
    QVERIFY(journal.findForFile(holiday().url, {1, 2, 3, 4, "x"}));
    QVERIFY(journal.findForFile(elsewhere, {7, 8, 900, 1000, {}}));
    QVERIFY(journal.findForFile(elsewhere, {1, 1, 900, 5, "abc"}));
    QVERIFY(!journal.findForFile(elsewhere, {7, 8, 901, 1000, {}})); // the inode is used again
    QVERIFY(!journal.findForFile(elsewhere, {1, 1, 900, 1000, "abd"}));
}

void StoreJournal::brokenFilesAreRememberedBySizeAndTime()
{
    const QString broken = u"/videos/broken.mp4"_s;
    {
        UserJournal journal(path());
        QVERIFY(journal.open());
        journal.recordBroken(broken, {1, 2, 300, 400, {}}, u"crashed"_s);
        journal.recordBroken(u"/videos/gone.mp4"_s, {1, 2, 300, 400, {}}, u"crashed"_s);
        journal.forgetBroken(u"/videos/gone.mp4"_s);
    }
    UserJournal journal(path());
    QVERIFY(journal.open());
    QVERIFY(journal.isBroken(broken, {9, 9, 300, 400, {}}));
    QVERIFY(!journal.isBroken(broken, {1, 2, 301, 400, {}}));
    QVERIFY(!journal.isBroken(broken, {1, 2, 300, 401, {}}));
    QVERIFY(!journal.isBroken(u"/videos/gone.mp4"_s, {1, 2, 300, 400, {}}));
}

void StoreJournal::anUnwritableJournalSaysSo()
{
    UserJournal journal(m_folder->filePath(u"no/such/folder/journal"_s));
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"cannot write .*journal"_s));
    QVERIFY(!journal.open());
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"cannot write .*journal"_s));
    QVERIFY(!journal.record(holiday()));
}

QTEST_GUILESS_MAIN(StoreJournal)
#include "store_journal.moc"

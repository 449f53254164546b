// SPDX-License-Identifier: GPL-3.0-or-later
// A video that was saved under another name, in the library of the real store.
#include "platform/saveas/filecopy.h"
#include "support/storesession.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::Literals::StringLiterals;
using Kind = HiddenFile::Kind;

Q_DECLARE_METATYPE(Kind)

namespace {

constexpr int patience = 60000;

} // namespace

class FileOpsSavedTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void theCopyIsInTheLibrary_data();
    void theCopyIsInTheLibrary();
    void theCopyInPlaceOfAnotherVideoIsInTheLibrary();

private:
    [[nodiscard]] QString at(const QString &name) const { return m_session.videos() + u'/' + name; }
    // "saved", or why not.
    [[nodiscard]] QString save(FileCopy::Request request)
    {
        FileCopy copy(std::move(request));
        QSignalSpy finished(&copy, &FileCopy::finished);
        QString reason = u"no end"_s;
        connect(&copy, &FileCopy::failed, this, [&reason](CopyFault, const QString &text) { reason = text; });
        copy.start();
        return finished.wait(patience) ? u"saved"_s : reason;
    }

    StoreSession m_session;
    std::unique_ptr<StoreClient> m_client;
    QString m_received; // outside the folders of the library
};

void FileOpsSavedTest::initTestCase()
{
    QVERIFY(m_session.isValid());
    QVERIFY(QDir().mkpath(m_session.videos()));
    m_received = m_session.home() + u"/received.mp4"_s;
    QVERIFY(m_session.makeClip(m_received, {u"-metadata"_s, u"title=Received"_s}));
    QVERIFY(m_session.makeClip(at(u"other.mp4"_s), {u"-metadata"_s, u"title=Other"_s}));
    QVERIFY(m_session.start());
    m_client = m_session.connectClient();
    QVERIFY(m_client->isConnected());
    QTRY_COMPARE_WITH_TIMEOUT(countVideos(m_client.get()), 1, patience);
    QTRY_VERIFY_WITH_TIMEOUT(!m_session.isScanning(), patience);
}

void FileOpsSavedTest::theCopyIsInTheLibrary_data()
{
    QTest::addColumn<Kind>("kind");
    QTest::newRow("unnamed") << Kind::Unnamed;
    QTest::newRow("hidden") << Kind::Hidden;
}

void FileOpsSavedTest::theCopyIsInTheLibrary()
{
    QFETCH(Kind, kind);
    const int before = countVideos(m_client.get());
    const QString name = kind == Kind::Hidden ? u"saved b.mp4"_s : u"saved a.mp4"_s;
    QCOMPARE(save({QFile::encodeName(m_received), QFile::encodeName(m_session.videos()),
                   QFile::encodeName(name), std::nullopt, ByteCopier::allWays(), kind}),
             u"saved"_s);
    QTRY_COMPARE_WITH_TIMEOUT(valueOf(m_client.get(), name, u"nie:title"_s), u"Received"_s, patience);
    QCOMPARE(countVideos(m_client.get()), before + 1); // no hidden file beside it
}

void FileOpsSavedTest::theCopyInPlaceOfAnotherVideoIsInTheLibrary()
{
    const int before = countVideos(m_client.get());
    QCOMPARE(valueOf(m_client.get(), u"other.mp4"_s, u"nie:title"_s), u"Other"_s);
    FileCopy::Request request{QFile::encodeName(m_received), QFile::encodeName(m_session.videos()),
                              "other.mp4"};
    FileCopy refused(request);
    QSignalSpy failed(&refused, &FileCopy::failed);
    refused.start();
    QVERIFY(failed.wait(patience));
    request.replaced = refused.taken();
    QCOMPARE(save(request), u"saved"_s);
    QTRY_COMPARE_WITH_TIMEOUT(valueOf(m_client.get(), u"other.mp4"_s, u"nie:title"_s), u"Received"_s,
                              patience);
    QCOMPARE(countVideos(m_client.get()), before);
}

QTEST_GUILESS_MAIN(FileOpsSavedTest)
#include "fileops_saved.moc"

// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/saveas/bytecopier.h"
#include "platform/saveas/descriptor.h"

#include <QFile>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

#include <cerrno>

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/mman.h>

using namespace Qt::Literals::StringLiterals;
using Way = ByteCopier::Way;

Q_DECLARE_METATYPE(QList<Way>)

// The bytes arrive, whichever way the file systems know.
class TestByteCopier : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void everyWayBringsTheSameBytes_data();
    void everyWayBringsTheSameBytes();
    void sharesBlocksWhereTheFileSystemCan();
    void anotherFileSystemTakesAnotherWay();
    void aSourceThatEndsEarly();
    void aSourceThatGrowsIsCopiedAsFarAsAsked();
    void isAskedBeforeEveryStep();
    void aFullDeviceIsToldAsSuch_data();
    void aFullDeviceIsToldAsSuch();

private:
    static ByteCopier::GoOn always()
    {
        return [](qint64) { return true; };
    }
    Descriptor source() const { return Descriptor(::open(m_source.constData(), O_RDONLY | O_CLOEXEC)); }
    Descriptor target() const
    {
        return Descriptor(::open(m_target.constData(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
    }
    QByteArray written() const
    {
        QFile file(QFile::decodeName(m_target));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    QByteArray m_source;
    QByteArray m_target;
    QByteArray m_content;
};

void TestByteCopier::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_source = QFile::encodeName(m_folder->filePath(u"source"_s));
    m_target = QFile::encodeName(m_folder->filePath(u"target"_s));
    if (m_content.isEmpty()) {
        m_content.resize(40 * 1024 * 1024 + 12345);
        QRandomGenerator random(7);
        random.fillRange(reinterpret_cast<quint32 *>(m_content.data()), m_content.size() / 4);
    }
    QFile file(QFile::decodeName(m_source));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(m_content), m_content.size());
}

void TestByteCopier::everyWayBringsTheSameBytes_data()
{
    QTest::addColumn<QList<Way>>("ways");
    QTest::newRow("all") << ByteCopier::allWays();
    QTest::newRow("copy_file_range") << QList<Way>{Way::CopyRange, Way::ReadWrite};
    QTest::newRow("sendfile") << QList<Way>{Way::SendFile, Way::ReadWrite};
    QTest::newRow("read and write") << QList<Way>{Way::ReadWrite};
}

void TestByteCopier::everyWayBringsTheSameBytes()
{
    QFETCH(QList<Way>, ways);
    const Descriptor from = source();
    const Descriptor to = target();
    ByteCopier copier(from.get(), to.get(), ways);
    QCOMPARE(copier.copy(m_content.size(), always()), 0);
    QCOMPARE(copier.copied(), m_content.size());
    QVERIFY(written() == m_content);
    if (ways.first() != Way::Reflink)
        QCOMPARE(copier.way(), ways.first());
}

// Whether it can is the machine's; that the program takes it then, and only then, is ours.
void TestByteCopier::sharesBlocksWhereTheFileSystemCan()
{
    const Descriptor from = source();
    const Descriptor trial = target();
    const bool can = ::ioctl(trial.get(), FICLONE, from.get()) == 0;
    qInfo() << "blocks can be shared here:" << can;
    const Descriptor to = target();
    ByteCopier copier(from.get(), to.get());
    QCOMPARE(copier.reflink(m_content.size()), can);
    QCOMPARE(copier.way() == Way::Reflink, can);
    QCOMPARE(copier.copied(), can ? m_content.size() : 0);
    QCOMPARE(copier.copy(m_content.size(), always()), 0);
    QVERIFY(written() == m_content);
}

void TestByteCopier::anotherFileSystemTakesAnotherWay()
{
    const Descriptor from = source();
    const Descriptor to(::memfd_create("target", MFD_CLOEXEC));
    ByteCopier copier(from.get(), to.get());
    QCOMPARE(copier.copy(m_content.size(), always()), 0);
    QVERIFY(copier.way() != Way::Reflink);
    QByteArray read(m_content.size(), '\0');
    QCOMPARE(qint64(::pread(to.get(), read.data(), size_t(read.size()), 0)), m_content.size());
    QVERIFY(read == m_content);
}

void TestByteCopier::aSourceThatEndsEarly()
{
    const Descriptor from = source();
    const Descriptor to = target();
    ByteCopier copier(from.get(), to.get(), {Way::CopyRange, Way::SendFile, Way::ReadWrite});
    QCOMPARE(copier.copy(m_content.size() + 5000, always()), 0);
    QCOMPARE(copier.copied(), m_content.size());
}

void TestByteCopier::aSourceThatGrowsIsCopiedAsFarAsAsked()
{
    const Descriptor from = source();
    const Descriptor to = target();
    ByteCopier copier(from.get(), to.get(), {Way::ReadWrite});
    QCOMPARE(copier.copy(1000, always()), 0);
    QCOMPARE(written(), m_content.left(1000));
}

void TestByteCopier::isAskedBeforeEveryStep()
{
    const Descriptor from = source();
    const Descriptor to = target();
    for (const QList<Way> &ways : {QList<Way>{Way::CopyRange}, {Way::SendFile}, {Way::ReadWrite}}) {
        QCOMPARE(::lseek(from.get(), 0, SEEK_SET), 0);
        QCOMPARE(::lseek(to.get(), 0, SEEK_SET), 0);
        qint64 last = -1;
        ByteCopier copier(from.get(), to.get(), ways);
        QCOMPARE(copier.copy(m_content.size(),
                             [&](qint64 copied) {
                                 const bool small = copied - last <= 2 * 1024 * 1024;
                                 last = copied;
                                 return small && copied < 8 * 1024 * 1024;
                             }),
                 ECANCELED);
        QVERIFY2(last >= 8 * 1024 * 1024, qPrintable(QString::number(last)));
    }
    ByteCopier copier(from.get(), to.get());
    QCOMPARE(copier.copy(m_content.size(), [](qint64) { return false; }), ECANCELED);
}

void TestByteCopier::aFullDeviceIsToldAsSuch_data()
{
    QTest::addColumn<QList<Way>>("ways");
    QTest::newRow("all") << ByteCopier::allWays();
    QTest::newRow("read and write") << QList<Way>{Way::ReadWrite};
}

void TestByteCopier::aFullDeviceIsToldAsSuch()
{
    QFETCH(QList<Way>, ways);
    const Descriptor from = source();
    const Descriptor to(::open("/dev/full", O_WRONLY | O_CLOEXEC));
    QVERIFY(to.isOpen());
    ByteCopier copier(from.get(), to.get(), ways);
    QCOMPARE(copier.copy(m_content.size(), always()), ENOSPC);
}

QTEST_GUILESS_MAIN(TestByteCopier)
#include "tst_bytecopier.moc"

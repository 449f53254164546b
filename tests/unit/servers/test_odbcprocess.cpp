// SPDX-License-Identifier: GPL-3.0-or-later
// What is left of a password in the memory of this process once the helper program has it.
#include "platform/servers/credentials.h"
#include "platform/servers/odbcprocess.h"
#include "platform/servers/serversettings.h"

#include <QFile>
#include <QTest>

#include <memory>
#include <string_view>

#include <fcntl.h>
#include <unistd.h>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int s_waitMs = 30000;
constexpr char s_mask = 0x15;
// The password, each letter changed: it stands nowhere in this program as it is.
constexpr std::string_view s_masked = "vzgpg~%%7vf~{%yp;t&qwxg";

QString password()
{
    QString text;
    for (const char c : s_masked)
        text.append(QChar(u'\0' + (c ^ s_mask)));
    return text;
}

// Letters of `step` bytes, native order.
bool standsIn(QByteArrayView memory, qsizetype step)
{
    const auto length = qsizetype(s_masked.size());
    const char first = char(s_masked[0] ^ s_mask);
    for (qsizetype at = memory.indexOf(first); at >= 0 && at + length * step <= memory.size();
         at = memory.indexOf(first, at + 1)) {
        qsizetype same = 1;
        while (same < length && memory[at + same * step] == char(s_masked[size_t(same)] ^ s_mask))
            ++same;
        if (same == length)
            return true;
    }
    return false;
}

// In what this process can write, as UTF-8 or UTF-16.
bool isInMemory()
{
    QFile maps(u"/proc/self/maps"_s);
    const int memory = ::open("/proc/self/mem", O_RDONLY | O_CLOEXEC);
    if (!maps.open(QIODevice::ReadOnly) || memory < 0)
        qFatal("no memory");
    bool isThere = false;
    for (const QByteArray &line : maps.readAll().split('\n')) {
        const QList<QByteArray> range = line.left(line.indexOf(' ')).split('-');
        if (!line.contains(" rw-p ") || range.size() != 2)
            continue;
        const qint64 begin = range[0].toLongLong(nullptr, 16);
        QByteArray bytes(range[1].toLongLong(nullptr, 16) - begin, Qt::Uninitialized);
        const ssize_t got = ::pread(memory, bytes.data(), size_t(bytes.size()), begin);
        const QByteArrayView read = QByteArrayView(bytes).first(qMax<ssize_t>(got, 0));
        isThere = isThere || standsIn(read, 1) || standsIn(read, 2);
    }
    ::close(memory);
    return isThere;
}

} // namespace

class TestOdbcProcess : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void keepsNoPassword_data();
    void keepsNoPassword();
};

void TestOdbcProcess::initTestCase()
{
#ifdef __SANITIZE_ADDRESS__
    QSKIP("the sanitizer maps more memory than can be read");
#endif
}

void TestOdbcProcess::keepsNoPassword_data()
{
    QTest::addColumn<QString>("program");
    QTest::newRow("that reads it") << u"/usr/bin/wc"_s;
    QTest::newRow("that is not there") << u"/no/such/program"_s;
}

void TestOdbcProcess::keepsNoPassword()
{
    QFETCH(QString, program);
    QVERIFY(!isInMemory());
    Login login{u"anna"_s, password(), {}};
    QVERIFY(isInMemory());
    auto process = std::make_unique<OdbcProcess>(program, ServerSettings(), login, nullptr);
    wipe(login.password);
    if (QFile::exists(program))
        QTRY_VERIFY_WITH_TIMEOUT(!isInMemory(), s_waitMs); // it is on its way
    process.reset();
    QVERIFY(!isInMemory());
}

QTEST_GUILESS_MAIN(TestOdbcProcess)

#include "test_odbcprocess.moc"

// SPDX-License-Identifier: GPL-3.0-or-later
// What is left of a password in the memory of this process once the helper program has it.
#include "platform/servers/credentials.h"
#include "platform/servers/odbcprocess.h"
#include "platform/servers/serversettings.h"

#include <QFile>
#include <QTest>

#include <algorithm>
#include <array>
#include <memory>
#include <string_view>

#include <fcntl.h>
#include <string.h>
#include <unistd.h>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int s_waitMs = 30000;
constexpr qint64 s_mostMemory = qint64(1) << 40;
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

// A piece of memory at a time. What was looked at does not stay: it would be found the next time.
bool standsBetween(int memory, qint64 begin, qint64 end)
{
    static std::array<char, 1 << 20> piece;
    constexpr auto overlap = qint64(s_masked.size()) * 2; // of two pieces, one may begin in the other
    bool isThere = false;
    ssize_t got = 0;
    for (qint64 at = begin; at < end && !isThere; at += got - overlap) {
        got = ::pread(memory, piece.data(), size_t(std::min(end - at, qint64(piece.size()))), at);
        if (got <= overlap)
            break;
        const QByteArrayView read(piece.data(), got);
        isThere = standsIn(read, 1) || standsIn(read, 2);
        explicit_bzero(piece.data(), piece.size());
    }
    return isThere;
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
        const qint64 end = range[1].toLongLong(nullptr, 16);
        // The address sanitizer's record of which bytes may be used is larger than any machine's memory.
        if (end - begin < s_mostMemory)
            isThere = isThere || standsBetween(memory, begin, end);
    }
    ::close(memory);
    return isThere;
}

} // namespace

class TestOdbcProcess : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void keepsNoPassword_data();
    void keepsNoPassword();
};

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

// SPDX-License-Identifier: GPL-3.0-or-later
#include "odbc/framechannel.h"
#include "odbc/odbcsession.h"
#include "odbc/widetext.h"

#include "platform/servers/odbcreplyparser.h"
#include "platform/servers/resourceids.h"

#include <QProcess>
#include <QTest>

#include <array>
#include <thread>

#include <unistd.h>

using namespace Qt::Literals::StringLiterals;
using namespace OdbcProtocol;

namespace {

class Pipe
{
public:
    Pipe()
    {
        if (pipe(m_ends.data()) != 0)
            qFatal("no pipe");
    }
    ~Pipe()
    {
        close(m_ends[0]);
        closeWriting();
    }
    Q_DISABLE_COPY_MOVE(Pipe)

    [[nodiscard]] int readEnd() const { return m_ends[0]; }
    [[nodiscard]] int writeEnd() const { return m_ends[1]; }
    void closeWriting()
    {
        if (m_ends[1] >= 0)
            close(m_ends[1]);
        m_ends[1] = -1;
    }
    void put(const QByteArray &bytes) const
    {
        QCOMPARE(write(m_ends[1], bytes.constData(), size_t(bytes.size())), ssize_t(bytes.size()));
    }

private:
    std::array<int, 2> m_ends = {-1, -1};
};

QByteArray bytesOf(auto value)
{
    return QByteArray(reinterpret_cast<const char *>(&value), sizeof value);
}

std::string wide(const QString &text)
{
    const QList<uint> characters = text.toUcs4();
    return {reinterpret_cast<const char *>(characters.constData()), size_t(characters.size()) * 4};
}

std::string utf8Of(std::string_view wideText)
{
    std::string text;
    appendUtf8(text, wideText);
    return text;
}

} // namespace

class TestOdbcChannel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsFrames();
    void refusesWhatIsNoFrame();
    void parserReadsWhatIsWritten();
    void readsALogin();
    void refusesABrokenLogin();
    void wideCharactersBecomeUtf8();
    void programEndsWithItsInput_data();
    void programEndsWithItsInput();
};

void TestOdbcChannel::readsFrames()
{
    Pipe pipe;
    pipe.put(bytesOf(Header{2, 3}) + "abc" + bytesOf(Header{4, 0}));
    pipe.closeWriting();
    const std::optional<Frame> first = readFrame(pipe.readEnd());
    QVERIFY(first);
    QCOMPARE(first->kind, 2u);
    QCOMPARE(first->bytes, std::string("abc"));
    const std::optional<Frame> second = readFrame(pipe.readEnd());
    QVERIFY(second);
    QCOMPARE(second->kind, 4u);
    QVERIFY(second->bytes.empty());
    QVERIFY(!readFrame(pipe.readEnd()));
}

void TestOdbcChannel::refusesWhatIsNoFrame()
{
    for (const QByteArray &bytes :
         {QByteArray("abc"), bytesOf(Header{2, 3}) + "ab", bytesOf(Header{2, 0xffffffff}) + "abc"}) {
        Pipe pipe;
        pipe.put(bytes);
        pipe.closeWriting();
        QVERIFY(!readFrame(pipe.readEnd()));
    }
}

// A long answer is written while it is read: neither side waits for the other for ever.
void TestOdbcChannel::parserReadsWhatIsWritten()
{
    constexpr int rows = 20000;
    Pipe pipe;
    std::thread writing([&pipe] {
        AnswerWriter writer(pipe.writeEnd());
        writer.started();
        writer.columns(2);
        for (int row = 0; row < rows; ++row) {
            writer.cell(CellType::Integer, std::to_string(row));
            writer.cell(CellType::Text, row == 100 ? std::string(300000, 'x') : std::string("Ψ🎬"));
        }
        writer.done();
        pipe.closeWriting();
    });
    ResourceIds ids;
    OdbcReplyParser parser(false, {}, ids);
    std::array<char, 50000> buffer;
    auto state = OdbcReplyParser::State::Incomplete;
    for (ssize_t got = 0; (got = read(pipe.readEnd(), buffer.data(), buffer.size())) > 0;)
        state = parser.feed(QByteArrayView(buffer.data(), got));
    writing.join();
    QCOMPARE(state, OdbcReplyParser::State::Done);
    const RowTable table = parser.takeRows();
    QCOMPARE(table.rows(), rows);
    QCOMPARE(table.value(rows - 1, 0).toInt(), rows - 1);
    QCOMPARE(table.text(100, 1).size(), 300000);
    QCOMPARE(table.text(101, 1), u"Ψ🎬"_s);
}

void TestOdbcChannel::readsALogin()
{
    const auto text = [](const QByteArray &utf8) { return bytesOf(quint32(utf8.size())) + utf8; };
    const QByteArray bytes = bytesOf(quint32(30)) + text("driver.so") + text("archive.example:1111")
        + text("jo") + text("gehéim");
    OdbcLogin login;
    QVERIFY(login.read({bytes.constData(), size_t(bytes.size())}));
    QCOMPARE(login.seconds, 30u);
    QCOMPARE(QByteArray::fromStdString(login.driver + '|' + login.server + '|' + login.user + '|'
                                       + login.password),
             QByteArray("driver.so|archive.example:1111|jo|gehéim"));
    const QByteArray padded = bytes + QByteArray(100, '\0');
    QVERIFY(login.read({padded.constData(), size_t(padded.size())}));
}

void TestOdbcChannel::refusesABrokenLogin()
{
    const auto text = [](const QByteArray &utf8) { return bytesOf(quint32(utf8.size())) + utf8; };
    const QByteArray bytes = bytesOf(quint32(30)) + text("a") + text("b") + text("c") + text("d");
    OdbcLogin login;
    for (qsizetype length = 0; length < bytes.size(); ++length)
        QVERIFY(!login.read({bytes.constData(), size_t(length)}));
    const QByteArray more = bytes + 'x';
    QVERIFY(!login.read({more.constData(), size_t(more.size())}));
    const QByteArray tooLong = bytesOf(quint32(30)) + bytesOf(quint32(0xffffffff)) + "abc";
    QVERIFY(!login.read({tooLong.constData(), size_t(tooLong.size())}));
}

void TestOdbcChannel::wideCharactersBecomeUtf8()
{
    const QString text = u"aé\u0800日🎬 \U0010ffff"_s;
    QCOMPARE(QString::fromStdString(utf8Of(wide(text))), text);
    QCOMPARE(QString::fromStdString(utf8Of(bytesOf(char32_t(0xd800)).toStdString())), u"\ufffd"_s);
    QCOMPARE(QString::fromStdString(utf8Of(bytesOf(char32_t(0x110000)).toStdString())), u"\ufffd"_s);
    QVERIFY(utf8Of("abc").empty());
}

void TestOdbcChannel::programEndsWithItsInput_data()
{
    QTest::addColumn<QByteArray>("input");
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("half a header") << QByteArray("abc");
    QTest::newRow("an answer") << bytesOf(Header{quint32(Answer::Done), 0});
    QTest::newRow("a broken login") << bytesOf(Header{quint32(Request::Open), 2}) + "ab";
    QTest::newRow("far too long") << bytesOf(Header{quint32(Request::Query), 0xffffffff}) + "SELECT";
    QTest::newRow("cancelled without a statement") << bytesOf(Header{quint32(Request::Cancel), 0});
}

void TestOdbcChannel::programEndsWithItsInput()
{
    QFETCH(QByteArray, input);
    QProcess program;
    program.start(QStringLiteral(KESTREL_BIN_DIR "/kestrel-odbc"), QStringList());
    QVERIFY(program.waitForStarted(30000));
    program.write(input);
    program.closeWriteChannel();
    QVERIFY(program.waitForFinished(30000));
    QCOMPARE(program.exitStatus(), QProcess::NormalExit);
    QCOMPARE(program.readAllStandardOutput(), QByteArray());
}

QTEST_GUILESS_MAIN(TestOdbcChannel)

#include "odbc_channel_test.moc"

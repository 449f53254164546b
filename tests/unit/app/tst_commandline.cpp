// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/commandline.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

namespace {

QString describe(const CommandLine &line)
{
    return u"%1|%2|%3"_s.arg(line.startAddress, line.serviceFramework ? u"servicefw"_s : QString(),
                             line.trackerModes.join(u','));
}

} // namespace

class CommandLineTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsTheArguments_data();
    void readsTheArguments();
    void relativePathIsTakenFromTheWorkingDirectory_data();
    void relativePathIsTakenFromTheWorkingDirectory();
};

void CommandLineTest::readsTheArguments_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("result"); // address|servicefw|modes
    const auto row = [](const char *name, const QStringList &arguments, const QString &result) {
        QTest::newRow(name) << arguments << result;
    };
    row("nothing at all", {}, u"||"_s);
    row("only the name", {}, u"||"_s);
    row("only -servicefw", {u"-servicefw"_s}, u"|servicefw|"_s);
    row("blank, hash and per cent", {u"/home/user/MyDocs/a b#1%.mp4"_s},
        u"file:///home/user/MyDocs/a%20b%231%25.mp4||"_s);
    row("file address", {u"file:///home/user/MyDocs/x.mp4"_s}, u"file:///home/user/MyDocs/x.mp4||"_s);
    row("file address, escaped: escaped again", {u"file:///a%20b.mp4"_s}, u"file:///a%2520b.mp4||"_s);
    row("every file:// goes", {u"file:///a/file://b.mp4"_s}, u"file:///a/b.mp4||"_s);
    row("urn", {u"urn:uuid:1 2#%"_s}, u"urn:uuid:1 2#%||"_s);
    row("rtsp", {u"rtsp://host/x y"_s}, u"rtsp://host/x y||"_s);
    row("http", {u"http://host/a.mp4?b=c"_s}, u"http://host/a.mp4?b=c||"_s);
    row("mms", {u"mms://host/a"_s}, u"mms://host/a||"_s);
    row("stream behind file://", {u"file://http://host/a"_s}, u"http://host/a||"_s);
    row("prefixes are case-sensitive", {u"/HTTP:/x"_s}, u"file:///HTTP:/x||"_s);
    row("beyond ASCII: UTF-8", {u"/Vidéos/日.mp4"_s}, u"file:///Vid%C3%A9os/%E6%97%A5.mp4||"_s);
    row("address then switch", {u"/a.mp4"_s, u"-servicefw"_s}, u"file:///a.mp4|servicefw|"_s);
    row("switch then address: no address", {u"-servicefw"_s, u"/a.mp4"_s}, u"|servicefw|"_s);
    row("two files: the first", {u"/a.mp4"_s, u"/b.mp4"_s}, u"file:///a.mp4||"_s);
    row("mode", {u"-trackerconnectionmode"_s, u"QTRACKER_DIRECT"_s}, u"||QTRACKER_DIRECT"_s);
    row("mode without a value", {u"-trackerconnectionmode"_s}, u"||"_s);
    row("mode last, behind an address", {u"/a.mp4"_s, u"-trackerconnectionmode"_s}, u"file:///a.mp4||"_s);
    row("value of the mode is consumed", {u"-trackerconnectionmode"_s, u"-servicefw"_s}, u"||-servicefw"_s);
    row("mode twice", {u"-trackerconnectionmode"_s, u"A"_s, u"-trackerconnectionmode"_s, u"B"_s}, u"||A,B"_s);
    row("switches whole and case-sensitive", {u"-ServiceFw"_s, u"-servicefw2"_s}, u"||"_s);
    row("two slashes are one, not a host", {u"//Home/User/x.mp4"_s}, u"file:///Home/User/x.mp4||"_s);
    row("nor behind file://", {u"file:////User@Home:80/x.mp4"_s}, u"file:///User@Home:80/x.mp4||"_s);
    row("empty argument", {QString()}, u"file://||"_s);
}

void CommandLineTest::readsTheArguments()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, result);
    if (qstrcmp(QTest::currentDataTag(), "nothing at all") != 0)
        arguments.prepend(u"kestrel"_s);
    QCOMPARE(describe(parseCommandLine(arguments)), result);
}

void CommandLineTest::relativePathIsTakenFromTheWorkingDirectory_data()
{
    QTest::addColumn<QString>("argument");
    QTest::addColumn<QString>("escaped");
    QTest::newRow("plain") << u"x.mp4"_s << u"x.mp4"_s;
    QTest::newRow("folder") << u"sub/x.mp4"_s << u"sub/x.mp4"_s;
    QTest::newRow("a colon that is no scheme") << u"12:30 talk.mp4"_s << u"12:30%20talk.mp4"_s;
    QTest::newRow("a colon in front") << u":a.mp4"_s << u":a.mp4"_s;
    QTest::newRow("a folder above") << u"sub/../x.mp4"_s << u"x.mp4"_s;
    QTest::newRow("a word and a colon keep their letters") << u"Film: End.mp4"_s << u"Film:%20End.mp4"_s;
}

void CommandLineTest::relativePathIsTakenFromTheWorkingDirectory()
{
    QFETCH(QString, argument);
    QFETCH(QString, escaped);
    QTemporaryDir folder;
    const QString before = QDir::currentPath();
    QVERIFY(QDir::setCurrent(folder.path()));
    const CommandLine line = parseCommandLine({u"kestrel"_s, argument});
    const QString here = QDir::currentPath();
    QVERIFY(QDir::setCurrent(before));
    QCOMPARE(line.startAddress, u"file://"_s + here + u'/' + escaped);
}

QTEST_GUILESS_MAIN(CommandLineTest)
#include "tst_commandline.moc"

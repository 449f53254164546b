// SPDX-License-Identifier: GPL-3.0-or-later
#include "extensionplaces.h"

#include <platform/extensions/extensiondescription.h>
#include <platform/extensions/extensionfolders.h>

#include <QLocale>
#include <QTest>

#include <sys/stat.h>

using namespace Qt::Literals::StringLiterals;

namespace {

const QByteArray whole = "[Kestrel Extension]\nName=Maps\nName[de]=Karten\nName[zh]=地图\n"
                         "Interface=com.example.Maps/1.0\nLibrary=maps.so\n";

QString shown(const ExtensionDescription &description)
{
    if (!description.fault.isEmpty())
        return u"fault"_s;
    if (description.hidden)
        return u"hidden"_s;
    return description.name + u'|' + description.interfaceName + u'|' + description.library;
}

} // namespace

class TestExtensionDescription : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { QLocale::setDefault(QLocale::c()); }
    void whatADescriptionSays_data();
    void whatADescriptionSays();
    void theNameIsInTheReadersLanguage_data();
    void theNameIsInTheReadersLanguage();
    void theProgramsOwnIsNamedInEachLanguage_data();
    void theProgramsOwnIsNamedInEachLanguage();
    void aPipeIsNotWaitedFor();
    void theFirstFolderComesFirst();
    void theLibraryLiesBesideTheDescriptionOrInAFolder();
    void theLibraryLiesInThePrefixOfItsDescription();
    void theUsersFolderComesBeforeTheSystems();
};

void TestExtensionDescription::whatADescriptionSays_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QString>("expected");
    const auto without = [](const char *line) { return QByteArray(whole).replace(line, ""); };
    const auto with = [](const QByteArray &line) { return whole + line; };
    QTest::newRow("all") << whole << u"Maps|com.example.Maps/1.0|maps.so"_s;
    QTest::newRow("lines of Windows")
        << QByteArray(whole).replace("\n", "\r\n") << u"Maps|com.example.Maps/1.0|maps.so"_s;
    QTest::newRow("comments, blanks, other groups") << "# mine\n\n"
            + QByteArray(whole).replace("Name=Maps", "Name =  Maps  ")
            + "\n[Other]\nLibrary=other.so\n" << u"Maps|com.example.Maps/1.0|maps.so"_s;
    QTest::newRow("keys that nobody knows")
        << with("X-Colour=red\n") << u"Maps|com.example.Maps/1.0|maps.so"_s;
    QTest::newRow("name of two lines") << QByteArray(whole).replace("Name=Maps", "Name=Maps\\n\\tand more")
                                       << u"Maps and more|com.example.Maps/1.0|maps.so"_s;
    QTest::newRow("name of a page") << QByteArray(whole).replace("Name=Maps", "Name=" + QByteArray(5000, 'x'))
                                    << QString(79, u'x') + u"…|com.example.Maps/1.0|maps.so"_s;
    QTest::newRow("no name") << without("Name=Maps\n") << u"tested.desktop|com.example.Maps/1.0|maps.so"_s;
    QTest::newRow("no interface") << without("Interface=com.example.Maps/1.0\n") << u"fault"_s;
    QTest::newRow("no library") << without("Library=maps.so\n") << u"fault"_s;
    QTest::newRow("library in another folder")
        << QByteArray(whole).replace("maps.so", "../lib/maps.so") << u"fault"_s;
    QTest::newRow("absolute library") << QByteArray(whole).replace("maps.so", "/opt/maps.so")
                                      << u"Maps|com.example.Maps/1.0|/opt/maps.so"_s;
    QTest::newRow("hidden") << QByteArray("[Kestrel Extension]\nHidden=true\n") << u"hidden"_s;
    QTest::newRow("hidden, not a yes") << with("Hidden=perhaps\n") << u"Maps|com.example.Maps/1.0|maps.so"_s;
    QTest::newRow("another group") << QByteArray(whole).replace("Kestrel Extension", "Desktop Entry")
                                   << u"fault"_s;
    QTest::newRow("no group") << QByteArray("Name=Maps\n") << u"fault"_s;
    QTest::newRow("no key file") << QByteArray("\x7f"
                                               "ELF\0\1\2\3",
                                               8)
                                 << u"fault"_s;
    QTest::newRow("empty") << QByteArray() << u"fault"_s;
    QTest::newRow("not UTF-8") << QByteArray(whole).replace("=maps.so", "=m\xff.so") << u"fault"_s;
    QTest::newRow("larger than a description") << with(QByteArray(70'000, '#')) << u"fault"_s;
}

void TestExtensionDescription::whatADescriptionSays()
{
    QFETCH(QByteArray, file);
    QFETCH(QString, expected);
    const QTemporaryDir folder;
    QFile written(folder.filePath(u"tested.desktop"_s));
    QVERIFY(written.open(QIODevice::WriteOnly));
    written.write(file);
    written.close();
    const ExtensionDescription description = ExtensionDescription::read(written.fileName());
    QCOMPARE(shown(description), expected);
    QCOMPARE(description.file, u"tested.desktop"_s);
    QCOMPARE(description.path, written.fileName());
}

void TestExtensionDescription::theNameIsInTheReadersLanguage_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("de_AT") << u"Karten"_s;
    QTest::newRow("zh_CN") << u"地图"_s;
    QTest::newRow("fi_FI") << u"Maps"_s;
}

void TestExtensionDescription::theNameIsInTheReadersLanguage()
{
    QFETCH(QString, name);
    const QTemporaryDir folder;
    QFile written(folder.filePath(u"tested.desktop"_s));
    QVERIFY(written.open(QIODevice::WriteOnly));
    written.write(whole);
    written.close();
    QLocale::setDefault(QLocale(QLatin1StringView(QTest::currentDataTag())));
    QCOMPARE(ExtensionDescription::read(written.fileName()).name, name);
}

void TestExtensionDescription::theProgramsOwnIsNamedInEachLanguage_data()
{
    QTest::addColumn<bool>("isTranslated");
    QTest::newRow("en") << false;
    for (const char *language : {"ar", "de", "es", "fi", "fr", "ja", "ru", "zh_CN"})
        QTest::newRow(language) << true;
}

void TestExtensionDescription::theProgramsOwnIsNamedInEachLanguage()
{
    QLocale::setDefault(QLocale(QLatin1StringView(QTest::currentDataTag())));
    const ExtensionDescription description = ExtensionDescription::read(
        QStringLiteral(KESTREL_SOURCE_DIR "/extensions/related/video_youtuberelatedextension.desktop"));
    QCOMPARE(description.fault, QString());
    QVERIFY(!description.name.isEmpty());
    QTEST(description.name != u"Related videos"_s, "isTranslated");
}

void TestExtensionDescription::aPipeIsNotWaitedFor()
{
    const QTemporaryDir folder;
    const QString pipe = folder.filePath(u"tested.desktop"_s);
    QCOMPARE(mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    QCOMPARE(shown(ExtensionDescription::read(pipe)), u"fault"_s);
    QCOMPARE(shown(ExtensionDescription::read(folder.filePath(u"not there.desktop"_s))), u"fault"_s);
    QCOMPARE(shown(ExtensionDescription::read(folder.path())), u"fault"_s);
}

void TestExtensionDescription::theFirstFolderComesFirst()
{
    const ExtensionPlaces places;
    places.write(u"user"_s, u"b.desktop"_s, {});
    places.write(u"system"_s, u"b.desktop"_s, {});
    places.write(u"system"_s, u"a.desktop"_s, {});
    places.write(u"system"_s, u"a.desktop.bak"_s, {});
    QCOMPARE(
        extensionfolders::find({places.folder(u"user"_s), u"/nowhere/at/all"_s, places.folder(u"system"_s)}),
        QStringList({places.folder(u"system"_s) + u"/a.desktop"_s, places.folder(u"user"_s) + u"/b.desktop"_s,
                     places.folder(u"system"_s) + u"/b.desktop"_s}));
}

void TestExtensionDescription::theLibraryLiesBesideTheDescriptionOrInAFolder()
{
    const ExtensionPlaces places;
    places.write(u"system"_s, u"maps.so"_s, {});
    ExtensionDescription description;
    description.library = u"maps.so"_s;
    description.path = places.folder(u"user"_s) + u"/maps.desktop"_s;
    const QStringList folders = extensionfolders::libraries(description.path) << places.folder(u"system"_s);
    QCOMPARE(description.libraryPath({}), QString());
    QCOMPARE(description.libraryPath(folders), places.folder(u"system"_s) + u"/maps.so"_s);
    places.write(u"user"_s, u"maps.so"_s, {});
    QCOMPARE(description.libraryPath(folders), places.folder(u"user"_s) + u"/maps.so"_s);
    description.library = places.folder(u"system"_s) + u"/maps.so"_s;
    QCOMPARE(description.libraryPath({}), description.library);
    description.library = places.folder(u"system"_s); // a folder is no library
    QCOMPARE(description.libraryPath({}), QString());
}

// “I installed it below /usr/local, and Kestrel is in /usr.”
void TestExtensionDescription::theLibraryLiesInThePrefixOfItsDescription()
{
    QCOMPARE(extensionfolders::libraries(u"/usr/local/share/kestrel/extensions/maps.desktop"_s),
             QStringList({u"/usr/local/share/kestrel/extensions"_s, u"/usr/local/lib/kestrel/extensions"_s,
                          QDir::cleanPath(QStringLiteral(KESTREL_BIN_DIR "/../lib/kestrel/extensions"))}));
}

void TestExtensionDescription::theUsersFolderComesBeforeTheSystems()
{
    const ExtensionPlaces places;
    const QStringList folders = extensionfolders::descriptions();
    QVERIFY(folders.size() >= 3);
    QCOMPARE(folders.at(0), places.folder(u"user"_s));
    QCOMPARE(folders.at(1), places.folder(u"system"_s));
    QCOMPARE(folders.last(), QDir::cleanPath(QStringLiteral(KESTREL_BIN_DIR "/../share/kestrel/extensions")));
}

QTEST_MAIN(TestExtensionDescription)
#include "tst_extensiondescription.moc"

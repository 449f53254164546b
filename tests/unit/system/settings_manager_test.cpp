// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/system/gsettingsstore.h"
#include "platform/system/settingsmanager.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

using namespace Qt::Literals::StringLiterals;

namespace {

const QString SchemaId = u"com.harrow.kestrel"_s;

QString schemaFolder()
{
    return QCoreApplication::applicationDirPath() + u"/../share/glib-2.0/schemas"_s;
}

// The user's own tool, in a process of its own.
bool set(const QString &key, const QString &value)
{
    QProcess gsettings;
    gsettings.start(u"gsettings"_s, {u"--schemadir"_s, schemaFolder(), u"set"_s, SchemaId, key, value});
    return gsettings.waitForFinished() && gsettings.exitCode() == 0;
}

} // namespace

class SettingsManagerTest : public QObject
{
    Q_OBJECT

public:
    static void initMain()
    {
        // A store in a file, which other processes change: read before the first use of settings.
        qputenv("GSETTINGS_BACKEND", "keyfile");
    }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(QDir().mkpath(QString::fromLocal8Bit(qgetenv("XDG_CONFIG_HOME")) + u"/glib-2.0/settings"_s));
    }

    void beginsWithTheDefaults()
    {
        const SettingsManager *settings = SettingsManager::instance();
        QCOMPARE(settings->playbackStartMode(), 1);
        QCOMPARE(settings->playbackDisplayMode(), 1);
        QCOMPARE(settings->onlineContentMode(), 1);
        QCOMPARE(settings->hideOwnRecordings(), false);
        QCOMPARE(settings->windowProfile(), u"automatic"_s);
    }

    // The schema of the build tree is found although it is not installed, and another process's change is
    // seen.
    void followsChangesOfOtherProcesses()
    {
        SettingsManager *settings = SettingsManager::instance();
        QSignalSpy modified(settings, &SettingsManager::settingsModified);
        QVERIFY(set(u"playback-start-mode"_s, u"0"_s));
        QTRY_COMPARE(settings->playbackStartMode(), 0);
        QCOMPARE(modified.size(), 1);
        QVERIFY(set(u"window-profile"_s, u"desktop"_s));
        QTRY_COMPARE(settings->windowProfile(), u"desktop"_s);
        QVERIFY(set(u"hide-own-recordings"_s, u"true"_s));
        QTRY_COMPARE(settings->hideOwnRecordings(), true);
        QCOMPARE(modified.size(), 3);
        QVERIFY2(!set(u"window-profile"_s, u"sideways"_s), "a value outside the choices was taken");
    }

    void testsOverrideTheUsersValues()
    {
        SettingsManager *settings = SettingsManager::instance();
        QSignalSpy modified(settings, &SettingsManager::settingsModified);
        const QString before = settings->windowProfile();
        SettingsValues values;
        values.onlineContentMode = 0;
        values.windowProfile = u"handset"_s;
        settings->setOverride(values);
        QCOMPARE(settings->onlineContentMode(), 0);
        QCOMPARE(settings->windowProfile(), u"handset"_s);
        QCOMPARE(modified.size(), 1);
        settings->setOverride(values);
        QCOMPARE(modified.size(), 1);
        settings->setOverride(std::nullopt);
        QCOMPARE(settings->windowProfile(), before);
    }

    void aSchemaThatIsNowhereGivesTheDefaults()
    {
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"schema com.harrow.nowhere not found"_s));
        const GSettingsStore store(u"com.harrow.nowhere"_s, {u"/nowhere"_s}, [] {});
        QVERIFY(!store.isFound());
        QCOMPARE(store.intValue("playback-start-mode", 7), 7);
        QCOMPARE(store.boolValue("hide-own-recordings", true), true);
        QCOMPARE(store.stringValue("window-profile", u"x"_s), u"x"_s);
    }

    // An installed schema may be older than the program, or of another type: neither may end it.
    void keysThatASchemaLacksGiveTheDefaults()
    {
        const QTemporaryDir folder;
        QFile schema(folder.filePath(u"com.harrow.kestrel.gschema.xml"_s));
        QVERIFY(schema.open(QIODevice::WriteOnly));
        schema.write("<schemalist><schema id='com.harrow.kestrel' path='/com/harrow/old/'>"
                     "<key name='window-profile' type='i'><default>3</default></key></schema></schemalist>");
        schema.close();
        QCOMPARE(QProcess::execute(u"glib-compile-schemas"_s, {folder.path()}), 0);
        const GSettingsStore store(SchemaId, {folder.path()}, [] {});
        QVERIFY(store.isFound());
        QCOMPARE(store.intValue("playback-start-mode", 1), 1);
        QCOMPARE(store.stringValue("window-profile", u"automatic"_s), u"automatic"_s);
        QCOMPARE(store.intValue("window-profile", 0), 3);
    }
};

QTEST_GUILESS_MAIN(SettingsManagerTest)
#include "settings_manager_test.moc"

// SPDX-License-Identifier: GPL-3.0-or-later
#include "providersetting.h"

#include <QCoreApplication>
#include <QDir>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

using namespace Qt::Literals::StringLiterals;

// The person's settings as they are, in the program's own schema, changed by the person's own tool.
class TestRelatedProviderSetting : public QObject
{
    Q_OBJECT

public:
    static void initMain()
    {
        // A store in a file, which other processes change: read before the first use of settings.
        qputenv("GSETTINGS_BACKEND", "keyfile");
    }

private Q_SLOTS:
    void initTestCase();
    void nobodyIsAskedAtFirst();
    void itIsFollowed();
    void onlyWhileContentOfTheNetworkIsWanted();
    void whatElseIsSetIsNoChange();
    void itIsAsItWasLeft();
    void oneThatIsGoneHearsNothing();
    void aSchemaThatIsOtherwiseIsNone_data();
    void aSchemaThatIsOtherwiseIsNone();
};

namespace {

bool set(const QString &key, const QString &value)
{
    QProcess gsettings;
    gsettings.setProcessChannelMode(QProcess::ForwardedChannels);
    gsettings.start(u"gsettings"_s,
                    {u"--schemadir"_s,
                     QCoreApplication::applicationDirPath() + u"/../share/glib-2.0/schemas"_s, u"set"_s,
                     u"com.harrow.kestrel"_s, key, value});
    return gsettings.waitForFinished() && gsettings.exitCode() == 0;
}

const QString provider = u"related-videos-provider"_s;
const QString mode = u"online-content-mode"_s;

} // namespace

void TestRelatedProviderSetting::initTestCase()
{
    QVERIFY(QDir().mkpath(QString::fromLocal8Bit(qgetenv("XDG_CONFIG_HOME")) + u"/glib-2.0/settings"_s));
}

void TestRelatedProviderSetting::nobodyIsAskedAtFirst()
{
    const ProviderSetting setting;
    QCOMPARE(setting.address(), QUrl());
}

void TestRelatedProviderSetting::itIsFollowed()
{
    const ProviderSetting setting;
    const QSignalSpy changed(&setting, &ProviderSetting::changed);
    QVERIFY(set(provider, u"  https://videos.example.org/related?a=b c "_s));
    QTRY_COMPARE(setting.address(), QUrl(u"https://videos.example.org/related?a=b c"_s));
    QCOMPARE(changed.size(), 1);
    QVERIFY(set(provider, QString()));
    QTRY_COMPARE(setting.address(), QUrl());
    QCOMPARE(changed.size(), 2);
}

void TestRelatedProviderSetting::onlyWhileContentOfTheNetworkIsWanted()
{
    const ProviderSetting setting;
    const QSignalSpy changed(&setting, &ProviderSetting::changed);
    QVERIFY(set(provider, u"https://x/y"_s));
    QTRY_COMPARE(changed.size(), 1);
    QVERIFY(set(mode, u"0"_s));
    QTRY_COMPARE(changed.size(), 2);
    QCOMPARE(setting.address(), QUrl());
    QCOMPARE(ProviderSetting().address(), QUrl());
    QVERIFY(set(mode, u"1"_s));
    QTRY_COMPARE(changed.size(), 3);
    QCOMPARE(setting.address(), QUrl(u"https://x/y"_s));
}

void TestRelatedProviderSetting::whatElseIsSetIsNoChange()
{
    const ProviderSetting setting;
    const QSignalSpy changed(&setting, &ProviderSetting::changed);
    QVERIFY(set(u"playback-start-mode"_s, u"0"_s));
    QVERIFY(set(provider, u" https://x/y"_s)); // the same
    QVERIFY(set(provider, u"https://x/z"_s));
    QTRY_COMPARE(changed.size(), 1);
    QCOMPARE(setting.address(), QUrl(u"https://x/z"_s));
}

void TestRelatedProviderSetting::itIsAsItWasLeft()
{
    QCOMPARE(ProviderSetting().address(), QUrl(u"https://x/z"_s));
}

void TestRelatedProviderSetting::oneThatIsGoneHearsNothing()
{
    const ProviderSetting after;
    const QSignalSpy told(&after, &ProviderSetting::changed);
    auto gone = std::make_unique<ProviderSetting>();
    int heard = 0;
    connect(gone.get(), &ProviderSetting::changed, this, [&heard] { ++heard; });
    gone.reset();
    QVERIFY(set(provider, QString()));
    QTRY_COMPARE(told.size(), 1);
    QCOMPARE(heard, 0);
}

void TestRelatedProviderSetting::aSchemaThatIsOtherwiseIsNone_data()
{
    QTest::addColumn<QByteArray>("keys");
    const QByteArray provider
        = "<key name='related-videos-provider' type='s'><default>'http://x/y'</default></key>";
    const QByteArray mode = "<key name='online-content-mode' type='i'><default>1</default></key>";
    const auto asTexts
        = [](QByteArray key) { return key.replace("type='s'", "type='as'").replace("'http://x/y'", "[]"); };
    const auto asNumber = [](QByteArray key) { return key.replace("type='i'", "type='u'"); };
    QTest::newRow("older than the provider") << mode;
    QTest::newRow("without the mode") << provider;
    QTest::newRow("with several providers") << asTexts(provider) + mode;
    QTest::newRow("with another mode") << provider + asNumber(mode);
}

// Whoever installed it: it ends neither the plug-in nor the program.
void TestRelatedProviderSetting::aSchemaThatIsOtherwiseIsNone()
{
    QFETCH(QByteArray, keys);
    const QTemporaryDir folder;
    QFile schema(folder.filePath(u"com.harrow.kestrel.gschema.xml"_s));
    QVERIFY(schema.open(QIODevice::WriteOnly));
    schema.write("<schemalist><schema id='com.harrow.kestrel' path='/com/harrow/other/'>" + keys
                 + "</schema></schemalist>");
    schema.close();
    QCOMPARE(QProcess::execute(u"glib-compile-schemas"_s, {folder.path()}), 0);
    QCOMPARE(ProviderSetting({folder.path()}).address(), QUrl());
}

QTEST_GUILESS_MAIN(TestRelatedProviderSetting)
#include "tst_relatedprovidersetting.moc"

// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/hangms.h"
#include "support/loglines.h"
#include "support/pythonpeer.h"

#include <platform/system/policyproperty.h>

#include <QDBusConnectionInterface>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

namespace {

const QString routeKey = u"/com/harrow/policy/video_route"_s;
const QString otherKey = u"/com/harrow/policy/other"_s;

} // namespace

// Keys of the policy service, and the video route without it.
class PolicyPropertyTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        // A device with a panel that a TV alone shows the picture of.
        addConnector(u"card0-DSI-1"_s, "connected", "disabled");
        addConnector(u"card0-HDMI-A-1"_s, "connected", "enabled");
    }

    void cleanup()
    {
        m_property.reset();
        m_service.stop();
        QTRY_VERIFY(!QDBusConnection::sessionBus().interface()->isServiceRegistered(u"com.harrow.Policy"_s));
    }

    void theServicesValueIsTheValue()
    {
        QVERIFY(startService({routeKey + u"=builtin"_s}));
        subscribe(routeKey);
        QVERIFY(!m_property->value().isValid()); // nobody has answered yet
        QTRY_COMPARE(m_values, QStringList{u"builtin"_s});
        QVERIFY(m_service.command(u"set %1 builtinandtvout"_s.arg(routeKey)));
        QVERIFY(m_service.command(u"set %1 builtinandtvout"_s.arg(routeKey)));
        QVERIFY(m_service.command(u"set %1 tvout"_s.arg(routeKey)));
        QTRY_COMPARE(m_values, (QStringList{u"builtin"_s, u"builtinandtvout"_s, u"tvout"_s}));
    }

    void withoutTheServiceTheOutputsSayTheRoute()
    {
        expectAbsence();
        subscribe(routeKey);
        QVERIFY(!m_property->value().isValid());
        QTRY_COMPARE(m_values, QStringList{u"tvout"_s});
    }

    void withoutTheServiceOtherKeysHaveNoValue()
    {
        const LogLines log("kestrel.system");
        const auto absences = [&log] { return log.all().filter(u"no policy service"_s).size(); };
        subscribe(otherKey);
        QTRY_COMPARE(absences(), 1);
        QVERIFY(startService({otherKey + u"=value"_s}));
        QTRY_COMPARE(m_values, QStringList{u"value"_s});
        m_service.stop();
        QTRY_COMPARE(m_values, (QStringList{u"value"_s, QString()}));
        QCOMPARE(absences(), 2);
        QVERIFY(!m_property->value().isValid());
    }

    void theServiceDiesAndComesBack()
    {
        QVERIFY(startService({routeKey + u"=builtin"_s}));
        subscribe(routeKey);
        QTRY_COMPARE(m_values, QStringList{u"builtin"_s});
        expectAbsence();
        m_service.stop();
        QTRY_COMPARE(m_values.last(), u"tvout"_s);
        QVERIFY(startService({routeKey + u"=builtin"_s}));
        QTRY_COMPARE(m_values, (QStringList{u"builtin"_s, u"tvout"_s, u"builtin"_s}));
    }

    void theServiceDoesNotKnowTheKey()
    {
        QVERIFY(startService({otherKey + u"=value"_s}));
        QTest::ignoreMessage(QtInfoMsg, QRegularExpression(u"has no value of"_s));
        subscribe(routeKey);
        QTRY_COMPARE(m_values, QStringList{u"tvout"_s});
    }

    void aValueThatIsTakenBack()
    {
        QVERIFY(startService({routeKey + u"=builtin"_s}));
        subscribe(routeKey);
        QTRY_COMPARE(m_values, QStringList{u"builtin"_s});
        QTest::ignoreMessage(QtInfoMsg, QRegularExpression(u"has no value of"_s));
        QVERIFY(m_service.command(u"forget "_s + routeKey));
        QTRY_COMPARE(m_values.last(), u"tvout"_s);
    }

    void theServiceAnswersLate()
    {
        QVERIFY(startService({routeKey + u"=builtinandtvout"_s}));
        m_service.freeze();
        QElapsedTimer timer;
        timer.start();
        subscribe(routeKey);
        QVERIFY(!m_property->value().isValid());
        QVERIFY(timer.elapsed() < HangMs);
        m_service.thaw();
        QTRY_COMPARE(m_values, QStringList{u"builtinandtvout"_s});
    }

    void theServiceNeverAnswers()
    {
        QVERIFY(startService({routeKey + u"=builtin"_s}));
        QVERIFY(m_service.command(u"mute"_s));
        QTest::ignoreMessage(QtInfoMsg, QRegularExpression(u"has no value of"_s));
        subscribe(routeKey);
        QTRY_COMPARE_WITH_TIMEOUT(m_values, QStringList{u"tvout"_s}, 15000);
    }

    // A structure is no value; a number is one, if not of this key.
    void valuesOfOtherTypes()
    {
        QVERIFY(startService({routeKey + u"=builtin"_s}));
        subscribe(routeKey);
        QTRY_COMPARE(m_values, QStringList{u"builtin"_s});
        QVERIFY(m_service.command(u"nonsense "_s + routeKey));
        QVERIFY(m_service.command(u"number "_s + routeKey));
        QTRY_COMPARE(m_values, (QStringList{u"builtin"_s, u"3"_s}));
        QTest::ignoreMessage(QtInfoMsg, QRegularExpression(u"has no value of"_s));
        QVERIFY(m_service.command(u"structure "_s + routeKey));
        QTRY_COMPARE(m_values, (QStringList{u"builtin"_s, u"3"_s, u"tvout"_s}));
    }

    void unsubscribedNothingIsToldAndTheValueStays()
    {
        QVERIFY(startService({routeKey + u"=builtin"_s}));
        subscribe(routeKey);
        QTRY_COMPARE(m_values, QStringList{u"builtin"_s});
        m_property->unsubscribe();
        QVERIFY(m_service.command(u"set %1 tvout"_s.arg(routeKey)));
        QCOMPARE(m_property->value().toString(), u"builtin"_s);
        m_property->subscribe();
        QTRY_COMPARE(m_values, (QStringList{u"builtin"_s, u"tvout"_s}));
    }

    void theMachinesOwnIsThePolicys()
    {
        QVERIFY(startService({otherKey + u"=value"_s}));
        m_property.reset(ContextProperty::create(otherKey, nullptr));
        m_property->subscribe();
        QTRY_COMPARE(m_property->value().toString(), u"value"_s);
    }

private:
    void addConnector(const QString &name, const QByteArray &status, const QByteArray &enabled)
    {
        const QString folder = m_sys.filePath(u"class/drm/"_s + name);
        QVERIFY(QDir().mkpath(folder));
        for (const auto &[file, text] :
             {std::pair(u"/status"_s, status), std::pair(u"/enabled"_s, enabled)}) {
            QFile written(folder + file);
            QVERIFY(written.open(QIODevice::WriteOnly));
            written.write(text + '\n');
        }
    }
    bool startService(const QStringList &values) { return m_service.start(u"policy_service.py"_s, values); }
    void expectAbsence() { QTest::ignoreMessage(QtInfoMsg, QRegularExpression(u"no policy service"_s)); }
    void subscribe(const QString &key)
    {
        m_values.clear();
        m_property
            = std::make_unique<PolicyProperty>(key, QDBusConnection::sessionBus(), m_sys.path(), nullptr);
        connect(m_property.get(), &ContextProperty::valueChanged, this,
                [this] { m_values.append(m_property->value().toString()); });
        m_property->subscribe();
    }

    QTemporaryDir m_sys;
    PythonPeer m_service;
    std::unique_ptr<ContextProperty> m_property;
    QStringList m_values;
};

QTEST_GUILESS_MAIN(PolicyPropertyTest)
#include "policyproperty_test.moc"

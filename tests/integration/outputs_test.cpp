// SPDX-License-Identifier: GPL-3.0-or-later
#include <platform/system/outputroute.h>

#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QProcess>
#include <QScreen>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::Literals::StringLiterals;

// The route by real screens: monitors that the X server is told to have, plugged in and out.
class OutputsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup()
    {
        for (const QString &name : std::as_const(m_monitors))
            QCOMPARE(xrandr({u"--delmonitor"_s, name}), 0);
        m_monitors.clear();
        QTRY_COMPARE(names(), QStringList{u"screen"_s});
        QVERIFY(QDir(m_sys.filePath(u"class"_s)).removeRecursively());
    }

    void aTvIsPluggedInShowsTheSameAndIsPulledOut()
    {
        setMonitor(u"DSI-1"_s, u"640/170x512/135+0+0"_s, u"screen"_s);
        QTRY_COMPARE(names(), QStringList{u"DSI-1"_s});
        OutputRoute outputs(m_sys.path());
        QCOMPARE(outputs.route(), QString());
        setMonitor(u"HDMI-1"_s, u"640/640x512/480+0+0"_s);
        QTRY_COMPARE(names(), (QStringList{u"DSI-1"_s, u"HDMI-1"_s}));
        QTRY_COMPARE(outputs.route(), u"builtinandtvout"_s);
        removeMonitor(u"HDMI-1"_s);
        QTRY_COMPARE(outputs.route(), QString());
    }

    void aTvBesideThePanelIsALargerDesktop()
    {
        setMonitor(u"eDP-1"_s, u"640/170x512/135+0+0"_s, u"screen"_s);
        setMonitor(u"DP-1"_s, u"640/640x512/480+640+0"_s);
        QTRY_COMPARE(names().size(), 2);
        OutputRoute outputs(m_sys.path());
        QCOMPARE(outputs.route(), QString());
    }

    // The panel is switched off: the kernel still has it, the window system does not.
    void theTvAlone()
    {
        addConnector(u"card0-DSI-1"_s, "connected", "enabled");
        setMonitor(u"DSI-1"_s, u"640/170x512/135+0+0"_s, u"screen"_s);
        QTRY_COMPARE(names(), QStringList{u"DSI-1"_s});
        OutputRoute outputs(m_sys.path());
        QSignalSpy changes(&outputs, &OutputRoute::changed);
        addConnector(u"card0-DSI-1"_s, "connected", "disabled");
        m_monitors.clear(); // the output goes over from one monitor to the other
        setMonitor(u"HDMI-1"_s, u"640/640x512/480+0+0"_s, u"screen"_s);
        QTRY_COMPARE(outputs.route(), u"tvout"_s);
        QVERIFY(!changes.isEmpty());
    }

    void aDesktopMonitorIsNoTv()
    {
        addConnector(u"card0-HDMI-A-1"_s, "connected", "enabled");
        setMonitor(u"HDMI-1"_s, u"640/640x512/480+0+0"_s, u"screen"_s);
        QTRY_COMPARE(names(), QStringList{u"HDMI-1"_s});
        QCOMPARE(OutputRoute(m_sys.path()).route(), QString());
    }

private:
    static QStringList names()
    {
        QStringList list;
        for (const QScreen *screen : QGuiApplication::screens())
            list.append(screen->name());
        list.sort();
        return list;
    }
    static int xrandr(const QStringList &arguments) { return QProcess::execute(u"xrandr"_s, arguments); }
    void setMonitor(const QString &name, const QString &geometry, const QString &output = u"none"_s)
    {
        QCOMPARE(xrandr({u"--setmonitor"_s, name, geometry, output}), 0);
        if (!m_monitors.contains(name))
            m_monitors.append(name);
    }
    void removeMonitor(const QString &name)
    {
        m_monitors.removeAll(name);
        QCOMPARE(xrandr({u"--delmonitor"_s, name}), 0);
    }
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

    QTemporaryDir m_sys;
    QStringList m_monitors;
};

QTEST_MAIN(OutputsTest)
#include "outputs_test.moc"

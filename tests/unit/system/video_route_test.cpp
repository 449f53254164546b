// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/system/videoroute.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

using namespace Qt::Literals::StringLiterals;

namespace {

const QRect area(0, 0, 1280, 720);
const QRect beside(1280, 0, 1920, 1080);

ScreenArea screen(const QString &name, const QRect &geometry = area)
{
    return {name, geometry};
}

DrmConnector lit(const QString &name)
{
    return {name, true, true};
}

DrmConnector dark(const QString &name)
{
    return {name, true, false};
}

DrmConnector empty(const QString &name)
{
    return {name, false, false};
}

} // namespace

Q_DECLARE_METATYPE(OutputKind)
Q_DECLARE_METATYPE(QList<ScreenArea>)
Q_DECLARE_METATYPE(QList<DrmConnector>)

class VideoRouteTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void connectorNames_data()
    {
        QTest::addColumn<QStringList>("names");
        QTest::addColumn<OutputKind>("kind");
        QTest::newRow("built in") << QStringList{u"eDP-1"_s,       u"eDP1"_s,  u"LVDS-1"_s, u"LVDS"_s,
                                                 u"card0-DSI-1"_s, u"DPI-1"_s, u"edp-2"_s}
                                  << OutputKind::BuiltIn;
        QTest::newRow("external") << QStringList{u"HDMI-1"_s,   u"HDMI-A-1"_s,    u"card1-HDMI-A-2"_s,
                                                 u"HDMI1"_s,    u"DP-1"_s,        u"DP-1-2"_s,
                                                 u"TV-1"_s,     u"Composite-1"_s, u"DisplayPort-0"_s,
                                                 u"SVIDEO-1"_s, u"VGA-1"_s,       u"DVI-D-1"_s,
                                                 u"DVI-I-2"_s}
                                  << OutputKind::External;
        QTest::newRow("neither") << QStringList{u"Virtual-1"_s,   u"screen"_s,    QString(),  u"Unknown-1"_s,
                                                u"Writeback-1"_s, u"HDMIfoo-1"_s, u"card0"_s, u"1"_s}
                                 << OutputKind::Other;
    }

    void connectorNames()
    {
        QFETCH(QStringList, names);
        QFETCH(OutputKind, kind);
        QStringList others;
        for (const QString &name : names) {
            if (outputKind(name) != kind)
                others.append(name);
        }
        QCOMPARE(others, QStringList());
    }

    void routes_data()
    {
        QTest::addColumn<QList<ScreenArea>>("screens");
        QTest::addColumn<QList<DrmConnector>>("connectors");
        QTest::addColumn<QString>("route");
        const QString tv = u"tvout"_s;
        const QString both = u"builtinandtvout"_s;
        using Screens = QList<ScreenArea>;
        using Connectors = QList<DrmConnector>;

        QTest::newRow("nothing known") << Screens{} << Connectors{} << QString();
        QTest::newRow("the panel alone")
            << Screens{screen(u"DSI-1"_s)} << Connectors{lit(u"DSI-1"_s), empty(u"HDMI-A-1"_s)} << QString();
        QTest::newRow("a TV that is plugged in but dark")
            << Screens{screen(u"DSI-1"_s)} << Connectors{lit(u"DSI-1"_s), dark(u"HDMI-A-1"_s)} << QString();
        QTest::newRow("the TV alone")
            << Screens{screen(u"HDMI-1"_s)} << Connectors{dark(u"DSI-1"_s), lit(u"HDMI-A-1"_s)} << tv;
        QTest::newRow("the TV alone, an unnamed screen")
            << Screens{screen(u"Unknown"_s)} << Connectors{dark(u"eDP-1"_s), lit(u"DP-1"_s)} << tv;
        QTest::newRow("both, the same place")
            << Screens{screen(u"eDP-1"_s), screen(u"HDMI-1"_s)} << Connectors{} << both;
        QTest::newRow("both, side by side") << Screens{screen(u"eDP-1"_s), screen(u"HDMI-1"_s, beside)}
                                            << Connectors{lit(u"eDP-1"_s), lit(u"HDMI-A-1"_s)} << QString();
        QTest::newRow("both, the same place but another size")
            << Screens{screen(u"eDP-1"_s), screen(u"HDMI-1"_s, QRect(0, 0, 1920, 1080))} << Connectors{}
            << QString();
        QTest::newRow("a pair listed as its panel")
            << Screens{screen(u"eDP-1"_s)} << Connectors{lit(u"eDP-1"_s), lit(u"HDMI-A-1"_s)} << both;
        QTest::newRow("a pair listed as its TV")
            << Screens{screen(u"HDMI-A-1"_s)} << Connectors{lit(u"eDP-1"_s), lit(u"HDMI-A-1"_s)} << both;
        QTest::newRow("two unnamed screens") << Screens{screen(u"a"_s), screen(u"b"_s, beside)}
                                             << Connectors{lit(u"eDP-1"_s), lit(u"HDMI-A-1"_s)} << QString();
        QTest::newRow("a second TV") << Screens{screen(u"HDMI-1"_s), screen(u"DP-1"_s, beside)}
                                     << Connectors{dark(u"eDP-1"_s)} << tv;
        QTest::newRow("a desktop's monitor")
            << Screens{screen(u"HDMI-1"_s)} << Connectors{lit(u"HDMI-A-1"_s)} << QString();
        QTest::newRow("a desktop's monitors, the same place")
            << Screens{screen(u"HDMI-1"_s), screen(u"DP-1"_s)}
            << Connectors{lit(u"HDMI-A-1"_s), lit(u"DP-1"_s)} << QString();
        QTest::newRow("a board whose panel is not fitted")
            << Screens{screen(u"HDMI-1"_s)} << Connectors{empty(u"DSI-1"_s), lit(u"HDMI-A-1"_s)} << QString();
        QTest::newRow("a virtual machine")
            << Screens{screen(u"Virtual-1"_s)} << Connectors{lit(u"Virtual-1"_s)} << QString();
    }

    void routes()
    {
        QFETCH(QList<ScreenArea>, screens);
        QFETCH(QList<DrmConnector>, connectors);
        QFETCH(QString, route);
        QCOMPARE(videoRoute(screens, connectors), route);
        std::reverse(screens.begin(), screens.end());
        std::reverse(connectors.begin(), connectors.end());
        QCOMPARE(videoRoute(screens, connectors), route);
    }

    void theKernelsConnectors()
    {
        QTemporaryDir sys;
        write(sys.filePath(u"class/drm/card0-eDP-1/status"_s), "connected\n");
        write(sys.filePath(u"class/drm/card0-eDP-1/enabled"_s), "enabled\n");
        write(sys.filePath(u"class/drm/card0-HDMI-A-1/status"_s), "disconnected\n");
        write(sys.filePath(u"class/drm/card0-HDMI-A-1/enabled"_s), "disabled\n");
        write(sys.filePath(u"class/drm/card1-DP-1/status"_s), QByteArray(100000, 'x'));
        write(sys.filePath(u"class/drm/renderD128/dev"_s), "226:128\n");
        write(sys.filePath(u"class/drm/version"_s), "drm 1.1.0\n");
        QVERIFY(QDir().mkpath(sys.filePath(u"class/drm/card1-DP-2/status"_s))); // a folder in its place
        const QList<DrmConnector> expected{empty(u"HDMI-A-1"_s), lit(u"eDP-1"_s), empty(u"DP-1"_s),
                                           empty(u"DP-2"_s)};
        QCOMPARE(readDrmConnectors(sys.path()), expected);
        QCOMPARE(readDrmConnectors(u"/nowhere"_s), QList<DrmConnector>());
    }

private:
    static void write(const QString &path, const QByteArray &text)
    {
        QVERIFY(QDir().mkpath(QFileInfo(path).path()));
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(text);
    }
};

QTEST_APPLESS_MAIN(VideoRouteTest)
#include "video_route_test.moc"

// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/system/sysfsbacklightcontrol.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <atomic>
#include <memory>

using namespace Qt::Literals::StringLiterals;

namespace {

enum Mode { UserInterface = 1, MovingImage = 3 };

} // namespace

// The panel's content-adaptive switch, in a tree as the kernel shows it.
class BacklightTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_sys = std::make_unique<QTemporaryDir>(); }

    void knownSwitches_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QByteArray>("original");
        QTest::addColumn<QByteArray>("userInterface");
        QTest::addColumn<QByteArray>("movingImage");
        QTest::newRow("names beside the frame buffer")
            << u"class/graphics/fb0/device/panel/cabc_mode"_s << QByteArray("off") << QByteArray("ui")
            << QByteArray("moving-image");
        QTest::newRow("names with the brightness")
            << u"class/backlight/panel0/cabc_mode"_s << QByteArray("off") << QByteArray("ui")
            << QByteArray("moving-image");
        QTest::newRow("the panel's own numbers")
            << u"class/drm/card0-DSI-1/cabc"_s << QByteArray("0") << QByteArray("1") << QByteArray("3");
        QTest::newRow("levels") << u"class/drm/card1-eDP-1/amdgpu/panel_power_savings"_s << QByteArray("0")
                                << QByteArray("0") << QByteArray("3");
    }

    void knownSwitches()
    {
        QFETCH(QString, path);
        QFETCH(QByteArray, original);
        QFETCH(QByteArray, userInterface);
        QFETCH(QByteArray, movingImage);
        write(path, original + '\n');
        auto control = make();
        QVERIFY(control);
        control->set(MovingImage);
        QTRY_COMPARE(read(path), movingImage);
        control->set(UserInterface);
        QTRY_COMPARE(read(path), userInterface);
        control->set(MovingImage);
        QTRY_COMPARE(read(path), movingImage);
        // The program ends in the middle of a video.
        control.reset();
        QCOMPARE(read(path), original);
    }

    void theLastOfManyModesStands()
    {
        const QString path = u"class/drm/card0-DSI-1/cabc"_s;
        write(path, "0");
        const auto control = make();
        for (int i = 0; i < 1000; ++i)
            control->set(i % 2 == 0 ? MovingImage : UserInterface);
        QTRY_COMPARE(read(path), QByteArray("1"));
    }

    void otherModesChangeNothing()
    {
        const QString path = u"class/drm/card0-DSI-1/cabc"_s;
        write(path, "2");
        auto control = make();
        for (int mode : {-1, 0, 2, 4, 100})
            control->set(mode);
        control.reset();
        QCOMPARE(read(path), QByteArray("2"));
    }

    void aPanelWithoutTheMovingImageIsLeftAlone()
    {
        write(u"class/graphics/fb0/device/panel/cabc_mode"_s, "off");
        write(u"class/graphics/fb0/device/panel/cabc_available_modes"_s, "off ui\n");
        QVERIFY(!make());
        write(u"class/graphics/fb0/device/panel/cabc_available_modes"_s, "off ui still-image moving-image\n");
        QVERIFY(make());
    }

    void aTvsSwitchIsNotThePanels()
    {
        write(u"class/drm/card0-HDMI-A-1/cabc"_s, "0");
        QVERIFY(!make());
    }

    void noSwitchAtAll()
    {
        QVERIFY(!make());
        QVERIFY(!findBacklightSwitch(u"/nowhere"_s));
        QVERIFY(QDir().mkpath(m_sys->filePath(u"class/drm/card0-DSI-1/cabc"_s))); // a folder in its place
        QVERIFY(!make());
    }

    // The panel went away: one line in the log, and nothing is created in its place.
    void aSwitchThatDoesNotTakeTheMode()
    {
        const QString path = u"class/drm/card0-DSI-1/cabc"_s;
        write(path, "0");
        auto control = make();
        QVERIFY(QFile::remove(m_sys->filePath(path)));
        static std::atomic<int> complaints = 0;
        const QtMessageHandler previous
            = qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &text) {
                  complaints += text.contains(u"does not take"_s) ? 1 : 0;
              });
        control->set(MovingImage);
        QTRY_COMPARE(complaints, 1);
        for (int i = 0; i < 10; ++i) {
            control->set(UserInterface);
            control->set(MovingImage);
        }
        control.reset();
        qInstallMessageHandler(previous);
        QCOMPARE(complaints, 1);
        QVERIFY(!QFile::exists(m_sys->filePath(path)));
    }

private:
    std::unique_ptr<BacklightControl> make() const
    {
        const auto found = findBacklightSwitch(m_sys->path());
        return found ? std::make_unique<SysfsBacklightControl>(*found) : nullptr;
    }
    void write(const QString &path, const QByteArray &text) const
    {
        const QString full = m_sys->filePath(path);
        QVERIFY(QDir().mkpath(QFileInfo(full).path()));
        QFile file(full);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(text);
    }
    QByteArray read(const QString &path) const
    {
        QFile file(m_sys->filePath(path));
        return file.open(QIODevice::ReadOnly) ? file.readAll().trimmed() : QByteArray();
    }

    std::unique_ptr<QTemporaryDir> m_sys;
};

QTEST_GUILESS_MAIN(BacklightTest)
#include "backlight_test.moc"

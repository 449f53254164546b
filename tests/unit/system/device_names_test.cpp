// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/system/devicenames.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

using namespace Qt::Literals::StringLiterals;

class DeviceNamesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_root = std::make_unique<QTemporaryDir>();
        m_sys = m_root->filePath(u"sys"_s);
        m_proc = m_root->filePath(u"proc"_s);
    }

    void encodesWhatAnIriDoesNotHold_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("encoded");
        QTest::newRow("plain") << u"Q5"_s << u"Q5"_s;
        QTest::newRow("blank") << u"Harrow Optics"_s << u"Harrow%20Optics"_s;
        QTest::newRow("brackets and quotes")
            << u"<a>\"b\"{c}|d\\e^f`g"_s << u"%3Ca%3E%22b%22%7Bc%7D%7Cd%5Ce%5Ef%60g"_s;
        QTest::newRow("percent") << u"100%"_s << u"100%25"_s;
        QTest::newRow("control") << u"a\nb"_s << u"a%0Ab"_s;
        QTest::newRow("beyond ASCII") << u"Ünïté"_s << u"Ünïté"_s;
        QTest::newRow("empty") << QString() << QString();
    }
    void encodesWhatAnIriDoesNotHold()
    {
        QFETCH(QString, name);
        QTEST(iriEncodedName(name), "encoded");
    }

    void readsDmi()
    {
        write(m_sys + u"/class/dmi/id/sys_vendor"_s, "LENOVO\n");
        write(m_sys + u"/class/dmi/id/product_name"_s, "20XW  004AUS\n");
        write(m_sys + u"/class/dmi/id/board_version"_s, "1502\n");
        const DeviceNames names = readDeviceNames(m_sys, m_proc);
        QCOMPARE(names.manufacturer, u"LENOVO"_s);
        QCOMPARE(names.model, u"20XW 004AUS"_s);
        QCOMPARE(names.hardwareBuild, u"1502"_s);
    }

    void takesTheDeviceTreeWhereDmiIsMissingOrFiller()
    {
        write(m_sys + u"/class/dmi/id/sys_vendor"_s, "To Be Filled By O.E.M.\n");
        write(m_sys + u"/class/dmi/id/product_name"_s, "Default string\n");
        write(m_proc + u"/device-tree/compatible"_s,
              QByteArray("purism,librem5r4\0purism,librem5\0fsl,imx8mq\0", 42));
        write(m_proc + u"/device-tree/model"_s, QByteArray("Purism Librem 5r4\0", 18));
        const DeviceNames names = readDeviceNames(m_sys, m_proc);
        QCOMPARE(names.manufacturer, u"purism"_s);
        QCOMPARE(names.model, u"Purism Librem 5r4"_s);
        QVERIFY(names.hardwareBuild.isEmpty());
    }

    void aMachineWithoutEitherHasNoNames() { QVERIFY(!readDeviceNames(m_sys, m_proc).isComplete()); }

private:
    static void write(const QString &path, const QByteArray &bytes)
    {
        QVERIFY(QDir().mkpath(QFileInfo(path).path()));
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }

    std::unique_ptr<QTemporaryDir> m_root;
    QString m_sys;
    QString m_proc;
};

QTEST_GUILESS_MAIN(DeviceNamesTest)
#include "device_names_test.moc"

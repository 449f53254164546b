// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/toolkit/feedbackservice.h"
#include "platform/toolkit/widgetcontroller.h"

#include <QApplication>
#include <QDBusConnection>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::Literals::StringLiterals;
using toolkit::Feedback;
using toolkit::FeedbackService;

// What phones have for it: notes what it is told.
class Device : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.sigxcpu.Feedback")

public:
    QStringList felt;

public Q_SLOTS:
    uint TriggerFeedback(const QString &application, const QString &event, const QVariantMap &hints,
                         int timeout)
    {
        felt.append(u"%1 %2 %3 %4"_s.arg(application, event).arg(hints.size()).arg(timeout));
        return uint(felt.size());
    }
};

class WidgetsFeedback : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void withoutAServiceNothingIsFelt();
    void touchesAreFelt_data();
    void touchesAreFelt();
    void aServiceThatRestartsIsToldAgain();

private:
    const QString m_name = u"org.sigxcpu.Feedback"_s;
    Device m_device;
};

void WidgetsFeedback::initTestCase()
{
    QGuiApplication::setDesktopFileName(u"org.example.Program"_s);
}

void WidgetsFeedback::withoutAServiceNothingIsFelt()
{
    const Feedback press(u"press"_s);
    press.play();
    Feedback().play(); // of no name
    QVERIFY(!FeedbackService::instance()->isPresent());
    QDBusConnection bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, u"device"_s);
    QVERIFY(bus.registerObject(u"/org/sigxcpu/Feedback"_s, &m_device, QDBusConnection::ExportAllSlots));
    QVERIFY(bus.registerService(m_name));
    QTRY_VERIFY(FeedbackService::instance()->isPresent());
    QCOMPARE(m_device.felt, QStringList()); // what was lost is not made up for
}

void WidgetsFeedback::touchesAreFelt_data()
{
    QTest::addColumn<QString>("feedback");
    QTest::addColumn<QString>("felt");
    QTest::newRow("press") << u"press"_s << u"org.example.Program button-pressed 0 -1"_s;
    QTest::newRow("release") << u"release"_s << u"org.example.Program button-released 0 -1"_s;
    QTest::newRow("cancel") << u"cancel"_s << u"org.example.Program button-released 0 -1"_s;
}

void WidgetsFeedback::touchesAreFelt()
{
    QFETCH(const QString, feedback);
    QFETCH(const QString, felt);
    m_device.felt.clear();
    Feedback(feedback).play();
    QTRY_COMPARE(m_device.felt, QStringList(felt));
}

void WidgetsFeedback::aServiceThatRestartsIsToldAgain()
{
    QDBusConnection bus(u"device"_s);
    QTest::ignoreMessage(QtInfoMsg, QRegularExpression(u"the feedback service went away"_s));
    QVERIFY(bus.unregisterService(m_name));
    QTRY_VERIFY(!FeedbackService::instance()->isPresent());
    m_device.felt.clear();
    Feedback(u"press"_s).play();
    QVERIFY(bus.registerService(m_name));
    QTRY_VERIFY(FeedbackService::instance()->isPresent());
    Feedback(u"release"_s).play();
    QTRY_COMPARE(m_device.felt, QStringList(u"org.example.Program button-released 0 -1"_s));
}

QTEST_MAIN(WidgetsFeedback)
#include "widgets_feedback.moc"

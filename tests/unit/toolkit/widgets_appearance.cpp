// SPDX-License-Identifier: GPL-3.0-or-later
#include "../../support/hangms.h"
#include "platform/toolkit/desktopappearance.h"
#include "platform/toolkit/theme.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusVariant>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::Literals::StringLiterals;
using toolkit::DesktopAppearance;
using toolkit::Theme;

using Settings = QMap<QString, QVariantMap>;

struct Rgb
{
    double red = 0;
    double green = 0;
    double blue = 0;
};
Q_DECLARE_METATYPE(Rgb)
Q_DECLARE_METATYPE(Settings)

QDBusArgument &operator<<(QDBusArgument &argument, const Rgb &color)
{
    argument.beginStructure();
    argument << color.red << color.green << color.blue;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, Rgb &color)
{
    argument.beginStructure();
    argument >> color.red >> color.green >> color.blue;
    argument.endStructure();
    return argument;
}

// The desktop's settings portal on the session's bus, over a connection of its own.
class Portal : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Settings")

public:
    Settings settings;
    bool answers = true;
    int asked = 0;

    void change(const QString &space, const QString &key, const QVariant &value)
    {
        settings[space][key] = value;
        Q_EMIT SettingChanged(space, key, QDBusVariant(value));
    }

public Q_SLOTS:
    Settings ReadAll(const QStringList &namespaces, const QDBusMessage &message)
    {
        Q_UNUSED(namespaces)
        ++asked;
        if (!answers)
            message.setDelayedReply(true);
        return settings;
    }

Q_SIGNALS:
    void SettingChanged(const QString &space, const QString &key, const QDBusVariant &value);
};

class WidgetsAppearance : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void theDesktopsSettingsAreTaken();
    void changesAreFollowed();
    void aColourOutsideTheRangeIsNone();
    void nonsenseChangesNothing();
    void theEnvironmentWins();
    void aPortalThatNeverAnswersHoldsNobodyUp();
    void moreContrastIsTakenFromEitherSetting();
    void aPortalThatRestartsIsAskedAgain();
    void theThemeFollows();
    void theThemeFollowsContrast();

private:
    const QString m_appearance = u"org.freedesktop.appearance"_s;
    const QString m_interface = u"org.gnome.desktop.interface"_s;
    const QString m_accessibility = u"org.gnome.desktop.a11y.interface"_s;
    const QString m_service = u"org.freedesktop.portal.Desktop"_s;
    Portal m_portal;
};

void WidgetsAppearance::initTestCase()
{
    qDBusRegisterMetaType<Rgb>();
    qDBusRegisterMetaType<Settings>();
    QDBusConnection bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, u"portal"_s);
    QVERIFY(bus.registerObject(u"/org/freedesktop/portal/desktop"_s, &m_portal,
                               QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals));
    QVERIFY(bus.registerService(u"org.freedesktop.portal.Desktop"_s));
}

void WidgetsAppearance::init()
{
    m_portal.answers = true;
    m_portal.settings
        = {{m_appearance,
            {{u"color-scheme"_s, 2U}, {u"accent-color"_s, QVariant::fromValue(Rgb{0.2, 0.4, 0.6})}}},
           {m_interface, {{u"text-scaling-factor"_s, 1.5}, {u"enable-animations"_s, false}}}};
}

void WidgetsAppearance::theDesktopsSettingsAreTaken()
{
    DesktopAppearance desktop;
    QVERIFY(desktop.isDark()); // until the answer is there
    QSignalSpy changed(&desktop, &DesktopAppearance::changed);
    QVERIFY(changed.wait(TestPatience));
    QCOMPARE(changed.count(), 1);
    QVERIFY(!desktop.isDark());
    QCOMPARE(desktop.accentColor(), QColor(51, 102, 153));
    QCOMPARE(desktop.textScale(), 1.5);
    QVERIFY(desktop.reducedMotion());
}

void WidgetsAppearance::changesAreFollowed()
{
    DesktopAppearance desktop;
    QSignalSpy changed(&desktop, &DesktopAppearance::changed);
    QVERIFY(changed.wait(TestPatience));
    m_portal.change(m_appearance, u"color-scheme"_s, 1U);
    QTRY_VERIFY(desktop.isDark());
    m_portal.change(m_interface, u"enable-animations"_s, true);
    QTRY_VERIFY(!desktop.reducedMotion());
    m_portal.change(m_appearance, u"accent-color"_s, QVariant::fromValue(Rgb{1, 0, 0}));
    QTRY_COMPARE(desktop.accentColor(), QColor(255, 0, 0));
    m_portal.change(m_interface, u"text-scaling-factor"_s, 99.0);
    QTRY_COMPARE(desktop.textScale(), 3.0);
}

void WidgetsAppearance::aColourOutsideTheRangeIsNone()
{
    m_portal.settings[m_appearance][u"accent-color"_s] = QVariant::fromValue(Rgb{-1, -1, -1});
    DesktopAppearance desktop;
    QSignalSpy changed(&desktop, &DesktopAppearance::changed);
    QVERIFY(changed.wait(TestPatience));
    QVERIFY(!desktop.accentColor().isValid());
}

void WidgetsAppearance::nonsenseChangesNothing()
{
    m_portal.settings = {{m_appearance, {{u"color-scheme"_s, u"purple"_s}, {u"accent-color"_s, 7}}},
                         {m_interface, {{u"text-scaling-factor"_s, -4.0}}},
                         {u"org.example"_s, {{u"color-scheme"_s, 2U}}}};
    DesktopAppearance desktop;
    QSignalSpy changed(&desktop, &DesktopAppearance::changed);
    m_portal.change(m_interface, u"enable-animations"_s, false); // behind the answer
    QTRY_VERIFY(desktop.reducedMotion());
    QVERIFY(desktop.isDark());
    QVERIFY(!desktop.accentColor().isValid());
    QCOMPARE(desktop.textScale(), 1.0);
}

void WidgetsAppearance::theEnvironmentWins()
{
    qputenv("KESTREL_COLOR_SCHEME", "dark");
    qputenv("KESTREL_TEXT_SCALE", "2");
    qputenv("KESTREL_REDUCED_MOTION", "0");
    qputenv("KESTREL_HIGH_CONTRAST", "1");
    DesktopAppearance desktop;
    qunsetenv("KESTREL_COLOR_SCHEME");
    qunsetenv("KESTREL_TEXT_SCALE");
    qunsetenv("KESTREL_REDUCED_MOTION");
    qunsetenv("KESTREL_HIGH_CONTRAST");
    QSignalSpy changed(&desktop, &DesktopAppearance::changed);
    QVERIFY(changed.wait(TestPatience)); // the accent colour
    QVERIFY(desktop.isDark());
    QCOMPARE(desktop.textScale(), 2.0);
    QVERIFY(!desktop.reducedMotion());
    QVERIFY(desktop.highContrast());
}

void WidgetsAppearance::aPortalThatNeverAnswersHoldsNobodyUp()
{
    m_portal.answers = false;
    QElapsedTimer timer;
    timer.start();
    DesktopAppearance desktop;
    QVERIFY(timer.elapsed() < HangMs);
    QVERIFY(desktop.isDark());
    m_portal.change(m_appearance, u"color-scheme"_s, 2U);
    QTRY_VERIFY(!desktop.isDark());
}

void WidgetsAppearance::moreContrastIsTakenFromEitherSetting()
{
    DesktopAppearance desktop;
    QSignalSpy changed(&desktop, &DesktopAppearance::changed);
    QVERIFY(changed.wait(TestPatience));
    QVERIFY(!desktop.highContrast());
    m_portal.change(m_appearance, u"contrast"_s, 1U);
    QTRY_VERIFY(desktop.highContrast());
    m_portal.change(m_appearance, u"contrast"_s, 0U);
    QTRY_VERIFY(!desktop.highContrast());
    m_portal.change(m_accessibility, u"high-contrast"_s, true);
    QTRY_VERIFY(desktop.highContrast());
}

// The desktop's shell crashes and comes back while a person looks at the list: nothing flashes, and what was
// changed meanwhile is taken.
void WidgetsAppearance::aPortalThatRestartsIsAskedAgain()
{
    DesktopAppearance desktop;
    QSignalSpy changed(&desktop, &DesktopAppearance::changed);
    QVERIFY(changed.wait(TestPatience));
    QVERIFY(!desktop.isDark());
    QDBusConnection bus(u"portal"_s);
    QTest::ignoreMessage(QtInfoMsg, QRegularExpression(u"the settings portal went away"_s));
    QVERIFY(bus.unregisterService(m_service));
    m_portal.settings[m_appearance][u"color-scheme"_s] = 1U;
    const int before = m_portal.asked;
    QVERIFY(bus.registerService(m_service));
    QTRY_VERIFY(desktop.isDark());
    QCOMPARE(m_portal.asked, before + 1);
    QCOMPARE(changed.count(), 2);
    QCOMPARE(desktop.textScale(), 1.5);
}

void WidgetsAppearance::theThemeFollows()
{
    Theme *theme = Theme::instance();
    QSignalSpy completed(theme, &Theme::themeChangeCompleted);
    QVERIFY(completed.wait(TestPatience));
    QVERIFY(!theme->isDark());
    QCOMPARE(theme->token(u"background"_s), QColor(0xFA, 0xFB, 0xFC));
    QCOMPARE(theme->textScale(), 1.5);
    QCOMPARE(theme->motion(240), 0);
    QCOMPARE(theme->accentColor(), QColor(51, 102, 153)); // legible as it is
}

void WidgetsAppearance::theThemeFollowsContrast()
{
    Theme *theme = Theme::instance();
    theme->setDark(true);
    const QColor before = theme->token(u"text2"_s);
    m_portal.change(m_appearance, u"contrast"_s, 1U);
    QTRY_VERIFY(theme->highContrast());
    QVERIFY(theme->token(u"text2"_s) != before);
    QCOMPARE(theme->token(u"background"_s), QColor(Qt::black));
    m_portal.change(m_appearance, u"contrast"_s, 0U);
    QTRY_COMPARE(theme->token(u"text2"_s), before);
}

QTEST_MAIN(WidgetsAppearance)
#include "widgets_appearance.moc"

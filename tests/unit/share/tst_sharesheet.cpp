// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/share/sharesheet.h"
#include "platform/toolkit/applicationpage.h"
#include "platform/toolkit/applicationwindow.h"
#include "platform/toolkit/button.h"
#include "platform/toolkit/label.h"
#include "platform/toolkit/sheetheader.h"
#include "platform/toolkit/theme.h"
#include "support/sceneitems.h"

#include <QApplication>
#include <QGraphicsScene>
#include <QSignalSpy>
#include <QTest>
#include <QTranslator>

#include <memory>

using namespace Qt::Literals::StringLiterals;
using toolkit::ApplicationPage;
using toolkit::ApplicationWindow;
using toolkit::Button;
using Target = ShareSheet::Target;

class ShareSheetTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void aRowATargetWithIconAndName();
    void everyTargetHasANameAndAnIcon();
    void choosingATargetAccepts();
    void bluetoothAsksForTheDevice();
    void backLeadsToTheTargetsAndThenOut();
    void tapBesideClosesFromTheDevices();
    void withoutDevicesItSaysSo();
    void rowsComeAndGoWhileItIsUp();
    void bluetoothGoesOffWhileADeviceIsChosen();
    void theRowThatStopsSendingNamesTheDevice();
    void byKeysAlone();
    void beginsAgainAtTheTargets();
    void mirroredRowsBeginAtTheRight();
    void itFollowsTheLanguage_data();
    void itFollowsTheLanguage();
    void anotherNameLeavesTheStep();

private:
    [[nodiscard]] QStringList texts() const
    {
        QStringList result;
        for (const Button *row : m_sheet->rows())
            result.append(row->text());
        return result;
    }
    // What stands in the place of the rows.
    [[nodiscard]] QString noDevices() const
    {
        const auto *label = childOf<toolkit::Label>(m_sheet->centralWidget());
        return label ? label->text() : QString();
    }
    void key(Qt::Key key) { QTest::keyClick(m_window.get(), key); }

    QTranslator m_catalog;
    std::unique_ptr<ApplicationWindow> m_window;
    std::unique_ptr<ApplicationPage> m_page;
    std::unique_ptr<ShareSheet> m_sheet;
    const QList<Target> m_all{Target::Email, Target::OpenWith, Target::Bluetooth, Target::CopyAddress};
    const QList<BluetoothDevice> m_devices{{u"AA"_s, u"11"_s, u"Anna's phone"_s, u"phone"_s, true},
                                           {u"BB"_s, u"11"_s, u"Desk"_s, u"computer"_s, false}};
};

void ShareSheetTest::initTestCase()
{
    QVERIFY(m_catalog.load(u":/translations/video_en.qm"_s));
    QVERIFY(QCoreApplication::installTranslator(&m_catalog));
    toolkit::Theme::instance()->setReducedMotion(true);
}

void ShareSheetTest::init()
{
    m_window = std::make_unique<ApplicationWindow>();
    m_window->setProfile(ApplicationWindow::Profile::Desktop);
    m_window->showForProfile();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    m_page = std::make_unique<ApplicationPage>();
    m_page->appear(m_window.get(), toolkit::Appearance::Immediate);
    m_sheet = std::make_unique<ShareSheet>();
    m_sheet->setDevices(m_devices);
    m_sheet->setTargets(m_all);
    m_sheet->setSubject(u"a%20b#1?.mp4"_s);
    m_sheet->appear(m_window.get());
    QVERIFY(m_sheet->isOpen());
}

void ShareSheetTest::cleanup()
{
    QGuiApplication::setLayoutDirection(Qt::LeftToRight);
    m_sheet.reset();
    m_page.reset();
    m_window.reset();
}

void ShareSheetTest::aRowATargetWithIconAndName()
{
    QCOMPARE(m_sheet->title(), u"a%20b#1?.mp4"_s);
    QCOMPARE(texts(),
             (QStringList{u"E-mail"_s, u"Open with another program"_s, u"Bluetooth"_s, u"Copy address"_s}));
    qreal bottom = 0;
    QCoreApplication::sendPostedEvents();
    for (const Button *row : m_sheet->rows()) {
        const QRectF place = row->mapRectToScene(row->rect());
        QVERIFY(place.top() >= bottom);
        QVERIFY(place.height() >= 64); // for a finger
        bottom = place.bottom();
    }
    QVERIFY(bottom <= m_window->logicalSize().height());
}

void ShareSheetTest::everyTargetHasANameAndAnIcon()
{
    for (const Button *row : m_sheet->rows()) {
        QVERIFY(!row->text().startsWith("qtn_"_L1));
        QVERIFY2(toolkit::Theme::instance()->hasIcon(row->iconId()), qPrintable(row->iconId()));
    }
    m_sheet->rows().at(2)->click();
    QSet<QString> icons;
    for (const Button *row : m_sheet->rows()) {
        QVERIFY2(toolkit::Theme::instance()->hasIcon(row->iconId()), qPrintable(row->iconId()));
        icons.insert(row->iconId());
    }
    QCOMPARE(icons.size(), 2); // of a phone and of a computer
}

void ShareSheetTest::choosingATargetAccepts()
{
    QSignalSpy accepted(m_sheet.get(), &ShareSheet::accepted);
    m_sheet->rows().at(1)->click();
    QCOMPARE(accepted.size(), 1);
    QCOMPARE(m_sheet->chosenTarget(), Target::OpenWith);
    QVERIFY(!m_sheet->isDisplayed());
}

void ShareSheetTest::bluetoothAsksForTheDevice()
{
    QSignalSpy accepted(m_sheet.get(), &ShareSheet::accepted);
    m_sheet->rows().at(2)->click();
    QCOMPARE(accepted.size(), 0);
    QVERIFY(m_sheet->isChoosingDevice());
    QCOMPARE(m_sheet->title(), u"Bluetooth"_s);
    QCOMPARE(texts(), (QStringList{u"Anna's phone"_s, u"Desk"_s}));
    m_sheet->rows().at(1)->click();
    QCOMPARE(accepted.size(), 1);
    QCOMPARE(m_sheet->chosenTarget(), Target::Bluetooth);
    QCOMPARE(m_sheet->chosenDevice(), m_devices.at(1));
}

void ShareSheetTest::backLeadsToTheTargetsAndThenOut()
{
    QSignalSpy rejected(m_sheet.get(), &ShareSheet::rejected);
    m_sheet->rows().at(2)->click();
    QVERIFY(m_sheet->header()->isBackVisible());
    key(Qt::Key_Escape);
    QVERIFY(!m_sheet->isChoosingDevice());
    QVERIFY(!m_sheet->header()->isBackVisible());
    QCOMPARE(texts().first(), u"E-mail"_s);
    QCOMPARE(m_sheet->title(), u"a%20b#1?.mp4"_s);
    m_sheet->rows().at(2)->click();
    Q_EMIT m_sheet->header()->backClicked();
    QVERIFY(!m_sheet->isChoosingDevice());
    QCOMPARE(rejected.size(), 0);
    key(Qt::Key_Escape);
    QCOMPARE(rejected.size(), 1);
}

void ShareSheetTest::tapBesideClosesFromTheDevices()
{
    m_sheet->rows().at(2)->click();
    QTest::mouseClick(m_window->viewport(), Qt::LeftButton, {}, {100, 60});
    QVERIFY(!m_sheet->isDisplayed());
}

void ShareSheetTest::withoutDevicesItSaysSo()
{
    m_sheet->setDevices({});
    m_sheet->rows().at(2)->click();
    QVERIFY(m_sheet->rows().isEmpty());
    QVERIFY(m_sheet->centralWidget()->effectiveSizeHint(Qt::PreferredSize, {480, -1}).height() > 40);
    m_sheet->setDevices(m_devices); // one was paired meanwhile
    QCOMPARE(texts().size(), 2);
}

void ShareSheetTest::rowsComeAndGoWhileItIsUp()
{
    const qreal before = m_sheet->rows().first()->mapToScene(QPointF()).y();
    m_sheet->setTargets({Target::Email, Target::CopyAddress});
    QCOMPARE(texts(), (QStringList{u"E-mail"_s, u"Copy address"_s}));
    QTRY_VERIFY(m_sheet->rows().first()->mapToScene(QPointF()).y() > before + 100); // it stays at the edge
    QVERIFY(m_sheet->isOpen());
}

void ShareSheetTest::bluetoothGoesOffWhileADeviceIsChosen()
{
    m_sheet->rows().at(2)->click();
    m_sheet->setTargets({Target::Email, Target::CopyAddress});
    QVERIFY(!m_sheet->isChoosingDevice());
    QCOMPARE(texts(), (QStringList{u"E-mail"_s, u"Copy address"_s}));
}

void ShareSheetTest::theRowThatStopsSendingNamesTheDevice()
{
    m_sheet->setReceiver(u"Phone %1"_s);
    m_sheet->setTargets({Target::CopyAddress, Target::StopSending});
    QCOMPARE(texts(), (QStringList{u"Copy address"_s, u"Stop sending to Phone %1"_s}));
    QVERIFY(toolkit::Theme::instance()->hasIcon(m_sheet->rows().last()->iconId()));
    m_sheet->setReceiver(u"Desk"_s);
    QCOMPARE(texts().last(), u"Stop sending to Desk"_s);
    m_sheet->rows().last()->click();
    QCOMPARE(m_sheet->chosenTarget(), Target::StopSending);
}

void ShareSheetTest::byKeysAlone()
{
    key(Qt::Key_Down);
    key(Qt::Key_Down);
    key(Qt::Key_Down);
    key(Qt::Key_Return);
    QVERIFY(m_sheet->isChoosingDevice());
    key(Qt::Key_Down);
    QSignalSpy accepted(m_sheet.get(), &ShareSheet::accepted);
    key(Qt::Key_Space);
    QCOMPARE(accepted.size(), 1);
    QCOMPARE(m_sheet->chosenDevice().name, u"Desk"_s);
}

void ShareSheetTest::beginsAgainAtTheTargets()
{
    m_sheet->rows().at(2)->click();
    m_sheet->dismiss();
    m_sheet->setSubject(u"b.mp4"_s);
    m_sheet->appear(m_window.get());
    QVERIFY(!m_sheet->isChoosingDevice());
    QCOMPARE(m_sheet->title(), u"b.mp4"_s);
    QCOMPARE(texts().size(), 4);
}

void ShareSheetTest::mirroredRowsBeginAtTheRight()
{
    // Where a row is painted: the columns that hold something else than its ground.
    const auto painted = [this] {
        m_window->viewport()->repaint();
        const QImage image = m_window->viewport()->grab().toImage();
        const Button *row = m_sheet->rows().first(); // a short word
        const QRect place = m_window->viewportTransform().mapRect(row->mapRectToScene(row->rect())).toRect();
        const QRgb ground = image.pixel(place.center().x(), place.top() + 4);
        int left = image.width();
        int right = 0;
        for (int x = place.left(); x < place.right(); ++x) {
            for (int y = place.top() + 20; y < place.bottom() - 20; ++y) {
                if (image.pixel(x, y) != ground) {
                    left = qMin(left, x);
                    right = qMax(right, x);
                }
            }
        }
        return std::pair(left, right);
    };
    QCoreApplication::sendPostedEvents();
    const auto [left, right] = painted();
    QVERIFY(left < 60 && right < 240);
    QGuiApplication::setLayoutDirection(Qt::RightToLeft);
    QTRY_VERIFY(m_sheet->layoutDirection() == Qt::RightToLeft);
    QCoreApplication::sendPostedEvents();
    const auto [leftMirrored, rightMirrored] = painted();
    QVERIFY(leftMirrored > 240 && rightMirrored > 420);
}

void ShareSheetTest::itFollowsTheLanguage_data()
{
    QTest::addColumn<bool>("devices");
    QTest::addColumn<bool>("byKeys");
    QTest::addColumn<QStringList>("rows");
    QTest::addColumn<QString>("title");
    const QStringList targets{u"E-Mail"_s, u"Mit anderem Programm öffnen"_s, u"Bluetooth"_s,
                              u"Adresse kopieren"_s};
    QTest::newRow("targets") << false << false << targets << u"a%20b#1?.mp4"_s;
    QTest::newRow("targets, by keys") << false << true << targets << u"a%20b#1?.mp4"_s;
    QTest::newRow("no devices") << true << false << QStringList() << u"Bluetooth"_s;
}

// The person has the sheet before them while the system's language changes.
void ShareSheetTest::itFollowsTheLanguage()
{
    QFETCH(bool, devices);
    QFETCH(bool, byKeys);
    if (devices) {
        m_sheet->setDevices({});
        m_sheet->rows().at(2)->click();
        QVERIFY(m_sheet->isChoosingDevice());
    }
    if (byKeys) {
        key(Qt::Key_Down);
        key(Qt::Key_Down);
        QVERIFY(m_sheet->rows().at(1)->hasFocus());
    }
    QTranslator german;
    QVERIFY(german.load(u":/translations/video_de.qm"_s));
    QVERIFY(QCoreApplication::installTranslator(&german));
    QTRY_COMPARE(
        m_sheet->rows().isEmpty() ? noDevices() : texts().constLast(),
        devices
            ? u"Keine gekoppelten Geräte. Koppeln Sie das andere Gerät zuerst in den Systemeinstellungen."_s
            : u"Adresse kopieren"_s);
    QTEST(texts(), "rows");
    QTEST(m_sheet->title(), "title");
    QCOMPARE(m_sheet->isChoosingDevice(), devices);
    QVERIFY(m_sheet->isOpen());
    QCOMPARE(!byKeys || m_sheet->rows().at(1)->hasFocus(), true);
    QCoreApplication::removeTranslator(&german);
    QTRY_COMPARE(m_sheet->rows().isEmpty() ? noDevices() : texts().constFirst(),
                 devices ? qtTrId("qtn_share_no_devices") : u"E-mail"_s);
}

void ShareSheetTest::anotherNameLeavesTheStep()
{
    m_sheet->renameSubject(u"b.mp4"_s);
    QCOMPARE(m_sheet->title(), u"b.mp4"_s);
    m_sheet->rows().at(2)->click();
    m_sheet->renameSubject(u"c.mp4"_s);
    QCOMPARE(m_sheet->title(), u"Bluetooth"_s);
    key(Qt::Key_Escape);
    QCOMPARE(m_sheet->title(), u"c.mp4"_s);
}

QTEST_MAIN(ShareSheetTest)
#include "tst_sharesheet.moc"

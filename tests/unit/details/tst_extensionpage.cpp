// SPDX-License-Identifier: GPL-3.0-or-later
#include "details/extensionpage.h"
#include "detailsfixture.h"

#include "platform/toolkit/pannableviewport.h"

#include <kestrel/playerhostinterface.h>

#include <QGraphicsScene>
#include <QGraphicsWidget>
#include <QPainter>
#include <QSignalSpy>

#include <limits>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr qreal noNumber = std::numeric_limits<qreal>::quiet_NaN();
constexpr qreal endless = std::numeric_limits<qreal>::infinity();

// Wants to be as large as it was told.
class Sized : public QGraphicsWidget
{
public:
    Sized(const QSizeF &least, const QSizeF &wanted) : m_least(least), m_wanted(wanted) { }

protected:
    QSizeF sizeHint(Qt::SizeHint which, const QSizeF &constraint) const override
    {
        return which == Qt::MinimumSize  ? m_least
            : which == Qt::PreferredSize ? m_wanted
                                         : QGraphicsWidget::sizeHint(which, constraint);
    }

private:
    QSizeF m_least;
    QSizeF m_wanted;
};

} // namespace

// The page of an extension's own.
class ExtensionPageTest : public QObject
{
    Q_OBJECT

public:
    explicit ExtensionPageTest(DetailsFixture &fixture) : f(fixture) { }

private Q_SLOTS:
    void cleanup() { m_page.reset(); }
    void titleWayBackAndScrolling();
    void sizesThatNoPageHas_data();
    void sizesThatNoPageHas();
    void whatIsHighIsScrolled();
    void whatIsScrolledRunsOutUnderTheTitle();
    void whatGrowsIsScrolledFurther();
    void whatMayGrowFillsThePage_data();
    void whatMayGrowFillsThePage();
    void whatIsShownIsNotShownTwice();
    void partOfWhatIsShownIsRefused();
    void withoutAWidgetThePageIsLeft();
    void theWidgetOutlivesThePage();

private:
    void show(QGraphicsWidget *content)
    {
        m_page = std::make_unique<ExtensionPage>(content, u"More of them"_s);
        m_page->appear(&f.window, toolkit::Appearance::Immediate);
        f.window.resize(480, 854);
        f.window.showForProfile();
        QVERIFY(QTest::qWaitForWindowActive(&f.window));
        QTRY_COMPARE(f.window.size(), QSize(480, 854));
    }

    DetailsFixture &f;
    std::unique_ptr<ExtensionPage> m_page;
};

void ExtensionPageTest::titleWayBackAndScrolling()
{
    QGraphicsWidget content;
    show(&content);
    QCOMPARE(m_page->title(), u"More of them"_s);
    QCOMPARE(m_page->escapeMode(), toolkit::ApplicationPage::EscapeMode::Back);
    QVERIFY(m_page->isPannable());
    QVERIFY(m_page->isAncestorOf(&content));
}

void ExtensionPageTest::sizesThatNoPageHas_data()
{
    QTest::addColumn<QSizeF>("least");
    QTest::addColumn<QSizeF>("wanted");
    QTest::newRow("no number") << QSizeF(noNumber, noNumber) << QSizeF(noNumber, noNumber);
    QTest::newRow("endless") << QSizeF(endless, endless) << QSizeF(endless, endless);
    QTest::newRow("below nothing") << QSizeF(-500, -500) << QSizeF(-500, -500);
    QTest::newRow("too large") << QSizeF(0, 0) << QSizeF(1e300, 1e300);
    QTest::newRow("wider than the page") << QSizeF(2000, 10) << QSizeF(3000, 10);
}

// “I opened a page, and could not see what stood there.”
void ExtensionPageTest::sizesThatNoPageHas()
{
    QFETCH(QSizeF, least);
    QFETCH(QSizeF, wanted);
    Sized content(least, wanted);
    show(&content);
    QTRY_COMPARE(m_page->centralWidget()->size().width(), 480.0);
    const QSizeF place = content.parentWidget()->size(); // what is shown of it
    QCOMPARE(place.width(), 480.0);
    QVERIFY2(place.height() >= 0 && place.height() <= 100'000, qPrintable(QString::number(place.height())));
    QCOMPARE(content.scenePos().x(), 0.0);
    QVERIFY(qIsFinite(content.scenePos().y()));
}

// Lines were cut there.
void ExtensionPageTest::whatIsScrolledRunsOutUnderTheTitle()
{
    class Magenta : public Sized
    {
    public:
        using Sized::Sized;
        void paint(QPainter *painter, const QStyleOptionGraphicsItem *, QWidget *) override
        {
            painter->fillRect(rect(), Qt::magenta);
        }
    };
    Magenta content({0, 3000}, {480, 3000});
    show(&content);
    toolkit::PannableViewport *viewport = m_page->pannableViewport();
    QTRY_VERIFY(viewport->range().height() > 1000);
    viewport->setPosition({0, 500});
    const QRectF area = viewport->mapRectToScene(viewport->rect());
    QImage image(480, 854, QImage::Format_RGB32);
    QPainter painter(&image);
    f.window.scene()->render(&painter, image.rect(), QRectF(0, 0, 480, 854));
    painter.end();
    // Magenta, and every ground is grey.
    const auto colour = [&](qreal y) { return image.pixelColor(240, int(y)).hsvSaturation(); };
    QCOMPARE(colour(area.center().y()), 255);
    QVERIFY2(colour(area.top() + 1) < 150, qPrintable(QString::number(colour(area.top() + 1))));
    QVERIFY2(colour(area.bottom() - 2) < 150, qPrintable(QString::number(colour(area.bottom() - 2))));
}

void ExtensionPageTest::whatIsHighIsScrolled()
{
    Sized content({0, 0}, {100, 3000});
    show(&content);
    QTRY_COMPARE(content.size(), QSizeF(480, 3000));
    const QPointF top = content.scenePos();
    QTest::keyClick(&f.window, Qt::Key_End);
    QTRY_VERIFY(content.scenePos().y() < top.y() - 1000);
}

void ExtensionPageTest::whatGrowsIsScrolledFurther()
{
    QGraphicsWidget content;
    content.setPreferredHeight(3000);
    show(&content);
    QTRY_COMPARE(content.size().height(), 3000.0);
    content.setPreferredHeight(5000);
    QTRY_COMPARE(content.size().height(), 5000.0);
    QTRY_COMPARE(m_page->centralWidget()->size().height(), 5000.0);
}

void ExtensionPageTest::whatMayGrowFillsThePage_data()
{
    QTest::addColumn<QSizePolicy::Policy>("policy");
    QTest::addColumn<bool>("fills");
    QTest::newRow("a line") << QSizePolicy::Fixed << false;
    QTest::newRow("a list") << QSizePolicy::Preferred << true;
    QTest::newRow("a map") << QSizePolicy::Expanding << true;
}

void ExtensionPageTest::whatMayGrowFillsThePage()
{
    QFETCH(QSizePolicy::Policy, policy);
    QFETCH(bool, fills);
    Sized content({0, 0}, {100, 64});
    content.setSizePolicy(QSizePolicy::Preferred, policy);
    show(&content);
    QTRY_COMPARE(content.size().width(), 480.0);
    QTRY_COMPARE(content.size().height() > 500, fills);
    QVERIFY(fills || content.size().height() == 64);
}

void ExtensionPageTest::whatIsShownIsNotShownTwice()
{
    QGraphicsWidget content;
    PlayerHostInterface host;
    QSignalSpy changed(&host, &PlayerHostInterface::subPageWidgetChanged);
    QSignalSpy refused(&host, &PlayerHostInterface::refused);
    host.showSubPage(&content, u"More"_s);
    QTRY_COMPARE(changed.count(), 1);
    show(host.subPageWidget());
    host.showSubPage(&content, u"More"_s);
    QGraphicsWidget other;
    QCoreApplication::processEvents();
    host.showSubPage(&other, u"Other"_s);
    QTRY_COMPARE(changed.count(), 2);
    QCOMPARE(host.subPageWidget(), &other);
    // The first one is still there beneath.
    host.showSubPage(&content, u"More"_s);
    QCoreApplication::processEvents();
    QCOMPARE(changed.count(), 2);
    QCOMPARE(refused.count(), 0);
    // Left, it can be shown again.
    m_page.reset();
    host.showSubPage(&content, u"More"_s);
    QTRY_COMPARE(changed.count(), 3);
}

void ExtensionPageTest::partOfWhatIsShownIsRefused()
{
    QGraphicsWidget content;
    auto *part = new QGraphicsWidget(&content);
    PlayerHostInterface host;
    QSignalSpy changed(&host, &PlayerHostInterface::subPageWidgetChanged);
    QSignalSpy refused(&host, &PlayerHostInterface::refused);
    show(&content);
    host.showSubPage(part, u"Part"_s);
    QTRY_COMPARE(refused.count(), 1);
    QCOMPARE(changed.count(), 0);
    QCOMPARE(part->parentItem(), &content);
}

// Whoever emits the host's signal by its name has given no widget.
void ExtensionPageTest::withoutAWidgetThePageIsLeft()
{
    m_page = std::make_unique<ExtensionPage>(nullptr, QString());
    QSignalSpy left(m_page.get(), &ExtensionPage::backButtonClicked);
    m_page->appear(&f.window, toolkit::Appearance::Immediate);
    f.window.showForProfile();
    QTRY_COMPARE(left.count(), 1);
}

void ExtensionPageTest::theWidgetOutlivesThePage()
{
    QGraphicsWidget content;
    show(&content);
    QVERIFY(content.scene());
    m_page.reset();
    QCOMPARE(content.parentItem(), nullptr);
    QCOMPARE(content.parentLayoutItem(), nullptr);
    QCOMPARE(content.scene(), nullptr);
    show(&content);
    QTRY_COMPARE(content.size().width(), 480.0);
}

int main(int argc, char **argv)
{
    toolkit::Application application(argc, argv, QStringLiteral("video"), nullptr);
    DetailsFixture fixture;
    ExtensionPageTest test(fixture);
    return QTest::qExec(&test, argc, argv);
}
#include "tst_extensionpage.moc"

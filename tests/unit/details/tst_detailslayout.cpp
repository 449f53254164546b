// SPDX-License-Identifier: GPL-3.0-or-later
#include "detailsfixture.h"

#include "platform/toolkit/accessibility.h"
#include "platform/toolkit/pannableviewport.h"

using namespace Qt::Literals::StringLiterals;

// Where picture and labels stand, in every shape of the window and with every kind of text.
class DetailsLayoutTest : public QObject
{
    Q_OBJECT

public:
    explicit DetailsLayoutTest(DetailsFixture &fixture) : f(fixture) { }

private Q_SLOTS:
    void cleanup();
    void everythingIsSeenInEveryShape_data();
    void everythingIsSeenInEveryShape();
    void aTurnedWindowIsLaidOutAnew();
    void aLongTitleEndsInAnEllipsis_data();
    void aLongTitleEndsInAnEllipsis();
    void labelsStandTogetherInAHighWindow();
    void whatAReaderIsTold();

private:
    [[nodiscard]] QRectF onPage(const QGraphicsWidget *widget) const
    {
        return widget->mapRectToItem(f.page->centralWidget(), widget->rect());
    }
    [[nodiscard]] QString faults() const;
    DetailsFixture &f;
};

void DetailsLayoutTest::cleanup()
{
    f.close();
    f.locale.install();
    toolkit::Theme::instance()->setTextScale(1);
}

// What does not stand where it is seen whole; empty: everything does.
QString DetailsLayoutTest::faults() const
{
    const qreal width = f.page->centralWidget()->size().width();
    const qreal height = f.page->centralWidget()->size().height();
    QRectF before = f.window.orientation() == Qt::Horizontal ? QRectF() : onPage(f.page->preview()->image());
    for (const toolkit::Label *label : f.labels()) {
        const QRectF place = onPage(label);
        if (place.left() < 16 || place.right() > width - 16 || place.bottom() > height)
            return u"off the page: "_s + label->text().left(40);
        if (place.top() < before.bottom())
            return u"over what stands above: "_s + label->text().left(40);
        const qreal needed = label->effectiveSizeHint(Qt::PreferredSize, {place.width(), -1}).height();
        if (place.height() < needed - 0.5)
            return u"cut: "_s + label->text().left(40);
        before = place;
    }
    return {};
}

void DetailsLayoutTest::everythingIsSeenInEveryShape_data()
{
    QTest::addColumn<QString>("locale");
    QTest::addColumn<QSize>("window");
    QTest::addColumn<double>("textScale");
    for (const QString &locale : {u"en_GB"_s, u"ar_EG"_s, u"de_DE"_s}) {
        for (const QSize &window : {QSize(480, 854), QSize(854, 480), QSize(1280, 800), QSize(360, 640)}) {
            for (const double scale : {1.0, 2.0})
                QTest::addRow("%s, %d x %d, %.0f %%", qPrintable(locale), window.width(), window.height(),
                              scale * 100)
                    << locale << window << scale;
        }
    }
}

void DetailsLayoutTest::everythingIsSeenInEveryShape()
{
    QFETCH(QString, locale);
    QFETCH(QSize, window);
    QFETCH(double, textScale);
    const DeviceLocale device(locale);
    toolkit::Theme::instance()->setTextScale(textScale);
    QVERIFY(f.open(window));
    VideoDetails details = playedVideo();
    details.title = u"Birthday, the candles and the second cake"_s;
    QVERIFY(f.show(details));
    f.page->preview()->detailsContainer()->setFacts(
        u"File"_s, {u"Folder: ~/Videos/%1"_s.arg(QString(80, u'x')), u"Video: H.264"_s});
    QTRY_COMPARE(faults(), QString());
    const QRectF image = onPage(f.page->preview()->image());
    const QRectF heading = onPage(f.labels().first());
    QCOMPARE(image.height(), std::floor(image.width() * 9 / 16));
    if (f.window.orientation() == Qt::Vertical) {
        QCOMPARE(image.width(), f.page->size().width());
        QVERIFY(heading.top() > image.bottom());
    } else if (locale.startsWith(u"ar"_s)) {
        QVERIFY(heading.right() < image.left());
    } else {
        QVERIFY(heading.left() > image.right());
    }
    // The foot of the last label can be reached.
    const toolkit::PannableViewport *viewport = f.page->pannableViewport();
    QVERIFY(viewport->range().height() + viewport->size().height() >= onPage(f.labels().last()).bottom());
}

void DetailsLayoutTest::aTurnedWindowIsLaidOutAnew()
{
    QVERIFY(f.open(QSize(480, 854)));
    QVERIFY(f.show(playedVideo()));
    QTRY_COMPARE(onPage(f.page->preview()->image()), QRectF(0, 0, 480, 270));
    f.window.resize(854, 480);
    QTRY_VERIFY(onPage(f.labels().first()).left() > onPage(f.page->preview()->image()).right());
    QTRY_COMPARE(faults(), QString());
    f.window.resize(480, 854);
    QTRY_COMPARE(onPage(f.page->preview()->image()), QRectF(0, 0, 480, 270));
    QTRY_COMPARE(faults(), QString());
}

void DetailsLayoutTest::aLongTitleEndsInAnEllipsis_data()
{
    QTest::addColumn<QString>("title");
    QTest::newRow("words") << u"word "_s.repeated(2000);
    QTest::newRow("one word") << QString(10000, u'w');
    QTest::newRow("from right to left") << u"كلمة "_s.repeated(2000);
    QTest::newRow("lines") << u"line\n"_s.repeated(2000);
}

void DetailsLayoutTest::aLongTitleEndsInAnEllipsis()
{
    QFETCH(QString, title);
    QCOMPARE(title.size(), 10000);
    QVERIFY(f.open(QSize(480, 854)));
    VideoDetails details = playedVideo();
    details.title = title;
    QVERIFY(f.show(details));
    QTRY_COMPARE(faults(), QString());
    const toolkit::Label *heading = f.labels().first();
    QVERIFY(heading->isElided());
    QCOMPARE(heading->lineCount(), heading->style().maximumLines);
    QCOMPARE(f.labels().size(), 7);
}

// Where the page is higher than what stands on it.
void DetailsLayoutTest::labelsStandTogetherInAHighWindow()
{
    QVERIFY(f.open(QSize(480, 1200)));
    QVERIFY(f.show(playedVideo()));
    QTRY_COMPARE(faults(), QString());
    for (qsizetype i = 1; i < f.labels().size(); ++i)
        QVERIFY(onPage(f.labels().at(i)).top() - onPage(f.labels().at(i - 1)).bottom() <= 12);
}

void DetailsLayoutTest::whatAReaderIsTold()
{
    QVERIFY(f.open());
    QVERIFY(f.show(playedVideo()));
    const auto told = [](const toolkit::Label *label) {
        return std::pair(label->accessibleRole(), label->accessibleName());
    };
    QCOMPARE(told(f.labels().first()), std::pair(QAccessible::Heading, u"Birthday"_s));
    QCOMPARE(told(f.labels().at(1)), std::pair(QAccessible::StaticText, u"Length: 12:40"_s));
    // The picture says nothing that the title does not.
    QCOMPARE(f.page->preview()->image()->accessibleRole(), QAccessible::NoRole);
    QCOMPARE(f.page->accessibleName(), u"Details"_s);
}

int main(int argc, char **argv)
{
    toolkit::Application application(argc, argv, QStringLiteral("video"), nullptr);
    DetailsFixture fixture;
    DetailsLayoutTest test(fixture);
    return QTest::qExec(&test, argc, argv);
}
#include "tst_detailslayout.moc"

// SPDX-License-Identifier: GPL-3.0-or-later
#include "detailsfixture.h"

#include <QFile>
#include <QGraphicsLayout>
#include <QTemporaryDir>

using namespace Qt::Literals::StringLiterals;

// The picture of a video beside its details.
class PreviewWidgetTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void picturesThatCannotBeShownGiveThePlaceholder_data();
    void picturesThatCannotBeShownGiveThePlaceholder();
    void aPictureIsShown();
    void thePlaceholderTakesThePlaceOfAPicture();
    void detailsGoToTheContainer();
    void thePictureKeepsTheShapeOfAScreen();

private:
    [[nodiscard]] static QImage shown(const PreviewWidget &preview)
    {
        return preview.image()->pixmap().toImage();
    }
    QTemporaryDir m_folder;
};

void PreviewWidgetTest::picturesThatCannotBeShownGiveThePlaceholder_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("no such file") << u"none.jpeg"_s << QByteArray();
    QTest::newRow("empty file") << u"empty.jpeg"_s << QByteArray("");
    QTest::newRow("no image") << u"text.jpeg"_s << QByteArray("This is a letter.");
    QTest::newRow("broken image") << u"broken.jpeg"_s << QByteArray("\xff\xd8\xff\xe0 and no more");
    QTest::newRow("no path") << QString() << QByteArray();
    QTest::newRow("a folder") << u"."_s << QByteArray();
}

void PreviewWidgetTest::picturesThatCannotBeShownGiveThePlaceholder()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, content);
    const QString path = name.isEmpty() ? QString() : m_folder.filePath(name);
    if (!content.isNull()) {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(content);
    }
    PreviewWidget preview(ThumbnailHelper::instance());
    preview.setThumbnail(path);
    QCOMPARE(shown(preview),
             ThumbnailHelper::instance()->placeHolder(ThumbnailHelper::pictureSize).toImage());
    QVERIFY(!shown(preview).isNull());
}

void PreviewWidgetTest::aPictureIsShown()
{
    const QString path = m_folder.filePath(u"red.png"_s);
    QImage red(32, 18, QImage::Format_RGB32);
    red.fill(Qt::red);
    QVERIFY(red.save(path));
    PreviewWidget preview(ThumbnailHelper::instance());
    preview.setThumbnail(path);
    QCOMPARE(shown(preview).size(), red.size());
    QCOMPARE(shown(preview).pixelColor(16, 9), QColor(Qt::red));
}

void PreviewWidgetTest::thePlaceholderTakesThePlaceOfAPicture()
{
    PreviewWidget preview(ThumbnailHelper::instance());
    preview.showPlaceholder();
    const QImage placeholder = shown(preview);
    QVERIFY(!placeholder.isNull());
    QImage red(32, 18, QImage::Format_RGB32);
    red.fill(Qt::red);
    QVERIFY(red.save(m_folder.filePath(u"red.png"_s)));
    preview.setThumbnail(m_folder.filePath(u"red.png"_s));
    QVERIFY(shown(preview) != placeholder);
    preview.showPlaceholder();
    QCOMPARE(shown(preview), placeholder);
    delete preview.image();
    preview.showPlaceholder(); // there is nothing to show it in
    preview.setThumbnail(m_folder.filePath(u"red.png"_s));
}

void PreviewWidgetTest::detailsGoToTheContainer()
{
    PreviewWidget preview(ThumbnailHelper::instance());
    preview.setDetails(playedVideo());
    QCOMPARE(preview.detailsContainer()->labels().size(), 7);
    preview.setDetails(VideoDetails());
    QCOMPARE(preview.detailsContainer()->labels().size(), 1);
}

void PreviewWidgetTest::thePictureKeepsTheShapeOfAScreen()
{
    PreviewWidget preview(ThumbnailHelper::instance());
    preview.setDetails(playedVideo());
    preview.resize(480, preview.effectiveSizeHint(Qt::PreferredSize, QSizeF(480, -1)).height());
    preview.layout()->activate();
    QCOMPARE(preview.image()->geometry(), QRectF(0, 0, 480, 270));
    preview.resize(800, preview.effectiveSizeHint(Qt::PreferredSize, QSizeF(800, -1)).height());
    preview.layout()->activate();
    QCOMPARE(preview.image()->geometry(), QRectF(0, 0, 800, 450));
}

int main(int argc, char **argv)
{
    toolkit::Application application(argc, argv, QStringLiteral("video"), nullptr);
    FakeThumbnailerClient::install();
    FakeSparqlStore store;
    const DeviceLocale british(QStringLiteral("en_GB"));
    PreviewWidgetTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_previewwidget.moc"

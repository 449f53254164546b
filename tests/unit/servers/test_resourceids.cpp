// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/servers/resourceids.h"
#include "support/loglines.h"

#include <QTest>

#include <malloc.h>

#ifdef __SANITIZE_ADDRESS__
// Of the sanitizer's library; the compiler has no header of it.
extern "C" size_t __sanitizer_get_current_allocated_bytes();
#endif

using namespace Qt::Literals::StringLiterals;

namespace {

QByteArray video(int number)
{
    return "urn:uuid:" + QByteArray::number(number, 16).rightJustified(8, '0')
        + "-0000-4000-8000-000000000000";
}

// Bytes that are allocated, as the allocator counts them.
size_t inUse()
{
#ifdef __SANITIZE_ADDRESS__
    return __sanitizer_get_current_allocated_bytes();
#else
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
#endif
}

} // namespace

class TestResourceIds : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aNumberIsOneIris();
    void anyTextHasOne();
    void whatIsNoNumber();
    void manyTakeLittle();
    void thereIsAnEnd();
};

void TestResourceIds::aNumberIsOneIris()
{
    constexpr int videos = 300000;
    ResourceIds ids;
    for (int i = 0; i < videos; ++i) {
        if (ids.idOf(QByteArrayView(video(i))) != i + 1)
            QFAIL(qPrintable(QString::number(i)));
    }
    QCOMPARE(ids.count(), videos);
    // Each time again, whatever came after it, and back.
    for (int i = videos - 1; i >= 0; --i) {
        if (ids.idOf(QByteArrayView(video(i))) != i + 1 || ids.iriOf(i + 1).toUtf8() != video(i))
            QFAIL(qPrintable(QString::number(i)));
    }
    QCOMPARE(ids.count(), videos);
}

void TestResourceIds::anyTextHasOne()
{
    ResourceIds ids;
    const QStringList texts{u"a"_s,
                            u"http://archive.example/Ψ🎬"_s,
                            u"http://archive.example/"_s + u"x"_s.repeated(1000000),
                            u"with"_s + QChar(u'\0') + u"nothing"_s,
                            u"with"_s,
                            u" "_s};
    for (qsizetype i = 0; i < texts.size(); ++i)
        QCOMPARE(ids.idOf(texts[i]), int(i) + 1);
    for (qsizetype i = 0; i < texts.size(); ++i)
        QCOMPARE(ids.iriOf(int(i) + 1), texts[i]);
}

void TestResourceIds::whatIsNoNumber()
{
    ResourceIds ids;
    QCOMPARE(ids.idOf(QString()), 0);
    QCOMPARE(ids.idOf(u"urn:a"_s), 1);
    for (const int id : {0, -1, 2, 2147483647})
        QCOMPARE(ids.iriOf(id), QString());
}

void TestResourceIds::manyTakeLittle()
{
    constexpr int videos = 1000000;
    const size_t before = inUse();
    ResourceIds ids;
    for (int i = 0; i < videos; ++i)
        static_cast<void>(ids.idOf(QByteArrayView(video(i))));
    const double each = double(inUse() - before) / videos;
    qInfo("%.1f bytes for each IRI of %d bytes", each, int(video(0).size()));
    QVERIFY2(each < 100, qPrintable(QString::number(each)));
}

// A server that has other videos each time it is asked does not fill the memory.
void TestResourceIds::thereIsAnEnd()
{
    const LogLines log("kestrel.servers");
    ResourceIds ids(10000);
    int last = 0;
    for (int i = 0; i < 1000; ++i)
        last = std::max(last, ids.idOf(QByteArrayView(video(i))));
    QVERIFY(last > 150 && last < 250);
    QCOMPARE(ids.count(), last);
    QCOMPARE(ids.idOf(QByteArrayView(video(999))), 0);
    QCOMPARE(log.all().size(), 1);
    // Those that have one keep it.
    for (int i = 0; i < last; ++i) {
        QCOMPARE(ids.idOf(QByteArrayView(video(i))), i + 1);
        QCOMPARE(ids.iriOf(i + 1).toUtf8(), video(i));
    }
}

QTEST_GUILESS_MAIN(TestResourceIds)

#include "test_resourceids.moc"

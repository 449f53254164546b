// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/system/usernotice.h"
#include "support/fakeshareservice.h"
#include "support/loglines.h"

#include <QTest>

#include <memory>

using namespace Qt::Literals::StringLiterals;

// Which share service a program gets.
class ShareServiceChoiceTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { FakeShareService::uninstall(); }
    void withoutAServiceTheRequestIsDroppedAndLogged();
    void theOneThatWasSetIsMade();
};

void ShareServiceChoiceTest::withoutAServiceTheRequestIsDroppedAndLogged()
{
    LogLines log("kestrel.system");
    const std::unique_ptr<ShareService> service(ShareService::create());
    QVERIFY(service != nullptr);
    QCOMPARE(log.all(), QStringList());
    service->share({u"file:///a.mp4"_s, u"file:///b.mp4"_s});
    service->share({});
    QCOMPARE(log.all(),
             (QStringList{u"no share service; 2 address(es) not shared"_s,
                          u"no share service; 0 address(es) not shared"_s}));
}

void ShareServiceChoiceTest::theOneThatWasSetIsMade()
{
    FakeShareService::install();
    const std::unique_ptr<ShareService> service(ShareService::create());
    service->share({u"file:///a.mp4"_s});
    QCOMPARE(FakeShareService::created(), 1);
    QCOMPARE(FakeShareService::shared(), QList<QStringList>{{u"file:///a.mp4"_s}});
    FakeShareService::uninstall();
    const std::unique_ptr<ShareService> none(ShareService::create());
    QCOMPARE(FakeShareService::created(), 1);
}

QTEST_GUILESS_MAIN(ShareServiceChoiceTest)
#include "tst_shareservice.moc"

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <data/trackerinterface.h>

#include "expectedtexts.h"

#include "support/fakesparqldriver.h"

#include <platform/sparql/changenotifier.h>
#include <platform/system/systeminformation.h>

#include <QMetaMethod>
#include <QSharedPointer>
#include <QSignalSpy>

#include <functional>
#include <memory>

// A request of the store layer; gives its id.
using Request = std::function<int(TrackerInterface &)>;
Q_DECLARE_METATYPE(Request)

// A store layer of the test's own beside the process-wide one, on a Harrow Q5 and on a store whose every
// answer the test gives.
class TrackerInterfaceFixture : public QObject
{
protected:
    class Store : public TrackerInterface
    {
    };

    class FakeSystemInformation : public SystemInformation
    {
    public:
        QString manufacturer() const override { return manufacturerName; }
        QString model() const override { return modelName; }
        QString value(const QString &key) const override
        {
            return key == QStringLiteral("/component/hw-build") ? build : QString();
        }

        QString manufacturerName = QStringLiteral("Harrow");
        QString modelName = QStringLiteral("Q5");
        QString build;
    };

    inline static const QString urn = QStringLiteral("urn:uuid:1");
    inline static const QString url = QStringLiteral("file:///v/a.mp4");

    void start()
    {
        ChangeNotifier::setSource([](ChangeNotifier *) {});
        m_information = FakeSystemInformation();
        SystemInformation::setInstance(&m_information);
        m_driver = std::make_unique<FakeSparqlStore>();
        m_driver->answerWhen(QStringLiteral("tracker:id(nmm:Video)"),
                             FakeSparqlAnswer::rows({{101, 102, 103, 104, 105}}));
        m_store = std::make_unique<Store>();
    }

    void stop()
    {
        m_store.reset();
        m_driver.reset();
        SystemInformation::setInstance(nullptr);
        ChangeNotifier::setSource({});
        TrackerInterface::setTrackerMode(QStringLiteral("QTRACKER"));
    }

    // What was sent but for the notifier's question.
    QStringList texts() const
    {
        QStringList sent = m_driver->texts();
        sent.removeAll(ExpectedTexts::ontology);
        return sent;
    }

    QString lastText() const
    {
        const QStringList sent = texts();
        return sent.isEmpty() ? QString() : sent.last();
    }

    // The place of the statement that was sent last, for finish() and fail().
    int lastStatement() const { return int(m_driver->statements().size()) - 1; }

    static QVariantList row(const QString &title, const QString &fileName)
    {
        return {urn, title, fileName, 61, 17, QStringLiteral("video/mp4"), url, 1234};
    }

    static QString print(const VideoInfo &info)
    {
        return QStringList{info.urn,
                           info.title,
                           info.fileName,
                           QString::number(info.duration),
                           QString::number(info.playPosition),
                           info.mimeType,
                           info.url,
                           QString::number(info.trackerId)}
            .join(u'|');
    }

    // One for every signal.
    QList<QSharedPointer<QSignalSpy>> spyOnAllAnswers() const
    {
        QList<QSharedPointer<QSignalSpy>> spies;
        const QMetaObject &object = TrackerInterface::staticMetaObject;
        for (int i = object.methodOffset(); i < object.methodCount(); ++i) {
            if (object.method(i).methodType() == QMetaMethod::Signal)
                spies.append(QSharedPointer<QSignalSpy>::create(m_store.get(), object.method(i)));
        }
        return spies;
    }

    // Names of the signals that were seen.
    static QByteArrayList seen(const QList<QSharedPointer<QSignalSpy>> &spies)
    {
        QByteArrayList names;
        for (const auto &spy : spies)
            names += QByteArrayList(spy->size(), spy->signal());
        return names;
    }

    FakeSystemInformation m_information;
    std::unique_ptr<FakeSparqlStore> m_driver;
    std::unique_ptr<Store> m_store;
};

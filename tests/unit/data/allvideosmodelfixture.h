// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <data/allvideosmodel.h>
#include <data/trackerinterface.h>

#include "support/displayproxy.h"
#include "support/driventimer.h"
#include "support/fakesparqldriver.h"
#include "support/fakethumbnailerclient.h"

#include <platform/sparql/changenotifier.h>

#include <QAbstractItemModelTester>
#include <QDir>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <memory>

struct AllVideosModelProbe
{
    static QTimer *timer(AllVideosModel &model) { return model.m_changeTimer; }
    static QModelIndex beyond(const AllVideosModel &model, int row, int column)
    {
        return model.createIndex(row, column);
    }
};

namespace VideoRows {

inline QString urlOf(int number)
{
    return QStringLiteral("file:///v/%1.mp4").arg(number);
}

inline QStringList videoRow(int number, const QString &title, const QString &duration = QStringLiteral("60"))
{
    return {QStringLiteral("urn:%1").arg(number),
            title,
            QStringLiteral("%1.mp4").arg(number),
            duration,
            QStringLiteral("0"),
            QStringLiteral("video/mp4"),
            urlOf(number),
            QString::number(number)};
}

inline QStringList videoRow(int number)
{
    return videoRow(number, QStringLiteral("Video %1").arg(number));
}

inline QList<QStringList> videoRows(int count)
{
    QList<QStringList> rows;
    for (int number = 1; number <= count; ++number)
        rows.append(videoRow(number));
    return rows;
}

inline QStringList column(const AllVideosModel &model, int column)
{
    QStringList texts;
    for (int row = 0; row < model.rowCount(); ++row)
        texts.append(model.data(model.index(row, column)).toString());
    return texts;
}

} // namespace VideoRows

// A model on a store that keeps its answers to itself, watched by the model tester, in a home of its own.
class AllVideosModelFixture : public QObject
{
protected:
    void startStore()
    {
        qputenv("HOME", m_home.path().toUtf8());
        FakeThumbnailerClient::install();
        ChangeNotifier::setSource([](ChangeNotifier *) {});
        m_store = std::make_unique<FakeSparqlStore>();
        m_store->answer(FakeSparqlAnswer::later());
        (void)TrackerInterface::instance(); // on the store of the test
    }

    void startModel()
    {
        m_store->answer(FakeSparqlAnswer::later());
        m_model = std::make_unique<AllVideosModel>(nullptr);
        m_proxy = std::make_unique<DisplayProxy>();
        m_proxy->setSourceModel(m_model.get());
        m_tester = std::make_unique<QAbstractItemModelTester>(m_proxy.get());
    }

    void stopModel()
    {
        m_tester.reset();
        m_proxy.reset();
        m_model.reset();
        QDir(m_home.filePath(QStringLiteral(".thumbnails"))).removeRecursively();
        QDir(m_home.filePath(QStringLiteral(".cache"))).removeRecursively();
    }

    void load(const QList<QStringList> &rows) { m_model->queryFinished(rows); }

    QTemporaryDir m_home;
    std::unique_ptr<FakeSparqlStore> m_store;
    std::unique_ptr<AllVideosModel> m_model;
    std::unique_ptr<DisplayProxy> m_proxy;
    std::unique_ptr<QAbstractItemModelTester> m_tester;
};

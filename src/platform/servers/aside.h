// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFutureWatcher>
#include <QPromise>

#include <memory>
#include <thread>
#include <type_traits>
#include <utility>

// Does `work` on a thread of its own, which nothing waits for: the files that it reads may lie on a network
// that is away. `done` is called with what it returned, from this thread's event loop, unless `context` is
// gone by then.
template <class Work, class Done> void doAside(QObject *context, Work work, Done done)
{
    using Result = std::invoke_result_t<Work>;
    auto promise = std::make_shared<QPromise<Result>>();
    auto *watcher = new QFutureWatcher<Result>(context);
    QObject::connect(watcher, &QFutureWatcherBase::finished, context, [watcher, done = std::move(done)] {
        watcher->deleteLater();
        done(watcher->future().takeResult());
    });
    promise->start();
    watcher->setFuture(promise->future());
    std::thread([promise, work = std::move(work)] {
        promise->addResult(work());
        promise->finish();
    }).detach();
}

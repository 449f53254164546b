// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFuture>
#include <QPromise>
#include <QThreadPool>

#include <memory>
#include <type_traits>

// Does the work in a thread of the program's pool, whose end the program waits for. The work touches only
// what it was given. Whoever does not care any more drops the future.
template <typename Work> [[nodiscard]] auto inBackground(Work work)
{
    using Result = std::invoke_result_t<Work>;
    const auto promise = std::make_shared<QPromise<Result>>();
    promise->start();
    QThreadPool::globalInstance()->start([promise, work = std::move(work)]() mutable {
        promise->addResult(work());
        promise->finish();
    });
    return promise->future();
}

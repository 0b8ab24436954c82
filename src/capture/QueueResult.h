#pragma once

#include "platform/SerialQueue.h"

#include <QFuture>
#include <QPromise>

#include <memory>
#include <type_traits>
#include <utility>

namespace zivra {

/// What `work`, which does not throw, gives when it is its turn on the queue.
///
/// A coroutine calls it in a statement of its own, before it awaits the result: g++ 12 destroys what a lambda
/// in an awaiting expression has captured twice.
template <typename Work>
[[nodiscard]] auto resultFrom(SerialQueue &queue, Work work) -> QFuture<std::invoke_result_t<Work>>
{
    const auto promise = std::make_shared<QPromise<std::invoke_result_t<Work>>>();
    promise->start();
    queue.async([promise, work = std::move(work)] {
        promise->addResult(work());
        promise->finish();
    });
    return promise->future();
}

} // namespace zivra

#pragma once

#include <QFuture>
#include <QPromise>

#include <exception>
#include <memory>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

namespace zivra::test {

/// The outcome of a fake's asynchronous operation: at once, or held until the test releases it.
template <typename T>
class ScriptedResult {
    using Value = std::conditional_t<std::is_void_v<T>, std::monostate, T>;

public:
    bool held = false;
    std::exception_ptr error; ///< fails the operation when set

    QFuture<T> answer(Value value = {})
    {
        auto promise = std::make_shared<QPromise<T>>();
        promise->start();
        QFuture<T> future = promise->future();
        m_waiting.emplace_back(std::move(promise), std::move(value));
        if (!held) {
            release();
        }
        return future;
    }
    /// Finishes all that wait. Later ones wait again while `held`.
    void release()
    {
        for (auto &[promise, value] : std::exchange(m_waiting, {})) {
            if (error) {
                promise->setException(error);
            } else if constexpr (!std::is_void_v<T>) {
                promise->addResult(std::move(value));
            }
            promise->finish();
        }
    }

private:
    std::vector<std::pair<std::shared_ptr<QPromise<T>>, Value>> m_waiting;
};

} // namespace zivra::test

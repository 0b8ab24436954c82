#pragma once

#include <algorithm>
#include <iterator>
#include <vector>

namespace zivra::desktop {

/// Sends `request(item)` for each item and only then hands each item with its cookie to `answer`: one round
/// trip for all of them. `answer` must collect the reply of every cookie it is given.
template <typename Items, typename Request, typename Answer>
void forEachAnswer(const Items &items, Request request, Answer answer)
{
    std::vector<decltype(request(*items.begin()))> cookies;
    cookies.reserve(items.size());
    std::ranges::transform(items, std::back_inserter(cookies), request);
    auto cookie = cookies.begin();
    for (const auto &item : items) {
        answer(item, *cookie++);
    }
}

} // namespace zivra::desktop

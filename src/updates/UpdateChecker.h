#pragma once

namespace zivra {

/// Looks for a newer version. Main thread only.
class UpdateChecker {
public:
    virtual ~UpdateChecker() = default;

    /// Returns at once; asks at most once a day and says nothing of failures.
    virtual void checkDailyInBackground() = 0;
};

} // namespace zivra

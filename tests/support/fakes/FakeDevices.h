#pragma once

#include "platform/Authorization.h"
#include "platform/CaptureDevices.h"
#include "support/fakes/ScriptedResult.h"

#include <map>

namespace zivra::test {

class FakeDeviceCatalog final : public CaptureDeviceCatalog {
public:
    std::vector<CaptureDevice> cameras;     ///< the first is the default one
    std::vector<CaptureDevice> microphones; ///< the same

    [[nodiscard]] std::vector<CaptureDevice> devices(MediaType type) const override
    {
        return type == MediaType::Video ? cameras : microphones;
    }
    [[nodiscard]] std::optional<CaptureDevice> defaultDevice(MediaType type) const override
    {
        const auto all = devices(type);
        return all.empty() ? std::nullopt : std::optional(all.front());
    }
    void setChangeHandler(std::function<void()> handler) override { m_onChange = std::move(handler); }

    void change() const { m_onChange(); }

private:
    std::function<void()> m_onChange;
};

class FakeAuthorization final : public MediaAuthorization {
public:
    std::map<MediaType, AuthorizationStatus> statuses; ///< `Authorized` where nothing is said
    bool answer = true;                                ///< of a user who is asked
    std::vector<MediaType> requests;
    ScriptedResult<bool> requesting;

    [[nodiscard]] AuthorizationStatus authorizationStatus(MediaType type) const override
    {
        const auto found = statuses.find(type);
        return found != statuses.end() ? found->second : AuthorizationStatus::Authorized;
    }
    QFuture<bool> requestAccess(MediaType type) override
    {
        requests.push_back(type);
        return requesting.answer(answer);
    }
};

class FakeScreenCaptureAccess final : public ScreenCaptureAccess {
public:
    bool granted = true;

    [[nodiscard]] bool preflight() const override { return granted; }
    void request() override {}
};

} // namespace zivra::test

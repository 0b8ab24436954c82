#pragma once

#include "cloud/CloudAccount.h"
#include "support/CloudServer.h"
#include "support/PrintQt.h"
#include "support/fakes/Await.h"
#include "support/fakes/FakeCloudDesktop.h"
#include "support/fakes/FakeDesktop.h"
#include "support/fakes/FakeUserDefaults.h"

#include <gtest/gtest.h>

namespace zivra::test {

/// An account at a server on the loopback.
struct AccountFixture : testing::Test {
    AccountFixture() { defaults.setValue("cloudServer", server.url()); }

    /// The account of another start of the program.
    CloudAccount &started()
    {
        account = std::make_unique<CloudAccount>(
            CloudAccountServices{defaults, secrets, workspace, alerts, "A & B+"});
        return *account;
    }
    /// What the server answers to requests for that path with a token that ends so, after milliseconds.
    void answer(const std::string &path, int status, const std::string &body, const std::string &token = {},
                int delay = 0)
    {
        server.setFault([=](const CloudServer::Request &request) {
            const bool concerned =
                request.path.starts_with(path) && request.headers.at("Authorization").ends_with(token);
            return concerned ? std::optional(CloudServer::Fault{status, body, {}, false, delay})
                             : std::nullopt;
        });
    }

    CloudServer server;
    FakeUserDefaults defaults;
    FakeSecretStore secrets;
    FakeWorkspace workspace;
    FakeAlerts alerts;
    std::unique_ptr<CloudAccount> account;
};

} // namespace zivra::test

#include "capture/Devices.h"

#include "capture/Permissions.h"
#include "support/PrintQt.h"
#include "support/fakes/Await.h"
#include "support/fakes/FakeDesktop.h"
#include "support/fakes/FakeDevices.h"

#include <gtest/gtest.h>

namespace zivra::test {

TEST(DevicesTest, FollowsTheDesktop)
{
    FakeDeviceCatalog catalog;
    catalog.cameras = {{"a", "A"}, {"b", "B"}};
    auto devices = std::make_unique<Devices>(catalog);
    EXPECT_EQ(devices->cameras(), catalog.cameras);
    EXPECT_EQ(devices->defaultCamera(), catalog.cameras.front());
    EXPECT_EQ(devices->defaultMicrophone(), std::nullopt);

    int changes = 0;
    QObject::connect(devices.get(), &Devices::camerasChanged, [&] { ++changes; });
    QObject::connect(devices.get(), &Devices::microphonesChanged, [&] { ++changes; });
    catalog.cameras = {{"b", "B"}, {"a", "A"}};
    catalog.microphones = {{"m", "M"}};
    catalog.change();
    EXPECT_EQ(devices->cameras(), catalog.cameras);
    EXPECT_EQ(devices->microphones(), catalog.microphones);
    EXPECT_EQ(changes, 2);
    devices.reset();
    catalog.change();
}

TEST(PermissionsTest, AsksOnlyWhatIsNotSettled)
{
    struct Row {
        AuthorizationStatus status;
        bool answer;
        bool granted;
        std::size_t requests;
    };
    for (const Row &row : {Row{AuthorizationStatus::Authorized, false, true, 0},
                           Row{AuthorizationStatus::NotDetermined, true, true, 1},
                           Row{AuthorizationStatus::NotDetermined, false, false, 1},
                           Row{AuthorizationStatus::Restricted, true, false, 0},
                           Row{AuthorizationStatus::Denied, true, false, 0}}) {
        FakeAuthorization authorization;
        FakeWorkspace workspace;
        Permissions permissions(authorization, workspace);
        authorization.statuses[MediaType::Audio] = row.status;
        authorization.answer = row.answer;
        EXPECT_EQ(await(permissions.request(MediaType::Audio)), row.granted);
        EXPECT_EQ(authorization.requests.size(), row.requests);
    }
}

} // namespace zivra::test

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
    Devices devices(catalog);
    EXPECT_EQ(devices.defaultMicrophone(), std::nullopt);
    int changes = 0;
    QObject::connect(&devices, &Devices::camerasChanged, [&] { ++changes; });
    QObject::connect(&devices, &Devices::microphonesChanged, [&] { ++changes; });
    catalog.cameras = {{"b", "B"}, {"a", "A"}};
    catalog.microphones = {{"m", "M"}};
    catalog.change();
    EXPECT_EQ(devices.cameras(), catalog.cameras);
    EXPECT_EQ(devices.defaultMicrophone(), catalog.microphones.front());
    EXPECT_EQ(changes, 2);
}

TEST(PermissionsTest, AsksOnlyWhatIsNotSettled)
{
    FakeAuthorization authorization;
    FakeWorkspace workspace;
    Permissions permissions(authorization, workspace);
    using Status = AuthorizationStatus;
    for (const auto &[status, answer, granted, asked] : {std::tuple{Status::Authorized, false, true, false},
                                                         {Status::NotDetermined, true, true, true},
                                                         {Status::NotDetermined, false, false, true},
                                                         {Status::Restricted, true, false, false},
                                                         {Status::Denied, true, false, false}}) {
        authorization.statuses[MediaType::Audio] = status;
        authorization.answer = answer;
        EXPECT_EQ(await(permissions.request(MediaType::Audio)), granted);
        EXPECT_EQ(std::exchange(authorization.requests, {}).size(), asked ? 1U : 0U);
    }
}

} // namespace zivra::test

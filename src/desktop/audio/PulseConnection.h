#pragma once

#include <memory>

namespace zivra::desktop {

class PulseServer;

/// One connection to the user's sound server, to be shared by whatever concerns sound. Returns before the
/// server has answered; never fails. Let go of the last reference on the main thread.
[[nodiscard]] std::shared_ptr<PulseServer> connectToPulseServer();

} // namespace zivra::desktop

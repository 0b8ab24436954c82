#include "desktop/process/TerminationSignals.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <csignal>
#include <cstdint>
#include <system_error>

namespace zivra::desktop {

namespace {

// What a signal handler may touch: written before the handlers are installed, read by them.
int signalEvent = -1;

extern "C" void noteSignal(int /*number*/)
{
    const std::uint64_t one = 1;
    [[maybe_unused]] const auto written = write(signalEvent, &one, sizeof one);
}

int openEvent()
{
    signalEvent = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (signalEvent < 0) {
        throw std::system_error(errno, std::generic_category(), "eventfd");
    }
    return signalEvent;
}

} // namespace

TerminationSignals::TerminationSignals(std::function<void()> onSignal)
    : m_notifier(openEvent(), QSocketNotifier::Read)
{
    connect(&m_notifier, &QSocketNotifier::activated, this, [onSignal = std::move(onSignal)] {
        std::uint64_t count = 0;
        if (read(signalEvent, &count, sizeof count) == sizeof count) {
            onSignal();
        }
    });
    std::signal(SIGINT, noteSignal);
    std::signal(SIGTERM, noteSignal);
}

TerminationSignals::~TerminationSignals()
{
    std::signal(SIGINT, SIG_DFL);
    std::signal(SIGTERM, SIG_DFL);
    m_notifier.setEnabled(false);
    close(signalEvent);
    signalEvent = -1;
}

} // namespace zivra::desktop

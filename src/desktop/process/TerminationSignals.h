#pragma once

#include <QObject>
#include <QSocketNotifier>

#include <functional>

namespace zivra::desktop {

/// Turns SIGINT and SIGTERM into a call on the main thread's event loop, so that work under way can
/// be brought to its end. One at a time in a process; the signals are ordinary again afterwards.
class TerminationSignals : public QObject {
    Q_OBJECT

public:
    /// `onSignal` is called once for each signal. Throws std::system_error.
    explicit TerminationSignals(std::function<void()> onSignal);
    ~TerminationSignals() override;

    TerminationSignals(const TerminationSignals &) = delete;
    TerminationSignals &operator=(const TerminationSignals &) = delete;

private:
    QSocketNotifier m_notifier;
};

} // namespace zivra::desktop

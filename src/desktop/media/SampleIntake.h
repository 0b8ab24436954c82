#pragma once

#include "platform/MediaSample.h"
#include "platform/SerialQueue.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <variant>
#include <vector>

namespace zivra::desktop {

/// The samples that wait between the callers of a movie writer and its thread, one lane a track. All
/// functions may be called from any thread unless they say otherwise. Knows nothing of encoding.
class SampleIntake {
public:
    using Clock = std::chrono::steady_clock;

    struct Sample {
        std::size_t lane;
        MediaSample sample;
    };
    struct Timeout {};
    /// All lanes were finished together, and nothing is left in them.
    struct Drained {};
    struct Stopped {};
    using Event = std::variant<Sample, Timeout, Drained, Stopped>;

    /// Before `open()`.
    std::size_t addLane(MediaType type);
    void setRealTime(std::size_t lane, bool realTime);
    [[nodiscard]] bool isRealTime(std::size_t lane) const;

    /// From now on samples are taken.
    void open();
    /// A real-time lane that is not ready refuses; any other makes its caller wait for room.
    bool append(std::size_t lane, const MediaSample &sample);
    [[nodiscard]] bool isReady(std::size_t lane) const;
    void notifyWhenReady(std::size_t lane, std::shared_ptr<SerialQueue> queue, std::function<void()> work);
    void finishLane(std::size_t lane);
    [[nodiscard]] bool isFinished(std::size_t lane) const;
    void finishAllLanes();
    /// Nothing is taken any more, and whoever waits is called.
    void fail();
    /// The lanes are finished, and `take` returns `Stopped` without giving out what waits.
    void stop();

    /// The sample to be written next, of one thread that takes. Lanes that are not real-time are kept
    /// together in time, so that their tracks lie next to each other in the file.
    [[nodiscard]] Event take(Clock::time_point deadline);

private:
    struct Request {
        std::shared_ptr<SerialQueue> queue; ///< null: nobody asked
        std::function<void()> work;
    };
    /// Requests that are over. Destroyed without the lock: that may wait for work of their queues, which may
    /// call back here.
    using Requests = std::vector<Request>;

    struct Lane {
        MediaType type = MediaType::Video;
        bool realTime = false;
        bool finished = false;
        bool ready = false;
        std::deque<MediaSample> waiting;
        double waitingSeconds = 0;
        std::size_t waitingBytes = 0;
        int blockedCallers = 0;
        MediaTime newest; ///< of all samples that ever came
        Request request;

        [[nodiscard]] bool hasRoom(double share) const;
    };

    void finish(Lane &lane, Requests &dropped);
    void becomeReady(Lane &lane);
    void account(Lane &lane, const MediaSample &sample, int sign);
    [[nodiscard]] Lane *nextLane();
    [[nodiscard]] bool runsAhead(const Lane &lane) const;
    [[nodiscard]] bool isDrained() const;

    mutable std::mutex m_mutex;
    std::condition_variable m_wake; ///< of the taking thread
    std::condition_variable m_room; ///< of callers that wait
    std::vector<Lane> m_lanes;
    bool m_open = false;
    bool m_closed = false;
    bool m_failed = false;
    bool m_stopped = false;
    std::optional<Clock::time_point> m_holdEnd; ///< when a lane that runs ahead goes on regardless
};

} // namespace zivra::desktop

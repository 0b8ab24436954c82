#include "desktop/media/SampleIntake.h"

#include <algorithm>
#include <utility>

namespace zivra::desktop {

namespace {

constexpr std::size_t kMaxRealTimePictures = 4;
constexpr double kMaxRealTimeSound = 2.0; // seconds
constexpr std::size_t kMaxSamples = 64;
constexpr std::size_t kMaxBytes = 32 << 20;
/// How far a lane may run ahead of one that has nothing to give, and how long the latter is waited for.
constexpr MediaTime kMaxLead = MediaTime::fromMilliseconds(500);
constexpr std::chrono::seconds kMaxHold{1};

std::size_t sizeOf(const MediaSample &sample)
{
    if (const auto picture = sample.videoFrame()) {
        return static_cast<std::size_t>(picture->width) * static_cast<std::size_t>(picture->height) * 3 / 2;
    }
    if (const auto block = sample.audioBlock()) {
        return block->samples.size() * sizeof(float);
    }
    const auto packet = sample.encodedPacket();
    return packet ? packet->data.size() : 0;
}

double secondsOf(const MediaSample &sample)
{
    const auto block = sample.audioBlock();
    return block ? static_cast<double>(block->frameCount()) / block->format.sampleRate : 0;
}

} // namespace

/// `share`: of the whole room, 0 to 1.
bool SampleIntake::Lane::hasRoom(double share) const
{
    const auto below = [share](auto value, auto limit) { return double(value) < double(limit) * share; };
    if (!realTime) {
        return below(waiting.size(), kMaxSamples) && below(waitingBytes, kMaxBytes);
    }
    return type == MediaType::Video ? below(waiting.size(), kMaxRealTimePictures)
                                    : below(waitingSeconds, kMaxRealTimeSound);
}

std::size_t SampleIntake::addLane(MediaType type)
{
    const std::lock_guard lock(m_mutex);
    m_lanes.emplace_back().type = type;
    return m_lanes.size() - 1;
}

void SampleIntake::setRealTime(std::size_t lane, bool realTime)
{
    const std::lock_guard lock(m_mutex);
    m_lanes.at(lane).realTime = realTime;
}

bool SampleIntake::isRealTime(std::size_t lane) const
{
    const std::lock_guard lock(m_mutex);
    return m_lanes.at(lane).realTime;
}

void SampleIntake::open()
{
    const std::lock_guard lock(m_mutex);
    m_open = true;
    for (auto &lane : m_lanes) {
        becomeReady(lane);
    }
}

bool SampleIntake::append(std::size_t number, const MediaSample &sample)
{
    std::unique_lock lock(m_mutex);
    auto &lane = m_lanes.at(number);
    const auto refuses = [&] { return !m_open || m_failed || lane.finished; };
    if (!lane.realTime && !refuses() && !lane.hasRoom(1)) {
        ++lane.blockedCallers;
        m_wake.notify_one();
        m_room.wait(lock, [&] { return refuses() || lane.hasRoom(1); });
        --lane.blockedCallers;
    }
    if (refuses() || !lane.hasRoom(1)) {
        return false;
    }
    lane.waiting.push_back(sample);
    lane.newest =
        lane.newest.isValid() ? std::max(lane.newest, sample.presentationTime()) : sample.presentationTime();
    account(lane, sample, 1);
    lane.ready = lane.hasRoom(1);
    m_wake.notify_one();
    return true;
}

void SampleIntake::account(Lane &lane, const MediaSample &sample, int sign)
{
    lane.waitingSeconds = lane.waiting.empty() ? 0 : lane.waitingSeconds + sign * secondsOf(sample);
    lane.waitingBytes = sign > 0 ? lane.waitingBytes + sizeOf(sample) : lane.waitingBytes - sizeOf(sample);
}

bool SampleIntake::isReady(std::size_t number) const
{
    const std::lock_guard lock(m_mutex);
    return m_lanes.at(number).ready;
}

void SampleIntake::notifyWhenReady(std::size_t number, std::shared_ptr<SerialQueue> queue,
                                   std::function<void()> work)
{
    const std::lock_guard lock(m_mutex);
    auto &lane = m_lanes.at(number);
    if (lane.finished) {
        return;
    }
    lane.request = {std::move(queue), std::move(work)};
    if (lane.ready) {
        lane.request.queue->async(lane.request.work);
    }
}

/// Called with the lock held: handing work to a queue returns at once.
void SampleIntake::becomeReady(Lane &lane)
{
    if (lane.finished || lane.ready) {
        return;
    }
    lane.ready = true;
    if (lane.request.queue) {
        lane.request.queue->async(lane.request.work);
    }
}

void SampleIntake::finishLane(std::size_t number)
{
    Requests dropped;
    const std::lock_guard lock(m_mutex);
    finish(m_lanes.at(number), dropped);
}

void SampleIntake::finishAllLanes()
{
    Requests dropped;
    const std::lock_guard lock(m_mutex);
    m_closed = true;
    for (auto &lane : m_lanes) {
        finish(lane, dropped);
    }
}

void SampleIntake::finish(Lane &lane, Requests &dropped)
{
    lane.finished = true;
    lane.ready = false;
    dropped.push_back(std::exchange(lane.request, {}));
    m_wake.notify_one();
    m_room.notify_all();
}

bool SampleIntake::isFinished(std::size_t lane) const
{
    const std::lock_guard lock(m_mutex);
    return m_lanes.at(lane).finished;
}

void SampleIntake::fail()
{
    std::vector<MediaSample> dropped;
    const std::lock_guard lock(m_mutex);
    m_failed = true;
    for (auto &lane : m_lanes) {
        std::move(lane.waiting.begin(), lane.waiting.end(), std::back_inserter(dropped));
        lane.waiting.clear();
        lane.ready = false;
        becomeReady(lane);
    }
    m_room.notify_all();
    m_wake.notify_one();
}

void SampleIntake::stop()
{
    Requests dropped;
    const std::lock_guard lock(m_mutex);
    m_stopped = true;
    for (auto &lane : m_lanes) {
        finish(lane, dropped);
    }
}

SampleIntake::Event SampleIntake::take(Clock::time_point deadline)
{
    std::unique_lock lock(m_mutex);
    for (;;) {
        if (m_stopped) {
            return Stopped{};
        }
        if (auto *lane = nextLane()) {
            Sample taken{static_cast<std::size_t>(lane - m_lanes.data()), std::move(lane->waiting.front())};
            lane->waiting.pop_front();
            account(*lane, taken.sample, -1);
            // A full lane that nobody paces is refilled in long runs, not sample by sample.
            if (m_open && lane->hasRoom(lane->realTime ? 1 : 0.5)) {
                becomeReady(*lane);
            }
            if (lane->blockedCallers > 0) {
                m_room.notify_all();
            }
            return taken;
        }
        if (isDrained()) {
            return Drained{};
        }
        if (Clock::now() >= deadline) {
            return Timeout{};
        }
        const bool held = m_holdEnd && *m_holdEnd > Clock::now();
        m_wake.wait_until(lock, held ? std::min(*m_holdEnd, deadline) : deadline);
    }
}

/// The lane with the earliest sample, or none while there is nothing that should be written yet.
SampleIntake::Lane *SampleIntake::nextLane()
{
    Lane *earliest = nullptr;
    for (auto &lane : m_lanes) {
        if (!lane.waiting.empty() &&
            (earliest == nullptr ||
             lane.waiting.front().presentationTime() < earliest->waiting.front().presentationTime())) {
            earliest = &lane;
        }
    }
    if (earliest == nullptr) {
        return nullptr;
    }
    if (!runsAhead(*earliest)) {
        m_holdEnd.reset();
        return earliest;
    }
    const auto now = Clock::now();
    if (!m_holdEnd) {
        m_holdEnd = now + kMaxHold;
    }
    return now >= *m_holdEnd ? earliest : nullptr;
}

bool SampleIntake::runsAhead(const Lane &lane) const
{
    if (lane.realTime || lane.blockedCallers > 0) {
        return false;
    }
    return std::any_of(m_lanes.begin(), m_lanes.end(), [&lane](const Lane &other) {
        return &other != &lane && !other.finished && !other.realTime && other.waiting.empty() &&
               (!other.newest.isValid() || lane.waiting.front().presentationTime() > other.newest + kMaxLead);
    });
}

bool SampleIntake::isDrained() const
{
    return m_closed &&
           std::all_of(m_lanes.begin(), m_lanes.end(), [](const Lane &lane) { return lane.waiting.empty(); });
}

} // namespace zivra::desktop

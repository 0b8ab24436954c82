#include "desktop/audio/PulseSoundSource.h"

#include <algorithm>
#include <mutex>
#include <utility>

namespace zivra::desktop {

namespace {

/// Longer than any healthy input takes to deliver; one that is slower earns itself more.
constexpr auto kLeastAllowance = MediaTime::fromMilliseconds(250);
constexpr auto kGreatestAllowance = MediaTime::fromMilliseconds(3000);
constexpr auto kAllowanceMargin = MediaTime::fromMilliseconds(100);
constexpr auto kRetryInterval = MediaTime::fromMilliseconds(500);
constexpr auto kSilenceInterval = MediaTime::fromMilliseconds(20);
/// A timer that is later than this met a thread that was held up, and sound may be waiting.
constexpr auto kHeldUp = MediaTime::fromMilliseconds(100);
constexpr auto kReconnectInterval = std::chrono::seconds(1);
constexpr AudioFormat kFormatOfNothing{.sampleRate = 48000, .channels = 1};

MediaTime now()
{
    const auto sinceBoot = PulseServer::Clock::now().time_since_epoch();
    return MediaTime::fromNanoseconds(std::chrono::nanoseconds(sinceBoot).count());
}

} // namespace

PulseSoundSource::PulseSoundSource(std::shared_ptr<PulseServer> server, PulseSoundChoice choice)
    : m_server(std::move(server)),
      m_choice(std::move(choice)),
      m_allowance(kLeastAllowance)
{
}

PulseSoundSource::~PulseSoundSource()
{
    endTake();
}

QFuture<void> PulseSoundSource::start(SampleHandler onSample, EndHandler /*onEnd*/)
{
    const std::unique_lock held(*m_server);
    m_onSample = std::move(onSample);
    m_startTime = now();
    m_retryTime = m_startTime;
    m_server->addListener(*this);
    m_timer.emplace(
        m_server->loopApi(), [](void *self) { static_cast<PulseSoundSource *>(self)->tick(); }, this);
    m_server->connectIfDown({});
    recordWhatIsChosen();
    armTimer();
    return QtFuture::makeReadyFuture();
}

QFuture<void> PulseSoundSource::stop()
{
    endTake();
    return QtFuture::makeReadyFuture();
}

void PulseSoundSource::endTake()
{
    const std::unique_lock held(*m_server);
    m_server->removeListener(*this);
    m_timer.reset();
    m_record.reset();
    m_sound.reset();
    m_onSample = nullptr;
}

void PulseSoundSource::serverChanged()
{
    if (m_server->devices() == nullptr) {
        m_record.reset();
    } else {
        recordWhatIsChosen();
    }
}

void PulseSoundSource::tick()
{
    dropLostRecord();
    if (!m_record && now() >= m_retryTime) {
        m_server->connectIfDown(kReconnectInterval);
        recordWhatIsChosen();
    }
    if (now() < m_timerDue + kHeldUp) {
        fillWithSilence();
    }
    armTimer();
}

void PulseSoundSource::armTimer()
{
    const auto current = now();
    const bool isStarted = m_sound && m_sound->end().isValid();
    const auto silenceDue = (isStarted ? m_sound->end() : m_startTime) + m_allowance + kSilenceInterval;
    m_timerDue = std::clamp(silenceDue, current + kSilenceInterval, current + m_allowance);
    m_timer->arm(std::chrono::microseconds((m_timerDue - current).nanoseconds() / 1000));
}

void PulseSoundSource::fillWithSilence()
{
    const auto until = now() - m_allowance;
    if (until < m_startTime) {
        return;
    }
    settleFormat(kFormatOfNothing);
    if (!m_sound->end().isValid()) {
        m_sound->begin(m_startTime);
    }
    const auto before = m_sound->end();
    m_sound->fill(until);
    if (m_record && m_sound->end() > before) {
        m_record->restartClock();
    }
}

void PulseSoundSource::recordWhatIsChosen()
{
    dropLostRecord();
    const auto *devices = m_server->devices();
    const auto *input = devices != nullptr ? m_choice.input(*devices) : nullptr;
    if (input == nullptr) {
        m_record.reset();
    } else if (m_record ? m_record->inputName() != input->name
                        : m_lostInput != input->name || now() >= m_retryTime) {
        record(*input);
    }
}

void PulseSoundSource::record(const PulseInput &input)
{
    if (!m_sound) {
        m_channelMap = input.channelMap;
        settleFormat({.sampleRate = static_cast<double>(input.sampleSpec.rate),
                      .channels = input.sampleSpec.channels});
    }
    m_record.reset();
    m_record = std::make_unique<PulseRecordStream>(
        m_server->context(), input.name, m_sound->format(), m_channelMap, m_choice.title.c_str(),
        [this](MediaTime start, const float *samples, std::size_t frames) {
            receive(start, samples, frames);
        });
}

void PulseSoundSource::receive(MediaTime start, const float *samples, std::size_t frames)
{
    const auto lateness = now() - start;
    m_allowance = std::clamp(lateness + kAllowanceMargin, m_allowance, kGreatestAllowance);
    m_sound->deliver(start, samples, frames);
}

void PulseSoundSource::dropLostRecord()
{
    if (m_record && m_record->isLost()) {
        m_lostInput = m_record->inputName();
        m_retryTime = now() + kRetryInterval;
        m_record.reset();
    }
}

void PulseSoundSource::settleFormat(const AudioFormat &format)
{
    if (m_sound) {
        return;
    }
    const auto settled = m_choice.format.value_or(format);
    const auto channels = static_cast<std::uint8_t>(settled.channels);
    if (m_channelMap.channels != channels) {
        pa_channel_map_init_extend(&m_channelMap, channels, PA_CHANNEL_MAP_DEFAULT);
    }
    m_sound.emplace(settled, m_onSample);
}

} // namespace zivra::desktop

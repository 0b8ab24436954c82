#include "desktop/media/RateControl.h"

#include <algorithm>
#include <cmath>

namespace zivra::desktop {

namespace {

constexpr double kStepsPerHalving = 6;
/// For how long the bits of a still screen, or of a key frame, may be spent before or after, in seconds.
constexpr double kHorizon = 2;
constexpr double kCredit = 1;
constexpr int kRefreshInterval = 15; // pictures
/// The finest quantisers that make a visible difference, as measured on text and on photographs.
constexpr double kFinestOrdinary = 7;
constexpr double kFinestRefresh = 5;
constexpr double kFinestKey = 4;
/// Nothing is known yet: a middling screen's key frame takes half a second's bits.
constexpr double kFirstKey = 17;
constexpr double kFirstOrdinary = 24;
constexpr double kLeastFiner = 3;
constexpr double kMostFiner = 12;
/// A picture that changes less is not told from one that does not change.
constexpr double kLeastShare = 1e-4;

double bitsFactor(double quantiser)
{
    return std::exp2(-quantiser / kStepsPerHalving);
}

} // namespace

void RateControl::Complexity::note(double bits, int quantiser, double weight)
{
    const double value = bits / bitsFactor(quantiser);
    m_value = isKnown() ? m_value + weight * (value - m_value) : value;
}

RateControl::RateControl(std::int64_t bitsPerSecond, int keyFrameInterval)
    : m_bitsPerSecond(static_cast<double>(bitsPerSecond)),
      m_keyFrameInterval(keyFrameInterval),
      m_interval(1.0 / 30),
      m_lastOrdinary(kFirstOrdinary)
{
}

int RateControl::quantiser(const Picture &picture)
{
    passTime(picture.time);
    m_kind = kindOf(picture);
    m_changedShare = picture.changedShare;
    double chosen = 0;
    if (m_kind == Kind::Key && !m_key.isKnown()) {
        chosen = kFirstKey;
    } else if (m_kind == Kind::Refinement) {
        chosen = kFinestRefresh;
    } else {
        constexpr double kMostDown = 2;
        const double ordinary = std::max(ordinaryQuantiser(picture), m_lastOrdinary - kMostDown);
        m_lastOrdinary = std::clamp(ordinary, kFinestOrdinary, double(kCoarsest));
        const double finest = m_kind == Kind::Key       ? kFinestKey
                              : m_kind == Kind::Refresh ? kFinestRefresh
                                                        : kFinestOrdinary;
        chosen = std::max(finest, m_lastOrdinary - finerBy(m_kind));
    }
    m_quantiser = std::clamp(static_cast<int>(std::lround(chosen)), kFinest, kCoarsest);
    return m_quantiser;
}

void RateControl::passTime(double time)
{
    if (m_time >= 0) {
        const double passed = std::max(0.0, time - m_time);
        m_debt = std::max(m_debt - passed * m_bitsPerSecond, -kCredit * m_bitsPerSecond);
        constexpr double kWeight = 0.1;
        m_interval += kWeight * (std::clamp(passed, 1.0 / 60, 1.0) - m_interval);
    }
    m_time = time;
}

RateControl::Kind RateControl::kindOf(const Picture &picture) const
{
    if (picture.isKey) {
        return Kind::Key;
    }
    if (picture.changedShare < kLeastShare) {
        return m_hasCoarseParts && m_debt <= 0 ? Kind::Refinement : Kind::Ordinary;
    }
    return m_sinceRefresh >= kRefreshInterval ? Kind::Refresh : Kind::Ordinary;
}

/// In steps of the quantiser, compared with the ordinary pictures around. What a fine picture gets lives on
/// in those that take most of themselves from it, and is lost where everything is new.
double RateControl::finerBy(Kind kind) const
{
    if (kind == Kind::Ordinary) {
        return 0;
    }
    double steps = kLeastFiner;
    if (m_key.isKnown() && m_ordinary.isKnown()) {
        constexpr double kStepsPerDoubling = 6;
        steps = std::clamp(kStepsPerDoubling * std::log2(m_key.value() / m_ordinary.value()), kLeastFiner,
                           kMostFiner);
    }
    constexpr double kRefreshPart = 2.0 / 3;
    return kind == Kind::Key ? steps : steps * kRefreshPart;
}

/// What spends the bits of the horizon if all of it is like the pictures of late, or like this one.
double RateControl::ordinaryQuantiser(const Picture &picture) const
{
    if (!m_ordinary.isKnown()) {
        return kFirstOrdinary;
    }
    constexpr double kTrustInThis = 0.5;
    const double ordinary = std::max(m_ordinary.value(), kTrustInThis * m_wholeChange.value() *
                                                             (picture.isKey ? 0 : picture.changedShare));
    const double count = kHorizon / m_interval;
    const double refreshes = count / kRefreshInterval;
    const double keys = count / m_keyFrameInterval;
    const double cost = ordinary * (count - refreshes - keys) +
                        ordinary * refreshes / bitsFactor(finerBy(Kind::Refresh)) +
                        m_key.value() * keys / bitsFactor(finerBy(Kind::Key));
    const double all = kHorizon * m_bitsPerSecond;
    const double left = std::max(all - m_debt, all * 0.1);
    return kStepsPerHalving * std::log2(cost / left);
}

void RateControl::noteSize(std::int64_t size)
{
    const auto bits = static_cast<double>(size);
    m_debt += bits;
    if (m_kind == Kind::Key) {
        constexpr double kWeight = 0.5;
        m_key.note(bits, m_quantiser, kWeight);
    } else if (m_kind == Kind::Ordinary) {
        constexpr double kWeight = 0.15;
        m_ordinary.note(bits, m_quantiser, kWeight);
        if (m_changedShare > kLeastShare) {
            m_wholeChange.note(bits / m_changedShare, m_quantiser, kWeight);
        }
    }
    m_sinceRefresh = m_kind == Kind::Ordinary ? m_sinceRefresh + 1 : 0;
    const bool isCoarse = m_quantiser > kFinestRefresh;
    const bool isAllNew = m_kind != Kind::Ordinary;
    m_hasCoarseParts = isAllNew ? isCoarse : m_hasCoarseParts || (isCoarse && m_changedShare > kLeastShare);
}

} // namespace zivra::desktop

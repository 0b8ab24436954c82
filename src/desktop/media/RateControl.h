#pragma once

#include <cstdint>

namespace zivra::desktop {

/// Chooses the quantisers of an H.264 stream of screen content, one picture at a time and without looking
/// ahead, so that
/// - what stands still keeps the quality it once got and costs nothing more: key frames, and every half
///   second a refreshing picture, are coded finer than those in between, by more where much of a picture
///   is taken over from the one before;
/// - a picture without a change refines what is still coarse, once, when there are bits for it;
/// - the average stays within the bit rate. Bits that a still screen leaves over are not saved up for more
///   than a second: the rate of what moves stays bounded.
///
/// The model: the bits of a picture halve with every 6 steps of the quantiser, as its step size doubles with
/// them (ITU-T H.264, 8.5.8). What it gets wrong is made up for by the bits spent so far.
class RateControl {
public:
    struct Picture {
        double time;         ///< seconds
        bool isKey;          ///< coded without the pictures before it
        double changedShare; ///< of the area, since the picture before, 0 to 1
    };

    /// The quantisers are within these.
    static constexpr int kFinest = 4;
    static constexpr int kCoarsest = 50;

    RateControl(std::int64_t bitsPerSecond, int keyFrameInterval);

    /// The quantiser for the next picture. Times rise.
    [[nodiscard]] int quantiser(const Picture &picture);
    /// What came of it.
    void noteSize(std::int64_t bits);

private:
    /// What a picture of a kind costs, in bits at quantiser 0.
    class Complexity {
    public:
        void note(double bits, int quantiser, double weight);
        [[nodiscard]] double value() const { return m_value; }
        [[nodiscard]] bool isKnown() const { return m_value > 0; }

    private:
        double m_value = 0;
    };

    enum class Kind { Key, Refresh, Refinement, Ordinary };

    void passTime(double time);
    [[nodiscard]] Kind kindOf(const Picture &picture) const;
    [[nodiscard]] double finerBy(Kind kind) const;
    [[nodiscard]] double ordinaryQuantiser(const Picture &picture) const;

    double m_bitsPerSecond;
    int m_keyFrameInterval;
    double m_time = -1; ///< of the newest picture
    double m_interval;  ///< average between pictures, seconds
    double m_debt = 0;  ///< bits spent beyond the rate; below zero: left over
    Complexity m_key;
    Complexity m_ordinary;    ///< of a picture that changes as much as those of late
    Complexity m_wholeChange; ///< of a picture that changes everywhere
    int m_sinceRefresh = 0;   ///< pictures
    bool m_hasCoarseParts = false;
    double m_lastOrdinary = 0; ///< quantiser

    Kind m_kind = Kind::Key; ///< of the newest picture
    int m_quantiser = 0;
    double m_changedShare = 1;
};

} // namespace zivra::desktop

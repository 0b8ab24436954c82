#include "desktop/media/SampleTable.h"

#include "desktop/media/MovieBoxes.h"

#include <algorithm>
#include <utility>

namespace zivra::desktop {

namespace {

/// Samples of a track that lie one after the other in the file.
struct Chunk {
    std::int64_t offset;
    std::uint32_t count;
};

std::vector<Chunk> chunksOf(const std::vector<IndexedSample> &samples)
{
    std::vector<Chunk> chunks;
    std::int64_t end = -1;
    for (const IndexedSample &sample : samples) {
        if (sample.offset != end) {
            chunks.push_back({sample.offset, 0});
        }
        ++chunks.back().count;
        end = sample.offset + sample.size;
    }
    return chunks;
}

} // namespace

SampleTable::SampleTable(std::vector<IndexedSample> samples) : m_samples(std::move(samples))
{
    useExactTimes();
}

/// Pictures that are shown in the order they are decoded in need no decoding times of their own. Fragments
/// have such where a picture stayed longer than could be known when it was written.
void SampleTable::useExactTimes()
{
    const std::int64_t end = m_samples.back().decodingTime + m_samples.back().duration;
    const bool isInOrder =
        std::ranges::is_sorted(m_samples, std::less_equal(), &IndexedSample::presentationTime);
    for (IndexedSample &sample : m_samples) {
        sample.decodingTime = isInOrder ? sample.presentationTime : sample.decodingTime;
    }
    for (std::size_t index = 0; index + 1 < m_samples.size(); ++index) {
        m_samples[index].duration =
            static_cast<std::uint32_t>(m_samples[index + 1].decodingTime - m_samples[index].decodingTime);
    }
    IndexedSample &last = m_samples.back();
    last.duration = static_cast<std::uint32_t>(std::max<std::int64_t>(1, end - last.decodingTime));
}

std::int64_t SampleTable::firstPresentation() const
{
    const auto shown = [](const IndexedSample &sample) {
        return std::pair(sample.isPriming, sample.presentationTime);
    };
    const auto first = std::ranges::min_element(m_samples, {}, shown);
    return first->presentationTime - m_samples.front().decodingTime;
}

std::int64_t SampleTable::shownDuration() const
{
    const auto end = [](const IndexedSample &sample) { return sample.presentationTime + sample.duration; };
    const auto last = std::ranges::max_element(m_samples, {}, end);
    return end(*last) - m_samples.front().decodingTime - firstPresentation();
}

std::int64_t SampleTable::mediaDuration() const
{
    return m_samples.back().decodingTime + m_samples.back().duration - m_samples.front().decodingTime;
}

template <typename Value>
std::vector<SampleTable::Run> SampleTable::runs(Value value) const
{
    std::vector<Run> all;
    for (const IndexedSample &sample : m_samples) {
        const auto one = static_cast<std::int64_t>(value(sample));
        if (all.empty() || all.back().value != one) {
            all.push_back({0, one});
        }
        ++all.back().count;
    }
    return all;
}

void SampleTable::write(BoxWriter &writer) const
{
    writeTimes(writer);
    writeKeyFrames(writer);
    writePlaces(writer);
}

void SampleTable::writeTimes(BoxWriter &writer) const
{
    const auto writeRuns = [&](std::uint32_t name, std::uint32_t version, const std::vector<Run> &all) {
        writer.box(name, [&] {
            writer.u32(version << 24);
            writer.u32(all.size());
            for (const Run &run : all) {
                writer.u32(run.count);
                writer.u32(static_cast<std::uint64_t>(run.value));
            }
        });
    };
    writeRuns(boxName("stts"), 0, runs([](const IndexedSample &sample) { return sample.duration; }));
    const auto delays =
        runs([](const IndexedSample &sample) { return sample.presentationTime - sample.decodingTime; });
    if (delays.size() > 1 || delays.front().value != 0) {
        writeRuns(boxName("ctts"), 1, delays);
    }
}

void SampleTable::writeKeyFrames(BoxWriter &writer) const
{
    if (std::ranges::all_of(m_samples, &IndexedSample::isKeyFrame)) {
        return; // without the table all are
    }
    writer.box(boxName("stss"), [&] {
        writer.u32(0);
        writer.u32(
            static_cast<std::uint64_t>(std::ranges::count(m_samples, true, &IndexedSample::isKeyFrame)));
        for (std::size_t index = 0; index < m_samples.size(); ++index) {
            if (m_samples[index].isKeyFrame) {
                writer.u32(index + 1);
            }
        }
    });
}

void SampleTable::writePlaces(BoxWriter &writer) const
{
    const auto chunks = chunksOf(m_samples);
    writer.box(boxName("stsc"), [&] {
        std::vector<std::pair<std::size_t, std::uint32_t>> changes; // first chunk from 1, samples in each
        for (std::size_t index = 0; index < chunks.size(); ++index) {
            if (changes.empty() || changes.back().second != chunks[index].count) {
                changes.emplace_back(index + 1, chunks[index].count);
            }
        }
        writer.u32(0);
        writer.u32(changes.size());
        for (const auto &[first, count] : changes) {
            writer.u32(first);
            writer.u32(count);
            writer.u32(1); // the sample description
        }
    });
    writer.box(boxName("stsz"), [&] {
        writer.u32(0);
        writer.u32(0); // of different sizes
        writer.u32(m_samples.size());
        for (const IndexedSample &sample : m_samples) {
            writer.u32(sample.size);
        }
    });
    const bool isFar = chunks.back().offset > std::int64_t{UINT32_MAX};
    writer.box(isFar ? boxName("co64") : boxName("stco"), [&] {
        writer.u32(0);
        writer.u32(chunks.size());
        for (const Chunk &chunk : chunks) {
            writer.number(static_cast<std::uint64_t>(chunk.offset), isFar ? 8 : 4);
        }
    });
}

} // namespace zivra::desktop

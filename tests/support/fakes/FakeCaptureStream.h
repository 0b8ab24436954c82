#pragma once

#include "platform/CaptureStream.h"
#include "support/fakes/ScriptedResult.h"

#include <map>
#include <utility>

namespace zivra::test {

/// Makes streams that deliver what the test says. Tells of the latest one.
class FakeCaptureStreams final : public CaptureStreamFactory {
public:
    ContentFilter filter;
    CaptureConfiguration configuration;
    int alive = 0;
    int stops = 0;
    ScriptedResult<void> starting;
    ScriptedResult<void> stopping;

    std::unique_ptr<CaptureStream> makeStream(const ContentFilter &streamFilter,
                                              const CaptureConfiguration &streamConfiguration,
                                              CaptureStream::StopHandler onStop) override
    {
        filter = streamFilter;
        configuration = streamConfiguration;
        m_handlers.clear();
        m_onStop = std::move(onStop);
        return std::make_unique<Stream>(*this);
    }

    /// Hands a sample to the output's queue. An output that was not added delivers nothing.
    void deliver(CaptureOutput output, const MediaSample &sample) const
    {
        const auto found = m_handlers.find(output);
        if (found != m_handlers.end()) {
            found->second.first->async(
                [handler = found->second.second, sample, output] { handler(sample, output); });
        }
    }
    /// The capture dies on its own.
    void die(const std::exception_ptr &error) const { m_onStop(error); }

private:
    class Stream final : public CaptureStream {
    public:
        explicit Stream(FakeCaptureStreams &factory) : m_factory(factory) { ++m_factory.alive; }
        ~Stream() override { --m_factory.alive; }
        Stream(const Stream &) = delete;
        Stream &operator=(const Stream &) = delete;

        void addOutput(CaptureOutput type, std::shared_ptr<SerialQueue> queue, SampleHandler handler) override
        {
            m_factory.m_handlers[type] = {std::move(queue), std::move(handler)};
        }
        QFuture<void> startCapture() override { return m_factory.starting.answer(); }
        QFuture<void> stopCapture() override
        {
            ++m_factory.stops;
            return m_factory.stopping.answer();
        }

    private:
        FakeCaptureStreams &m_factory;
    };

    std::map<CaptureOutput, std::pair<std::shared_ptr<SerialQueue>, CaptureStream::SampleHandler>> m_handlers;
    CaptureStream::StopHandler m_onStop;
};

} // namespace zivra::test

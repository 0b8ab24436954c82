#pragma once

#include "platform/MovieAsset.h"

#include <exception>
#include <mutex>

namespace zivra::desktop {

/// How a reader and its outputs stand. May be used from any thread.
class ReaderProgress {
public:
    void start(std::size_t outputs);
    void outputEnded();
    void fail(std::exception_ptr error);

    [[nodiscard]] MovieReader::Status status() const;
    [[nodiscard]] std::exception_ptr error() const;

private:
    mutable std::mutex m_mutex;
    MovieReader::Status m_status = MovieReader::Status::Unknown;
    std::exception_ptr m_error;
    std::size_t m_outputsLeft = 0;
};

/// What every output does: it has its own view of the file, so that outputs need nothing of each other,
/// ends once, and reports errors instead of throwing them.
class ReaderOutput : public MovieReaderOutput {
public:
    explicit ReaderOutput(ReaderProgress &progress) : m_progress(progress) {}

    [[nodiscard]] std::optional<MediaSample> copyNextSample() final;

    /// Throws `PlatformError`.
    virtual void open() = 0;

protected:
    /// Nothing at the true end; throws `PlatformError`.
    virtual std::optional<MediaSample> readNext() = 0;

private:
    ReaderProgress &m_progress;
    bool m_ended = false;
};

} // namespace zivra::desktop

#include "desktop/media/ReaderOutput.h"

namespace zivra::desktop {

void ReaderProgress::start(std::size_t outputs)
{
    const std::lock_guard lock(m_mutex);
    m_outputsLeft = outputs;
    m_status = outputs > 0 ? MovieReader::Status::Reading : MovieReader::Status::Completed;
}

void ReaderProgress::outputEnded()
{
    const std::lock_guard lock(m_mutex);
    --m_outputsLeft;
    if (m_outputsLeft == 0 && m_status == MovieReader::Status::Reading) {
        m_status = MovieReader::Status::Completed;
    }
}

void ReaderProgress::fail(std::exception_ptr error)
{
    const std::lock_guard lock(m_mutex);
    if (m_status != MovieReader::Status::Failed) {
        m_status = MovieReader::Status::Failed;
        m_error = std::move(error);
    }
}

MovieReader::Status ReaderProgress::status() const
{
    const std::lock_guard lock(m_mutex);
    return m_status;
}

std::exception_ptr ReaderProgress::error() const
{
    const std::lock_guard lock(m_mutex);
    return m_error;
}

std::optional<MediaSample> ReaderOutput::copyNextSample()
{
    if (m_ended || m_progress.status() != MovieReader::Status::Reading) {
        return std::nullopt;
    }
    try {
        if (auto sample = readNext()) {
            return sample;
        }
        m_progress.outputEnded();
    } catch (...) {
        m_progress.fail(std::current_exception());
    }
    m_ended = true;
    return std::nullopt;
}

} // namespace zivra::desktop

#pragma once

#include "platform/CaptureSources.h"
#include "platform/PlatformError.h"

#include <QStringList>

#include <map>
#include <mutex>
#include <utility>

namespace zivra::test {

/// Cameras and microphones in the test's words. The log has each that is opened and closed.
class FakeSources final : public CameraSourceFactory, public SoundSourceFactory {
public:
    QString missing; ///< this camera cannot be made
    QString broken;  ///< this one cannot be started

    std::unique_ptr<CaptureSource> makeCameraSource(const QString &deviceID, QSize size) override
    {
        if (deviceID == missing) {
            throw PlatformError(QStringLiteral("There is none."));
        }
        note(QStringLiteral("+%1 %2").arg(deviceID).arg(size.height()));
        return std::make_unique<Source>(*this, deviceID);
    }
    std::unique_ptr<CaptureSource> makeSystemSoundSource(const AudioFormat &) override { return nullptr; }
    std::unique_ptr<CaptureSource> makeMicrophoneSource(const std::optional<QString> &deviceID) override
    {
        note("+" + deviceID.value());
        return std::make_unique<Source>(*this, *deviceID);
    }

    /// By the source of that name, if it is open.
    void deliver(const QString &name, const MediaSample &sample)
    {
        const std::lock_guard lock(m_mutex);
        if (const auto source = m_open.find(name); source != m_open.end()) {
            source->second->onSample(sample);
        }
    }
    void unplug(const QString &name)
    {
        const std::lock_guard lock(m_mutex);
        m_open.at(name)->onEnd(nullptr);
    }
    QStringList takeLog()
    {
        const std::lock_guard lock(m_mutex);
        return std::exchange(m_log, {});
    }
    bool isOpen(const QString &name)
    {
        const std::lock_guard lock(m_mutex);
        return m_open.contains(name);
    }

private:
    struct Source final : CaptureSource {
        Source(FakeSources &all, QString itsName) : owner(all), name(std::move(itsName)) {}
        ~Source() override
        {
            owner.note("-" + name);
            const std::lock_guard lock(owner.m_mutex);
            owner.m_open.erase(name);
        }
        QFuture<void> start(SampleHandler sampleHandler, EndHandler endHandler) override
        {
            if (name == owner.broken) {
                return QtFuture::makeExceptionalFuture(std::make_exception_ptr(PlatformError("In use.")));
            }
            const std::lock_guard lock(owner.m_mutex);
            onSample = std::move(sampleHandler);
            onEnd = std::move(endHandler);
            owner.m_open[name] = this;
            return QtFuture::makeReadyFuture();
        }
        QFuture<void> stop() override { return QtFuture::makeReadyFuture(); }

        FakeSources &owner;
        QString name;
        SampleHandler onSample;
        EndHandler onEnd;
    };

    void note(const QString &entry)
    {
        const std::lock_guard lock(m_mutex);
        m_log << entry;
    }

    std::mutex m_mutex; ///< of the two below: the test and the queue are different threads
    QStringList m_log;
    std::map<QString, Source *> m_open;
};

} // namespace zivra::test

#pragma once

#include "platform/FileSystem.h"
#include "platform/MovieAsset.h"
#include "platform/MovieWriter.h"
#include "platform/SerialQueue.h"

#include <QCoroTask>
#include <QFuture>
#include <QUrl>

#include <memory>

namespace zivra {

/// Mixes the audio tracks of a movie file into one. Video is copied as it is.
class AudioMerger {
public:
    AudioMerger() = delete;

    /// Nothing happens to a file with fewer than two audio tracks. One that was mixed while it was recorded
    /// turns to that mix. Any other is replaced, in one step at the very end, by one with a single
    /// stereo track; a failure is thrown and leaves the file as it was. Called on the main thread, which it
    /// never blocks: reading, decoding and writing run on queues made for the purpose. The services must
    /// outlive the task.
    [[nodiscard]] static QCoro::Task<>
    mergeAudioTracksIfNeeded(QUrl url, MovieServices &movies, FileSystem &files, SerialQueueFactory &queues);

    /// Copies one stream to its end, on `queue`, as fast as `input` takes it. Done, never with an
    /// error, when the output has no more samples or `writer`, which `input` belongs to, has failed: whether
    /// the copy is whole is told by the reader's and the writer's status. All three must live until then.
    [[nodiscard]] static QFuture<void> pump(MovieReaderOutput &output, MovieWriterInput &input,
                                            const MovieWriter &writer,
                                            const std::shared_ptr<SerialQueue> &queue);
};

} // namespace zivra

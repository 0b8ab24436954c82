#pragma once

#include "SceneTime.h"

#include <atomic>
#include <string>
#include <thread>

namespace zivra::scene {

/// Plays a tone, with a short burst of a higher one at each whole second of the scene. Runs on a thread of
/// its own until destroyed; without a sound server it is silent.
class Sound {
public:
    /// `hertz` 0: the bursts alone. An empty sink is the default one.
    Sound(const SceneTime &time, double hertz, const std::string &sink);
    ~Sound();
    Sound(const Sound &) = delete;
    Sound &operator=(const Sound &) = delete;

private:
    void play();

    SceneTime m_time;
    double m_hertz;
    std::string m_sink;
    std::atomic<bool> m_ended = false;
    std::thread m_thread;
};

} // namespace zivra::scene

#include "Picture.h"
#include "SceneTime.h"
#include "Sound.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <optional>
#include <string>
#include <thread>

namespace {

volatile std::sig_atomic_t ended = 0;

struct Options {
    zivra::scene::PictureOptions picture;
    int framesPerSecond = 30;
    double seconds = 0; // 0: until ended
    std::optional<double> tone;
    std::string sink;
    bool onTheSecond = false; ///< starts at a whole second of the monotonic clock
};

constexpr auto kUsage =
    "Usage: zivra-scene [--geometry WxH+X+Y] [--override-redirect] [--small | --still] [--fps N]\n"
    "                   [--title T] [--colour RRGGBB] [--tone HZ] [--sink NAME] [--seconds N]\n"
    "                   [--on-the-second]\n";

bool readOption(Options &options, const std::string &name, const char *value)
{
    if (name == "--geometry") {
        return std::sscanf(value, "%dx%d+%d+%d", &options.picture.width, &options.picture.height,
                           &options.picture.x, &options.picture.y) == 4;
    }
    if (name == "--fps") {
        options.framesPerSecond = std::atoi(value);
        return options.framesPerSecond > 0;
    }
    if (name == "--title") {
        options.picture.title = value;
    } else if (name == "--colour") {
        options.picture.colour = static_cast<unsigned>(std::strtoul(value, nullptr, 16));
    } else if (name == "--tone") {
        options.tone = std::atof(value);
    } else if (name == "--sink") {
        options.sink = value;
    } else if (name == "--seconds") {
        options.seconds = std::atof(value);
    } else {
        return false;
    }
    return true;
}

bool readOptions(Options &options, int argc, char **argv)
{
    for (int index = 1; index < argc; ++index) {
        const std::string name = argv[index];
        if (name == "--override-redirect") {
            options.picture.overrideRedirect = true;
        } else if (name == "--on-the-second") {
            options.onTheSecond = true;
        } else if (name == "--small") {
            options.picture.motion = zivra::scene::Motion::Small;
        } else if (name == "--still") {
            options.picture.motion = zivra::scene::Motion::Still;
        } else if (++index >= argc || !readOption(options, name, argv[index])) {
            return false;
        }
    }
    return true;
}

void run(const Options &options)
{
    using namespace zivra::scene;
    Picture picture(options.picture);
    const auto now = Clock::now();
    const SceneTime time{options.onTheSecond ? std::chrono::ceil<std::chrono::seconds>(now) : now,
                         options.framesPerSecond};
    std::optional<Sound> sound;
    if (options.tone) {
        sound.emplace(time, *options.tone, options.sink);
    }
    const bool isStill = options.picture.motion == Motion::Still;
    for (int frame = 0; ended == 0 && picture.isAlive(); ++frame) {
        std::this_thread::sleep_until(time.timeOf(frame));
        if (options.seconds > 0 &&
            Clock::now() - time.start > std::chrono::duration<double>(options.seconds)) {
            return;
        }
        // A still picture is drawn for a second, until it is surely on the screen.
        if (!isStill || frame <= options.framesPerSecond) {
            picture.draw(isStill ? 0 : frame, !isStill && frame % options.framesPerSecond == 0);
        }
    }
}

} // namespace

int main(int argc, char **argv)
{
    Options options;
    if (!readOptions(options, argc, argv)) {
        std::fputs(kUsage, stderr);
        return 2;
    }
    const auto end = [](int) { ended = 1; };
    std::signal(SIGINT, end);
    std::signal(SIGTERM, end);
    try {
        run(options);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "zivra-scene: %s\n", error.what());
        return 1;
    }
    return 0;
}

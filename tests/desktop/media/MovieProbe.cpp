#include "desktop/media/MovieProbe.h"

#include "desktop/media/FFmpegHandles.h"

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <numbers>

extern "C" {
#include <libavutil/pixdesc.h>
}

namespace zivra::test {

using namespace zivra::desktop;

namespace {

int numberOf(const AVFrame &frame)
{
    int number = 0;
    for (int stripe = 0; stripe < 12; ++stripe) {
        const int x = (2 * stripe + 1) * frame.width / 24;
        number |= (frame.data[0][frame.height / 2 * frame.linesize[0] + x] > 125 ? 1 : 0) << stripe;
    }
    return number;
}

void addSound(MovieProbe::Sound &sound, const AVFrame &frame, double time)
{
    if (sound.samples.empty()) {
        sound.start = time;
    }
    sound.rate = frame.sample_rate;
    sound.channels = frame.ch_layout.nb_channels;
    const auto place = static_cast<std::size_t>(std::max(0L, std::lround((time - sound.start) * sound.rate)));
    sound.samples.resize(place + static_cast<std::size_t>(frame.nb_samples));
    for (int channel = 0; channel < sound.channels; ++channel) {
        const auto *plane = reinterpret_cast<const float *>(frame.extended_data[channel]);
        for (int i = 0; i < frame.nb_samples; ++i) {
            sound.peak = std::max(sound.peak, double(std::abs(plane[i])));
            if (channel == 0) {
                sound.samples[place + static_cast<std::size_t>(i)] = plane[i];
            }
        }
    }
}

std::string tagOf(const AVCodecParameters &parameters)
{
    std::string tag;
    for (int shift = 0; shift < 32; shift += 8) {
        tag += static_cast<char>(parameters.codec_tag >> shift & 0xff);
    }
    return tag + " " + av_color_range_name(parameters.color_range) + " " +
           av_color_space_name(parameters.color_space) + " " +
           av_color_primaries_name(parameters.color_primaries) + " " +
           av_color_transfer_name(parameters.color_trc);
}

} // namespace

MovieProbe::MovieProbe(const QUrl &url)
{
    decode(url);
}

void MovieProbe::decode(const QUrl &url)
{
    AVFormatContext *context = nullptr;
    ASSERT_EQ(avformat_open_input(&context, url.toLocalFile().toUtf8().constData(), nullptr, nullptr), 0);
    const InputContextPtr input(context);
    ASSERT_GE(avformat_find_stream_info(context, nullptr), 0);
    duration = double(context->duration) / AV_TIME_BASE;
    firstTime = double(context->start_time) / AV_TIME_BASE;
    std::vector<CodecContextPtr> decoders;
    std::map<int, std::size_t> soundOfStream;
    for (unsigned i = 0; i < context->nb_streams; ++i) {
        const auto *parameters = context->streams[i]->codecpar;
        const auto *codec = avcodec_find_decoder(parameters->codec_id);
        auto &decoder = decoders.emplace_back(avcodec_alloc_context3(codec));
        avcodec_parameters_to_context(decoder.get(), parameters);
        decoder->pkt_timebase = context->streams[i]->time_base;
        decoder->err_recognition = AV_EF_EXPLODE;
        ASSERT_GE(avcodec_open2(decoder.get(), codec, nullptr), 0);
        if (parameters->codec_type == AVMEDIA_TYPE_AUDIO) {
            soundOfStream[int(i)] = sounds.size();
            sounds.emplace_back();
        } else {
            videoTag = tagOf(*parameters);
        }
    }
    const auto frame = makeFrame();
    const auto drain = [&](int index) {
        while (avcodec_receive_frame(decoders[std::size_t(index)].get(), frame.get()) >= 0) {
            const double time = double(frame->pts) * av_q2d(context->streams[index]->time_base);
            if (soundOfStream.count(index) != 0) {
                addSound(sounds[soundOfStream[index]], *frame, time);
            } else {
                pictures.push_back({time, numberOf(*frame)});
            }
        }
    };
    const auto packet = makePacket();
    while (av_read_frame(context, packet.get()) >= 0) {
        const int index = packet->stream_index;
        const bool hidden = (packet->flags & AV_PKT_FLAG_DISCARD) != 0;
        EXPECT_TRUE(avcodec_send_packet(decoders[std::size_t(index)].get(), packet.get()) >= 0 || hidden);
        av_packet_unref(packet.get());
        drain(index);
    }
    for (unsigned i = 0; i < context->nb_streams; ++i) {
        avcodec_send_packet(decoders[i].get(), nullptr);
        drain(int(i));
    }
}

std::vector<double> MovieProbe::Sound::clicks(float level, double from) const
{
    std::vector<double> times;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const double time = start + double(i) / rate;
        if (time >= from && std::abs(samples[i]) > level && (times.empty() || time - times.back() > 0.05)) {
            times.push_back(time);
        }
    }
    return times;
}

double MovieProbe::Sound::tone(double hz, double from, double to) const
{
    double real = 0;
    double imaginary = 0;
    int count = 0;
    for (double time = from; time < to; time += 1.0 / rate, ++count) {
        const auto index = static_cast<std::size_t>(std::lround((time - start) * rate));
        const double value = index < samples.size() ? samples[index] : 0;
        real += value * std::cos(2 * std::numbers::pi * hz * time);
        imaginary += value * std::sin(2 * std::numbers::pi * hz * time);
    }
    return 2 * std::hypot(real, imaginary) / count;
}

} // namespace zivra::test

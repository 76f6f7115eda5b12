#include "platform/vl/av_camera.h"

#include "platform/vl/av.h"
#include "platform/vl/fit.h"

extern "C" {
#include <libavdevice/avdevice.h>
}

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;
using Microseconds = std::chrono::microseconds;

constexpr auto LONGEST_REST = std::chrono::milliseconds(50);
constexpr auto NOTHING_YET = std::chrono::milliseconds(5);
constexpr Microseconds USUAL_INTERVAL {40'000};
constexpr int MOST_WITHOUT_PICTURE = 200; // packets

/// One opened input with its decoder.
class Input {
public:
    /// `options` are the demuxer's. `probe` reads ahead to learn the format,
    /// which a live device is spared. Returns 0 or -1.
    int open(const char* format, const std::string& url, AVDictionary* options, bool probe);
    void close();

    /// Decodes the next picture into `frame`. 1, 0 for none yet, -1 at the end.
    int read(AVFrame* frame);

    /// Back to the beginning.
    int rewind();

    AVRational time_base() const { return format_->streams[stream_]->time_base; }

private:
    int open_decoder();

    QD_Av_Format format_;
    QD_Av_Codec codec_;
    QD_Av_Packet packet_ {av_packet_alloc()};
    int stream_ = -1;
};

int Input::open(const char* format, const std::string& url, AVDictionary* options, bool probe)
{
    static const bool registered = (avdevice_register_all(), true);
    qd_av_silence();
    AVFormatContext* context = avformat_alloc_context();
    context->flags |= AVFMT_FLAG_NONBLOCK;
    const AVInputFormat* demuxer
        = registered && format != nullptr ? av_find_input_format(format) : nullptr;
    int result = format != nullptr && demuxer == nullptr ? -1 : 0;
    if (result == 0)
        result = avformat_open_input(&context, url.c_str(), demuxer, &options); // frees on failure
    else
        avformat_free_context(context);
    av_dict_free(&options);
    if (result < 0)
        return -1;
    format_.reset(context);
    if ((!probe || avformat_find_stream_info(context, nullptr) >= 0) && open_decoder() == 0)
        return 0;
    close();
    return -1;
}

int Input::open_decoder()
{
    const AVCodec* decoder = nullptr;
    stream_ = av_find_best_stream(format_.get(), AVMEDIA_TYPE_VIDEO, -1, -1, &decoder, 0);
    if (stream_ < 0 || decoder == nullptr)
        return -1;
    codec_.reset(avcodec_alloc_context3(decoder));
    avcodec_parameters_to_context(codec_.get(), format_->streams[stream_]->codecpar);
    codec_->thread_count = 1;
    return avcodec_open2(codec_.get(), decoder, nullptr) < 0 ? -1 : 0;
}

void Input::close()
{
    codec_.reset();
    format_.reset();
}

int Input::read(AVFrame* frame)
{
    for (int i = 0; i < MOST_WITHOUT_PICTURE; ++i) {
        const int got = avcodec_receive_frame(codec_.get(), frame);
        if (got == 0)
            return 1;
        if (got == AVERROR_EOF)
            return -1;
        const int result = av_read_frame(format_.get(), packet_.get());
        if (result == AVERROR(EAGAIN))
            return 0;
        if (result == AVERROR_EOF)
            avcodec_send_packet(codec_.get(), nullptr); // what the decoder still holds comes out
        else if (result < 0)
            return -1;
        else if (packet_->stream_index == stream_)
            avcodec_send_packet(codec_.get(), packet_.get()); // a damaged one is passed over
        av_packet_unref(packet_.get());
    }
    return 0;
}

int Input::rewind()
{
    avcodec_flush_buffers(codec_.get());
    return av_seek_frame(format_.get(), -1, 0, AVSEEK_FLAG_BACKWARD) < 0
            && avformat_seek_file(format_.get(), -1, INT64_MIN, 0, INT64_MAX, AVSEEK_FLAG_BYTE) < 0
        ? -1
        : 0;
}

/// A camera or the screen: pictures come when they come.
class Live_Camera : public QD_Camera {
public:
    Live_Camera(QD_Fit::Way way) : fit_(way) {}

    int read(char* out) override
    {
        const int result = input_.read(frame_.get());
        if (result == 0)
            std::this_thread::sleep_for(NOTHING_YET);
        return result == 1 && fit_.fit(frame_.get(), out) < 0 ? -1 : result;
    }
    void close() override { input_.close(); }

protected:
    Input input_;

private:
    QD_Fit fit_;
    QD_Av_Frame frame_ {av_frame_alloc()};
};

class V4l2_Camera : public Live_Camera {
public:
    explicit V4l2_Camera(std::string device) : Live_Camera(QD_Fit::CROP), device_(std::move(device))
    {
    }

    int open() override
    {
        for (const std::string& device : devices()) {
            AVDictionary* options
                = nullptr; // what the device does not know it takes as near as can be
            av_dict_set(&options, "video_size", "352x288", 0);
            av_dict_set(&options, "framerate", "30", 0);
            if (input_.open("v4l2", device, options, false) == 0)
                return 0;
        }
        return -1;
    }

private:
    std::vector<std::string> devices() const
    {
        if (!device_.empty())
            return {device_};
        std::vector<std::string> found;
        for (int i = 0; i < 64; ++i) {
            std::string device = "/dev/video" + std::to_string(i);
            if (::access(device.c_str(), F_OK) == 0)
                found.push_back(std::move(device));
        }
        return found;
    }

    const std::string device_;
};

class Screen_Camera : public Live_Camera {
public:
    explicit Screen_Camera(std::string display) :
        Live_Camera(QD_Fit::LETTERBOX),
        display_(std::move(display))
    {
    }

    int open() override
    {
        AVDictionary* options = nullptr;
        av_dict_set(&options, "framerate", "15", 0); // copying a whole screen is dear
        return input_.open("x11grab", display_, options, false);
    }

private:
    const std::string display_;
};

bool is_regular_file(const std::string& path)
{
    struct stat about {};
    return ::stat(path.c_str(), &about) == 0 && S_ISREG(about.st_mode);
}

/// A clip that begins again when it ends.
class Clip_Camera : public QD_Camera {
public:
    explicit Clip_Camera(std::string path) : path_(std::move(path)) {}

    int open() override
    {
        if (!is_regular_file(path_))
            return -1;
        AVDictionary* options = nullptr;
        av_dict_set(&options, "protocol_whitelist", "file", 0); // no list of other places
        waiting_ = false;
        due_ = Clock::now();
        time_ = AV_NOPTS_VALUE;
        pictures_ = 0;
        return input_.open(nullptr, "file:" + path_, options, true);
    }

    int read(char* out) override
    {
        if (!waiting_ && decode_next() < 0)
            return -1;
        const Clock::time_point now = Clock::now();
        std::this_thread::sleep_until(std::min(due_, now + LONGEST_REST));
        if (now + LONGEST_REST < due_)
            return 0;
        waiting_ = false;
        return fit_.fit(frame_.get(), out) < 0 ? -1 : 1;
    }

    void close() override { input_.close(); }

private:
    // Decodes the next picture and settles when it is due.
    int decode_next()
    {
        int result = input_.read(frame_.get());
        if (result < 0) {
            if (std::exchange(pictures_, 0) == 0 || input_.rewind() < 0)
                return -1;
            time_ = AV_NOPTS_VALUE;
            result = input_.read(frame_.get());
        }
        if (result <= 0)
            return -1;
        ++pictures_;
        const int64_t time = frame_->best_effort_timestamp;
        Microseconds gap = USUAL_INTERVAL;
        if (time != AV_NOPTS_VALUE && time_ != AV_NOPTS_VALUE)
            gap = Microseconds(av_rescale_q(time - time_, input_.time_base(), {1, 1'000'000}));
        time_ = time;
        gap = std::clamp(gap, Microseconds(1000), Microseconds(10'000'000));
        due_ = std::max(due_ + gap, Clock::now()); // late is late: nothing is made up for
        waiting_ = true;
        return 0;
    }

    const std::string path_;
    Input input_;
    QD_Fit fit_ {QD_Fit::CROP};
    QD_Av_Frame frame_ {av_frame_alloc()};
    bool waiting_ = false; // the picture in frame_ is not shown yet
    Clock::time_point due_;
    int64_t time_ = AV_NOPTS_VALUE; // of the picture before, in the stream's units
    int pictures_ = 0;              // since the beginning of the clip
};

}

std::unique_ptr<QD_Camera> qd_make_v4l2_camera(const std::string& device, std::string&)
{
    return std::make_unique<V4l2_Camera>(device);
}

std::unique_ptr<QD_Camera> qd_make_clip_camera(const std::string& path, std::string& why)
{
    if (!is_regular_file(path)) {
        why = "there is no such file";
        return nullptr;
    }
    return std::make_unique<Clip_Camera>(path);
}

std::unique_ptr<QD_Camera> qd_make_screen_camera(const std::string& display, std::string& why)
{
    const char* environment = getenv("DISPLAY");
    std::string name = display.empty() && environment != nullptr ? environment : display;
    if (name.empty()) {
        why = "there is no display";
        return nullptr;
    }
    return std::make_unique<Screen_Camera>(std::move(name));
}

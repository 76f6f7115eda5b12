// What one client's window shows of another's test card, picture by picture.
#pragma once

#include "platform/vl/test_card.h"

#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <ctime>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

/// Looks at the screen where the window is, which nothing may cover or move.
class QD_Seeing {
public:
    using Clock = std::chrono::steady_clock;

    /// `hue` is that of the card shown.
    explicit QD_Seeing(int hue) : card_(hue), display_(XOpenDisplay(nullptr), &XCloseDisplay) {}

    /// Takes a window whose picture is at its top left. Returns whether it is there.
    bool look_at(Window window)
    {
        Window child = 0;
        return display_ != nullptr
            && XTranslateCoordinates(display_.get(), window, DefaultRootWindow(display_.get()), 0,
                0, &left_, &top_, &child);
    }

    /// To be called more often than pictures come; keeps what has changed.
    void note()
    {
        const Image image = grab();
        const auto when = Clock::now();
        if (!image)
            return;
        const std::string_view now(
            image->data, static_cast<size_t>(image->bytes_per_line * image->height));
        if (now == pixels_)
            return;
        pixels_ = now;
        pictures_.push_back({when, of_day(), luma_of(image.get())});
    }

    struct Report {
        double per_second = 0;
        double whole = 0; // the share of them; 0 of none
    };

    /// What was shown anew.
    Report report(Clock::time_point begin, Clock::time_point end) const
    {
        double count = 0;
        double whole = 0;
        for (const Picture& picture : pictures_) {
            if (picture.when < begin || picture.when >= end)
                continue;
            ++count;
            whole += is_whole(picture);
        }
        return {count / std::chrono::duration<double>(end - begin).count(),
            whole / std::max(count, 1.0)};
    }

    /// Seconds until all pictures that were shown from then on were whole, counted
    /// from `end`; -1 if none was, or the newest is not.
    double whole_after(Clock::time_point end) const
    {
        double after = -1;
        for (const Picture& picture : pictures_) {
            if (picture.when < end)
                continue;
            if (!is_whole(picture))
                after = -1;
            else if (after < 0)
                after = std::chrono::duration<double>(picture.when - end).count();
        }
        return after;
    }

    /// A whole picture that was shown.
    struct Showing {
        Clock::time_point when;
        double age_ms; // of the card, to ten milliseconds
    };
    std::vector<Showing> showings() const
    {
        std::vector<Showing> all;
        for (const Picture& picture : pictures_)
            if (const Likest likest = find_likest(picture); likest.decibels >= WHOLE_DB)
                all.push_back({picture.when, likest.age_ms});
        return all;
    }

    /// Forgets all pictures but the newest.
    void forget() { pictures_.erase(pictures_.begin(), pictures_.end() - !pictures_.empty()); }

private:
    using Luma = std::vector<uint8_t>;
    struct Picture {
        Clock::time_point when;
        long of_day; // milliseconds since midnight
        Luma luma;
    };

    // At five pictures a second whole ones were found to have 35.5 and more, damaged ones 30 and
    // less.
    static constexpr double WHOLE_DB = 33;
    static constexpr long MOST_AGE_MS = 700;
    static constexpr long CARD_STEP_MS = 10;

    static long of_day()
    {
        using namespace std::chrono;
        const auto now = system_clock::now();
        const time_t seconds = system_clock::to_time_t(now);
        tm local {};
        localtime_r(&seconds, &local);
        return local.tm_hour * 3'600'000L + local.tm_min * 60'000L + local.tm_sec * 1000L
            + duration_cast<milliseconds>(now.time_since_epoch()).count() % 1000;
    }

    using Image = std::unique_ptr<XImage, int (*)(XImage*)>;
    Image grab() const
    {
        return Image(XGetImage(display_.get(), DefaultRootWindow(display_.get()), left_, top_,
                         QD_PICTURE_WIDTH, QD_PICTURE_HEIGHT, AllPlanes, ZPixmap),
            [](XImage* taken) { return XDestroyImage(taken); });
    }

    // As ITU-R BT.601 makes it of red, green and blue.
    static Luma luma_of(XImage* image)
    {
        Luma luma;
        for (int y = 0; y < QD_PICTURE_HEIGHT; ++y)
            for (int x = 0; x < QD_PICTURE_WIDTH; ++x) {
                const unsigned long rgb = XGetPixel(image, x, y);
                luma.push_back(static_cast<uint8_t>(16.5
                    + ((rgb >> 16 & 255) * 66 + (rgb >> 8 & 255) * 129 + (rgb & 255) * 25)
                        / 256.0));
            }
        return luma;
    }

    bool is_whole(const Picture& picture) const
    {
        return find_likest(picture).decibels >= WHOLE_DB;
    }

    /// The card of the moment that a picture is likest to.
    struct Likest {
        double decibels;
        double age_ms;
    };
    Likest find_likest(const Picture& picture) const
    {
        std::string card(QD_PICTURE_SIZE, '\0');
        double least = 1e18;
        long newest = 0; // of several that are alike: the card moves by whole points
        long oldest = 0;
        for (long age = 0; age < MOST_AGE_MS; age += CARD_STEP_MS) {
            card_.paint(picture.of_day - age, card.data());
            long sum = 0;
            for (size_t i = 0; i < picture.luma.size(); ++i) {
                const int error = picture.luma[i] - static_cast<uint8_t>(card[i]);
                sum += error * error;
            }
            if (static_cast<double>(sum) < least)
                newest = age;
            if (static_cast<double>(sum) <= least)
                oldest = age;
            least = std::min(least, static_cast<double>(sum));
        }
        // A card is that of the step of time that it was painted in.
        const double within
            = static_cast<double>(picture.of_day % CARD_STEP_MS) - CARD_STEP_MS / 2.0;
        return {10
                * std::log10(
                    255 * 255 * static_cast<double>(picture.luma.size()) / std::max(least, 1.0)),
            static_cast<double>(newest + oldest) / 2 + within};
    }

    const QD_Test_Card card_;
    const std::unique_ptr<Display, int (*)(Display*)> display_;
    int left_ = 0;
    int top_ = 0;
    std::string pixels_; // as they were seen last
    std::vector<Picture> pictures_;
};

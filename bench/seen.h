// What one client's window shows of another's test card, picture by picture.
#pragma once

#include "platform/vl/test_card.h"
#include "tests/support/pictures.h"

#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <algorithm>
#include <chrono>
#include <memory>

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
            && (XTranslateCoordinates(display_.get(), window, DefaultRootWindow(display_.get()), 0,
                    0, &left_, &top_, &child)
                != 0);
    }

    /// To be called more often than pictures come; keeps what has changed.
    void note()
    {
        std::string now = grab();
        if (!now.empty() && (pictures_.empty() || pictures_.back().luma != now))
            pictures_.push_back({Clock::now(), of_day(), std::move(now)});
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

    /// A picture that was shown, whole or not, and how old it was then: what its card says, which
    /// moves every ten milliseconds.
    struct Showing {
        Clock::time_point when;
        double age_ms;
    };
    std::vector<Showing> showings() const
    {
        constexpr long STEP_MS = 10;
        std::string card(QD_PICTURE_SIZE, '\0');
        std::vector<Showing> all;
        for (const Picture& picture : pictures_) {
            long least = -1;
            long newest = 0; // of the cards that are likest, since it moves by whole points
            long oldest = 0;
            for (long age = 0; age < MOST_AGE_MS; age += STEP_MS) {
                card_.paint(picture.of_day - age, card.data());
                long sum = 0;
                for (size_t i = 0; i < picture.luma.size(); ++i) {
                    const int error
                        = static_cast<uint8_t>(picture.luma[i]) - static_cast<uint8_t>(card[i]);
                    sum += error * error;
                }
                if (least < 0 || sum < least)
                    newest = age;
                if (least < 0 || sum <= least)
                    oldest = age;
                least = least < 0 ? sum : std::min(least, sum);
            }
            const auto within = static_cast<double>(picture.of_day % STEP_MS - STEP_MS / 2);
            all.push_back({picture.when, static_cast<double>(newest + oldest) / 2 + within});
        }
        return all;
    }

    /// Forgets all pictures but the newest.
    void forget() { pictures_.erase(pictures_.begin(), pictures_.end() - !pictures_.empty()); }

private:
    struct Picture {
        Clock::time_point when;
        long of_day; // milliseconds since midnight
        std::string luma;
    };

    // At five pictures a second whole ones were found to have 35.5 and more, damaged ones 30 and
    // less.
    static constexpr double WHOLE_DB = 33;
    static constexpr long MOST_AGE_MS = 700;

    static long of_day()
    {
        timespec now {};
        tm local {};
        ::clock_gettime(CLOCK_REALTIME, &now);
        ::localtime_r(&now.tv_sec, &local);
        return (local.tm_hour * 3600 + local.tm_min * 60 + local.tm_sec) * 1000L
            + now.tv_nsec / 1'000'000;
    }

    // As ITU-R BT.601 makes it of red, green and blue.
    std::string grab() const
    {
        const std::unique_ptr<XImage, int (*)(XImage*)> image(
            XGetImage(display_.get(), DefaultRootWindow(display_.get()), left_, top_,
                QD_PICTURE_WIDTH, QD_PICTURE_HEIGHT, AllPlanes, ZPixmap),
            [](XImage* taken) { return XDestroyImage(taken); });
        std::string luma;
        for (int i = 0; image && i < QD_LUMA_SIZE; ++i) {
            const unsigned long rgb
                = XGetPixel(image.get(), i % QD_PICTURE_WIDTH, i / QD_PICTURE_WIDTH);
            luma += static_cast<char>(16.5
                + ((rgb >> 16 & 255) * 66 + (rgb >> 8 & 255) * 129 + (rgb & 255) * 25) / 256.0);
        }
        return luma;
    }

    // Whether it is like the card of some moment before it was shown.
    bool is_whole(const Picture& picture) const
    {
        std::string card(QD_PICTURE_SIZE, '\0');
        for (long age = 0; age < MOST_AGE_MS; age += 10) {
            card_.paint(picture.of_day - age, card.data());
            if (qd_psnr(card.data(), picture.luma.data()) >= WHOLE_DB)
                return true;
        }
        return false;
    }

    const QD_Test_Card card_;
    const std::unique_ptr<Display, int (*)(Display*)> display_;
    int left_ = 0;
    int top_ = 0;
    std::vector<Picture> pictures_;
};

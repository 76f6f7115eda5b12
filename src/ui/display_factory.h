// Opens the members' video windows, and knows where they go.
#pragma once

#include "signalling/views.h"

#include <X11/Intrinsic.h>
#include <string>
#include <vector>

/// A window is named after its member, which no resource file can foresee. So
/// places are given out in the order of opening: with the resources "videoX" and
/// "videoY" (classes "VideoX", "VideoY") the first window stands there, each
/// further one "videoStepX" (190) to the right of the one before and, at the
/// edge of the screen, "videoStepY" (250) below the first. A window that closes
/// leaves its place to the next. Without both, the window manager places them.
/// User-interface thread only.
class QD_Display_Windows : public QD_Display_Factory {
public:
    /// `owner` is the widget whose resources count.
    explicit QD_Display_Windows(Widget owner);

    std::unique_ptr<QD_Display_View> make_display(const char* title) override;

private:
    std::string geometry(size_t place) const;

    struct Places {
        int x;
        int y;
        int step_x;
        int step_y;
    } places_ {};
    int screen_width_;
    std::vector<std::weak_ptr<const std::string>> taken_; // by windows, with their geometry
};

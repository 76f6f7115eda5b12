#include "ui/display_factory.h"

#include "ui/display_window.h"

#include <X11/Shell.h>
#include <X11/StringDefs.h>
#include <algorithm>
#include <climits>
#include <utility>

namespace {

constexpr int NOWHERE = INT_MIN;

/// A window that holds its place. The shell keeps a pointer to the geometry.
class Placed_Window : public DisplayWindowMainWindow {
public:
    Placed_Window(const char* name, std::shared_ptr<const std::string> geometry) :
        DisplayWindowMainWindow(name),
        geometry_(std::move(geometry))
    {
        XtVaSetValues(base_widget(), XtNgeometry, geometry_->c_str(), nullptr);
    }

private:
    std::shared_ptr<const std::string> geometry_;
};

XtResource number(const char* name, const char* class_name, Cardinal offset, int fallback)
{
    return {const_cast<String>(name), const_cast<String>(class_name), const_cast<String>(XtRInt),
        sizeof(int), offset, const_cast<String>(XtRImmediate),
        reinterpret_cast<XtPointer>(static_cast<intptr_t>(fallback))};
}

}

QD_Display_Windows::QD_Display_Windows(Widget owner) : screen_width_(WidthOfScreen(XtScreen(owner)))
{
    XtResource resources[] = {
        number("videoX", "VideoX", XtOffsetOf(Places, x), NOWHERE),
        number("videoY", "VideoY", XtOffsetOf(Places, y), NOWHERE),
        number("videoStepX", "VideoStepX", XtOffsetOf(Places, step_x), 190),
        number("videoStepY", "VideoStepY", XtOffsetOf(Places, step_y), 250),
    };
    XtGetApplicationResources(owner, &places_, resources, XtNumber(resources), nullptr, 0);
    init_global_dpy();
}

std::unique_ptr<QD_Display_View> QD_Display_Windows::make_display(const char* title)
{
    if (places_.x == NOWHERE || places_.y == NOWHERE)
        return std::make_unique<DisplayWindowMainWindow>(title);
    const auto vacant = std::find_if(
        taken_.begin(), taken_.end(), [](const auto& holder) { return holder.expired(); });
    const auto place = static_cast<size_t>(vacant - taken_.begin());
    if (vacant == taken_.end())
        taken_.emplace_back();
    auto where = std::make_shared<const std::string>(geometry(place));
    taken_[place] = where;
    return std::make_unique<Placed_Window>(title, where);
}

std::string QD_Display_Windows::geometry(size_t place) const
{
    const int columns = places_.step_x > 0 ? (screen_width_ - places_.x) / places_.step_x : 1;
    const auto in_row = static_cast<size_t>(std::max(columns, 1));
    const auto x = places_.x + static_cast<int>(place % in_row) * places_.step_x;
    const auto y = places_.y + static_cast<int>(place / in_row) * places_.step_y;
    return "+" + std::to_string(x) + "+" + std::to_string(y);
}

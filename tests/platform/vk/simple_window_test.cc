#include "tests/platform/vk/vk_test.h"

#include "platform/vk/simple_window.h"
#include "platform/vk/wm_hints.h"

#include <X11/Xutil.h>

namespace {

std::string place(const VkSimpleWindow& window)
{
    XWindowAttributes at {};
    XGetWindowAttributes(theApplication->display(), XtWindow(window.baseWidget()), &at);
    return std::to_string(at.width) + "x" + std::to_string(at.height) + "+" + std::to_string(at.x)
        + "+" + std::to_string(at.y);
}

}

TEST(VkSimpleWindow, GeometryIsTheUsersForTheFirstAndForNamedWindows)
{
    vk_app();
    VkSimpleWindow* first = theApplication->windows().front();
    first->show();
    VkTestWindow second("second");
    second.show();
    qd_pump();
    EXPECT_EQ(place(*first), "300x200+40+50");
    EXPECT_EQ(place(second), "120x90+400+300");
    first->hide();
}

TEST(VkConfigureWM, FixesTheSizeOfWhatTheUserMayNotResize)
{
    VkTestWindow window("fixed");
    VkConfigureWM(window.baseWidget(), 1, 0, 1, 1, 0, 1, 1);
    XtVaSetValues(window.baseWidget(), XtNwidth, 50, XtNheight, 40, nullptr);
    window.show();
    qd_pump();
    XSizeHints hints {};
    long supplied = 0;
    XGetWMNormalHints(theApplication->display(), XtWindow(window.baseWidget()), &hints, &supplied);
    EXPECT_EQ((std::array {hints.min_width, hints.max_width, hints.min_height, hints.max_height}),
        (std::array {50, 50, 40, 40}));
}

#include "tests/platform/vk/vk_test.h"

#include "platform/vk/simple_window.h"

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

// What windows leave behind when they go.
#include "tests/ui/ui_test.h"

#include "signalling/session_control.h"
#include "ui/display_window.h"
#include "ui/options_window.h"

#include <malloc.h>
#include <memory>

namespace {

/// Bytes still in use for each window made and destroyed.
template <class Make> double left_by(Make make)
{
    constexpr int COUNT = 50;
    size_t before = 0;
    for (int i = -COUNT; i < COUNT; ++i) { // tables have grown and caches are full after the first
        if (i == 0)
            before = mallinfo2().uordblks;
        {
            const std::unique_ptr<VkSimpleWindow> window(make(i));
            window->show();
            qd_pump();
        }
        qd_pump();
    }
    return (static_cast<double>(mallinfo2().uordblks) - static_cast<double>(before)) / COUNT;
}

}

TEST(Leftovers, OfWindowsAreFewBytes)
{
    ui_app();
    const QD_Session_Ref session; // the options are its
    EXPECT_LT(left_by([](int) { return new OptionsWindowMainWindow("optionsWindow"); }), 1000);
    const auto video = [](int number) {
        return new DisplayWindowMainWindow(("guest" + std::to_string(number)).c_str());
    };
    EXPECT_LT(left_by(video), 1000);
    XrmDatabase database = XtScreenDatabase(XtScreen(theApplication->baseWidget()));
    char* type = nullptr;
    XrmValue value;
    EXPECT_FALSE(XrmGetResource(
        database, "application.guest1.title", "Application.TopLevelShell.Title", &type, &value));
}

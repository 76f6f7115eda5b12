// What windows leave behind when they go.
#include "tests/ui/ui_test.h"

#include "signalling/session_control.h"
#include "ui/display_window.h"
#include "ui/options_window.h"

#include <malloc.h>

TEST(Leftovers, OfWindowsAreFewBytes)
{
    ui_app();
    const QD_Session_Ref session; // the options are its
    constexpr int COUNT = 200;
    size_t before = 0;
    for (int i = -COUNT; i < COUNT; ++i) { // tables have grown and caches are full after the first
        if (i == 0)
            before = mallinfo2().uordblks;
        {
            OptionsWindowMainWindow options("optionsWindow");
            DisplayWindowMainWindow video(("guest" + std::to_string(i)).c_str());
            options.show();
            video.show();
            qd_pump();
        }
        qd_pump();
    }
    // The toolkit keeps every name of a widget, some 40 bytes, in blocks of 8 KiB.
    EXPECT_LT(mallinfo2().uordblks, before + COUNT * 200);
    char* type = nullptr;
    XrmValue value;
    EXPECT_FALSE(XrmGetResource(XtScreenDatabase(XtScreen(theApplication->base_widget())),
        "application.guest1.title", "Application.TopLevelShell.Title", &type, &value));
}

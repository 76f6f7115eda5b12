#include "tests/ui/ui_test.h"

#include "signalling/session_control.h"
#include "ui/options_window.h"

#include <malloc.h>

namespace {

void open_statistics(int round)
{
    StatWindowMainWindow window("statWindow");
    window.show();
    window.getStatForm()->addToUsersList("anna@orion");
    if (round % 2 > 0)
        qd_pump();
    if (round % 3 > 0)
        window.hide();
    window.getStatForm()->delFromUsersList("anna@orion");
}

void open_options(int round)
{
    const char* const pages[] = {"general", "audio", "video"};
    auto* window = new OptionsWindowMainWindow("optionsWindow"); // which its buttons delete
    window->show();
    qd_click(
        qd_find(window->baseWidget(), (std::string(pages[round % 3]) + "OptionsFormTab").c_str()));
    XtCallCallbacks(
        qd_find(window->baseWidget(), round % 2 > 0 ? "okOptButton" : "cancelOptButton"),
        XmNactivateCallback, nullptr);
}

}

// The toolkit keeps what it made of each label's text. A list of members, a
// picture or a set of fonts would be more.
TEST(Windows, OpenedAndClosedTwoHundredTimesLeaveNothing)
{
    ui_app();
    const QD_Session_Ref session; // which the program's windows share
    const size_t before = theApplication->windows().size();
    struct {
        void (*open)(int round);
        size_t kept; // bytes, at most
    } const cases[] = {{open_statistics, 7000}, {open_options, 12000}};
    for (const auto& c : cases) {
        const auto rounds = [&](int count) {
            for (int round = 0; round < count; ++round)
                c.open(round);
            qd_pump();
            const auto heap = mallinfo2();
            return heap.uordblks + heap.hblkhd;
        };
        const size_t warm = rounds(20);
        const size_t after = rounds(200);
        EXPECT_LT(after, warm + 200 * c.kept);
        EXPECT_EQ(theApplication->windows().size(), before);
    }
}

#include "tests/ui/ui_test.h"

#include "signalling/session_control.h"
#include "ui/call_window.h"

TEST(Form, EveryWayOutClosesTheDialogAndOnlyCallCalls)
{
    ui_app();
    struct {
        const char* way;
        bool calls;
        std::function<void(Widget)> take;
    } const ways[] = {
        {"Call", true, [](Widget top) { qd_click(qd_find(top, "callButton")); }},
        {"Cancel", false, [](Widget top) { qd_click(qd_find(top, "cancelButton")); }},
        {"Escape", false, [](Widget) { QD_X_Server::press("Escape"); }},
        {"by the keyboard", true, [](Widget) { QD_X_Server::press("Return"); }},
        {"the window manager", false, qd_close_window},
    };
    for (const auto& way : ways) {
        SCOPED_TRACE(way.way);
        const QD_Session_Ref session;
        CallWindowMainWindow* window = new CallWindowMainWindow(&window);
        window->show();
        qd_pump();
        qd_focus(window->base_widget());
        way.take(window->base_widget());
        EXPECT_TRUE(qd_pump_until([&] { return window == nullptr; }));
        // Whoever calls is in a conference from then on, though alone.
        EXPECT_EQ(session->get_member(0) != nullptr, way.calls) << "even with nothing typed";
        session->reset();
    }
}

#include "tests/ui/ui_test.h"

#include "signalling/session_control.h"
#include "ui/call_window.h"

#include <Xm/TextF.h>

namespace {

// The dialog on the screen with the keyboard in it, and a session that nobody has called from.
struct Dialog {
    Dialog()
    {
        ui_app();
        window_ = new CallWindowMainWindow(&window_);
        window_->show();
        qd_pump_until([&] { return qd_on_screen(window_->baseWidget()); });
        qd_focus(window_->baseWidget());
    }
    ~Dialog()
    {
        delete window_;
        session_->reset();
        qd_pump();
    }
    Widget widget(const char* name) const { return qd_find(window_->baseWidget(), name); }

    // Whoever calls is in a conference from then on, though alone.
    bool called() const { return session_->get_member(0) != nullptr; }

    CallWindowMainWindow* window_ = nullptr;
    QD_Session_Ref session_;
};

void press(const char* key) { EXPECT_EQ(ui_app().server().press(key), 0); }

}

TEST(Form, IsLegibleAndAwaitsTheHostsName)
{
    Dialog dialog;
    EXPECT_EQ(dialog.window_->title(), "Call");
    ui_expect_labels(dialog.window_->baseWidget(),
        {{"label", "User host name:"}, {"callButton", "Call"}, {"cancelButton", "Cancel"}});
    EXPECT_EQ(ui_misfits(dialog.window_->baseWidget()), "");
    EXPECT_EQ(qd_run({"xdotool", "type", "vega"}), 0);
    EXPECT_TRUE(qd_pump_until(
        [&] { return ui_text(dialog.window_->baseWidget(), "hostTextField") == "vega"; }));
}

TEST(Form, EveryWayOutClosesTheDialogAndOnlyCallCalls)
{
    struct {
        const char* way;
        bool calls;
        std::function<void(Dialog&)> take;
    } const ways[] = {
        {"Return", true, [](Dialog&) { press("Return"); }},
        {"Call", true, [](Dialog& dialog) { qd_click(dialog.widget("callButton")); }},
        {"Escape", false, [](Dialog&) { press("Escape"); }},
        {"Cancel", false, [](Dialog& dialog) { qd_click(dialog.widget("cancelButton")); }},
        {"Cancel by the keyboard", false,
            [](Dialog&) {
                press("Tab"); // to Call
                press("Tab");
                press("Return");
            }},
        {"the window manager", false,
            [](Dialog& dialog) { qd_close_window(dialog.window_->baseWidget()); }},
    };
    for (const auto& way : ways) {
        SCOPED_TRACE(way.way);
        Dialog dialog;
        way.take(dialog);
        EXPECT_TRUE(qd_pump_until([&] { return dialog.window_ == nullptr; }));
        EXPECT_EQ(dialog.called(), way.calls) << "even with nothing typed";
    }
}

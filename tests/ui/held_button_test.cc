// Windows that go while the user holds a button in them.
#include "tests/ui/ui_test.h"

#include "signalling/session_control.h"
#include "ui/call_window.h"
#include "ui/display_window.h"
#include "ui/options_window.h"

#include <functional>

namespace {

using Owned = std::unique_ptr<VkSimpleWindow>;

Owned statistics_of_many()
{
    auto window = std::make_unique<StatWindowMainWindow>("statWindow");
    for (int i = 0; i < 100; ++i)
        window->getStatForm()->addToUsersList("somebody");
    return window;
}

Owned main_window()
{
    auto window = std::make_unique<UI_Main>();
    EXPECT_CALL(window->media, setMicCutoffLevel).Times(testing::AnyNumber());
    return window;
}

const struct {
    const char* held;
    std::function<Owned()> open;
} PLACES[] = {
    {"status_text", [] { return std::make_unique<DisplayWindowMainWindow>("a"); }},
    {"VertScrollBar", statistics_of_many},
    {"micScale*Scrollbar", main_window},
    {"hostTextField",
        [] {
            static CallWindowMainWindow* self;
            return std::make_unique<CallWindowMainWindow>(&self);
        }},
    {"connectionMenu*OptionButton",
        [] { return std::make_unique<OptionsWindowMainWindow>("optionsWindow"); }},
};

void send(Widget widget, int type, unsigned detail, int x = 0, int y = 0)
{
    XEvent event {};
    event.xbutton = {type, 0, True, XtDisplay(widget), XtWindow(widget),
        RootWindowOfScreen(XtScreen(widget)), None, CurrentTime, x, y, 0, 0, 0, detail, True};
    if (type == ClientMessage)
        event.xclient.format = 32;
    XSendEvent(XtDisplay(widget), XtWindow(widget), False, NoEventMask, &event);
    qd_pump();
}

void press(Widget held, unsigned button)
{
    if (XtIsWidget(held))
        send(held, ButtonPress, button, 5, 5);
    else // a part of its parent
        send(XtParent(held), ButtonPress, button, ui_get<Position>(held, XmNx) + 5,
            ui_get<Position>(held, XmNy) + 5);
}

// Has it done while the toolkit handles an event of the widget's.
void at_event(Widget widget, std::function<void()> act)
{
    const XtEventHandler handler = [](Widget, XtPointer what, XEvent*, Boolean*) {
        (*static_cast<std::function<void()>*>(what))();
    };
    XtAddEventHandler(widget, NoEventMask, True, handler, &act);
    send(widget, ClientMessage, 0);
    XtRemoveEventHandler(widget, NoEventMask, True, handler, &act);
}

}

// Such a widget has the keyboard grabbed. With its window goes whatever would be told of it: the
// event that the toolkit makes as the next window ends and the next key.
TEST(HeldButton, DoesNotOutliveItsWindow)
{
    ui_app();
    const QD_Session_Ref session; // the options are its
    DisplayWindowMainWindow other("b");
    other.show();
    for (const bool within_an_event : {false, true})
        for (const auto& [held, open] : PLACES)
            for (const unsigned button : {1, 2, 3}) {
                Owned window = open();
                window->show();
                qd_pump();
                Widget widget = qd_find(window->base_widget(), held);
                ASSERT_NE(widget, nullptr) << held;
                press(widget, button);
                if (within_an_event)
                    at_event(other.base_widget(), [&] { window.reset(); });
                else
                    window.reset();
                ASSERT_EQ(window, nullptr);
                send(other.base_widget(), KeyPress, 38);
            }
}

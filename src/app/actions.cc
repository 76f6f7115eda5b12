#include "app/actions.h"

#include "app/control_loop.h"
#include "app/main_window.h"

#include <X11/StringDefs.h>

namespace {

template <XtCallbackProc operation> void act(Widget widget, XEvent*, String*, Cardinal*)
{
    if (mainWindow != nullptr)
        operation(widget, mainWindow, nullptr);
}

XtActionsRec action(const char* name, XtActionProc proc)
{
    return {const_cast<String>(name), proc};
}

}

void qd_add_actions(XtAppContext context)
{
    using Main = MainWindowMainWindow;
    static XtActionsRec actions[] = {
        action("quit", act<Main::quitCallback>),
        action("reset", act<Main::resetCallback>),
        action("options", act<Main::optionsCallback>),
        action("audioPanel", act<Main::audioPanelCallback>),
        action("statistics", act<Main::statisticsCallback>),
        action("chat", act<Main::chatCallback>),
        action("conf", act<Main::confCallback>),
        action("overview", act<Main::overviewCallback>),
        action("users", act<Main::usersCallback>),
    };
    [[maybe_unused]] static const bool added
        = (XtAppAddActions(context, actions, XtNumber(actions)), true);
}

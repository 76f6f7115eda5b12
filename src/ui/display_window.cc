#include "ui/display_window.h"

#include "platform/base/utf8.h"
#include "platform/vk/wm_hints.h"
#include "signalling/member.h"

#include <X11/Shell.h>
#include <X11/StringDefs.h>

namespace {

constexpr VkResource DEFAULTS[] = {{".title", "Video Display"}};
constexpr const char* NAMELESS = "displayWindow";

static_assert(QD_Member::PICTURE_SIZE == VkPictureDisplay::SIZE); // what draw() is given

}

// Defaults stay in the database for good; there are none for every name that comes along.
DisplayWindowMainWindow::DisplayWindowMainWindow(const char* name, ArgList args, Cardinal count) :
    VkSimpleWindow(*name ? name : NAMELESS, *name ? VkResources() : DEFAULTS, args, count)
{
    _dpy_form = new Dpy_form("dpy_form", main_window_widget());
    XtVaSetValues(
        _dpy_form->base_widget(), XtNwidth, Dpy_form::WIDTH, XtNheight, Dpy_form::HEIGHT, nullptr);
    add_view(std::unique_ptr<VkComponent>(_dpy_form));
    if (*name)
        set_title(qd_printable(name).c_str());
    setStatus(name);
    // It comes by itself, perhaps while the user is typing, and nothing in it takes keys.
    XtVaSetValues(base_widget(), XtNinput, False, nullptr);
    VkConfigureWM(base_widget(), 1, 1, 1, 1, 1, 1, 1);
}

void DisplayWindowMainWindow::handleWmDeleteMessage()
{
    if (okToQuit())
        iconify();
}

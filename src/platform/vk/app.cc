#include "platform/vk/app.h"

#include "platform/base/process_end.h"
#include "platform/vk/looks.h"
#include "platform/vk/resources.h"
#include "platform/vk/simple_window.h"

#include <X11/Shell.h>
#include <X11/StringDefs.h>
#include <X11/Xft/Xft.h>
#include <Xm/Display.h>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <sys/timerfd.h>
#include <utility>

VkApp* theApplication = nullptr;

constexpr int BUSY_MS = 20;

namespace {

const char* wanted_display(int argc, char** argv)
{
    for (int i = 1; i + 1 < argc; ++i) {
        if (std::strcmp(argv[i], "-display") == 0 || std::strcmp(argv[i], "-d") == 0)
            return argv[i + 1];
    }
    return XDisplayName(nullptr);
}

/// Makes a point a pixel, so that texts fit their windows whatever the screen
/// says of itself. The user's other font settings stay.
void set_font_resolution(Display* display)
{
    std::string pattern = ":dpi=72";
    for (const char* option :
        {"antialias", "hinting", "autohint", "hintstyle", "rgba", "lcdfilter"}) {
        if (const char* value = XGetDefault(display, "Xft", option))
            pattern += std::string(":") + option + "=" + value;
    }
    XftDefaultSet(display, XftNameParse(pattern.c_str()));
}

/// A drag holds up everything but itself until the button is released, and there is nothing here
/// that it could move. So the middle button does nothing to a label, a button or a line of a list,
/// and windows do not tell of places to drop at, which the toolkit would keep when they go.
void refuse_drag(Widget, XtPointer, XtPointer call)
{
    static_cast<XmDragStartCallbackStruct*>(call)->doit = False;
}

/// A window that vanished between two requests must not end the conference.
int report_error(Display* display, XErrorEvent* error)
{
    char text[128];
    XGetErrorText(display, error->error_code, text, sizeof text);
    std::fprintf(stderr, "VkApp: X error: %s (request %d.%d, resource 0x%lx)\n", text,
        error->request_code, error->minor_code, error->resourceid);
    return 0;
}

/// What the toolkit cannot go on from.
_X_NORETURN void report_fatal(char* message) // of the type, too, for clang
{
    std::fprintf(stderr, "VkApp: %s\n", message);
    qd_end_process(EXIT_FAILURE);
}

/// Xlib is in the middle of something then: no more windows can be destroyed.
int report_lost_display(Display* display)
{
    std::fprintf(stderr, "VkApp: the display \"%s\" is gone\n", DisplayString(display));
    qd_end_process(EXIT_FAILURE);
}

}

VkApp::VkApp(const char* app_class, int* argc, char** argv) :
    end_of_wait_(::timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK))
{
    InitEZ();
    const std::string wanted = wanted_display(*argc, argv);
    const std::string program = *argc > 0 ? argv[0] : app_class;
    context_ = XtCreateApplicationContext();
    XtAppSetErrorHandler(context_, report_fatal);
    display_ = XtOpenDisplay(context_, nullptr, nullptr, app_class, nullptr, 0, argc, argv);
    if (display_ == nullptr) {
        std::fprintf(stderr, "%s: cannot open display \"%s\"\n", program.c_str(), wanted.c_str());
        std::exit(1);
    }
    theApplication = this;
    XSetErrorHandler(report_error);
    XSetIOErrorHandler(report_lost_display);
    set_font_resolution(display_);

    char* name = nullptr;
    char* class_name = nullptr;
    XtGetApplicationNameAndClass(display_, &name, &class_name);
    VkAddInstalledDefaults(display_, class_name);
    base_ = XtVaAppCreateShell(name, class_name, applicationShellWidgetClass, display_,
        XtNmappedWhenManaged, False, XtNwidth, 1, XtNheight, 1, nullptr);
    VkAddDefaults(base_, name, VkLooks());
    VkAddFonts(base_);
    Widget everywhere = XmGetXmDisplay(display_);
    XtAddCallback(everywhere, XmNdragStartCallback, refuse_drag, nullptr);
    XtVaSetValues(everywhere, XmNdragReceiverProtocolStyle, XmDRAG_NONE, nullptr);
}

void VkApp::run()
{
    for (;;) {
        XEvent event;
        XtAppNextEvent(context_, &event);
        XtDispatchEvent(&event);
    }
}

void VkApp::quit_yourself()
{
    for (size_t i = windows_.size(); i-- > 0;) {
        if (i < windows_.size() && !windows_[i]->okToQuit()) // asking may close windows
            return;
    }
    terminate(0);
}

void VkApp::terminate(int status) { std::exit(status); }

int VkApp::poll(pollfd* polled, size_t count, int milliseconds)
{
    const int ready = ::poll(polled, count, 0);
    if (ready != 0 || milliseconds <= 0)
        return ready;
    wait_for_any(polled, count, milliseconds);
    return ::poll(polled, count, 0);
}

// Only the toolkit knows when its next timer is due, so it has to do the waiting. This is the one
// of its waits that calls no work procedure and leaves the events where they are.
void VkApp::wait_for_any(const pollfd* polled, size_t count, int milliseconds)
{
    const itimerspec end {{}, {milliseconds / 1000, milliseconds % 1000 * 1000000L}};
    ::timerfd_settime(end_of_wait_.get(), 0, &end, nullptr);
    std::vector<XtInputId> inputs;
    const auto add = [&](int fd, XtInputMask mask) {
        inputs.push_back(XtAppAddInput(
            context_, fd, reinterpret_cast<XtPointer>(mask), [](XtPointer, int*, XtInputId*) {},
            nullptr));
    };
    add(end_of_wait_.get(), XtInputReadMask);
    for (const pollfd* one = polled; one < polled + count; ++one) {
        const XtInputMask reading = (one->events & POLLIN) != 0 ? XtInputReadMask : 0;
        const XtInputMask writing = (one->events & POLLOUT) != 0 ? XtInputWriteMask : 0;
        if (one->fd >= 0 && (reading | writing) != 0)
            add(one->fd, reading | writing);
    }
    XEvent event;
    XtAppPeekEvent(context_, &event);
    for (XtInputId input : inputs)
        XtRemoveInput(input);
}

// A local connection is writable while at most a quarter of its 200 KB and more is in use.
bool VkApp::takes_more()
{
    pollfd connection {connection_number(), POLLOUT, 0};
    stalled_ = ::poll(&connection, 1, stalled_ ? 0 : BUSY_MS) == 0;
    return !stalled_;
}

bool VkApp::enlist(VkSimpleWindow* window)
{
    windows_.push_back(window);
    return !std::exchange(any_window_, true);
}

void VkApp::strike(VkSimpleWindow* window) { std::erase(windows_, window); }

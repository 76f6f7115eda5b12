#include "platform/vk/app.h"

#include "platform/net/process_end.h"
#include "platform/vk/looks.h"
#include "platform/vk/resources.h"
#include "platform/vk/simple_window.h"

#include <X11/Shell.h>
#include <X11/StringDefs.h>
#include <X11/Xft/Xft.h>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <utility>

VkApp* theApplication = nullptr;

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
void report_fatal(char* message)
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

VkApp::VkApp(const char* appClass, int* argc, char** argv)
{
    InitEZ();
    const std::string wanted = wanted_display(*argc, argv);
    const std::string program = *argc > 0 ? argv[0] : appClass;
    context_ = XtCreateApplicationContext();
    XtAppSetErrorHandler(context_, report_fatal);
    display_ = XtOpenDisplay(context_, nullptr, nullptr, appClass, nullptr, 0, argc, argv);
    if (!display_) {
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
}

void VkApp::run()
{
    for (;;) {
        XEvent event;
        XtAppNextEvent(context_, &event);
        XtDispatchEvent(&event);
    }
}

void VkApp::quitYourself()
{
    for (size_t i = windows_.size(); i-- > 0;) {
        if (i < windows_.size() && !windows_[i]->okToQuit()) // asking may close windows
            return;
    }
    terminate(0);
}

void VkApp::terminate(int status) { std::exit(status); }

bool VkApp::enlist(VkSimpleWindow* window)
{
    windows_.push_back(window);
    return !std::exchange(any_window_, true);
}

void VkApp::strike(VkSimpleWindow* window) { std::erase(windows_, window); }

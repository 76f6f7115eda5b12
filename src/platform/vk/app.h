// The application as the toolkit sees it: display connection, resources, event loop.
#pragma once

#include "platform/base/fd.h"

#include <X11/Intrinsic.h>
#include <poll.h>
#include <vector>

class VkSimpleWindow;

/// One per process, made before any component and kept until the process ends.
/// User-interface thread only.
class VkApp {
public:
    /// Opens the display and takes the toolkit's options (-display, -geometry,
    /// -xrm, ...) out of `argc` and `argv`. The application resources are looked
    /// up under `appClass`. If the display cannot be opened, one line on
    /// standard error says so and the process exits with status 1; if it is lost
    /// later, the process ends by qd_end_process(1).
    VkApp(const char* app_class, int* argc, char** argv);
    VkApp(const VkApp&) = delete;
    VkApp& operator=(const VkApp&) = delete;

    /// The event loop: never returns. Work procedures run whenever no event is
    /// pending; a standing one must wait by itself (see pendingInput()).
    [[noreturn]] void run();

    /// Asks the windows, the newest first, whether the application may quit.
    /// The first refusal ends the matter, else the process exits with status 0.
    void quit_yourself();

    [[noreturn]] void terminate(int status = 0);

    XtAppContext app_context() const { return context_; }
    Display* display() const { return display_; }

    /// The never shown shell that all windows hang from.
    Widget base_widget() const { return base_; }

    /// The descriptor of the X connection, for waiting on it beside others.
    int connection_number() const { return ConnectionNumber(display_); }

    /// Sends what is to be sent and tells whether events or due timers wait to
    /// be handled, in which case nobody may sleep on connectionNumber().
    bool pending_input() const { return XtAppPending(context_) != 0; }

    /// Waits like poll(2), so that a work procedure can, and calls the toolkit's
    /// timers that come due meanwhile. An event of X's ends the wait, too.
    int poll(pollfd* polled, size_t count, int milliseconds);

    /// Whether some 50 KB can be drawn without waiting for the server. A server
    /// that is busy is waited for, once; one that has stopped, or that a window
    /// manager keeps to itself, is not: who draws comes again.
    bool takes_more();

    /// The windows in the order of their making.
    const std::vector<VkSimpleWindow*>& windows() const { return windows_; }

private:
    friend class VkSimpleWindow;
    /// Returns whether `window` is the first of all, to which -geometry, -iconic
    /// and -title belong.
    bool enlist(VkSimpleWindow* window);
    void strike(VkSimpleWindow* window);
    void wait_for_any(const pollfd* polled, size_t count, int milliseconds);

    XtAppContext context_ = nullptr;
    Display* display_ = nullptr;
    Widget base_ = nullptr;
    QD_Fd end_of_wait_;    // a timer
    bool stalled_ = false; // the server did not take what was drawn
    std::vector<VkSimpleWindow*> windows_;
    bool any_window_ = false;
};

/// The one application, null before it is made.
extern VkApp* theApplication;

// How soon the real client shows its window, started as a framework starts it.
#include "bench/budgets.h"
#include "bench/percentile.h"
#include "tests/support/client_under_test.h"
#include "tests/support/x_server.h"

#include <X11/Xlib.h>
#include <chrono>
#include <memory>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

constexpr int STARTS = 10;
constexpr auto PATIENCE = std::chrono::seconds(10);

/// A look at the screen from outside.
class Onlooker {
public:
    Onlooker() : display_(XOpenDisplay(nullptr), &XCloseDisplay)
    {
        XSelectInput(display_.get(), DefaultRootWindow(display_.get()), SubstructureNotifyMask);
        XSync(display_.get(), True);
    }

    /// Waits until a window of the size of the main window or larger appears.
    bool wait_for_window() const
    {
        return qd_wait_for(
            [&] {
                while (XPending(display_.get()) > 0) {
                    XEvent event;
                    XNextEvent(display_.get(), &event);
                    if (event.type == MapNotify && is_large(event.xmap.window))
                        return true;
                }
                return false;
            },
            PATIENCE);
    }

private:
    bool is_large(Window window) const
    {
        XWindowAttributes at {};
        return XGetWindowAttributes(display_.get(), window, &at) != 0 && at.width > 100
            && at.height > 100;
    }

    const std::unique_ptr<Display, int (*)(Display*)> display_;
};

}

int main()
{
    const QD_X_Server server;
    if (server.display().empty())
        return 1;
    std::vector<double> seconds;
    for (int i = 0; i < STARTS; ++i) {
        const Onlooker onlooker;
        const auto start = Clock::now();
        QD_Client_Under_Test client(2, {});
        if (!client.registered() || !onlooker.wait_for_window()) {
            fprintf(stderr, "no window\n");
            return 1;
        }
        seconds.push_back(std::chrono::duration<double>(Clock::now() - start).count());
        printf("start %d: %.3f s\n", i + 1, seconds.back());
        client.end();
    }
    return qd_report(QD_START, qd_median(seconds));
}

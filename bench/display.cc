// How long a picture takes to the screen: converted and put, and from the
// thread that posts it until the server has drawn it. Medians in milliseconds,
// on Xvfb at depth 24 and 16. usage: bench_display [ROUNDS]
#include "bench/budgets.h"
#include "bench/percentile.h"
#include "platform/base/wake.h"
#include "platform/vk/app.h"
#include "signalling/member.h"
#include "tests/support/bars.h"
#include "tests/support/x_server.h"
#include "ui/display_factory.h"
#include "ui/display_window.h"

#include <X11/StringDefs.h>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <poll.h>
#include <semaphore>
#include <thread>

namespace {

using Clock = std::chrono::steady_clock;

double milliseconds_since(Clock::time_point start)
{
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

void pump()
{
    XSync(theApplication->display(), False);
    while (theApplication->pending_input())
        XtAppProcessEvent(theApplication->app_context(), XtIMAll);
}

/// Two pictures in turn, so that nothing stays the same.
const unsigned char* picture(int round)
{
    static const std::vector<unsigned char> pictures[]
        = {qd_bars(), std::vector<unsigned char>(QD_Member::PICTURE_SIZE, 110)};
    return pictures[round % 2].data();
}

/// Scaled, converted and handed to the server; its own work, which goes on
/// meanwhile, counts as far as it holds up the writing.
double convert_and_put(int times, int rounds)
{
    DisplayWindowMainWindow window("bench");
    window.show();
    const int texts = Dpy_form::HEIGHT - VkPictureDisplay::HEIGHT;
    XtVaSetValues(window.base_widget(), XtNwidth, VkPictureDisplay::WIDTH * times, XtNheight,
        VkPictureDisplay::HEIGHT * times + texts, nullptr);
    pump();
    window.init_surface();
    std::vector<double> spent;
    for (int i = 0; i < rounds; ++i) {
        const auto start = Clock::now();
        window.draw(picture(i));
        XFlush(theApplication->display());
        spent.push_back(milliseconds_since(start));
        pump();
    }
    return qd_median(spent);
}

/// A thread posts to a member at rest; the loop wakes, serves the request, and
/// the server answers that it has drawn all.
double posted_to_drawn(int rounds)
{
    QD_Display_Windows windows(theApplication->base_widget());
    QD_Wake wake;
    QD_Member member("bench", 0);
    member.set_display(&windows, &wake);
    member.open_display();
    member.display(reinterpret_cast<const char*>(picture(0))); // prepares
    pump();

    std::atomic<Clock::time_point> posted;
    std::binary_semaphore drawn(1);
    std::thread poster([&] {
        for (int i = 0; i < rounds; ++i) {
            drawn.acquire();
            std::this_thread::sleep_for(std::chrono::milliseconds(5)); // the loop goes to sleep
            posted = Clock::now();
            member.display_req(reinterpret_cast<const char*>(picture(i)));
        }
    });
    std::vector<double> spent;
    while (static_cast<int>(spent.size()) < rounds) {
        pollfd watched[]
            = {{wake.get(), POLLIN, 0}, {theApplication->connection_number(), POLLIN, 0}};
        ::poll(watched, 2, 100);
        if (wake.take()) {
            member.handle_events();
            XSync(theApplication->display(), False);
            spent.push_back(milliseconds_since(posted));
            drawn.release();
        }
        pump();
    }
    poster.join();
    member.close_display();
    return qd_median(spent);
}

int measure(const char* screen, int rounds)
{
    char program[] = "bench";
    char* argv[] = {program, nullptr};
    int argc = 1;
    const VkApp application("Application", &argc, argv);
    const double normal = convert_and_put(1, rounds);
    const double large = convert_and_put(3, rounds);
    std::printf("%s: convert and put %.3f ms at 1x, %.3f ms at 3x\n", screen, normal, large);
    return qd_report(QD_POSTED_TO_DRAWN, posted_to_drawn(rounds), screen);
}

}

int main(int argc, char** argv)
{
    const int rounds = argc > 1 ? std::atoi(argv[1]) : 500;
    if (argc > 2) { // one screen: the process can have one display only
        const QD_X_Server server(argv[2]);
        return measure(argv[2], rounds);
    }
    int failed = 0;
    for (const char* screen : {"1280x1024x24", "1280x1024x16"})
        failed |= qd_run(
            {std::filesystem::read_symlink("/proc/self/exe"), std::to_string(rounds), screen});
    return failed;
}

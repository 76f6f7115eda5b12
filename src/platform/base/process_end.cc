#include "platform/base/process_end.h"

#include "platform/base/create_thread.h"
#include "platform/base/output.h"

#include <atomic>
#include <cstdlib>
#include <thread>
#include <unistd.h>

namespace {

std::atomic<void (*)()> to_save = nullptr;

void save_now()
{
    if (void (*save)() = to_save.exchange(nullptr))
        save();
}

}

void qd_save_at_end(void (*save)())
{
    [[maybe_unused]] static const int registered = atexit(save_now);
    to_save = save;
}

void qd_end_process(int status)
{
    save_now();
    qd_flush_output();
    _exit(status);
}

void qd_end_within(int seconds, int status)
{
    qd_run_detached([seconds, status] {
        for (int i = 0; i < seconds; ++i) // one by one: being stopped counts for little
            std::this_thread::sleep_for(std::chrono::seconds(1));
        qd_end_process(status);
    });
}

// How soon the window answers, and what the client costs when nothing happens.
#include "app/control_loop.h"
#include "app/main_window.h"
#include "app/termination.h"
#include "bench/budgets.h"
#include "bench/finger.h"
#include "tests/support/client_under_test.h"

#include <fstream>

namespace {

constexpr int INPUTS = 400;
constexpr auto IDLE_FOR = std::chrono::seconds(10);

int measure_inputs()
{
    QD_Test_App::get();
    QD_Test_Framework framework;
    QD_Termination termination;
    char number[] = "1";
    std::string port = framework.port();
    char* argv[] = {number, number, number, number, port.data(), nullptr};
    ctrlWorkProcHandle
        = XtAppAddWorkProc(theApplication->app_context(), ctrlWorkProc, &termination);
    mainWindow = new MainWindowMainWindow("bench", argv, 5, termination.get_handle());
    mainWindow->show();
    framework.accept();
    qd_pump();
    // Not one that opens anything.
    const std::vector<double> milliseconds
        = QD_Finger(qd_find(mainWindow->base_widget(), "acceptButton")).press_often(INPUTS, 60);
    printf("input to callback entered, %zu presses: median %.2f ms\n", milliseconds.size(),
        qd_median(milliseconds));
    delete mainWindow;
    mainWindow = nullptr;
    return milliseconds.size() < INPUTS
        || qd_report(QD_INPUT_TO_CALLBACK, qd_percentile(milliseconds, 0.95)) != 0;
}

// Nanoseconds of processor time of each thread so far, by its number and name.
std::map<std::string, double> thread_times(pid_t pid)
{
    std::map<std::string, double> times;
    const std::string tasks = "/proc/" + std::to_string(pid) + "/task";
    for (const auto& task : std::filesystem::directory_iterator(tasks)) {
        double nanoseconds = 0;
        std::ifstream(task.path() / "schedstat") >> nanoseconds;
        std::string name;
        std::getline(std::ifstream(task.path() / "comm") >> std::ws, name);
        if (task.path().filename() == std::to_string(pid))
            name = "user interface";
        times[task.path().filename().string() + " " + name] = nanoseconds;
    }
    return times;
}

/// Shares of one core, in percent.
struct Idle {
    double interface = 0;
    double process = 0;
};

Idle measure_idle(const char* what, const QD_Client_Under_Test& client)
{
    std::this_thread::sleep_for(std::chrono::seconds(3)); // what belongs to the start is over
    const auto before = thread_times(client.pid());
    std::this_thread::sleep_for(IDLE_FOR);
    const auto after = thread_times(client.pid());
    const double all = std::chrono::duration<double, std::nano>(IDLE_FOR).count();
    Idle shares;
    printf("%s, share of one core:\n", what);
    for (const auto& [thread, nanoseconds] : after) {
        const auto earlier = before.find(thread);
        const double used
            = 100 * (nanoseconds - (earlier == before.end() ? 0 : earlier->second)) / all;
        const std::string name = thread.substr(thread.find(' ') + 1);
        shares.process += used;
        if (name == "user interface")
            shares.interface = used;
        printf("    %-16s %.3f %%\n", name.c_str(), used);
    }
    printf("    %-16s %.3f %%\n", "together", shares.process);
    return shares;
}

}

int main()
{
    qd_use_test_address();
    setenv("QD_MIC", "silence", 1);
    setenv("QD_SPEAKER", "null", 1);
    int missed = measure_inputs();

    QD_Client_Under_Test client(2, {});
    const Idle alone = measure_idle("waiting for a conference", client);
    for (int id = 2; id <= 4; ++id)
        client.framework().announce(id, id, "member");
    const Idle joined = measure_idle("in a conference of three, hearing nothing", client);
    missed |= qd_report(QD_IDLE_INTERFACE, std::max(alone.interface, joined.interface));
    missed |= qd_report(QD_IDLE_PROCESS, std::max(alone.process, joined.process));
    return missed | (client.end() == 0 ? 0 : 1);
}

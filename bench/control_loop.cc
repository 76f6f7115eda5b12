// How soon the window answers, and what the client costs when nothing happens.
#include "app/control_loop.h"
#include "app/main_window.h"
#include "app/termination.h"
#include "tests/support/client_under_test.h"
#include "tests/support/finger.h"

#include <fstream>

namespace {

constexpr int INPUTS = 400;
constexpr auto IDLE_FOR = std::chrono::seconds(10);

void measure_inputs()
{
    QD_Test_App::get();
    QD_Test_Framework framework;
    QD_Termination termination;
    char number[] = "1";
    std::string port = framework.port();
    char* argv[] = {number, number, number, number, port.data(), nullptr};
    ctrlWorkProcHandle = XtAppAddWorkProc(theApplication->appContext(), ctrlWorkProc, &termination);
    mainWindow = new MainWindowMainWindow("bench", argv, 5, termination.get_handle());
    mainWindow->show();
    framework.accept();
    qd_pump();
    // Not one that opens anything.
    const std::vector<double> milliseconds
        = QD_Finger(qd_find(mainWindow->baseWidget(), "acceptButton")).press_often(INPUTS, 60);
    printf("input to callback entered, %zu presses: median %.2f ms, 95th percentile %.2f ms"
           " (budget 2 ms)\n",
        milliseconds.size(), qd_percentile(milliseconds, 0.5), qd_percentile(milliseconds, 0.95));
    delete mainWindow;
    mainWindow = nullptr;
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

void measure_idle(const char* what, QD_Client_Under_Test& client)
{
    std::this_thread::sleep_for(std::chrono::seconds(3)); // what belongs to the start is over
    const auto before = thread_times(client.pid());
    std::this_thread::sleep_for(IDLE_FOR);
    const auto after = thread_times(client.pid());
    const double all = std::chrono::duration<double, std::nano>(IDLE_FOR).count();
    double sum = 0;
    printf("%s, share of one core:\n", what);
    for (const auto& [thread, nanoseconds] : after) {
        const auto earlier = before.find(thread);
        const double used = nanoseconds - (earlier == before.end() ? 0 : earlier->second);
        sum += used;
        printf(
            "    %-16s %.3f %%\n", thread.substr(thread.find(' ') + 1).c_str(), 100 * used / all);
    }
    printf("    %-16s %.3f %% (budget: user interface 0.2 %%, together 2 %%)\n", "together",
        100 * sum / all);
}

}

int main()
{
    qd_use_test_address();
    setenv("QD_MIC", "silence", 1);
    setenv("QD_SPEAKER", "null", 1);
    measure_inputs();

    QD_Client_Under_Test client(2, {});
    measure_idle("waiting for a conference", client);
    for (int id = 2; id <= 4; ++id)
        client.framework().announce(id, id, "member");
    measure_idle("in a conference of three, hearing nothing", client);
    return client.end() == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}

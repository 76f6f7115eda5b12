#include "tests/support/program.h"

#include <filesystem>

namespace {

size_t count_in(const char* directory)
{
    return static_cast<size_t>(std::distance(std::filesystem::directory_iterator(directory), {}));
}

}

TEST(MainWindow, CallOpensOneDialogOptionsOneEachTimeAndNothingIsLeftBehind)
{
    size_t descriptors = 0;
    size_t threads = 0;
    for (int round = 0; round < 2; ++round) { // the first makes what the process keeps
        {
            QD_Program program;
            program.framework.announce(1, 1, "me");
            program.framework.announce(2, 2, "other");
            EXPECT_TRUE(
                program.run_until([] { return QD_Session_Ref()->get_member(2) != nullptr; }));
            const size_t windows = theApplication->windows().size();
            for (int i = 0; i < 2; ++i) {
                qd_click(qd_find(mainWindow->base_widget(), "callButton"));
                MainWindowMainWindow::optionsCallback(nullptr, mainWindow, nullptr);
            }
            EXPECT_EQ(theApplication->windows().size(), windows + 1 + 2);
        }
        EXPECT_TRUE(theApplication->windows().empty());
        if (round > 0) {
            EXPECT_EQ(count_in("/proc/self/fd"), descriptors);
            EXPECT_EQ(count_in("/proc/self/task"), threads);
        }
        descriptors = count_in("/proc/self/fd");
        threads = count_in("/proc/self/task");
    }
}

TEST(MainWindow, WithoutCallsNobodyCalls)
{
    setenv("QD_CALLS", "none", 1);
    QD_Program program;
    unsetenv("QD_CALLS");
    EXPECT_FALSE(XtIsSensitive(qd_find(mainWindow->base_widget(), "callButton")));
    const QD_Fd caller(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const sockaddr_in us {AF_INET, htons(5000), {qd_test_host(1)}, {}};
    EXPECT_EQ(::connect(caller.get(), reinterpret_cast<const sockaddr*>(&us), sizeof us), -1);
    EXPECT_EQ(errno, ECONNREFUSED);
}

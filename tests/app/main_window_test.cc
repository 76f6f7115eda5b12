#include <gtest/gtest.h> // before all X headers: their macros would spoil it

#include "app/control_loop.h"
#include "app/main_window.h"
#include "app/termination.h"
#include "tests/support/framework.h"
#include "tests/support/stream_pair.h"
#include "tests/support/temp_dir.h"
#include "tests/support/x_app.h"

#include <Xm/List.h>
#include <csignal>
#include <filesystem>
#include <thread>

namespace {

size_t count_in(const char* directory)
{
    return static_cast<size_t>(std::distance(std::filesystem::directory_iterator(directory), {}));
}

// Sockets of this process, by what /proc says of its descriptors.
size_t sockets()
{
    size_t count = 0;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code gone;
        count += std::filesystem::read_symlink(entry.path(), gone).string().starts_with("socket:");
    }
    return count;
}

// The program as main() sets it up, with the test as its framework. Everything
// is made for one test and one process: ways out end the process.
struct Program {
    Program()
    {
        qd_use_test_address();
        setenv("QD_MIC", "tone:440", 1);
        setenv("QD_SPEAKER", "null", 1);
        QD_Test_App::get();
        std::thread([] {}).join(); // a sanitizer's own thread comes with the first one
        threads = count_in("/proc/self/task");
        sockets_before = sockets();
        char number[] = "1";
        std::string port = framework.port();
        char* argv[] = {number, number, number, number, port.data(), nullptr};
        ctrlWorkProcHandle
            = XtAppAddWorkProc(theApplication->appContext(), ctrlWorkProc, &termination);
        mainWindow = new MainWindowMainWindow(
            "Quendal Videoconferencing", argv, 5, termination.get_handle());
        mainWindow->show();
        framework.accept();
    }

    Widget find(const char* name) const { return qd_find(mainWindow->baseWidget(), name); }

    // Runs the control loop until the framework's events have been handled.
    void handle_all()
    {
        framework.send_event(51, "ping");
        pollfd answer {framework.descriptor(), POLLIN, 0};
        while (::poll(&answer, 1, 0) == 0)
            ctrlWorkProc(&termination);
        framework.hear(12);
    }

    QD_Test_Framework framework;
    QD_Termination termination;
    size_t threads = 0;
    size_t sockets_before = 0;
};

// At the very end of the process, after all that was registered to run there:
// no thread and no socket is left, but for those that may be, and the options are on the disk.
size_t threads_at_first = 0;
size_t sockets_allowed = 0;

void check_what_is_left()
{
    const size_t threads = count_in("/proc/self/task");
    const size_t left = sockets();
    const std::string home = getenv("HOME");
    const bool saved = qd_read_file(home + "/.qd.cfg").size() == 280;
    std::filesystem::remove_all(home);
    if (threads == threads_at_first && left == sockets_allowed && saved)
        fprintf(stderr, "all is gone and saved\n");
    else
        fprintf(stderr, "%zu threads, %zu sockets, saved: %d\n", threads, left, saved);
}

// Leaves by `way`, which does not return.
template <class Way> void leave(bool link_may_stay, Way way)
{
    // Before the session controller is made, so that it runs after its last word.
    QD_Test_App::get();
    atexit(check_what_is_left);
    char home[] = "/tmp/quendal-test-XXXXXX";
    setenv("HOME", mkdtemp(home), 1);
    auto* program = new Program;
    threads_at_first = program->threads;
    // The framework's end is in this process as well: listener and link.
    sockets_allowed = program->sockets_before + 1 + (link_may_stay ? 1 : 0);
    program->framework.announce(1, 1, "me");
    program->framework.announce(2, 2, "other");
    program->handle_all();
    way(*program);
}

class MainWindowDeathTest : public testing::Test {
protected:
    MainWindowDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

void run_loop(Program& program)
{
    for (;;)
        ctrlWorkProc(&program.termination);
}

}

TEST_F(MainWindowDeathTest, EveryWayOutLeavesNothingBehind)
{
    const auto well = testing::ExitedWithCode(0);
    const char* const gone = "all is gone and saved";
    const auto menu = [](Program& program) {
        XtCallCallbacks(program.find("exitButton"), XmNactivateCallback, nullptr);
    };
    EXPECT_EXIT(leave(false, menu), well, gone);
    // The window manager's way alone keeps the framework link to the last.
    const auto window_manager = [](Program&) { qd_close_window(mainWindow->baseWidget()); };
    EXPECT_EXIT(leave(true, window_manager), well, gone);
    const auto framework = [](Program& program) {
        program.framework.end_session();
        run_loop(program);
    };
    EXPECT_EXIT(leave(false, framework), well, gone);
    const auto terminated = [](Program& program) {
        raise(SIGTERM);
        run_loop(program);
    };
    EXPECT_EXIT(leave(false, terminated), well, gone);
}

TEST(MainWindow, ListsMembersSettlesTheCutOffAndForgetsOnReset)
{
    Program program;
    auto* form = dynamic_cast<MainForm*>(QD_Session_Ref()->getMainForm());
    ASSERT_NE(form, nullptr);
    Dimension width = 0;
    Dimension height = 0;
    XtVaGetValues(form->baseWidget(), XmNwidth, &width, XmNheight, &height, nullptr);
    EXPECT_EQ(width, 234);
    EXPECT_EQ(height, 298);
    EXPECT_EQ(mainWindow->title(), "Quendal Videoconferencing");

    const Widget list = qd_find(form->getStatWnd()->baseWidget(), "statUsersList");
    const auto lines = [&] {
        int count = 0;
        XtVaGetValues(list, XmNitemCount, &count, nullptr);
        return count;
    };
    for (int id = 1; id <= 101; ++id)
        program.framework.announce(id, id, "member " + std::to_string(id));
    program.handle_all();
    EXPECT_EQ(lines(), 101);
    program.framework.announce(7, 7, "member 7");
    program.framework.remove(7, 7);
    program.framework.remove(7, 7);
    program.framework.remove(8, 8);
    program.handle_all();
    EXPECT_EQ(lines(), 100) << "two lines for the one announced twice, of which one is gone";
    program.framework.announce(8, 8, "member 8");
    program.handle_all();
    EXPECT_EQ(lines(), 101);

    mainWindow->setMicCutoffLevel(30);
    EXPECT_EQ(QD_Session_Ref()->get_options()->mic_cutoff, 30);
    EXPECT_EQ(QD_Session_Ref()->get_options()->volume, 125);
    MainWindowMainWindow::resetCallback(nullptr, mainWindow, nullptr);
    EXPECT_EQ(QD_Session_Ref()->get_member_list()->size(), 0u);

    SOCK_Stream caller;
    sockaddr_in to {};
    to.sin_family = AF_INET;
    to.sin_port = htons(5000);
    to.sin_addr.s_addr = qd_test_host(1);
    ASSERT_EQ(SOCK_Connector().connect(&caller, &to), 0);
    const std::string call = qd_header_image(62, 0, "eva", std::string(4, '\x7f'), 35);
    caller.send_n((call + std::string(35, '\0')).data(), 56 + 35);
    ASSERT_TRUE(qd_pump_until([&] {
        ctrlWorkProc(&program.termination);
        return caller.fetch(56);
    })) << "calls are answered by the control loop";
    EXPECT_EQ(caller.received()[0], 0) << "accepted";

    delete mainWindow;
    mainWindow = nullptr;
    EXPECT_TRUE(caller.fetch(57)) << "and end with the window";
    EXPECT_EQ(ctrlWorkProcHandle, 0u);
    EXPECT_EQ(ctrlWorkProc(&program.termination), False);
}

TEST(MainWindow, CallOpensOneDialogWhichGoesWithTheWindow)
{
    Program program;
    const auto dialogs = [] {
        const auto& windows = theApplication->windows();
        return std::count_if(windows.begin(), windows.end(),
            [](const VkSimpleWindow* window) { return window->title() == "Call"; });
    };
    qd_click(program.find("callButton"));
    qd_click(program.find("callButton"));
    EXPECT_EQ(dialogs(), 1);
    delete mainWindow;
    mainWindow = nullptr;
    EXPECT_EQ(dialogs(), 0);
}

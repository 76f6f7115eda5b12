#include "tests/support/program.h"
#include "tests/support/temp_dir.h"

#include <csignal>

namespace {

// At the very end of the process, after all that was registered to run there:
// no thread and no socket is left, but for those that may be, and the options are on the disk.
size_t threads_at_first = 0;
size_t sockets_allowed = 0;

void check_what_is_left()
{
    const size_t threads = qd_count_in("/proc/self/task");
    const size_t left = qd_sockets();
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
    auto* program = new QD_Program;
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

// It goes with the test.
struct Program : QD_Program {
    ~Program()
    {
        delete mainWindow;
        mainWindow = nullptr;
    }
};

void run_loop(QD_Program& program)
{
    for (;;)
        ctrlWorkProc(&program.termination);
}

}

TEST_F(MainWindowDeathTest, EveryWayOutLeavesNothingBehind)
{
    const auto well = testing::ExitedWithCode(0);
    const char* const gone = "all is gone and saved";
    const auto menu = [](QD_Program& program) {
        XtCallCallbacks(program.find("exitButton"), XmNactivateCallback, nullptr);
    };
    EXPECT_EXIT(leave(false, menu), well, gone);
    // The window manager's way alone keeps the framework link to the last.
    const auto window_manager = [](QD_Program&) { qd_close_window(mainWindow->baseWidget()); };
    EXPECT_EXIT(leave(true, window_manager), well, gone);
    const auto framework = [](QD_Program& program) {
        program.framework.end_session();
        run_loop(program);
    };
    EXPECT_EXIT(leave(false, framework), well, gone);
    const auto terminated = [](QD_Program& program) {
        raise(SIGTERM);
        run_loop(program);
    };
    EXPECT_EXIT(leave(false, terminated), well, gone);
}

TEST(MainWindow, MenusHaveTheirTextsAndKeysAndSomeAreNotBuilt)
{
    Program program;
    struct {
        const char* widget;
        const char* label;
        KeySym mnemonic;
        const char* key = nullptr; // of the accelerator, with Ctrl
    } const cases[]
        = {{"filePane", "File", 'F'}, {"exitButton", "Exit", 'x', "Q"}, {"editPane", "Edit", 'E'},
            {"optionsButton", "Options", 'O', "O"}, {"viewPane", "View", 'V'},
            {"audioPanelButton", "Audio Panel", 'P'}, {"statButton", "Statistics", 'S', "S"}};
    for (const auto& c : cases) {
        KeySym mnemonic = 0;
        char* accelerator = nullptr;
        XtVaGetValues(
            program.find(c.widget), XmNmnemonic, &mnemonic, XmNaccelerator, &accelerator, nullptr);
        EXPECT_EQ(qd_label(program.find(c.widget)), c.label);
        EXPECT_EQ(mnemonic, c.mnemonic) << c.label;
        EXPECT_EQ(accelerator ? accelerator : "", c.key ? "Ctrl<Key>" + std::string(c.key) : "");
        XtFree(accelerator);
    }
    for (const char* widget : {"resetButton", "toolsPane", "helpPane", "directoryPane"})
        EXPECT_EQ(program.find(widget), nullptr) << widget;
}

TEST(MainWindow, CallOpensOneDialogOptionsOneEachTimeAndAllGoWithTheWindow)
{
    Program program;
    const auto dialogs = [](const char* title) {
        const auto& windows = theApplication->windows();
        return std::count_if(windows.begin(), windows.end(),
            [&](const VkSimpleWindow* window) { return window->title() == title; });
    };
    for (int i = 0; i < 2; ++i) {
        qd_click(program.find("callButton"));
        MainWindowMainWindow::optionsCallback(nullptr, mainWindow, nullptr);
    }
    EXPECT_EQ(dialogs("Call"), 1);
    EXPECT_EQ(dialogs("Options"), 2);
    delete mainWindow;
    mainWindow = nullptr;
    EXPECT_EQ(dialogs("Call") + dialogs("Options"), 0);
}

#include "tests/support/program.h"
#include "tests/support/stream_pair.h"
#include "tests/support/temp_dir.h"

#include <Xm/List.h>
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
    const auto key = [](QD_Program& program) {
        XtCallActionProc(program.find("usersList"), "quit", nullptr, nullptr, 0);
    };
    EXPECT_EXIT(leave(false, key), well, gone);
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

TEST(MainWindow, MenusHaveTheirTextsAndKeysAlsoThoseThatAreNotBuilt)
{
    QD_Program program;
    struct {
        const char* widget;
        bool built;
        const char* label;
        const char* mnemonic;
        const char* accelerator; // and its text begins with "Ctrl+"
    } const cases[] = {
        {"filePane", true, "File", "F", nullptr},
        {"resetButton", false, "Reset Session", "R", "R"},
        {"exitButton", true, "Exit", "x", "Q"},
        {"editPane", true, "Edit", "E", nullptr},
        {"optionsButton", true, "Options", "O", "O"},
        {"viewPane", true, "View", "V", nullptr},
        {"audioPanelButton", true, "Audio Panel", "P", nullptr},
        {"statButton", true, "Statistics", "S", "S"},
        {"toolsPane", false, "Tools", "T", nullptr},
        {"chatButton", false, "Text Chat", "C", nullptr},
        {"helpPane", false, "Help", "H", nullptr},
        {"help_overview", false, "Overview", "O", nullptr},
        {"directoryPane", false, "Directory", nullptr, nullptr},
        {"usersButton", false, "Active Users", "U", nullptr},
        {"confButton", false, "Conferences", "C", nullptr},
    };
    for (const auto& c : cases) {
        const auto resource = [&](const char* name) -> std::string {
            XrmValue value {};
            char* type = nullptr;
            const std::string whole = std::string("test.menu.") + c.widget + "." + name;
            if (!XrmGetResource(XtDatabase(theApplication->display()), whole.c_str(),
                    "Application.Menu.Entry.Resource", &type, &value))
                return "";
            return value.addr;
        };
        SCOPED_TRACE(c.widget);
        EXPECT_EQ(program.find(c.widget) != nullptr, c.built);
        EXPECT_EQ(resource("labelString"), c.label);
        EXPECT_EQ(resource("mnemonic"), c.mnemonic ? c.mnemonic : "");
        const std::string key = c.accelerator ? c.accelerator : "";
        EXPECT_EQ(resource("accelerator"), key.empty() ? "" : "Ctrl<Key>" + key);
        EXPECT_EQ(resource("acceleratorText"), key.empty() ? "" : "Ctrl+" + key);
    }
    delete mainWindow;
    mainWindow = nullptr;
}

// What a key of the user's own calls.
TEST(MainWindow, EveryOperationIsAnActionOfTheToolkit)
{
    QD_Program program;
    auto* form = dynamic_cast<MainForm*>(QD_Session_Ref()->getMainForm());
    const auto act = [&](const char* action) {
        XtCallActionProc(program.find("usersList"), action, nullptr, nullptr, 0);
    };
    testing::internal::CaptureStderr();
    for (const char* action : {"conf", "overview", "users", "chat"})
        act(action);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
        "MainForm::conf: not implemented\nMainForm::overview: not implemented\n"
        "MainForm::users: not implemented\n");
    act("statistics");
    EXPECT_TRUE(form->getStatWnd()->shown());
    program.framework.announce(1, 1, "me");
    program.handle_all();
    act("reset");
    EXPECT_EQ(QD_Session_Ref()->get_member_list()->size(), 0u);
    delete mainWindow;
    mainWindow = nullptr;
}

TEST(MainWindow, NamesOfAnyKindComeAndGoWhetherTheirListIsSeenOrNot)
{
    QD_Program program;
    auto* window = dynamic_cast<MainForm*>(QD_Session_Ref()->getMainForm())->getStatWnd();
    const auto lines = [&] {
        int count = 0;
        XtVaGetValues(
            qd_find(window->baseWidget(), "statUsersList"), XmNitemCount, &count, nullptr);
        return count;
    };
    const std::string names[] = {"me", "two  words ", "a.b*c", "J\xc3\xb6rg", "\xff\xfe",
        "\xff\xfd", "", "tab\tand\nline", "%s%n", "twenty-three letters ab\xc3\xb6"};
    const int count = std::size(names);
    for (bool seen : {false, true}) {
        if (seen)
            window->show();
        for (int id = 1; id <= count; ++id) {
            program.framework.announce(id, id, names[id - 1]);
            // Its picture's window, too, must bear the name.
            program.handle_all();
            QD_Member* member = QD_Session_Ref()->get_member(id);
            ASSERT_NE(member, nullptr) << names[id - 1];
            EXPECT_EQ(member->open_display(), 0);
        }
        qd_pump();
        EXPECT_EQ(lines(), count);
        for (int id = count; id >= 1; --id)
            program.framework.remove(id, id);
        program.handle_all();
        qd_pump();
        EXPECT_EQ(lines(), 0) << seen;
    }
    delete mainWindow;
    mainWindow = nullptr;
}

TEST(MainWindow, ListsMembersSettlesTheCutOffAndForgetsOnReset)
{
    QD_Program program;
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
    QD_Program program;
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

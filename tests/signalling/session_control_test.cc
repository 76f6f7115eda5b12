#include "signalling/options_file.h"
#include "tests/support/session.h"

#include <csignal>
#include <future>
#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>

using testing::ElementsAre;

using SessionControlTest = QD_Session_Test;

TEST_F(SessionControlTest, MembersAreListedNumberedAndTheLocalOneIsFoundByAddress)
{
    join(30, 2, "bernt");
    EXPECT_EQ(session_->get_local_id(), QD_Session_Control::NO_LOCAL_ID);
    join(20, 1, "anna");
    join(30, 2, "bernt");
    const QD_Roster_Ptr roster = session_->get_roster();
    ASSERT_EQ(roster->entries.size(), 2u);
    EXPECT_EQ(roster->local_id, 20);
    EXPECT_EQ(roster->entries[1].internal_id, 2);
    EXPECT_EQ(session_->delete_member(30), 0);
    EXPECT_THAT(form_.listed, ElementsAre(text("anna", 1)));
    EXPECT_EQ(roster->entries.size(), 2u) << "a roster in someone's hands does not change";
}

TEST_F(SessionControlTest, MembersServeOneRequestATimeOpenBeforePictureBeforeClose)
{
    join(4, 9);
    QD_Member& member = *session_->get_member(4);
    const std::string picture(QD_Member::PICTURE_SIZE, 'y');
    member.close_dpy_req();
    member.display_req(picture.data());
    member.display_req(picture.data()); // takes its place, and asks for nothing more
    member.open_dpy_req();
    // The first picture after opening only prepares the window.
    EXPECT_THAT(serve(), ElementsAre("shown", "prepared", "closed"));
    int raised = 0;
    while (session_->get_wake().take())
        ++raised;
    EXPECT_EQ(raised, 3);
}

namespace {

// A display that stalls: each of its operations lasts until `meanwhile` is over.
struct Stalled_Displays : QD_Display_Factory {
    std::function<void()> meanwhile;
    int operations = 0;

    void stall()
    {
        ++operations;
        EXPECT_EQ(
            std::async(meanwhile).wait_for(std::chrono::seconds(10)), std::future_status::ready);
    }
    struct Window : QD_Display_View {
        Stalled_Displays& all;
        explicit Window(Stalled_Displays& displays) : all(displays) {}
        ~Window() override { all.stall(); }
        void show() override { all.stall(); }
        void init_surface() override { all.stall(); }
        void draw(const unsigned char*) override { all.stall(); }
        void setStatistics(const char*, const char*) override { all.stall(); }
    };
    std::unique_ptr<QD_Display_View> make_display(const char*) override
    {
        stall();
        return std::make_unique<Window>(*this);
    }
};

}

TEST_F(SessionControlTest, MediaThreadsGoOnWhileADisplayStalls)
{
    const std::string picture(QD_Member::PICTURE_SIZE, 'y');
    const rtp_fix_header header;
    Stalled_Displays displays;
    displays.meanwhile = [&] {
        const QD_Session_Hold hold(session_);
        if (QD_Member* member = session_->get_member(4)) {
            member->update_audio_stat(&header, 1600);
            member->update_video_stat(&header, 1600);
            member->display_req(picture.data());
        }
    };
    session_->set_display_factory(&displays);
    const std::function<void()> ways_out[] = {
        [&] { session_->delete_member(4); },
        [&] { session_->reset(); },
        [&] { session_->quit(); },
    };
    for (const auto& leave : ways_out) {
        join(4, 9);
        session_->get_member(4)->display_req(picture.data());
        displays.operations = 0;
        for (int pass = 0; pass < 6; ++pass)
            session_->handle_member_events(); // each picture posted meanwhile is one more
        const int before = displays.operations;
        EXPECT_GE(before, 6);
        leave();
        EXPECT_EQ(displays.operations, before + 1) << "closed";
    }
    session_->set_display_factory(&displays_);
}

TEST_F(SessionControlTest, AShortOptionsFileCountsForNothingAndAFullDiskLeavesTheOldOne)
{
    const std::string old(279, 'x');
    QD_Session_Control::destroy();
    qd_write_file(home_.file(".qd.cfg"), old);
    session_ = QD_Session_Control::instance();
    const _options options = *session_->get_options();
    EXPECT_EQ(std::tie(options.volume, options.mic_volume, options.fps_max, options.auto_accept),
        std::tuple(125, 125, 5, 1));
    EXPECT_STREQ(options.local_name, "user");

    signal(SIGXFSZ, SIG_IGN);
    rlimit before {};
    getrlimit(RLIMIT_FSIZE, &before);
    const rlimit full {100, before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &full);
    EXPECT_EQ(qd_write_options_file(options), -1);
    setrlimit(RLIMIT_FSIZE, &before);
    EXPECT_EQ(qd_read_file(home_.file(".qd.cfg")), old);
}

TEST_F(SessionControlTest, TheOptionsFileMayBeALinkAndKeepsItsModeAndNothingElseIsReplaced)
{
    const std::string cfg = home_.file(".qd.cfg");
    const auto mode = [&] { return std::filesystem::status(cfg).permissions(); };
    using enum std::filesystem::perms;
    _options options;
    options.volume = 77;
    EXPECT_EQ(qd_write_options_file(options), 0);
    EXPECT_EQ(mode(), owner_read | owner_write) << "when new";
    std::filesystem::permissions(cfg, owner_read | owner_write | group_read);
    std::filesystem::create_directory(home_.file("dots"));
    std::filesystem::rename(cfg, home_.file("dots/quendal"));
    std::filesystem::create_symlink("dots/quendal", cfg);
    options.volume = 78;
    EXPECT_EQ(qd_write_options_file(options), 0);
    EXPECT_TRUE(std::filesystem::is_symlink(cfg));
    EXPECT_EQ(mode(), owner_read | owner_write | group_read);
    EXPECT_EQ(session_->restore_options(), 0);
    EXPECT_EQ(session_->get_options()->volume, 78);
    std::filesystem::remove(home_.file("dots/quendal"));
    EXPECT_EQ(qd_write_options_file(options), 0);
    EXPECT_TRUE(std::filesystem::exists(home_.file("dots/quendal")))
        << "a link to what is not there";

    for (auto* make : {+[](const char* path) { return ::mkfifo(path, 0600); },
             +[](const char* path) { return ::mkdir(path, 0700); },
             +[](const char* path) { return ::symlink(path, path); }}) {
        std::filesystem::remove(cfg);
        ASSERT_EQ(make(cfg.c_str()), 0);
        const auto before = std::filesystem::symlink_status(cfg).type();
        EXPECT_EQ(session_->restore_options(), -1) << "and does not wait";
        EXPECT_EQ(qd_write_options_file(options), -1);
        EXPECT_EQ(std::filesystem::symlink_status(cfg).type(), before);
    }
}

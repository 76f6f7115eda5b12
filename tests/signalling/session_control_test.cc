#include "signalling/options_file.h"
#include "tests/support/session.h"

#include <csignal>
#include <gmock/gmock.h>
#include <sys/resource.h>

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

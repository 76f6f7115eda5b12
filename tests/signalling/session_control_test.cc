#include "tests/support/session.h"

#include <gmock/gmock.h>
#include <thread>

using testing::ElementsAre;

namespace {

class SessionControlTest : public QD_Session_Test {
protected:
    void receive(int id, int packets)
    {
        const rtp_fix_header header;
        QD_Session_Hold hold(session_);
        for (int i = 0; i < packets; ++i)
            session_->get_member(id)->update_audio_stat(&header, 100);
    }
};

}

TEST_F(SessionControlTest, TheLastHolderSavesTheOptions)
{
    EXPECT_EQ(QD_Session_Control::instance(), session_);
    session_->get_options()->volume = 33;
    QD_Session_Control::destroy();
    EXPECT_EQ(qd_read_file(home_.file(".qd.cfg")), "");
    QD_Session_Control::destroy();
    EXPECT_EQ(qd_read_file(home_.file(".qd.cfg")).size(), 280u);
    QD_Session_Control::destroy(); // one too many does no harm
    session_ = QD_Session_Control::instance();
    EXPECT_EQ(session_->get_options()->volume, 33);
}

TEST_F(SessionControlTest, AShortOptionsFileGivesDefaultsForEveryField)
{
    QD_Session_Control::destroy();
    qd_write_file(home_.file(".qd.cfg"), std::string(279, 'x'));
    session_ = QD_Session_Control::instance();
    const _options* options = session_->get_options();
    EXPECT_EQ(std::tie(options->volume, options->mic_volume, options->fps_max, options->mic_cutoff,
                  options->auto_accept),
        std::tuple(125, 125, 5, 0, 1));
    EXPECT_STREQ(options->local_name, "user");
    EXPECT_STREQ(options->email, "");
}

TEST_F(SessionControlTest, MembersAreListedNumberedAndTheLocalOneIsFoundByAddress)
{
    join(30, 2, "bernt");
    EXPECT_EQ(session_->get_local_id(), 255);
    join(20, 1, "anna");
    EXPECT_THAT(form_.stat.users, ElementsAre(text("bernt", 2), text("anna", 1)));
    EXPECT_EQ(form_.statuses.back(), "New user joined");
    const QD_Roster_Ptr roster = session_->get_roster();
    ASSERT_EQ(roster->entries.size(), 2u);
    EXPECT_EQ(roster->local_id, 20);
    EXPECT_EQ(roster->entries[0].internal_id, 1);
    EXPECT_EQ(roster->entries[1].host, qd_test_host(2));

    EXPECT_EQ(session_->delete_member(30), 0);
    EXPECT_EQ(session_->delete_member(30), -1);
    EXPECT_THAT(form_.stat.users, ElementsAre(text("anna", 1)));
    EXPECT_EQ(form_.statuses.back(), "User left");
    EXPECT_EQ(roster->entries.size(), 2u) << "a roster in someone's hands does not change";
    session_->reset();
    EXPECT_EQ(session_->get_member_list()->size() + session_->get_roster()->entries.size(), 0u);
    EXPECT_EQ(session_->get_local_id(), 20);
    join(30, 2);
    EXPECT_EQ(session_->get_member(30)->get_internal_id(), 2) << "numbers are not used again";
}

TEST_F(SessionControlTest, TheSameIdTwiceIsOneMemberThatKeepsItsFiguresAndTwoLines)
{
    join(5, 3, "dora");
    receive(5, 4);
    join(5, 3, "dora");
    EXPECT_EQ(session_->get_member_list()->size(), 1u);
    EXPECT_EQ(session_->get_member(5)->get_audio_data()->frames_received, 3);
    EXPECT_EQ(form_.stat.users.size(), 2u);
    EXPECT_EQ(session_->delete_member(5), 0);
    EXPECT_EQ(session_->delete_member(5), -1);
    EXPECT_THAT(form_.stat.users, ElementsAre(text("dora", 3)));
}

TEST_F(SessionControlTest, FiguresAreShownOfTheSelectedStringAndRefreshedEveryFifthOrThirdTime)
{
    join(1, 4, "twin");
    join(2, 4, "twin");
    join(3, 4, "other");
    receive(2, 9);
    receive(3, 5);
    session_->update_stat(text("twin", 4).c_str());
    ASSERT_EQ(form_.stat.audio.size(), 2u);
    EXPECT_FALSE(form_.stat.audio[0]) << "no packets yet";
    EXPECT_EQ(form_.stat.audio[1]->frames_received, 8) << "the last in the map's order wins";
    EXPECT_EQ(form_.stat.video.size(), 2u);
    session_->update_stat("nobody");
    EXPECT_EQ(form_.stat.audio.size(), 2u);

    form_.stat = {};
    form_.stat.selected = text("twin", 4);
    for (int call = 0; call < 11; ++call) {
        session_->update_audio_stat(session_->get_member(1));
        session_->update_audio_stat(session_->get_member(3));
    }
    for (int call = 0; call < 7; ++call)
        session_->update_video_stat(session_->get_member(1));
    EXPECT_EQ(form_.stat.audio.size(), 3u);
    EXPECT_EQ(form_.stat.video.size(), 3u);
}

TEST_F(SessionControlTest, PicturesPostedWhileMembersComeAndGoReachOnlyMembers)
{
    QD_Fake_Displays displays;
    session_->set_display_factory(&displays);
    std::atomic<bool> going = true;
    std::thread media([&] {
        const std::string picture(QD_Member::PICTURE_SIZE, '\0');
        const rtp_fix_header header;
        while (going) {
            QD_Session_Hold hold(session_);
            if (QD_Member* member = session_->get_member(8)) {
                member->display_req(picture.data());
                member->update_video_stat(&header, 10);
            }
        }
    });
    for (int round = 0; round < 200; ++round) {
        join(8, 5, "eva");
        session_->handle_member_events();
        session_->update_stat(text("eva", 5).c_str());
        session_->delete_member(8);
    }
    going = false;
    media.join();
    EXPECT_EQ(displays.open, 0);
}

#include "signalling/session_control.h"

#include "tests/support/fake_views.h"
#include "tests/support/loopback.h"
#include "tests/support/temp_dir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <thread>

using testing::ElementsAre;

namespace {

class SessionControlTest : public testing::Test {
protected:
    SessionControlTest()
    {
        qd_use_test_address();
        setenv("HOME", home_.path().c_str(), 1);
        session_ = QD_Session_Control::instance();
        session_->setGUI(nullptr, &form_);
    }
    ~SessionControlTest() override { QD_Session_Control::destroy(); }

    static std::string text(const char* name, int host)
    {
        return name + ("@" + qd_test_address(host));
    }

    void join(int id, const char* name, int host)
    {
        EXPECT_EQ(session_->new_member(new QD_Member(nullptr, id, name, qd_test_host(host))), 0);
    }

    void receive(int id, int packets)
    {
        const rtp_fix_header header;
        QD_Session_Hold hold(session_);
        for (int i = 0; i < packets; ++i)
            session_->get_member(id)->update_audio_stat(&header, 100);
    }

    QD_Temp_Dir home_;
    QD_Fake_Main_View form_;
    QD_Session_Control* session_;
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
    EXPECT_EQ(session_->get_member_list()->size(), 0u);
    EXPECT_EQ(session_->get_local_id(), 255);
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
    join(30, "bernt", 2);
    EXPECT_EQ(session_->get_local_id(), 255);
    join(20, "anna", 1);
    EXPECT_EQ(session_->get_local_id(), 20);
    EXPECT_THAT(form_.stat.users, ElementsAre(text("bernt", 2), text("anna", 1)));
    EXPECT_EQ(form_.statuses.back(), "New user joined");
    EXPECT_EQ(session_->get_member(30)->get_internal_id(), 0);
    EXPECT_EQ(session_->get_member(20)->get_internal_id(), 1);

    const QD_Roster_Ptr roster = session_->get_roster();
    ASSERT_EQ(roster->entries.size(), 2u);
    EXPECT_EQ(roster->local_id, 20);
    EXPECT_EQ(roster->entries[0].id, 20);
    EXPECT_EQ(roster->entries[1].host, qd_test_host(2));

    EXPECT_EQ(session_->delete_member(30), 0);
    EXPECT_EQ(session_->delete_member(30), -1);
    EXPECT_THAT(form_.stat.users, ElementsAre(text("anna", 1)));
    EXPECT_EQ(form_.statuses.back(), "User left");
    EXPECT_EQ(roster->entries.size(), 2u) << "a roster in someone's hands does not change";
    join(30, "bernt", 2);
    EXPECT_EQ(session_->get_member(30)->get_internal_id(), 2) << "numbers are not used again";
    session_->reset();
    EXPECT_EQ(session_->get_member_list()->size() + session_->get_roster()->entries.size(), 0u);
    EXPECT_EQ(session_->get_local_id(), 20);
    join(30, "bernt", 2);
    EXPECT_EQ(session_->get_member(30)->get_internal_id(), 3) << "not even then";
    EXPECT_EQ(session_->new_member(nullptr), -1);
}

TEST_F(SessionControlTest, TheSameIdTwiceIsOneMemberAndTwoLines)
{
    join(5, "dora", 3);
    receive(5, 4);
    join(5, "dora", 3);
    EXPECT_THAT(form_.stat.users, ElementsAre(text("dora", 3), text("dora", 3)));
    EXPECT_EQ(session_->get_member_list()->size(), 1u);
    EXPECT_EQ(session_->get_member(5)->get_audio_data()->frames_received, 3);
    EXPECT_EQ(session_->delete_member(5), 0);
    EXPECT_THAT(form_.stat.users, ElementsAre(text("dora", 3)));
    EXPECT_EQ(session_->delete_member(5), -1);
    EXPECT_EQ(form_.stat.users.size(), 1u);
}

TEST_F(SessionControlTest, FiguresOfEveryMemberWithTheSelectedStringAreShown)
{
    join(1, "twin", 4);
    join(2, "twin", 4);
    join(3, "other", 4);
    receive(2, 9);
    receive(3, 5);
    session_->update_stat(text("twin", 4).c_str());
    ASSERT_EQ(form_.stat.audio.size(), 2u);
    EXPECT_FALSE(form_.stat.audio[0]) << "no packets yet";
    EXPECT_EQ(form_.stat.audio[1]->frames_received, 8) << "the last in the map's order wins";
    EXPECT_EQ(form_.stat.video.size(), 2u);
    session_->update_stat("nobody");
    EXPECT_EQ(form_.stat.audio.size(), 2u);
}

TEST_F(SessionControlTest, RefreshingShowsTheSelectedMemberAtEveryFifthAndThirdCall)
{
    join(1, "anna", 2);
    join(2, "bernt", 3);
    form_.stat.selected = text("anna", 2);
    for (int call = 0; call < 11; ++call) {
        session_->update_audio_stat(session_->get_member(1));
        session_->update_audio_stat(session_->get_member(2));
    }
    for (int call = 0; call < 7; ++call)
        session_->update_video_stat(session_->get_member(1));
    EXPECT_EQ(form_.stat.audio.size(), 3u);
    EXPECT_EQ(form_.stat.video.size(), 3u);
}

TEST_F(SessionControlTest, TablesArePrintedAsTheyStand)
{
    join(2, "bernt", 1);
    receive(2, 3);
    testing::internal::CaptureStdout();
    session_->print_status();
    session_->print_statistics();
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
        "QD_Session Status\n---------------------\n\tLocal id: 2\nMember: id 2, " + text("bernt", 1)
            + ", internal id 0\nQD_Session_Control: audio " + text("bernt", 1)
            + ", id=2: received 2, lost 0, late 0\n");
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
        join(8, "eva", 5);
        session_->handle_member_events();
        session_->update_stat(text("eva", 5).c_str());
        session_->delete_member(8);
    }
    going = false;
    media.join();
    EXPECT_EQ(displays.open, 0);
}

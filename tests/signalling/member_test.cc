#include "signalling/member.h"

#include "tests/support/fake_views.h"

#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;

namespace {

std::string string_of(const QD_Member& member)
{
    char text[QD_Member::STRING_SIZE];
    member.get_string(text);
    return text;
}

class MemberTest : public testing::Test {
protected:
    MemberTest() { member_.set_display(&displays_, &wake_); }

    void request_picture(char first_byte)
    {
        std::string picture(QD_Member::PICTURE_SIZE, '\0');
        picture[0] = first_byte;
        member_.display_req(picture.data());
    }

    std::vector<std::string> take_log() { return std::exchange(displays_.log, {}); }

    void open_and_prepare()
    {
        member_.open_display();
        request_picture(1);
        member_.handle_events();
        take_log();
    }

    QD_Fake_Displays displays_;
    QD_Wake wake_ {QD_Wake::EACH};
    QD_Member member_ {nullptr, 4, "anna", inet_addr("127.0.0.9")};
};

}

TEST(Member, NamesAndStringsAreCutToTheirRoom)
{
    const QD_Member member(nullptr, 1, "a name of 25 characters..", inet_addr("127.255.255.254"));
    EXPECT_EQ(string_of(member), "a name of 25 charac@127.255.255.254");
    EXPECT_EQ(string_of(QD_Member("", inet_addr("127.0.0.1"))), "@127.0.0.1");
    EXPECT_EQ(QD_Member("no displays", 0).open_display(), -1);
}

TEST(Member, ACopyHasNeitherStatisticsNorWindowAndAnAssignedMemberKeepsItsOwn)
{
    QD_Fake_Displays displays;
    QD_Member anna(nullptr, 1, "anna", inet_addr("127.0.0.2"));
    anna.set_display(&displays, nullptr);
    rtp_fix_header header;
    anna.update_audio_stat(&header, 10);
    anna.update_audio_stat(&header, 10);
    anna.open_display();

    const QD_Member copy(&anna);
    EXPECT_EQ(copy.get_id(), 1);
    EXPECT_EQ(copy.get_audio_data(), nullptr);

    const QD_Member bernt(nullptr, 2, "bernt", inet_addr("127.0.0.3"));
    anna = bernt;
    EXPECT_EQ(string_of(anna), "bernt@127.0.0.3");
    EXPECT_EQ(anna.get_audio_data()->frames_received, 1);
    EXPECT_EQ(displays.open, 1);
}

TEST_F(MemberTest, OneRequestACallOpenBeforePictureBeforeClose)
{
    member_.close_dpy_req();
    request_picture(1);
    request_picture(2); // takes its place, and asks for nothing more
    member_.open_dpy_req();
    for (int served = 0; served < 4; ++served)
        member_.handle_events();
    // The first picture after opening only prepares the window.
    EXPECT_THAT(take_log(), ElementsAre("made anna@127.0.0.9", "shown", "prepared", "closed"));
    int raised = 0;
    while (wake_.take())
        ++raised;
    EXPECT_EQ(raised, 3);
}

TEST_F(MemberTest, TheLatestPictureWinsAndEveryThirdRefreshesTheFigures)
{
    open_and_prepare();
    for (char picture : {2, 3, 4})
        request_picture(picture);
    member_.handle_events();
    member_.handle_events();
    for (char picture : {5, 6, 7}) {
        request_picture(picture);
        member_.handle_events();
    }
    const auto log = take_log();
    EXPECT_EQ(std::count(log.begin(), log.end(), "drew 4"), 1);
    EXPECT_EQ(std::count(log.begin(), log.end(), "drew 7"), 1);
    const auto figures = std::count(log.begin(), log.end(), "0 kbps|0 fps");
    EXPECT_GE(figures, 1);
    EXPECT_LE(figures, 2);
    EXPECT_EQ(log.size(), static_cast<size_t>(4 + figures));
}

TEST_F(MemberTest, APictureWithoutAWindowOpensOneEvenAfterAnUnusedOneWasClosed)
{
    member_.open_display();
    EXPECT_EQ(member_.open_display(), -1);
    member_.close_display();
    take_log();
    request_picture(1);
    member_.handle_events();
    EXPECT_THAT(take_log(), ElementsAre("made anna@127.0.0.9", "shown"));
    member_.close_display();
    member_.close_display();
    EXPECT_EQ(displays_.open, 0);
}

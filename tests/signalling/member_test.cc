#include "signalling/member.h"

#include "tests/support/fake_views.h"

#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;

namespace {

class MemberTest : public testing::Test {
protected:
    MemberTest() { member_.set_display(&displays_, &wake_); }

    void request_picture(char first_byte)
    {
        std::string picture(QD_Member::PICTURE_SIZE, '\0');
        picture[0] = first_byte;
        member_.display_req(picture.data());
    }

    // What became of the windows while the member served so many requests.
    std::vector<std::string> serve(int requests)
    {
        displays_.log.clear();
        for (int i = 0; i < requests; ++i)
            member_.handle_events();
        return displays_.log;
    }

    QD_Fake_Displays displays_;
    QD_Wake wake_ {QD_Wake::EACH};
    QD_Member member_ {nullptr, 4, "anna", inet_addr("127.0.0.9")};
};

}

TEST_F(MemberTest, OneRequestACallOpenBeforePictureBeforeClose)
{
    member_.close_dpy_req();
    request_picture(1);
    request_picture(2); // takes its place, and asks for nothing more
    member_.open_dpy_req();
    // The first picture after opening only prepares the window.
    EXPECT_THAT(serve(4), ElementsAre("made anna@127.0.0.9", "shown", "prepared", "closed"));
    int raised = 0;
    while (wake_.take())
        ++raised;
    EXPECT_EQ(raised, 3);
}

TEST_F(MemberTest, TheLatestPictureWinsAndEveryThirdRefreshesTheFigures)
{
    member_.open_display();
    request_picture(1);
    serve(1);
    for (char picture : {2, 3, 4})
        request_picture(picture);
    EXPECT_EQ(serve(2)[0], "drew 4");
    std::vector<std::string> log;
    for (char picture : {5, 6, 7, 8, 9, 10}) {
        request_picture(picture);
        for (std::string& done : serve(1))
            log.push_back(std::move(done));
    }
    EXPECT_EQ(std::count(log.begin(), log.end(), "drew 10"), 1);
    EXPECT_EQ(std::count(log.begin(), log.end(), "0 kbps|0 fps"), 2);
    EXPECT_EQ(log.size(), 8u);
}

TEST_F(MemberTest, APictureWithoutAWindowOpensOneEvenAfterAnUnusedOneWasClosed)
{
    member_.open_display();
    EXPECT_EQ(member_.open_display(), -1);
    member_.close_display();
    request_picture(1);
    EXPECT_THAT(serve(1), ElementsAre("made anna@127.0.0.9", "shown"));
    member_.close_display();
    member_.close_display();
    EXPECT_EQ(displays_.open, 0);
}

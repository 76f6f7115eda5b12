#include "conference/client_log.h"

#include <gtest/gtest.h>
#include <sstream>

TEST(ClientLog, FindsTheFiguresAmongOtherLines)
{
    std::istringstream log(
        "Hidding stat window\n"
        "QD_AudioApp: sent 151 packets\n"
        "QD_Session_Control: audio anna@127.0.0.2, id=1: received 150, lost 1, late 2\n"
        "QD_Session_Control: audio a, id=7: b, id=2: received 149, lost 0, late 0\n"
        "QD_Session_Control: audio cut, id=3: received 149, lo\n"
        "QD_Session_Control: video anna@127.0.0.2, id=1: received 70, lost 3, late 0, shown 68\n");
    const QD_Client_Figures figures = qd_read_client_log(log);
    EXPECT_EQ(figures.audio_.sent_, 151);
    EXPECT_EQ(figures.video_.sent_, -1);
    ASSERT_EQ(figures.audio_.from_.size(), 2U);
    EXPECT_EQ(figures.audio_.from_.at(1).received_, 150);
    EXPECT_EQ(figures.audio_.from_.at(1).lost_, 1);
    EXPECT_EQ(figures.audio_.from_.at(1).late_, 2);
    EXPECT_EQ(figures.audio_.from_.at(2).received_, 149);
    ASSERT_EQ(figures.video_.from_.size(), 1U);
    EXPECT_EQ(figures.video_.from_.at(1).lost_, 3);
    EXPECT_EQ(figures.video_.from_.at(1).shown_, 68);
    EXPECT_EQ(figures.audio_.from_.at(1).shown_, -1);
}

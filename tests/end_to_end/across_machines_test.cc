// A conference of several hosts, each with an address of its own and the usual ports.
#include "tests/support/broker.h"
#include "tests/support/network.h"
#include "tests/support/seat.h"
#include "tests/support/x_server.h"

#include <gmock/gmock.h>

namespace {

/// How many windows are called like a member, before long.
bool has_windows(const std::string& label, size_t count)
{
    const std::string command = "xdotool search --onlyvisible --name '^" + label + "$' | wc -l";
    return qd_wait_for(
        [&] { return std::stoul(qd_output(command)) == count; }, std::chrono::seconds(20));
}

class AcrossMachines : public testing::Test {
protected:
    /// One more member, by the broker's URL and nothing else.
    void join(const std::string& name)
    {
        seats_.push_back(std::make_unique<QD_Seat>());
        labels_.push_back(name + "@10.77.0." + std::to_string(seats_.size()));
        seats_.back()->start("join",
            {"standup", "--name", name, "--broker", "mqtt://10.77.0.254", "--", "-xrm",
                "*toggle.set: True"},
            {{"HOME", seats_.back()->file("")}, {"QD_MIC", "tone:440"}, {"QD_SPEAKER", "null"},
                {"QD_CAMERA", "testcard"}},
            network_.at(seats_.size()));
    }

    /// Everybody is told of everybody, itself included, and shown everybody's picture.
    void gather() const
    {
        for (const std::string& label : labels_) {
            for (const auto& seat : seats_)
                ASSERT_TRUE(seat->says(label + " has joined\n")) << seat->said();
            EXPECT_TRUE(has_windows(label, seats_.size())) << label;
        }
    }

    QD_X_Server x_server_;
    QD_Test_Network network_ {4};
    QD_Test_Broker broker_ {"allow_anonymous true\n", "10.77.0.254", network_.at(0)};
    std::vector<std::unique_ptr<QD_Seat>> seats_;
    std::vector<std::string> labels_;
};

TEST_F(AcrossMachines, EverybodyHearsAndSeesEverybodyWhoeverComesAndGoesOrIsCutOff)
{
    for (const char* name : {"anna", "bernt", "chiara"})
        join(name);
    gather();
    join("dmitri");
    gather();

    EXPECT_EQ(seats_.back()->end(), 0) << seats_.back()->said();
    seats_.pop_back();
    labels_.pop_back();
    for (const auto& seat : seats_)
        EXPECT_TRUE(seat->says("dmitri@10.77.0.4 has left\n"));
    EXPECT_TRUE(has_windows("dmitri@10.77.0.4", 0));

    network_.set_cable(3, "down");
    const auto cut = std::chrono::steady_clock::now();
    for (size_t i = 0; i < 2; ++i)
        EXPECT_TRUE(seats_[i]->says("chiara@10.77.0.3 is gone"));
    EXPECT_LT(std::chrono::steady_clock::now() - cut, std::chrono::seconds(10));
    EXPECT_TRUE(seats_[2]->says("the broker 10.77.0.254:1883 is lost"));
    EXPECT_TRUE(has_windows("chiara@10.77.0.3", 1)) << "its own";
    network_.set_cable(3, "up");
    EXPECT_TRUE(seats_[2]->says("the broker 10.77.0.254:1883 is back"));
    for (size_t i = 0; i < 2; ++i)
        EXPECT_TRUE(seats_[i]->says("chiara@10.77.0.3 has joined\n", "chiara@10.77.0.3 is gone"));
    EXPECT_EQ(seats_[2]->said().find("is gone"), std::string::npos) << "keeps the others";
    gather();

    // Each one's figures name those who were still there when it ended.
    for (size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(seats_[i]->end(), 0) << seats_[i]->said();
        const std::string log = qd_read_file(seats_[i]->file("log.txt"));
        for (size_t other = i + 1; other < 3; ++other)
            for (const std::string medium : {"audio ", "video "})
                EXPECT_THAT(log,
                    testing::ContainsRegex(
                        medium + labels_[other] + ", id=[0-9]+: received [1-9]"));
    }
}

}

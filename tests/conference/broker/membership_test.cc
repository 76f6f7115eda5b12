#include "conference/broker/membership.h"

#include <gmock/gmock.h>

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

/// A record as another member writes it.
std::string live(uint32_t id, int host, int sequence = 1)
{
    return "live " + std::to_string(id) + " 10.0.0." + std::to_string(host) + " "
        + std::to_string(sequence) + " bo";
}

/// One member on a broker of one topic, which carries a record back when told to.
class Membership : public testing::Test, protected QD_Conference_Events {
protected:
    Membership() { membership_.connect(now_); }

    void admitted(const QD_Presence&) override { membership_.ready(now_); }
    void came(const QD_Presence& member) override { told("+", member); }
    void went(const QD_Presence& member, const char*) override { told("-", member); }
    void say(const std::string& whom, const std::string& what) override
    {
        said_.push_back(whom + " " + what);
    }
    void failed(const std::string& why) override { said_.push_back(why); }

    void told(const std::string& sign, const QD_Presence& member)
    {
        told_.push_back(sign + std::to_string(member.id) + " " + member.label());
    }

    void take(const std::string& owner, const std::string& record)
    {
        membership_.take(owner, record, now_);
    }

    /// The broker carries our newest record back, and every one that follows from it.
    void echo()
    {
        for (size_t i = published_.size() - 1; i < published_.size(); ++i)
            take("me/1", published_[i]);
    }

    QD_Clock::Time now_ = QD_Clock::Time() + 1h;
    std::vector<std::string> published_;
    std::vector<std::string> told_;
    std::vector<std::string> said_;
    uint32_t roll_ = 200000;
    QD_Membership membership_ {{"me/1", "anna", 0x0a000001},
        {[this] { return (roll_ += 100000) - QD_Presence::MIN_ID; },
            [](uint32_t address) { return address != 0x0a000042; },
            [this](const std::string& record) { published_.push_back(record); }},
        *this};
};

TEST_F(Membership, ClaimsUntilItsIdIsFreeAndIsLiveBeforeOthersAreAnnounced)
{
    take("bo/1", "claim 300000 10.0.0.2 1 bo");
    take("bo/2", live(400000, 3));
    echo();
    EXPECT_THAT(published_,
        ElementsAre("claim 300000 10.0.0.1 1 anna", "claim 400000 10.0.0.1 2 anna",
            "claim 500000 10.0.0.1 3 anna", "live 500000 10.0.0.1 4 anna"));
    take("bo/1", live(300000, 2, 2));
    take("bo/1", "left 300000 10.0.0.2 3 bo");
    EXPECT_THAT(told_,
        ElementsAre("+500000 anna@10.0.0.1", "+400000 bo@10.0.0.3", "+300000 bo@10.0.0.2",
            "-300000 bo@10.0.0.2"));
}

TEST_F(Membership, ALiveMemberKeepsItsIdButForTheFirstMomentAgainstASmallerOwner)
{
    echo();
    take("zoe/1", live(300000, 2));    // both are new: the smaller owner keeps the id
    take("zoe/1", live(310000, 2, 0)); // older than that
    EXPECT_THAT(told_, ElementsAre("+300000 anna@10.0.0.1"));
    take("bo/1", live(300000, 3));
    echo();
    EXPECT_THAT(told_,
        ElementsAre("+300000 anna@10.0.0.1", "-300000 anna@10.0.0.1", "+400000 anna@10.0.0.1",
            "+300000 bo@10.0.0.3"));
    now_ += 2s;
    told_.clear();
    take("adam/1", live(400000, 4)); // too late
    take("adam/2", live(300000, 4));

    membership_.disconnect(); // meanwhile the id may be given away in good faith
    membership_.connect(now_ += 30s);
    take("adam/1", live(400000, 4, 2));
    echo();
    take("adam/1", ""); // who may be on the way back, too
    membership_.keep_time(now_ += 2s);
    EXPECT_THAT(told_,
        ElementsAre("-400000 anna@10.0.0.1", "+500000 anna@10.0.0.1", "+400000 bo@10.0.0.4"));
}

TEST_F(Membership, AnAddressThatIsTakenIsWaitedForAndThenGivenUp)
{
    take("bo/1", live(70000, 1));
    echo();
    EXPECT_THAT(said_, ElementsAre("anna@10.0.0.1 waits: bo@10.0.0.1 has this address"));
    take("bo/1", ""); // a host that was restarted
    membership_.keep_time(now_ += 2s);
    echo();
    EXPECT_THAT(told_, ElementsAre("+300000 anna@10.0.0.1"));

    membership_.disconnect();
    membership_.connect(now_);
    take("bo/1", live(70000, 1));
    echo();
    membership_.keep_time(now_ += 12s);
    EXPECT_EQ(said_.back(), "10.0.0.1 is the address of another member");
    EXPECT_EQ(published_.back(), "") << "nothing is left on the broker";
}

// Each is told once, however often it comes, and nobody else notices.
TEST_F(Membership, RefusesWhatCannotBeAMember)
{
    echo();
    take("bo/1", live(70000, 2));
    struct {
        const char* owner;
        std::string record;
        const char* said;
    } const cases[] = {
        {"m/1", "live 90000 0.0.0.0 1 m", "0.0.0.0 is not the address of one member"},
        {"m/3", "live 90000 127.0.0.9 1 m", "127.0.0.9 cannot be reached from here"},
        {"m/4", live(90000, 66), "10.0.0.66 cannot be reached from here"},
        {"m/5", live(90000, 2), "10.0.0.2 is the address of another member"},
        {"m/6", live(90000, 1), "10.0.0.1 is the address of another member"},
        {"m/7", live(70000, 9), "it has the id of another member"},
        {"m/8", live(65535, 9), "the id 65535 is out of range"},
        {"m/9", "live 90000 10.0.0.9 m", "it is malformed"},
        {"m/11", "live 90000 10.0.0.9 1 m\x1b[2J", "a name has no blanks"},
        {"m/13", "live 90000 10.0.0.9 1 twentybyteslongname1", "longer than 19 bytes"},
        {"m/14", std::string(100000, 'x'), "longer than 96 bytes"},
        {"m/\n", live(90000, 9), "a name that is not plain text"},
    };
    for (const auto& c : cases) {
        said_.clear();
        take(c.owner, c.record);
        take(c.owner, c.record);
        EXPECT_THAT(said_, ElementsAre(HasSubstr(c.said))) << c.owner;
    }
    EXPECT_THAT(told_, testing::SizeIs(2));
}

TEST_F(Membership, RecordsAndMembersAreBounded)
{
    echo();
    for (int i = 0; i < 1000; ++i) {
        take("x/" + std::to_string(i), "nonsense");
        take("m/" + std::to_string(i),
            "live " + std::to_string(70000 + i) + " 10.1." + std::to_string(i / 250) + "."
                + std::to_string(i % 250 + 1) + " 1 m");
    }
    EXPECT_EQ(membership_.others().size() + 1, QD_Membership::MAX_MEMBERS);
    EXPECT_LE(said_.size(), QD_Membership::MAX_RECORDS);
}

TEST_F(Membership, ARecordOfOursThatIsTamperedWithIsWrittenAgain)
{
    echo();
    const size_t before = published_.size();
    for (int i = 0; i < 20; ++i) {
        take("me/1", "");
        membership_.keep_time(now_);
    }
    EXPECT_EQ(published_.size(), before) << "not at once, for whoever does it may go on";
    membership_.keep_time(now_ += 250ms);
    EXPECT_EQ(published_.size(), before + 1);
}

}

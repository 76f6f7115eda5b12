#include "conference/membership.h"

#include <gmock/gmock.h>

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

constexpr uint32_t HOST = 0x0a000000; // 10.0.0.0

/// A record as another member writes it.
std::string live(uint32_t id, int host, int sequence = 1, const std::string& name = "bo")
{
    return "live " + std::to_string(id) + " 10.0.0." + std::to_string(host) + " "
        + std::to_string(sequence) + " " + name;
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
    void failed(const std::string& why) override { failure_ = why; }

    void told(const std::string& sign, const QD_Presence& member)
    {
        told_.push_back(sign + std::to_string(member.id_) + " " + member.label());
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

    /// Time passes while the broker works and the owners in `alive_` beat.
    void pass(std::chrono::milliseconds time)
    {
        for (const auto end = now_ + time; now_ < end; now_ += 100ms) {
            membership_.keep_time(now_);
            echo();
            for (auto& [owner, member] : alive_) {
                if (now_ >= member.next_) {
                    member.next_ = now_ + 2s;
                    take(owner, live(member.id_, member.host_, ++member.sequence_));
                }
            }
        }
    }

    struct Other {
        uint32_t id_;
        int host_;
        int sequence_ = 0;
        QD_Clock::Time next_ {};
    };

    QD_Clock::Time now_ = QD_Clock::Time() + 1h;
    std::vector<std::string> published_;
    std::vector<std::string> told_;
    std::vector<std::string> said_;
    std::string failure_;
    std::map<std::string, Other> alive_;
    std::vector<uint32_t> rolls_ {300000, 400000, 500000, 600000};
    size_t rolled_ = 0;
    std::set<uint32_t> unreachable_ {HOST + 66};
    QD_Membership membership_ {{"me/1", "anna", HOST + 1},
        {[this] { return rolls_[rolled_++] - QD_Presence::MIN_ID; },
            [this](uint32_t address) { return !unreachable_.contains(address); },
            [this](const std::string& record) { published_.push_back(record); }},
        *this};
};

TEST_F(Membership, ClaimsWaitsForTheEchoAndIsLiveBeforeOthersAreAnnounced)
{
    take("bo/1", live(70000, 2));
    take("cleo/1", "claim 80000 10.0.0.3 1 cleo");
    EXPECT_THAT(told_, IsEmpty());
    echo();
    EXPECT_THAT(
        published_, ElementsAre("claim 300000 10.0.0.1 1 anna", "live 300000 10.0.0.1 2 anna"));
    EXPECT_THAT(told_, ElementsAre("+300000 anna@10.0.0.1", "+70000 bo@10.0.0.2"));
    take("cleo/1", "live 80000 10.0.0.3 2 cleo");
    take("cleo/1", "left 80000 10.0.0.3 3 cleo");
    EXPECT_EQ(told_.size(), 4u);
    EXPECT_EQ(told_.back(), "-80000 cleo@10.0.0.3");
}

TEST_F(Membership, AnIdThatWasClaimedEarlierIsRolledAnew)
{
    take("bo/1", "claim 300000 10.0.0.2 1 bo");
    take("cleo/1", live(400000, 3, 1, "cleo"));
    echo();
    EXPECT_THAT(told_, ElementsAre("+500000 anna@10.0.0.1", "+400000 cleo@10.0.0.3"));
}

TEST_F(Membership, ALiveMemberKeepsItsIdButForTheFirstMomentAgainstASmallerOwner)
{
    echo();
    take("zoe/1", live(300000, 2)); // both are new: the smaller owner keeps the id
    EXPECT_THAT(told_, ElementsAre("+300000 anna@10.0.0.1"));
    EXPECT_THAT(
        said_, ElementsAre(HasSubstr("bo@10.0.0.2 of zoe/1 is not announced: it has the id")));
    take("bo/1", live(300000, 3));
    echo();
    EXPECT_THAT(told_,
        ElementsAre("+300000 anna@10.0.0.1", "-300000 anna@10.0.0.1", "+400000 anna@10.0.0.1",
            "+300000 bo@10.0.0.3"));
    pass(2s);
    told_.clear();
    take("adam/1", live(400000, 4)); // too late
    take("adam/2", live(300000, 4));
    EXPECT_THAT(told_, IsEmpty());
}

TEST_F(Membership, AnAddressThatIsTakenIsWaitedForAndThenGivenUp)
{
    take("bo/1", live(70000, 1));
    echo();
    EXPECT_THAT(said_, ElementsAre("anna@10.0.0.1 waits: bo@10.0.0.1 has this address"));
    pass(4s);
    take("bo/1", ""); // a host that was restarted
    pass(3s);
    EXPECT_THAT(told_, ElementsAre("+300000 anna@10.0.0.1"));
    EXPECT_EQ(failure_, "");
}

TEST_F(Membership, AnAddressThatStaysTakenEndsTheAttempt)
{
    alive_ = {{"bo/1", {70000, 1}}};
    take("bo/1", live(70000, 1, 0));
    pass(13s);
    EXPECT_EQ(failure_, "10.0.0.1 is the address of another member");
    EXPECT_EQ(published_.back(), "") << "nothing is left on the broker";
    EXPECT_THAT(told_, IsEmpty());
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
        {"m/2", "live 90000 224.0.0.5 1 m", "224.0.0.5 is not the address of one member"},
        {"m/3", "live 90000 255.255.255.255 1 m", "255.255.255.255 is not the address"},
        {"m/4", "live 90000 127.0.0.9 1 m", "127.0.0.9 cannot be reached from here"},
        {"m/5", live(90000, 66), "10.0.0.66 cannot be reached from here"},
        {"m/6", live(90000, 2), "10.0.0.2 is the address of another member"},
        {"m/7", live(90000, 1), "10.0.0.1 is the address of another member"},
        {"m/8", live(70000, 9), "it has the id of another member"},
        {"m/9", live(65535, 9), "the id 65535 is out of range"},
        {"m/10", "hello", "it is malformed"},
        {"m/11", "live 90000 10.0.0.9 1  m", "a name has no blanks"},
        {"m/12", "live 90000 10.0.0.9 1 m\x1b[2J", "a name has no blanks"},
        {"m/13", "live 90000 10.0.0.9 1 m\xc0\xaf", "a name has no blanks"},
        {"m/14", "live 90000 10.0.0.9 1 m\xc2\x9b", "a name has no blanks"},
        {"m/15", live(90000, 9, 1, std::string(20, 'm')), "longer than 19 bytes"},
        {"m/16", std::string(100000, 'x'), "longer than 96 bytes"},
        {"m/17", "live 090000 10.0.0.9 1 m", "it is malformed"},
        {"m/18", "live 90000 10.0.0.9 4294967296 m", "it is malformed"},
        {"m/\n", live(90000, 9), "a name that is not plain text"},
    };
    told_.clear();
    for (const auto& c : cases) {
        SCOPED_TRACE(c.owner);
        said_.clear();
        take(c.owner, c.record);
        take(c.owner, c.record);
        EXPECT_THAT(said_, ElementsAre(HasSubstr(c.said)));
    }
    EXPECT_THAT(told_, IsEmpty());
}

TEST_F(Membership, RecordsAndMembersAreBounded)
{
    echo();
    for (int i = 0; i < 1000; ++i)
        take("m/" + std::to_string(i),
            "live " + std::to_string(70000 + i) + " 10.1." + std::to_string(i / 250) + "."
                + std::to_string(i % 250 + 1) + " 1 m");
    EXPECT_EQ(membership_.others().size() + 1, QD_Membership::MAX_MEMBERS);
    EXPECT_LE(said_.size(), QD_Membership::MAX_RECORDS);
}

TEST_F(Membership, ARemovedRecordIsADepartureUnlessItComesBackOrTheBrokerGoes)
{
    echo();
    alive_ = {{"bo/1", {70000, 2}}};
    pass(500ms);
    told_.clear();
    take("bo/1", ""); // taken over by a new connection of the same member
    pass(300ms);
    take("bo/1", live(70000, 2, 50));
    alive_["bo/1"].sequence_ = 50;
    pass(1s);
    EXPECT_THAT(told_, IsEmpty());

    take("bo/1", ""); // a broker that ends ends everybody's record
    membership_.disconnect();
    alive_.clear();
    now_ += 60s;
    membership_.keep_time(now_);
    EXPECT_THAT(told_, IsEmpty());
    membership_.connect(now_);
    alive_ = {{"bo/1", {70000, 2, 60, now_ + 5s}}}; // back later than we are
    pass(12s);
    EXPECT_THAT(told_, IsEmpty());

    alive_.clear();
    take("bo/1", "");
    pass(700ms);
    EXPECT_THAT(told_, ElementsAre("-70000 bo@10.0.0.2"));
}

TEST_F(Membership, WhoFallsSilentIsGoneWithinTenSecondsButOnlyIfTheBrokerWorks)
{
    echo();
    alive_ = {{"bo/1", {70000, 2}}, {"cleo/1", {80000, 3}}};
    pass(2500ms);
    told_.clear();
    for (int i = 0; i < 300; ++i) { // the broker is stuck: nothing comes back
        now_ += 100ms;
        membership_.keep_time(now_);
    }
    EXPECT_TRUE(membership_.unanswered(now_));
    EXPECT_THAT(told_, IsEmpty());
    pass(3s);
    EXPECT_THAT(told_, IsEmpty());

    alive_.erase("bo/1");
    const auto before = now_;
    while (told_.empty() && now_ < before + 20s)
        pass(100ms);
    EXPECT_THAT(told_, ElementsAre("-70000 bo@10.0.0.2"));
    EXPECT_LE(now_ - before, 10s);
    EXPECT_GE(now_ - before, 4s);
}

TEST_F(Membership, AfterTheBrokerReturnsOnlyNewRecordsCount)
{
    echo();
    take("bo/1", live(70000, 2, 7));
    membership_.disconnect();
    now_ += 60s;
    membership_.connect(now_);
    take("bo/1", live(70000, 2, 7)); // what a broker has kept of a member that died meanwhile
    told_.clear();
    pass(7s);
    EXPECT_THAT(told_, IsEmpty());
    pass(4s);
    EXPECT_THAT(told_, ElementsAre("-70000 bo@10.0.0.2"));
}

TEST_F(Membership, AnIdThatWasGivenAwayDuringACutIsNotSharedAfterIt)
{
    echo();
    membership_.disconnect();
    membership_.connect(now_ += 30s);
    take("bo/1", live(300000, 2));
    echo();
    EXPECT_THAT(told_,
        ElementsAre("+300000 anna@10.0.0.1", "-300000 anna@10.0.0.1", "+400000 anna@10.0.0.1",
            "+300000 bo@10.0.0.2"));
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

TEST_F(Membership, LoopbackAndRoutableAddressesAreNotMixed)
{
    told_.clear();
    QD_Membership here({"me/2", "anna", 0x7f000005},
        {[] { return 1; }, [](uint32_t) { return true; },
            [this](const std::string& record) { published_.push_back(record); }},
        *this);
    here.connect(now_);
    here.take("bo/1", live(70000, 2), now_);
    here.take("me/2", published_.back(), now_);
    EXPECT_EQ(
        failure_, "its address 127.0.0.5 cannot be reached from other hosts, such as bo@10.0.0.2");
    EXPECT_THAT(told_, IsEmpty());
}

}

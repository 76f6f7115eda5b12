#include "conference/membership.h"
#include "tests/fuzz/fuzz.h"

namespace {

// What a client is told must make sense to it.
class Told : public QD_Conference_Events {
public:
    void admitted(const QD_Presence&) override {}
    void came(const QD_Presence& member) override
    {
        qd_require(ids_.insert(member.id_).second);
        qd_require(addresses_.insert(member.address_).second);
        qd_require(ids_.size() <= QD_Membership::MAX_MEMBERS);
    }
    void went(const QD_Presence& member, const char*) override
    {
        qd_require(ids_.erase(member.id_) == 1);
        qd_require(addresses_.erase(member.address_) == 1);
    }
    void say(const std::string& whom, const std::string& what) override
    {
        qd_require((whom + what).size() < 1000);
    }
    void failed(const std::string&) override {}

private:
    std::set<uint32_t> ids_;
    std::set<uint32_t> addresses_;
};

// A record that is well formed, of few members that want one another's places.
std::string record_of(QD_Fuzz_Input& input, uint32_t sequence)
{
    QD_Presence record;
    record.state_ = static_cast<QD_Presence::State>(input.byte() % 3);
    record.id_ = QD_Presence::MIN_ID + input.byte() % 8;
    record.address_ = 0x0a000000 + input.byte() % 128;
    record.sequence_ = sequence;
    record.name_ = "anna";
    return record.encode();
}

}

// What the broker and the clock bring, a byte each and what belongs to it.
void qd_fuzz(QD_Fuzz_Input input)
{
    Told told;
    std::string published;
    QD_Membership membership({"user/r", "bernt", 0x0a000001},
        {[&] { return uint32_t(input.byte() % 8); },
            [](uint32_t address) { return address % 16 != 9; },
            [&](const std::string& record) { published = record; }},
        told);
    QD_Clock::Time now {std::chrono::hours(1)};
    uint32_t sequence = 0;
    membership.connect(now);
    while (!input.empty()) {
        enum { RECORD, LIVE, ANY, REMOVED, OWN, TIME, READY, CONNECT, DISCONNECT, LEAVE, ALL };
        const int what = input.byte() % ALL;
        const std::string owner
            = "user/" + std::string(1, static_cast<char>('a' + input.byte() % 26));
        if (what <= LIVE)
            membership.take(owner, record_of(input, ++sequence), now);
        else if (what == ANY) {
            const std::string anybody = input.chunk();
            membership.take(anybody, input.chunk(), now);
        } else if (what == REMOVED)
            membership.take(owner, "", now);
        else if (what == OWN)
            membership.take("user/r", published, now);
        else if (what == TIME)
            membership.keep_time(now += std::chrono::milliseconds(50 * input.byte()));
        else if (what == READY)
            membership.ready(now);
        else if (what == CONNECT)
            membership.connect(now);
        else if (what == DISCONNECT)
            membership.disconnect();
        else if (input.byte() == 0)
            membership.leave();
    }
}

#include "conference/broker/membership.h"
#include "tests/fuzz/fuzz.h"

#include <functional>

namespace {

// What a client is told must make sense to it.
class Told : public QD_Conference_Events {
public:
    void admitted(const QD_Presence&) override {}
    void came(const QD_Presence& member) override
    {
        qd_require(ids_.insert(member.id).second);
        qd_require(ids_.size() <= QD_Membership::MAX_MEMBERS);
    }
    void went(const QD_Presence& member, const char*) override
    {
        qd_require(ids_.erase(member.id) == 1);
    }
    void say(const std::string&, const std::string&) override {}
    void failed(const std::string&) override {}

private:
    std::set<uint32_t> ids_;
};

// A record that is well formed, of few members that want one another's places.
std::string record_of(QD_Fuzz_Input& input, uint32_t sequence)
{
    const QD_Presence record {static_cast<QD_Presence::State>(input.byte() % 3),
        QD_Presence::MIN_ID + input.byte() % 8, 0x0a000000u + input.byte() % 128, sequence, "anna"};
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
    std::string owner;
    const auto live = [&] { membership.take(owner, record_of(input, ++sequence), now); };
    const auto any = [&] {
        const std::string anybody = input.chunk();
        membership.take(anybody, input.chunk(), now);
    };
    // More than there are places for, by and by, of members who are in nobody's way.
    int stranger = 0;
    const auto crowd = [&] {
        for (int count = input.byte(); count > 0 && stranger < 600; --count) {
            const auto number = static_cast<uint32_t>(++stranger);
            const QD_Presence record {QD_Presence::LIVE, QD_Presence::MIN_ID + 100 + number,
                0x0b000000u + number, 1, "s"};
            membership.take("user/s" + std::to_string(number), record.encode(), now);
        }
    };
    const std::function<void()> happens[]
        = {live, live, any, [&] { membership.take(owner, "", now); },
            [&] { membership.take("user/r", published, now); },
            [&] { membership.keep_time(now += std::chrono::milliseconds(50 * input.byte())); },
            [&] { membership.ready(now); }, [&] { membership.connect(now); },
            [&] { membership.disconnect(); },
            [&] {
                if (input.byte() == 0)
                    membership.leave();
            },
            crowd, [&] { // one of them goes
                membership.take("user/s" + std::to_string(input.byte()), "", now);
            }};
    membership.connect(now);
    while (!input.empty()) {
        const size_t what = input.byte() % std::size(happens);
        owner = "user/" + std::string(1, static_cast<char>('a' + input.byte() % 26));
        happens[what]();
    }
}

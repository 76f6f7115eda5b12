#include "conference/broker/membership.h"

#include "platform/net/host_address.h"

#include <algorithm>

namespace {

constexpr std::chrono::milliseconds SHORTEST_BEAT {250}; // when somebody tampers with our record
constexpr size_t MAX_OWNER = 96;
constexpr size_t MAX_REFUSED = 64;

bool is_loopback(uint32_t address) { return address >> 24 == 127; }

/// Owners are printed, so they are kept to characters that can do no harm.
bool is_plain(std::string_view owner)
{
    const auto plain = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9')
            || std::string_view("-_.@/").find(c) != std::string_view::npos;
    };
    return !owner.empty() && owner.size() <= MAX_OWNER
        && std::all_of(owner.begin(), owner.end(), plain);
}

}

QD_Membership::QD_Membership(const Self& self, Surroundings surroundings,
    QD_Conference_Events& events, const QD_Membership_Times& times) :
    owner_(self.owner),
    surroundings_(std::move(surroundings)),
    events_(events),
    times_(times)
{
    self_.name = self.name;
    self_.address = self.address;
    roll_id();
}

void QD_Membership::roll_id()
{
    constexpr uint32_t RANGE = QD_Presence::MAX_ID - QD_Presence::MIN_ID + 1;
    self_.id = QD_Presence::MIN_ID + surroundings_.random() % RANGE;
}

void QD_Membership::publish(Time now)
{
    self_.state = state_ == LIVE ? QD_Presence::LIVE : QD_Presence::CLAIM;
    ++self_.sequence;
    sent_ = self_.encode();
    answered_ = false;
    published_ = now;
    beat_ = now + times_.beat;
    surroundings_.publish(sent_);
}

void QD_Membership::connect(Time now)
{
    if (state_ == OVER)
        return;
    connected_ = true;
    if (was_connected_)
        returning_until_ = now + times_.recovery;
    was_connected_ = true;
    for (auto& [owner, peer] : peers_)
        peer.missed = 0;
    // While we were away somebody may have taken our id or address in good faith.
    state_ = CLAIMING;
    patient_until_ = Time::max();
    publish(now);
}

void QD_Membership::disconnect()
{
    connected_ = false;
    answered_ = true;
    // A broker that goes down removes the records of all.
    for (auto& [owner, peer] : peers_)
        peer.departs = Time::max();
}

void QD_Membership::take(const std::string& owner, std::string_view record, Time now)
{
    if (state_ == OVER || !connected_)
        return;
    if (owner == owner_) {
        take_own(record, now);
        return;
    }
    const auto known = peers_.find(owner);
    if (record.empty()) {
        if (known == peers_.end())
            return;
        if (known->second.announced)
            known->second.departs = std::max(now + times_.hold, returning_until_);
        else
            peers_.erase(known);
        return;
    }
    QD_Presence read;
    if (!is_plain(owner))
        refuse("somebody", "publishes under a name that is not plain text");
    else if (const std::string trouble = read.decode(record); !trouble.empty())
        refuse(owner, "publishes a record that is refused: " + trouble);
    else if (known == peers_.end() && peers_.size() >= MAX_RECORDS)
        refuse("a newcomer", "is not looked at: there are too many records");
    else
        take_peer(owner, read, now);
}

void QD_Membership::take_own(std::string_view record, Time now)
{
    if (record != sent_) {
        // An older one of ours while the newest is on its way; else not of our making.
        if (answered_)
            beat_ = std::max(now, published_ + SHORTEST_BEAT);
        return;
    }
    if (answered_)
        return;
    answered_ = true;
    count_misses(now);
    if (state_ == CLAIMING)
        settle_claim(now);
    admit_all(now);
}

void QD_Membership::take_peer(const std::string& owner, const QD_Presence& record, Time now)
{
    const auto known = peers_.find(owner);
    if (record.state == QD_Presence::LEFT) {
        if (known != peers_.end())
            remove(known, "has left");
        return;
    }
    Peer& peer = known != peers_.end() ? known->second : peers_[owner];
    const QD_Presence before = peer.record;
    if (known != peers_.end() && record.sequence <= before.sequence)
        return;
    if (record.id != before.id || record.address != before.address || record.name != before.name)
        withdraw(peer, "has changed its record");
    peer.record = record;
    peer.missed = 0;
    peer.departs = Time::max();
    admit(owner, peer, now);
}

void QD_Membership::count_misses(Time now)
{
    // Records of ours that follow one another at once say nothing of the others.
    if (now < counted_ + times_.beat / 2)
        return;
    counted_ = now;
    for (auto peer = peers_.begin(); peer != peers_.end();) {
        const bool gone = ++peer->second.missed >= times_.misses && now >= returning_until_;
        peer = gone ? remove(peer, "is gone: nothing is heard of it any more") : std::next(peer);
    }
}

/// Everything that was published before our claim has been seen.
void QD_Membership::settle_claim(Time now)
{
    if (std::any_of(peers_.begin(), peers_.end(),
            [&](const auto& peer) { return peer.second.record.id == self_.id; })) {
        if (std::exchange(announced_, false))
            events_.went(self_, "changes its id");
        roll_id();
        return publish(now);
    }
    const auto holder = std::find_if(peers_.begin(), peers_.end(),
        [&](const auto& peer) { return peer.second.record.address == self_.address; });
    if (holder != peers_.end()) {
        if (patient_until_ == Time::max()) {
            patient_until_ = now + times_.patience;
            events_.say(
                self_.label(), "waits: " + holder->second.record.label() + " has this address");
        }
        return;
    }
    patient_until_ = Time::max();
    if (const std::string why = place_trouble(); !why.empty())
        return fail(why);
    if (ready_)
        return go_live(now);
    state_ = ADMITTED;
    admitted_ = true;
    events_.admitted(self_);
}

/// Why there is no place for this member among those that are live; "" if there is.
std::string QD_Membership::place_trouble() const
{
    size_t live = 0;
    const QD_Presence* far = nullptr;
    bool alone = true; // nobody lives on this machine, too
    for (const auto& [owner, peer] : peers_) {
        if (peer.record.state != QD_Presence::LIVE)
            continue;
        ++live;
        alone = alone && !is_loopback(peer.record.address);
        far = is_loopback(peer.record.address) ? far : &peer.record;
    }
    if (live >= MAX_MEMBERS)
        return "the conference is full: it has " + std::to_string(MAX_MEMBERS) + " members";
    if (is_loopback(self_.address) && alone && far != nullptr)
        return "its address " + qd_address_text(self_.address)
            + " cannot be reached from other hosts, such as " + far->label();
    return "";
}

void QD_Membership::ready(Time now)
{
    ready_ = true;
    if (state_ == ADMITTED)
        go_live(now);
}

void QD_Membership::go_live(Time now)
{
    state_ = LIVE;
    if (connected_)
        publish(now);
    if (!std::exchange(announced_, true)) {
        live_since_ = now;
        events_.came(self_);
    }
    admit_all(now);
}

void QD_Membership::admit_all(Time now)
{
    for (auto& [owner, peer] : peers_)
        admit(owner, peer, now);
}

void QD_Membership::admit(const std::string& owner, Peer& peer, Time now)
{
    if (!announced_ || peer.announced || peer.record.state != QD_Presence::LIVE
        || peer.departs != Time::max())
        return;
    const std::string why = obstacle(owner, peer, now);
    if (state_ == OVER || !announced_)
        return;
    if (why.empty()) {
        peer.announced = true;
        peer.since = now;
        events_.came(peer.record);
    } else if (why != peer.refused) {
        events_.say(peer.record.label(), "of " + owner + " is not announced: " + why);
    }
    peer.refused = why;
}

/// Why a live member is not announced; "" if it can be.
std::string QD_Membership::obstacle(const std::string& owner, const Peer& peer, Time now)
{
    const QD_Presence& record = peer.record;
    const std::string address = qd_address_text(record.address);
    if (yield_to(owner, peer, now))
        return "";
    size_t announced = 1;
    bool id_taken = record.id == self_.id;
    bool address_taken = record.address == self_.address;
    for (auto& [other_owner, other] : peers_) {
        if (!other.announced)
            continue;
        const bool unsettled = now < other.since + times_.settle;
        if (other.record.id == record.id && unsettled && owner < other_owner)
            withdraw(other, "has lost its id to another member");
        ++announced;
        id_taken = id_taken || (other.announced && other.record.id == record.id);
        address_taken = address_taken || other.record.address == record.address;
    }
    if (address_taken)
        return address + " is the address of another member";
    if (id_taken)
        return "it has the id of another member";
    if (!qd_on_one_side(record.address, self_.address) || !surroundings_.reachable(record.address))
        return address + " cannot be reached from here";
    if (announced >= MAX_MEMBERS)
        return "the conference is full";
    return "";
}

/// Two members that went live with one id at the same time: the one with the
/// smaller owner keeps it, and everybody comes to that result by itself.
bool QD_Membership::yield_to(const std::string& owner, const Peer& peer, Time now)
{
    if (peer.record.id != self_.id || now >= live_since_ + times_.settle || owner > owner_)
        return false;
    announced_ = false;
    events_.went(self_, "changes its id");
    roll_id();
    state_ = CLAIMING;
    publish(now);
    return true;
}

void QD_Membership::withdraw(Peer& peer, const char* how)
{
    if (std::exchange(peer.announced, false))
        events_.went(peer.record, how);
}

QD_Membership::Peers::iterator QD_Membership::remove(Peers::iterator peer, const char* how)
{
    withdraw(peer->second, how);
    return peers_.erase(peer);
}

void QD_Membership::refuse(const std::string& owner, const std::string& why)
{
    // One line for each, and not for ever more of them.
    if (refused_.size() < MAX_REFUSED && refused_.insert(owner).second)
        events_.say(owner, why);
}

void QD_Membership::leave()
{
    if (state_ == OVER)
        return;
    state_ = OVER;
    if (!connected_)
        return;
    self_.state = QD_Presence::LEFT;
    ++self_.sequence;
    surroundings_.publish(self_.encode());
    surroundings_.publish("");
}

void QD_Membership::fail(const std::string& why)
{
    leave();
    events_.failed(why);
}

QD_Membership::Time QD_Membership::deadline() const
{
    if (state_ == OVER || !connected_)
        return Time::max();
    Time first = std::min(patient_until_, answered_ ? beat_ : published_ + times_.answer);
    for (const auto& [owner, peer] : peers_)
        first = std::min(first, peer.departs);
    return first;
}

void QD_Membership::keep_time(Time now)
{
    if (state_ == OVER || !connected_)
        return;
    for (auto peer = peers_.begin(); peer != peers_.end();)
        peer = peer->second.departs <= now ? remove(peer, "is gone") : std::next(peer);
    if (now >= patient_until_)
        return fail(qd_address_text(self_.address) + " is the address of another member");
    if (answered_ && now >= beat_)
        publish(now);
}

bool QD_Membership::unanswered(Time now) const
{
    return connected_ && !answered_ && now >= published_ + times_.answer;
}

std::map<std::string, QD_Presence> QD_Membership::others() const
{
    std::map<std::string, QD_Presence> announced;
    for (const auto& [owner, peer] : peers_) {
        if (peer.announced)
            announced.emplace(owner, peer.record);
    }
    return announced;
}

#include "conference/link/client.h"

#include "conference/base/socket_owner.h"
#include "framework/link/event.h"
#include "platform/base/bytes.h"

#include <csignal>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <random>
#include <sys/socket.h>

namespace {

constexpr uint32_t AID = 1; // which application: there is one
constexpr int REFUSALS_A_PASS = 16;

QD_Clock::Time now_is() { return QD_Clock::real().now(); }

std::string seconds(std::chrono::milliseconds time)
{
    const auto tenths = time.count() / 100;
    const std::string part = tenths % 10 != 0 ? "." + std::to_string(tenths % 10) : "";
    return std::to_string(tenths / 10) + part + " s";
}

/// A listener for this machine only; its port goes to `port`.
QD_Fd listen_here(uint16_t& port)
{
    QD_Fd fd(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    sockaddr_in here {};
    here.sin_family = AF_INET;
    here.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof here;
    if (!fd || ::bind(fd.get(), reinterpret_cast<sockaddr*>(&here), size) < 0
        || ::listen(fd.get(), REFUSALS_A_PASS) < 0
        || ::getsockname(fd.get(), reinterpret_cast<sockaddr*>(&here), &size) < 0)
        return QD_Fd();
    port = ntohs(here.sin_port);
    return fd;
}

}

int QD_Client::start(QD_Launch launch)
{
    // The numbers travel as decimal integers of 32 bits with a sign.
    std::random_device random;
    const uint32_t sid = random() >> 1;
    const uint32_t at = random() >> 1;
    uint16_t port = 0;
    QD_Fd listener = listen_here(port);
    if (!listener)
        return -1;
    for (uint32_t argument : {AID, sid, at, uint32_t {port}})
        launch.arguments.push_back(std::to_string(argument));
    if (child_.start(launch) < 0)
        return -1;

    listener_ = std::move(listener);
    registration_.resize(12);
    qd_put_u32(&registration_[0], AID);
    qd_put_u32(&registration_[4], sid);
    qd_put_u32(&registration_[8], at);
    state_ = STARTING;
    deadline_ = now_is() + bounds_.registration;
    return 0;
}

void QD_Client::send(const QD_Bytes& record)
{
    if (state_ == LINKED && link_->send(QD_MEMBERSHIP_EVENT, record) < 0)
        fail("does not read its link");
}

void QD_Client::end()
{
    if (state_ == ENDED)
        return;
    asked_ = true;
    if (state_ != ENDING)
        finish();
}

/// From STARTING or LINKED to ENDING.
void QD_Client::finish()
{
    const bool told = state_ == LINKED && link_->send(QD_MEMBERSHIP_EVENT, qd_end_record()) == 0;
    state_ = ENDING;
    deadline_ = now_is() + bounds_.end;
    listener_.reset();
    if (!told) {
        link_.reset();
        insist();
    }
}

void QD_Client::insist()
{
    if (state_ == ENDED)
        return;
    state_ = ENDING;
    signalled_ = signalled_ == 0 ? SIGTERM : SIGKILL;
    child_.signal(signalled_);
    deadline_ = signalled_ == SIGKILL ? QD_Clock::Time::max() : now_is() + bounds_.insist;
}

void QD_Client::fail(const std::string& why)
{
    trouble_ = why;
    finish();
}

void QD_Client::watch(std::vector<pollfd>& polled) const
{
    if (state_ == ENDED)
        return;
    polled.push_back({child_.get(), POLLIN, 0});
    if (listener_)
        polled.push_back({listener_.get(), POLLIN, 0});
    if (link_)
        polled.push_back(
            {link_->get(), static_cast<short>(POLLIN | (link_->wants_write() ? POLLOUT : 0)), 0});
}

void QD_Client::serve()
{
    if (state_ == ENDED)
        return;
    if (child_.take_end()) {
        process_ended();
        return;
    }
    if (listener_)
        take_connection();
    if (link_)
        read_link();
    if (link_ && link_->flush() < 0)
        lose_link();
    const QD_Clock::Time now = now_is();
    if (now >= deadline_)
        go_on(now);
}

/// The deadline of the present state has come.
void QD_Client::go_on(QD_Clock::Time now)
{
    if (state_ == STARTING) {
        fail("did not register within " + seconds(bounds_.registration));
    } else if (state_ == LINKED && probe_.empty()) {
        send_probe(now);
    } else if (state_ == LINKED) {
        fail("has not answered for " + seconds(bounds_.echo));
    } else {
        if (trouble_.empty())
            trouble_ = std::string(asked_ ? "did not end" : "closed its link and did not end")
                + " within " + seconds(bounds_.end);
        insist();
    }
}

void QD_Client::take_connection()
{
    for (int i = 0; i < REFUSALS_A_PASS; ++i) {
        QD_Fd fd(::accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
        if (!fd)
            return;
        if (!qd_far_end_is(fd.get(), child_.pid()))
            continue;
        const int at_once = 1; // small messages, each of them wanted now
        ::setsockopt(fd.get(), IPPROTO_TCP, TCP_NODELAY, &at_once, sizeof at_once);
        link_.emplace(std::move(fd));
        listener_.reset();
        return;
    }
}

void QD_Client::read_link()
{
    const int result = link_->read();
    if (state_ == STARTING)
        check_registration();
    QD_Event_Link::Received event;
    int taken = 0;
    while (link_ && state_ != STARTING && (taken = link_->take_event(event)) > 0) {
        if (event.type == Event::ECHO && state_ == LINKED)
            check_echo(event);
    }
    if (taken < 0 && state_ == LINKED)
        fail("sent an event of an impossible length");
    if (link_ && (taken < 0 || result <= 0))
        lose_link();
}

/// Nothing can be read or written any more.
void QD_Client::lose_link()
{
    link_.reset();
    if (state_ == STARTING) {
        fail("closed its link before it had registered");
    } else if (state_ == LINKED) { // a user who leaves ends like this
        state_ = ENDING;
        deadline_ = now_is() + bounds_.end;
    }
}

void QD_Client::check_registration()
{
    QD_Bytes got(registration_.size());
    if (link_->take(got) == 0)
        return;
    if (got != registration_) {
        fail("registered with other numbers than it was given");
        return;
    }
    state_ = LINKED;
    deadline_ = now_is() + bounds_.probe_every;
}

void QD_Client::send_probe(QD_Clock::Time now)
{
    child_.bound_log();
    // Clients read a payload by its first byte; this one must mean nothing to them.
    static const std::string greeting = "echo ";
    std::random_device random;
    probe_.assign(greeting.begin(), greeting.end());
    for (int i = 0; i < 8; ++i)
        probe_.push_back(static_cast<uint8_t>(random()));
    deadline_ = now + bounds_.echo;
    if (link_->send(Event::ECHO, probe_) < 0)
        fail("does not read its link");
}

void QD_Client::check_echo(const QD_Event_Link::Received& event)
{
    if (probe_.empty() || event.payload != probe_) {
        fail("returned an echo other than it was sent");
        return;
    }
    probe_.clear();
    deadline_ = now_is() + bounds_.probe_every;
}

void QD_Client::process_ended()
{
    if (state_ == STARTING)
        trouble_ = "ended before it had registered, with " + child_.how_it_ended();
    else if (signalled_ == 0 && !child_.ended_well() && trouble_.empty())
        trouble_ = "ended with " + child_.how_it_ended();
    state_ = ENDED;
    deadline_ = QD_Clock::Time::max();
    link_.reset();
    listener_.reset();
}

#include "signalling/session_control.h"
#include "tests/fuzz/fuzz.h"
#include "tests/support/fake_views.h"
#include "tests/support/stream_pair.h"
#include "tests/support/test_clock.h"

#include <functional>

// Whether invitations are accepted at once, then what happens: bytes on one of the streams, in
// whatever fragments or over and over, what the peers read, time, and what the user does. Each is
// two bytes and a chunk.
void qd_fuzz(QD_Fuzz_Input input)
{
    QD_Session_Ref session;
    QD_Fake_Main_View form;
    QD_Test_Clock clock;
    Reactor reactor(clock);
    std::vector<QD_Fd> peers;
    // Streams all end here; beyond the fourth they cannot be had.
    const auto open = [&](std::unique_ptr<QD_Svc_Handler> handler) {
        QD_Stream_Pair pair;
        if (peers.size() == 4)
            return static_cast<SOCK_Stream*>(nullptr);
        // Small, so that what a peer does not read soon waits in the queue.
        const int room = 4096;
        ::setsockopt(pair.stream.get_handle(), SOL_SOCKET, SO_SNDBUF, &room, sizeof room);
        peers.push_back(std::move(pair.peer));
        return pair.serve(std::move(handler), &reactor);
    };
    session->setGUI(nullptr, &form);
    session->set_reactor(&reactor);
    session->set_dial([&](std::span<QD_Member* const> members, Reactor*, int) {
        for (QD_Member* member : members)
            member->set_stream(open(std::make_unique<QD_Svc_Handler>()));
    });
    QD_Places places([&](const SOCK_Stream* stream) { return session->uses(stream); });
    for (int accepted = 0; accepted < 2; ++accepted) {
        auto handler = std::make_unique<QD_Svc_Handler>();
        handler->set_place(places.take(0, handler->peer()));
        open(std::move(handler));
    }
    session->get_options()->auto_accept = input.byte() % 2;

    QD_Fd* peer = nullptr;
    std::string bytes;
    const auto send
        = [&] { ::send(peer->get(), bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT); };
    const auto turn = [&] {
        reactor.wait(-1, 0);
        reactor.dispatch();
    };
    const auto flood = [&] { // the more is sent the shorter it is: some thousand times
        for (size_t sent = 0; sent < 1 << 16; sent += bytes.size() + 16) {
            send();
            turn();
        }
    };
    const auto read = [&] {
        static char taken[1 << 16];
        [[maybe_unused]] const ssize_t ignored
            = ::recv(peer->get(), taken, sizeof taken, MSG_DONTWAIT);
    };
    const std::function<void()> happens[]
        = {send, send, [&] { clock.pass(std::chrono::milliseconds(100 * bytes.size())); },
            [&] { peer->reset(); }, [&] { session->invite("user", "127.0.0.9"); },
            [&] { session->accept_invitation(); }, [&] { session->reject_invitation(); },
            [&] { session->send_to_app(6666, 1, bytes.data(), static_cast<int>(bytes.size())); },
            [&] { session->quit(); }, flood, read};
    while (!input.empty()) {
        const size_t what = input.byte() % std::size(happens);
        peer = &peers[input.byte() % peers.size()];
        bytes = input.chunk();
        happens[what]();
        session->clear_failed_invitation();
        turn();
    }
}

#include "signalling/session_control.h"
#include "signalling/svc_handler.h"
#include "tests/fuzz/fuzz.h"
#include "tests/support/fake_views.h"
#include "tests/support/stream_pair.h"
#include "tests/support/test_clock.h"

namespace {

// A client whose streams all end here.
class Client {
public:
    Client()
    {
        session_->setGUI(nullptr, &form_);
        session_->set_reactor(&reactor_);
        session_->set_dial([this](std::span<QD_Member* const> members, Reactor*, int) {
            for (QD_Member* member : members)
                member->set_stream(open(std::make_unique<QD_Svc_Handler>()));
        });
        open(std::make_unique<QD_Svc_Handler>(std::make_shared<int>()));
        open(std::make_unique<QD_Svc_Handler>(std::make_shared<int>()));
    }

    void obey(QD_Fuzz_Input& input)
    {
        enum { SEND, SEND_MORE, PASS_TIME, CLOSE, INVITE, ACCEPT, REJECT, CHAT, LEAVE, ALL };
        const int what = input.byte() % ALL;
        QD_Fd& peer = peers_[input.byte() % peers_.size()];
        const std::string bytes = input.chunk();
        if (what <= SEND_MORE)
            ::send(peer.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
        else if (what == PASS_TIME)
            clock_.pass(std::chrono::milliseconds(100 * bytes.size()));
        else if (what == CLOSE)
            peer.reset();
        else if (what == INVITE)
            session_->invite("user", "127.0.0.9");
        else if (what == ACCEPT)
            session_->accept_invitation();
        else if (what == REJECT)
            session_->reject_invitation();
        else if (what == CHAT)
            session_->send_to_app(6666, 1, bytes.data(), static_cast<int>(bytes.size()));
        else
            session_->quit();
        session_->clear_failed_invitation();
        reactor_.wait(-1, 0);
        reactor_.dispatch();
    }

    QD_Session_Ref session_;

private:
    // Streams beyond the fourth cannot be had.
    SOCK_Stream* open(std::unique_ptr<QD_Svc_Handler> handler)
    {
        if (peers_.size() == 4)
            return nullptr;
        QD_Stream_Pair pair;
        peers_.push_back(std::move(pair.peer));
        *handler->peer() = std::move(pair.stream);
        SOCK_Stream* stream = handler->peer();
        handler->open(&reactor_);
        reactor_.adopt(std::move(handler));
        return stream;
    }

    QD_Fake_Main_View form_;
    QD_Test_Clock clock_;
    Reactor reactor_ {clock_};
    std::vector<QD_Fd> peers_;
};

}

// Whether invitations are accepted at once, then what happens: bytes on one of the streams, in
// whatever fragments, time, and what the user does. Each is two bytes and a chunk.
void qd_fuzz(QD_Fuzz_Input input)
{
    Client client;
    client.session_->get_options()->auto_accept = input.byte() % 2;
    while (!input.empty())
        client.obey(input);
}

// One medium's application, fed datagrams through a media socket and the receive thread's function.
#pragma once

#include "media/read_thread.h"
#include "platform/net/udp_socket.h"
#include "signalling/session_control.h"
#include "tests/fuzz/fuzz.h"
#include "tests/support/fake_views.h"
#include "tests/support/loopback.h"
#include "tests/support/udp_peer.h"

/// An input is one chunk a datagram. Members 1, 2 and 3 join before them and leave behind them, so
/// that every input begins with fresh ports, decoders and figures.
template <class APP> class QD_Datagrams {
public:
    QD_Datagrams()
    {
        session_->setGUI(nullptr, &form_);
        session_->set_display_factory(&displays_);
        app_->stop();
        qd_require(qd_bind(in_.get(), qd_test_host(1), PORT) == 0 && out_.bound());
    }
    ~QD_Datagrams()
    {
        app_->close();
        app_.reset();
        QD_Session_Control::destroy();
    }

    void feed(QD_Fuzz_Input input)
    {
        for (int id : {1, 2, 3})
            session_->new_member(new QD_Member(nullptr, id, "m", htonl(INADDR_LOOPBACK + 1)));
        while (!input.empty()) {
            const std::string datagram = input.chunk();
            if (datagram.empty()) // the kernel drops it
                continue;
            qd_require(out_.send(datagram, qd_test_host(1)));
            qd_require(reader_.receive(in_.get()) == 0);
            session_->handle_member_events();
        }
        for (int id : {1, 2, 3})
            session_->delete_member(id);
        form_.statuses.clear();
        displays_.log.clear();
    }

private:
    static constexpr uint16_t PORT = 23456;
    QD_Session_Control* const session_ = QD_Session_Control::instance();
    QD_Fake_Main_View form_;
    QD_Fake_Displays displays_;
    std::unique_ptr<APP> app_ = std::make_unique<APP>();
    QD_AppReadThread reader_ {app_.get()};
    QD_Fd in_ = qd_open_media_socket();
    QD_Udp_Peer out_ {qd_test_host(2), PORT};
};

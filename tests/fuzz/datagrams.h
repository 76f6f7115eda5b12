// One medium's application, fed datagrams through a socket and the receive thread's function.
#pragma once

#include "media/read_thread.h"
#include "signalling/session_control.h"
#include "tests/fuzz/fuzz.h"

#include <filesystem>
#include <sys/socket.h>

/// An input is one chunk a datagram. Members 1, 2 and 3 join before them, and all leave behind
/// them, so that every input begins with fresh ports, decoders and figures. In place of an empty
/// datagram, which the kernel drops, a byte follows: another member comes (0), or the one of that
/// number goes.
template <class APP> class QD_Datagrams {
public:
    QD_Datagrams()
    {
        const auto here = std::filesystem::current_path();
        std::filesystem::current_path("/proc"); // where no trace can be written
        app_ = std::make_unique<APP>();
        std::filesystem::current_path(here);
        app_->stop();
        qd_require(::socketpair(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0, ends_) == 0);
    }
    ~QD_Datagrams() { app_->close(); }

    void feed(QD_Fuzz_Input input)
    {
        QD_AppReadThread reader(app_.get());
        int last_id = 0;
        const auto come = [&] {
            session_->new_member(
                new QD_Member(nullptr, ++last_id, "m", htonl(INADDR_LOOPBACK + 1)));
        };
        while (last_id < 3)
            come();
        while (!input.empty()) {
            const std::string datagram = input.chunk();
            if (!datagram.empty()) {
                qd_require(::send(ends_[0], datagram.data(), datagram.size(), 0) > 0);
                qd_require(reader.receive(ends_[1]) == 0);
                session_->handle_member_events();
            } else if (const int gone = input.byte(); gone != 0)
                session_->delete_member(gone);
            else if (last_id < 10)
                come();
        }
        for (; last_id > 0; --last_id)
            session_->delete_member(last_id);
    }

private:
    QD_Session_Ref session_;
    std::unique_ptr<APP> app_;
    int ends_[2];
};

// One medium's application, fed datagrams through a socket and the receive thread's function.
#pragma once

#include "media/read_thread.h"
#include "signalling/session_control.h"
#include "tests/fuzz/fuzz.h"

#include <filesystem>
#include <sys/socket.h>

/// An input is one chunk a datagram. Members 1, 2 and 3 join before them and leave behind them, so
/// that every input begins with fresh ports, decoders and figures.
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
        for (int id : {1, 2, 3})
            session_->new_member(new QD_Member(nullptr, id, "m", htonl(INADDR_LOOPBACK + 1)));
        while (!input.empty()) {
            const std::string datagram = input.chunk();
            if (datagram.empty()) // the kernel drops it
                continue;
            qd_require(::send(ends_[0], datagram.data(), datagram.size(), 0) > 0);
            qd_require(reader.receive(ends_[1]) == 0);
            session_->handle_member_events();
        }
        for (int id : {1, 2, 3})
            session_->delete_member(id);
    }

private:
    QD_Session_Ref session_;
    std::unique_ptr<APP> app_;
    int ends_[2];
};

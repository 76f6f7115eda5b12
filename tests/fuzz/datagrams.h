// One medium's application, fed datagrams through a socket and the receive thread's function.
#pragma once

#include "media/read_thread.h"
#include "platform/net/bytes.h"
#include "signalling/session_control.h"
#include "tests/fuzz/fuzz.h"

#include <filesystem>
#include <sys/socket.h>

/// An input is one chunk a datagram. Members 1, 2 and 3 join before them, and all leave behind
/// them, so that every input begins with fresh ports, decoders and figures. In place of an empty
/// datagram, which the kernel drops, a byte follows: so many more members come, or one of them
/// leaves, or (0) all of them send the chunk behind it, with their own numbers in it.
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
        last_id_ = 0;
        come(3);
        while (!input.empty()) {
            const std::string datagram = input.chunk();
            const int what = datagram.empty() ? input.byte() : 0;
            if (!datagram.empty())
                send(reader, datagram);
            else if (what == 0)
                send_as_all(reader, input.chunk());
            else if (what < 128)
                come(what);
            else
                session_->delete_member(what - 127);
        }
        for (int id = 1; id <= last_id_; ++id)
            session_->delete_member(id);
    }

private:
    static constexpr int CROWD = 250;

    void come(int count)
    {
        for (int i = 0; i < count && last_id_ < CROWD; ++i)
            session_->new_member(
                new QD_Member(nullptr, ++last_id_, "m", htonl(INADDR_LOOPBACK + 1)));
    }

    void send(QD_AppReadThread& reader, const std::string& datagram)
    {
        qd_require(::send(ends_[0], datagram.data(), datagram.size(), 0) > 0);
        qd_require(reader.receive(ends_[1]) == 0);
        session_->handle_member_events();
    }

    void send_as_all(QD_AppReadThread& reader, std::string datagram)
    {
        for (int id = 1; id <= last_id_ && datagram.size() >= rtp_fix_header::WIRE_SIZE; ++id) {
            qd_put_u32(reinterpret_cast<uint8_t*>(&datagram[8]), static_cast<uint32_t>(id));
            send(reader, datagram);
        }
    }

    QD_Session_Ref session_;
    std::unique_ptr<APP> app_;
    int ends_[2];
    int last_id_ = 0;
};

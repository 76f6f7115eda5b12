// What both media have in common: a socket, a sender, a receiver.
#pragma once

#include "media/base/rtp_header.h"
#include "media/read_thread.h"
#include "platform/base/fd.h"
#include "platform/base/mutex.h"
#include "platform/net/neighbours.h"
#include "signalling/session_control.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <netinet/in.h>
#include <sys/socket.h>
#include <vector>

/// One medium of the conference over UDP: what is sent goes as one datagram to
/// every other member, what arrives goes to process_message() on the receive
/// thread. The user-interface thread makes it, calls init() once, and close()
/// before it destroys it.
class QD_Application {
public:
    /// `port` is both the local one and every peer's.
    explicit QD_Application(int port);
    QD_Application(const QD_Application&) = delete;
    QD_Application& operator=(const QD_Application&) = delete;
    virtual ~QD_Application();

    /// Opens and binds the socket and starts receiving. Returns 0, or -1 if
    /// one of these failed.
    int init();

    /// Ends the receive thread, then closes the socket. Nothing is sent or
    /// received once it has returned.
    void close();

    /// -1 before init() and after close().
    int get_data_sock() const { return data_sock_; }

    /// The membership as it is now. Any thread.
    QD_Roster_Ptr get_roster() const { return sess_ctrl->get_roster(); }

    /// Sends one packet of `len` payload bytes to every member but the local
    /// one, in ascending id. Returns 0, or -1 if a send failed (the members
    /// behind it get nothing) or the socket is closed. Never waits: a host that
    /// cannot be found is passed over but for a trial now and then, and what finds
    /// no room in the send buffer is lost. One thread sends.
    int send_data(int type, const char* data, int len);

    /// One datagram to `host` (network byte order). Returns 0 or -1.
    static int send_packet(int sock, uint32_t host, int port, const char* buf, int len);

    /// Sets every field of the header; ssrc to 0. The first packet has sequence number 0.
    void fill_rtp_header(rtp_fix_header* hdr, unsigned type);

    /// Milliseconds of the time of day plus a fixed offset, modulo 2^32. Any thread.
    static unsigned get_time_stamp();

    /// A member's number of joining, -1 if there is no such member. Any
    /// thread, without the session lock held.
    int get_internal_id(int id);

    /// Handles one datagram in the name of a member: `len` payload bytes behind
    /// the header, below zero for a datagram shorter than a header. Neither
    /// pointer is valid beyond the call. Called on the receive thread.
    virtual int process_message(rtp_fix_header* hdr, char* data, int len) = 0;

    /// Packets sent so far. Any thread.
    int get_sent() const { return sequence; }

protected:
    QD_Session_Control* const sess_ctrl;

private:
    void choose_destinations(const QD_Roster& roster);
    int send_to_others(int sock);

    std::unique_ptr<QD_AppReadThread> read_thread_;
    std::atomic<int> data_sock_ = -1;
    const int port_;
    std::atomic<int> sequence = 0;
    std::vector<char> packet_; // this and what follows: the sending thread's, kept
    std::vector<sockaddr_in> destinations_;
    std::vector<mmsghdr> messages_;
    QD_Neighbours neighbours_;
    QD_Clock::Time refreshed_; // the neighbours
    QD_Mutex send_mutex_;      // closing and sending exclude each other
};

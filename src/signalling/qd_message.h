// A message between members, and what becomes of one that arrives.
#pragma once

#include "signalling/message.h"
#include "signalling/msg_header.h"

class QD_Session_Control;

/// User-interface thread.
class QD_Message : public Message<QD_Msg_Header, SOCK_Stream> {
public:
    /// The header's tags. Others are ignored.
    enum Tag : unsigned char {
        ACCEPT = 0,
        LEAVE = 1,
        REJECT = 2,
        NEW_MEMBER = 3,  // body: _participant, not read
        CONFIRM = 4,     // body: QD_Participant_List
        APP_MESSAGE = 5, // body: QD_App_Record
        CONNECT = 61,
        INVITE = 62, // body: QD_Participant_List
    };

    /// A message to be received from `stream`.
    explicit QD_Message(SOCK_Stream* stream) : stream_(stream) {}

    /// A message to be sent.
    explicit QD_Message(const QD_Msg_Header& header) : Message(header) {}

    /// Hands a received message to the session controller, which keeps nothing
    /// of the body; one whose body is too short for its tag is dropped, and one
    /// whose stream has no say in what it asks for. Returns 0.
    int execute() override;

private:
    void dispatch(QD_Session_Control* session, const _participant& sender);

    SOCK_Stream* const stream_ = nullptr; // that it arrived on, not owned
};

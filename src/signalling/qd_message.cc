#include "signalling/qd_message.h"

#include "platform/net/sock_library.h"
#include "signalling/session_control.h"

#include <cstdio>

int QD_Message::execute()
{
    const QD_Session_Ref session;
    _participant sender;
    header_.get_sender(&sender);
    char host[SOCK_Library::NAME_SIZE];
    SOCK_Library::getdotted(sender.host, host);
    printf("QD_Message: received message of type %d from %s\n", header_.get_tag(), host);
    dispatch(session.get(), sender);
    return 0;
}

void QD_Message::dispatch(QD_Session_Control* session, const _participant& sender)
{
    const int size = body_ == nullptr ? 0 : header_.get_size();
    const auto* body = reinterpret_cast<const uint8_t*>(body_);
    const auto new_member
        = [&] { return new QD_Member(stream_, sender.handle, sender.user, sender.host); };

    switch (header_.get_tag()) {
    case ACCEPT:
        no_print("QD_Message::execute: invitation accepted\n");
        session->accepted(sender.user, sender.host);
        break;
    case LEAVE:
        if (session->delete_member(sender.handle) < 0)
            no_print("QD_Message::execute: unknown member\n");
        break;
    case REJECT:
        session->rejected(sender.user, sender.host);
        break;
    case NEW_MEMBER:
        session->new_member(new_member());
        break;
    case CONFIRM:
        session->confirmed(body_, size);
        break;
    case APP_MESSAGE:
        session->app_message(sender.handle, body_, size);
        break;
    case CONNECT:
        session->connect(sender.handle, stream_);
        break;
    case INVITE:
        if (QD_Participant_List::decode({body, static_cast<size_t>(size)}))
            session->invited(new_member());
        break;
    default:
        break;
    }
}

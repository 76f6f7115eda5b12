#include "signalling/qd_message.h"

#include "platform/net/sock_library.h"
#include "signalling/peer_lines.h"
#include "signalling/session_control.h"

int QD_Message::execute()
{
    const QD_Session_Ref session;
    _participant sender;
    header_.get_sender(&sender);
    char host[SOCK_Library::NAME_SIZE];
    SOCK_Library::getdotted(sender.host, host);
    const uint32_t from = stream_ != nullptr ? stream_->get_peer_host() : 0;
    qd_peer_lines().print(
        from, "QD_Message: received message of type %d from %s\n", header_.get_tag(), host);
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
        if (session->has_called(stream_))
            session->accepted(sender.user, sender.host);
        break;
    case LEAVE:
        if (!session->speaks_for(stream_, sender.handle)
            || session->delete_member(sender.handle) < 0)
            no_print("QD_Message::execute: unknown member\n");
        break;
    case REJECT:
        if (session->has_called(stream_))
            session->rejected(sender.user, sender.host);
        break;
    case NEW_MEMBER:
        session->new_member(new_member());
        break;
    case CONFIRM:
        if (session->is_called_by(stream_))
            session->confirmed(body_, size);
        break;
    case APP_MESSAGE:
        session->app_message(sender.handle, body_, size);
        break;
    case CONNECT:
        if (session->speaks_for(stream_, sender.handle))
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

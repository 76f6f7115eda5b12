#include "signalling/svc_handler.h"

#include "signalling/qd_message.h"
#include "signalling/session_control.h"

QD_Svc_Handler::~QD_Svc_Handler() { QD_Session_Control::stream_gone(peer()); }

int QD_Svc_Handler::handle_event(Event_Type type)
{
    no_print("QD_Svc_Handler::handle_event\n");
    if (type == QD_EVENT_WRITE) {
        peer()->flush(); // a failure shows as an end when the stream is read
        watch_queue();
        return 0;
    }
    for (int i = 0; i < MESSAGES_PER_EVENT && message_complete(); ++i)
        if (receive_message() == -1)
            return end();
    if (this_second_ >= MESSAGES_PER_SECOND)
        reactor()->remove_handler(this, QD_EVENT_READ); // until the second is over
    return 0;
}

int QD_Svc_Handler::receive_message()
{
    QD_Message message(peer());
    const bool received = message.recv(peer()) == 1;
    if (received) {
        introduced_ = true;
        if (place_)
            place_->heard();
        ++this_second_;
        with_message_.renew();
        message.execute();
    }
    message.destroy();
    return received ? 0 : -1;
}

// Fetches no more than one message: what follows it waits in the system's
// buffer, where it keeps the stream readable and a flood in bounds.
bool QD_Svc_Handler::message_complete()
{
    if (!peer()->fetch(QD_Msg_Header::IMAGE_SIZE))
        return false;
    if (peer()->received().size() < QD_Msg_Header::IMAGE_SIZE)
        return true; // no more will come, and receiving tells why
    const int body = QD_Msg_Header::announced_size(peer()->received());
    if (body <= 0 || body > QD_Message::MAX_BODY)
        return true;
    return peer()->fetch(QD_Msg_Header::IMAGE_SIZE + static_cast<size_t>(body));
}

int QD_Svc_Handler::handle_time(QD_Clock::Time now)
{
    watch_queue();
    if (now - second_began_ >= std::chrono::seconds(1)) {
        second_began_ = now;
        if (std::exchange(this_second_, 0) >= MESSAGES_PER_SECOND)
            reactor()->register_handler(this, QD_EVENT_READ);
    }
    const bool half_a_message = !peer()->received().empty();
    const bool unknown = place_ != nullptr && !introduced_;
    if (with_message_.exhausted(half_a_message || unknown, now, MESSAGE_LIMIT))
        return end();
    if (with_queue_.exhausted(!peer()->queued().empty(), now, DRAIN_LIMIT))
        return end();
    return 0;
}

void QD_Svc_Handler::watch_queue()
{
    const bool waits = !peer()->queued().empty();
    if (waits == watching_queue_)
        return;
    watching_queue_ = waits;
    if (waits)
        reactor()->register_handler(this, QD_EVENT_WRITE);
    else
        reactor()->remove_handler(this, QD_EVENT_WRITE);
}

int QD_Svc_Handler::end()
{
    QD_Session_Ref()->connection_closed(peer());
    forget_reactor();
    close();
    return -1;
}

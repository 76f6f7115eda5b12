#include "framework/orvik_control.h"

#include "framework/link/event.h"
#include "framework/link/member_record.h"

#include <cstdio>
#include <memory>
#include <poll.h>
#include <unistd.h>

namespace {

struct Destroy_Event {
    void operator()(Event* event) const { destroyEvent(event); }
};

}

QD_Orvik_Control::QD_Orvik_Control(int argc, char** argv) :
    session_(QD_Session_Control::instance()),
    orvik_sock_(registerApp(argc, argv))
{
    QD_Session_Control::save_at_end();
}

QD_Orvik_Control::~QD_Orvik_Control()
{
    ::close(orvik_sock_);
    QD_Session_Control::destroy();
}

int QD_Orvik_Control::handle_events(int wait_ms)
{
    if (orvik_sock_ == 0)
        return -1;
    if (wait_for_event(wait_ms) > 0 && receive() == -1)
        return -1;
    // One raise, one request: with more of them waiting the next poll does not sleep.
    session_->get_wake().take();
    session_->handle_member_events();
    return 0;
}

int QD_Orvik_Control::wait_for_event(int wait_ms)
{
    if (Reactor* reactor = session_->get_reactor())
        return reactor->wait(orvik_sock_, wait_ms);
    pollfd waiting {orvik_sock_, POLLIN, 0};
    return ::poll(&waiting, 1, wait_ms);
}

// Returns -1 if the framework has ended the session.
int QD_Orvik_Control::receive()
{
    const std::unique_ptr<Event, Destroy_Event> event(receiveEvent(orvik_sock_));
    const auto* payload = reinterpret_cast<const uint8_t*>(event->data);
    const auto record = QD_Member_Record::decode({payload, static_cast<size_t>(event->len)});
    if (record) {
        switch (record->command) {
        case QD_Member_Record::ADD_PADDED:
        case QD_Member_Record::ADD:
            session_->new_member(
                new QD_Member(nullptr, record->id, record->name.c_str(), record->host));
            break;
        case QD_Member_Record::REMOVE:
            session_->delete_member(record->id);
            break;
        case QD_Member_Record::END:
            return -1;
        }
    }
    fflush(stdout);
    return 0;
}

int QD_Orvik_Control::send_msg(const char* msg, int len)
{
    const std::unique_ptr<Event, Destroy_Event> event(createEvent(Event::APP_MESSAGE, len, msg));
    sendEvent(orvik_sock_, event.get());
    return 0;
}

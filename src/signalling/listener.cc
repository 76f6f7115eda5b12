#include "signalling/listener.h"

#include "platform/net/sock_library.h"
#include "signalling/connector.h"
#include "signalling/session_control.h"
#include "signalling/svc_handler.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/socket.h>

namespace {

QD_Fd spare_descriptor() { return QD_Fd(::open("/dev/null", O_RDONLY | O_CLOEXEC)); }

}

/// Told the time by the reactor, it has the listener watched again when its time has come.
class QD_Listener::Pause : public Event_Handler {
public:
    explicit Pause(std::weak_ptr<QD_Listener*> listener) : listener_(std::move(listener)) {}
    int handle_event(Event_Type) override { return 0; }
    int get_handle() override { return -1; }
    int handle_time(QD_Clock::Time now) override
    {
        until_ = until_.value_or(now + PAUSE);
        if (now < *until_)
            return 0;
        if (const auto listener = listener_.lock())
            (*listener)->reactor_->register_handler(*listener, QD_EVENT_READ);
        return -1;
    }

private:
    const std::weak_ptr<QD_Listener*> listener_;
    std::optional<QD_Clock::Time> until_;
};

QD_Listener::QD_Listener(Reactor* reactor) :
    reactor_(reactor),
    places_([](const SOCK_Stream* stream) { return QD_Session_Ref()->uses(stream); })
{
}

int QD_Listener::open()
{
    if (!QD_Session_Ref()->call_policy().any())
        return 0;
    QD_Fd fd(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    const int on = 1; // a member that starts again finds its port free
    if (fd)
        ::setsockopt(fd.get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    sockaddr_in local {};
    local.sin_family = AF_INET;
    local.sin_port = htons(QD_SIGNALLING_PORT);
    local.sin_addr.s_addr = SOCK_Library::get_bind_address();
    if (!fd || ::bind(fd.get(), reinterpret_cast<const sockaddr*>(&local), sizeof local) < 0
        || ::listen(fd.get(), QD_Places::MAX_STREAMS) < 0) {
        fprintf(stderr, "QD_Listener: nobody can call: port %d: %s\n", QD_SIGNALLING_PORT,
            strerror(errno));
        return -1;
    }
    fd_ = std::move(fd);
    spare_ = spare_descriptor();
    self_ = std::make_shared<QD_Listener*>(this);
    return reactor_->register_handler(this, QD_EVENT_READ);
}

void QD_Listener::close()
{
    reactor_->remove_handler(this, QD_EVENT_READ);
    self_.reset();
    fd_.reset();
    spare_.reset();
}

int QD_Listener::handle_event(Event_Type)
{
    for (int i = 0; i < ACCEPTS_PER_EVENT && accept_one(); ++i) {}
    return 0;
}

bool QD_Listener::accept_one()
{
    sockaddr_in from {};
    socklen_t size = sizeof from;
    QD_Fd fd(::accept4(fd_.get(), reinterpret_cast<sockaddr*>(&from), &size, SOCK_CLOEXEC));
    if (fd) {
        serve(std::move(fd), from.sin_addr.s_addr);
        return true;
    }
    const int error = errno == EMFILE && spare_ ? send_away() : errno;
    if (error == 0 || error == EINTR || error == ECONNABORTED)
        return true;
    if (error != EAGAIN)
        pause();
    return false;
}

// A caller who cannot be let in would keep the listener readable for ever. Returns 0 or what
// the system says.
int QD_Listener::send_away()
{
    spare_.reset();
    QD_Fd caller(::accept4(fd_.get(), nullptr, nullptr, SOCK_CLOEXEC));
    const int error = caller ? 0 : errno;
    caller.reset(); // before the spare one is had again
    spare_ = spare_descriptor();
    return error;
}

// The caller is still at the door, and the listener readable: it is not watched for a while.
void QD_Listener::pause()
{
    reactor_->remove_handler(this, QD_EVENT_READ);
    reactor_->adopt(std::make_unique<Pause>(self_));
}

void QD_Listener::serve(QD_Fd fd, uint32_t host)
{
    if (!QD_Session_Ref()->call_policy().admits(host))
        return;
    auto handler = std::make_unique<QD_Svc_Handler>();
    auto place = places_.take(host, handler->peer());
    if (place == nullptr)
        return;
    handler->set_place(std::move(place));
    *handler->peer() = SOCK_Stream(std::move(fd));
    if (handler->open(reactor_) == 0)
        reactor_->adopt(std::move(handler));
}

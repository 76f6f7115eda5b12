#include "signalling/listener.h"

#include "platform/net/sock_library.h"
#include "signalling/connector.h"
#include "signalling/svc_handler.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/socket.h>

namespace {

QD_Fd spare_descriptor() { return QD_Fd(::open("/dev/null", O_RDONLY | O_CLOEXEC)); }

}

int QD_Listener::open()
{
    QD_Fd fd(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    const int on = 1; // a member that starts again finds its port free
    if (fd)
        ::setsockopt(fd.get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    sockaddr_in local {};
    local.sin_family = AF_INET;
    local.sin_port = htons(QD_SIGNALLING_PORT);
    local.sin_addr.s_addr = SOCK_Library::get_bind_address();
    if (!fd || ::bind(fd.get(), reinterpret_cast<const sockaddr*>(&local), sizeof local) < 0
        || ::listen(fd.get(), MAX_STREAMS) < 0) {
        fprintf(stderr, "QD_Listener: nobody can call: port %d: %s\n", QD_SIGNALLING_PORT,
            strerror(errno));
        return -1;
    }
    fd_ = std::move(fd);
    spare_ = spare_descriptor();
    return reactor_->register_handler(this, QD_EVENT_READ);
}

void QD_Listener::close()
{
    reactor_->remove_handler(this, QD_EVENT_READ);
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
    if (!fd && errno == EMFILE && spare_) {
        // A caller who cannot be let in would keep the listener readable for ever.
        spare_.reset();
        QD_Fd(::accept4(fd_.get(), nullptr, nullptr, SOCK_CLOEXEC));
        spare_ = spare_descriptor();
        return true;
    }
    if (!fd)
        return errno == EINTR || errno == ECONNABORTED;
    auto place = take_place(from.sin_addr.s_addr);
    if (place == nullptr)
        return true;
    auto handler = std::make_unique<QD_Svc_Handler>(std::move(place));
    *handler->peer() = SOCK_Stream(std::move(fd));
    if (handler->open(reactor_) == 0)
        reactor_->adopt(std::move(handler));
    return true;
}

// Something that gives the place back when it is let go, null if there is none.
std::shared_ptr<void> QD_Listener::take_place(uint32_t host)
{
    int all = 0;
    for (const auto& [one, streams] : *guests_)
        all += streams;
    const auto known = guests_->find(host);
    if (all >= MAX_STREAMS || (known != guests_->end() && known->second >= MAX_PER_HOST))
        return nullptr;
    ++(*guests_)[host];
    return std::shared_ptr<void>(guests_.get(), [guests = guests_, host](void*) {
        if (--(*guests)[host] == 0)
            guests->erase(host);
    });
}

#include "conference/base/host_lookup.h"

#include "platform/base/create_thread.h"
#include "platform/net/host_address.h"

#include <netdb.h>
#include <sys/socket.h>

void QD_Host_Lookup::start(const std::string& host)
{
    question_.reset();
    if (qd_address_number(host) != 0)
        return;
    question_ = std::make_shared<Question>();
    const auto ask = [question = question_, host] {
        addrinfo hints {};
        hints.ai_socktype = SOCK_STREAM;
        addrinfo* found = nullptr;
        const bool known = ::getaddrinfo(host.c_str(), nullptr, &hints, &found) == 0;
        if (known)
            ::freeaddrinfo(found);
        question->answer = known ? KNOWN : UNKNOWN;
        question->wake.raise();
    };
    if (qd_run_detached(ask) < 0)
        question_->answer = UNKNOWN;
}

#include "framework/orvik_control.h"
#include "tests/fuzz/fuzz.h"
#include "tests/support/framework.h"

#include <netinet/tcp.h>

namespace {

// Launched by a framework as a client is, and registered.
QD_Orvik_Control* launched_by(QD_Test_Framework& framework)
{
    std::string port = framework.port();
    char number[] = "1";
    char* argv[] = {number, number, number, number, port.data(), nullptr};
    auto* control = new QD_Orvik_Control(5, argv);
    qd_require(framework.accept().size() == 12);
    const int at_once = 1;
    ::setsockopt(framework.descriptor(), IPPROTO_TCP, TCP_NODELAY, &at_once, sizeof at_once);
    return control;
}

}

// Events: a byte for the type, a chunk for the payload. Those that are torn or too long end the
// process; the tests of the link see to them.
void qd_fuzz(QD_Fuzz_Input input)
{
    static QD_Test_Framework framework;
    static QD_Orvik_Control* const control = launched_by(framework);
    const QD_Session_Ref session;
    while (!input.empty()) {
        const int type = input.byte();
        const std::string payload = input.chunk();
        framework.send_event(type, payload);
        session->get_wake().raise();
        const bool ended = control->handle_events(1000) != 0;
        qd_require(session->get_wake().take() == ended); // one raise, one request
        if (type == 51)
            qd_require(framework.hear(8 + payload.size()).substr(8) == payload);
    }
    session->reset();
}

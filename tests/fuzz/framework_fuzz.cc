#include "framework/orvik_control.h"
#include "tests/fuzz/fuzz.h"
#include "tests/support/fake_views.h"
#include "tests/support/framework.h"

#include <netinet/tcp.h>

namespace {

// A client's side of the link, registered.
struct Client {
    Client()
    {
        session->setGUI(nullptr, &form);
        qd_require(framework.accept().size() == 12);
        const int at_once = 1;
        ::setsockopt(framework.descriptor(), IPPROTO_TCP, TCP_NODELAY, &at_once, sizeof at_once);
    }
    ~Client() { session->quit(); }

    QD_Session_Control* session = QD_Session_Control::instance();
    QD_Fake_Main_View form;
    QD_Test_Framework framework;
    std::string port = framework.port();
    std::string number = "1";
    char* argv[6]
        = {number.data(), number.data(), number.data(), number.data(), port.data(), nullptr};
    QD_Orvik_Control control {5, argv};
};

}

// Events: a byte for the type, a chunk for the payload. Those that are torn or too long end the
// process; the tests of the link see to them.
void qd_fuzz(QD_Fuzz_Input input)
{
    static Client client;
    while (!input.empty()) {
        const int type = input.byte();
        const std::string payload = input.chunk();
        client.framework.send_event(type, payload);
        client.control.handle_events(1000);
        if (type == 51)
            qd_require(client.framework.hear(8 + payload.size()).substr(8) == payload);
    }
    client.session->reset();
    client.form.statuses.clear();
    client.form.stat.users.clear();
}

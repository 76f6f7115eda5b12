#include "conference/link/event_link.h"
#include "framework/link/event.h"
#include "framework/link/member_record.h"
#include "tests/fuzz/fuzz.h"

#include <arpa/inet.h>
#include <sys/socket.h>

// A client's stream in chunks: its registration, then events.
void qd_fuzz(QD_Fuzz_Input input)
{
    int ends[2];
    qd_require(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) == 0);
    QD_Event_Link link {QD_Fd(ends[0])};
    const QD_Fd client(ends[1]);
    bool registered = false;
    while (!input.empty()) {
        const std::string bytes = input.chunk();
        // What the companion tells of a member is what a client understands.
        const std::string name = bytes.substr(0, QD_MAX_NAME);
        const QD_Bytes told = qd_add_record(0x7f000002, 7, name);
        for (std::string payload : {"=", "<?"}) {
            payload.append(told.begin() + 1, told.end());
            const auto* whole = reinterpret_cast<const uint8_t*>(payload.data());
            for (size_t size = 0; size < payload.size(); ++size) // cut short it is nothing
                qd_require(!QD_Member_Record::decode({whole, size}));
            const auto record = QD_Member_Record::decode({whole, payload.size()});
            qd_require(record && record->host == htonl(0x7f000002) && record->id == 7
                && record->name == name && told[0] == '=');
        }

        ::send(client.get(), bytes.data(), bytes.size(), MSG_DONTWAIT);
        if (link.read() != 1)
            break;
        uint8_t registration[12];
        registered = registered || link.take(registration) == 1;
        QD_Event_Link::Received event;
        int taken = 0;
        while (registered && (taken = link.take_event(event)) == 1) {
            qd_require(event.payload.size() <= Event::MAX_LEN);
            link.send(event.type, event.payload);
        }
        if (taken < 0)
            break;
    }
}

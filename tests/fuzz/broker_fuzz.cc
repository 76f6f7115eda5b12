#include "conference/broker/broker_link.h"
#include "tests/fuzz/fuzz.h"
#include "tests/support/loopback.h"

#include <functional>
#include <netinet/tcp.h>
#include <sys/socket.h>

namespace {

// What the conference is told must be in order.
class Told : public QD_Broker_Events {
public:
    bool up = false;
    bool lost = false;

    void link_up() override
    {
        qd_require(!up && !lost);
        up = true;
    }
    void link_down(const std::string& why) override
    {
        qd_require(!lost && !why.empty());
        lost = true;
    }
    void received(const std::string&, std::string_view payload) override
    {
        qd_require(up && !lost && payload.size() <= QD_Broker_Link::MAX_MESSAGE);
    }
};

class Broker {
public:
    Broker() : listener_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0))
    {
        port_ = qd_bind_somewhere(listener_.get());
        qd_require(::listen(listener_.get(), 4) == 0);
    }

    int port() const { return port_; }

    void accept()
    {
        connection_.reset(::accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC));
        const linger none {1, 0}; // ports come free at once
        const int at_once = 1;
        ::setsockopt(connection_.get(), SOL_SOCKET, SO_LINGER, &none, sizeof none);
        ::setsockopt(connection_.get(), IPPROTO_TCP, TCP_NODELAY, &at_once, sizeof at_once);
    }

    void send(const std::string& bytes) const
    {
        ::send(connection_.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    }

    // A packet of that first byte.
    void send(uint8_t first, const std::string& rest) const
    {
        std::string packet(1, static_cast<char>(first));
        size_t size = rest.size();
        do {
            packet += static_cast<char>(size % 128 | (size >= 128 ? 128 : 0));
        } while ((size /= 128) > 0);
        send(packet + rest);
    }

    void close() { connection_.reset(); }

private:
    QD_Fd listener_;
    QD_Fd connection_;
    int port_;
};

std::string string(const std::string& text)
{
    return {
        std::string {static_cast<char>(text.size() >> 8), static_cast<char>(text.size())} + text};
}

}

// What a broker sends, a byte each and what belongs to it: packets that are well formed but for
// what they say, or cut short. Not any bytes: Debian 12's library ends the process, by an assertion
// of its own, at a property that it does not know.
void qd_fuzz(QD_Fuzz_Input input)
{
    static Broker broker;
    Told told;
    QD_Broker_Url url;
    qd_require(
        QD_Broker_Url::parse("mqtt://u@127.0.0.1:" + std::to_string(broker.port()), url).empty());
    QD_Broker_Link link(url, "u/r", told);
    link.open();
    link.serve();
    broker.accept();

    const auto byte = [&] { return std::string(1, static_cast<char>(input.byte())); };
    const std::string prefix = url.topic();
    const auto publish = [&](const std::string& topic) {
        const auto quality = static_cast<uint8_t>(input.byte() % 4 * 2);
        const std::string number = quality != 0 ? std::string("\0\1", 2) : "";
        const std::string properties[] = {{"\0", 1}, {"\2\1\1", 3}, {"\5\2\0\0\0\7", 6},
            {"\7\x26\0\1a\0\1b", 8}, {"\4\3\0\1t", 5}}; // behind their length
        const std::string& some = properties[input.byte() % std::size(properties)];
        broker.send(0x30 | quality, string(topic) + number + some + input.chunk());
    };
    const std::function<void()> happens[] = {
        [&] { broker.send(0x20, std::string(1, '\0') + byte() + std::string(1, '\0')); },
        [&] { broker.send(0x90, std::string("\0\1\0", 3) + byte()); },
        [&] { publish(prefix + input.chunk()); },
        [&] { publish(input.chunk()); },
        [&] { broker.send(0x40, std::string("\0", 1) + byte() + byte() + std::string(1, '\0')); },
        [&] { broker.send(0xe0, byte() + std::string(1, '\0')); },
        [&] {
            const uint8_t first = input.byte();
            broker.send(first, input.chunk().substr(0, 2));
        },
        [&] { broker.close(); },
        [&] { link.publish(input.chunk()); },
        [&] { link.close(); },
    };
    while (!input.empty() && !told.lost) {
        happens[input.byte() % std::size(happens)]();
        link.serve();
    }
    broker.close();
}

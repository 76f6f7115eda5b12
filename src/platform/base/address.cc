#include "platform/base/address.h"

#include <arpa/inet.h>

QD_Address QD_Address::from_text(std::string_view text)
{
    in_addr address {};
    return ::inet_pton(AF_INET, std::string(text).c_str(), &address) == 1
        ? from_wire(address.s_addr)
        : QD_Address();
}

std::string QD_Address::text() const
{
    char text[INET_ADDRSTRLEN];
    const in_addr address {wire()};
    return ::inet_ntop(AF_INET, &address, text, sizeof text);
}

sockaddr_in QD_Address::socket_address(uint16_t port) const
{
    sockaddr_in made {};
    made.sin_family = AF_INET;
    made.sin_addr.s_addr = wire();
    made.sin_port = htons(port);
    return made;
}

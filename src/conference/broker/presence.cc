#include "conference/broker/presence.h"

#include "conference/base/member_name.h"
#include "platform/net/host_address.h"

#include <array>
#include <charconv>

namespace {

constexpr std::array<std::string_view, 3> STATES {"claim", "live", "left"};

/// Takes the text before the next blank, with the blank; nothing without one.
std::string_view take_field(std::string_view& line)
{
    const size_t end = line.find(' ');
    if (end == std::string_view::npos)
        return "";
    const std::string_view field = line.substr(0, end);
    line.remove_prefix(end + 1);
    return field;
}

bool number(std::string_view text, uint32_t& value)
{
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && end == text.data() + text.size()
        && (text.size() == 1 || text[0] != '0');
}

}

std::string QD_Presence::encode() const
{
    return std::string(STATES[state]) + " " + std::to_string(id) + " " + qd_address_text(address)
        + " " + std::to_string(sequence) + " " + name;
}

std::string QD_Presence::decode(std::string_view line)
{
    if (line.size() > MAX_SIZE)
        return "it is longer than " + std::to_string(MAX_SIZE) + " bytes";
    const std::string_view state_field = take_field(line);
    const std::string_view id_field = take_field(line);
    const std::string_view address_field = take_field(line);
    const std::string_view sequence_field = take_field(line);

    QD_Presence read;
    size_t known = 0;
    while (known < STATES.size() && STATES[known] != state_field)
        ++known;
    read.address = qd_address_number(address_field);
    if (known == STATES.size() || !number(id_field, read.id)
        || !number(sequence_field, read.sequence) || qd_address_text(read.address) != address_field)
        return "it is malformed";
    if (read.id < MIN_ID || read.id > MAX_ID)
        return "the id " + std::to_string(read.id) + " is out of range";
    if (std::string trouble = qd_host_trouble(read.address); !trouble.empty())
        return trouble;
    if (std::string trouble = qd_name_trouble(line); !trouble.empty())
        return trouble;
    read.state = static_cast<State>(known);
    read.name = line;
    *this = read;
    return "";
}

std::string QD_Presence::label() const { return name + "@" + qd_address_text(address); }

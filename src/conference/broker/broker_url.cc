#include "conference/broker/broker_url.h"

#include <algorithm>
#include <charconv>
#include <cstring>

namespace {

constexpr size_t MAX_WORD = 64;
constexpr size_t MAX_SECRET = 256;

struct Scheme {
    std::string_view name;
    QD_Broker_Url::Scheme scheme;
    uint16_t port;
};

constexpr Scheme SCHEME_TABLE[] = {
    {"mqtt", QD_Broker_Url::PLAIN, 1883},
    {"mqtts", QD_Broker_Url::TLS, 8883},
    {"mqtt+psk", QD_Broker_Url::SHARED_KEY, 8883},
};

/// Users and conferences become parts of a topic.
bool is_word(std::string_view text)
{
    const auto good = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9')
            || c == '-' || c == '_' || c == '.' || c == '@';
    };
    return !text.empty() && text.size() <= MAX_WORD && std::all_of(text.begin(), text.end(), good);
}

bool is_host(std::string_view text)
{
    return is_word(text)
        || (!text.empty() && text.size() < 254
            && text.find_first_of("/:@ ") == std::string_view::npos);
}

/// Undoes %XX. False if there is a % without two digits, or a byte 0.
bool decode(std::string_view text, std::string& out)
{
    out.clear();
    for (size_t i = 0; i < text.size(); ++i) {
        uint8_t byte = static_cast<uint8_t>(text[i]);
        if (text[i] == '%') {
            const char* digits = text.data() + i + 1;
            if (i + 2 >= text.size()
                || std::from_chars(digits, digits + 2, byte, 16).ptr != digits + 2)
                return false;
            i += 2;
        }
        if (byte == 0)
            return false;
        out += static_cast<char>(byte);
    }
    return out.size() <= MAX_SECRET;
}

/// "USER[:PASSWORD]"
std::string read_user(std::string_view text, QD_Broker_Url& url)
{
    const size_t colon = text.find(':');
    if (!decode(text.substr(0, colon), url.user) || !is_word(url.user))
        return "a user's name has letters, digits and -_.@ only";
    if (colon != std::string_view::npos && !decode(text.substr(colon + 1), url.password))
        return "the password cannot be read";
    return "";
}

bool read_place(std::string_view text, QD_Broker_Url& url)
{
    const size_t colon = text.rfind(':');
    url.host = text.substr(0, colon);
    if (colon == std::string_view::npos)
        return is_host(url.host);
    const std::string_view port = text.substr(colon + 1);
    const auto [end, error] = std::from_chars(port.data(), port.data() + port.size(), url.port);
    return error == std::errc() && end == port.data() + port.size() && url.port != 0
        && is_host(url.host);
}

bool is_key(std::string_view text)
{
    const auto digit = [](char c) {
        return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
    };
    return text.size() >= 32 && text.size() <= 128 && text.size() % 2 == 0
        && std::all_of(text.begin(), text.end(), digit);
}

}

std::string QD_Broker_Url::parse(std::string_view text, QD_Broker_Url& url)
{
    const size_t colon = text.find("://");
    const auto* scheme = std::find_if(std::begin(SCHEME_TABLE), std::end(SCHEME_TABLE),
        [&](const auto& s) { return s.name == text.substr(0, colon); });
    if (colon == std::string_view::npos || scheme == std::end(SCHEME_TABLE))
        return "a broker's URL begins with mqtt://, mqtts:// or mqtt+psk://";
    url.scheme = scheme->scheme;
    url.port = scheme->port;
    text.remove_prefix(colon + 3);

    const size_t slash = text.find('/');
    std::string_view authority = text.substr(0, slash);
    if (const size_t at = authority.rfind('@'); at != std::string_view::npos) {
        if (std::string trouble = read_user(authority.substr(0, at), url); !trouble.empty())
            return trouble;
        authority.remove_prefix(at + 1);
    }
    if (!read_place(authority, url))
        return "a broker's URL needs a HOST or HOST:PORT";
    if (slash != std::string_view::npos && slash + 1 < text.size())
        return url.set_conference(text.substr(slash + 1));
    return "";
}

std::string QD_Broker_Url::set_conference(std::string_view name)
{
    conference = name;
    return is_word(name) ? "" : "a conference's name has letters, digits and -_.@ only";
}

std::string QD_Broker_Url::secret_trouble() const
{
    if (scheme == SHARED_KEY && (user.empty() || !is_key(password)))
        return "mqtt+psk:// needs a USER and a key of 32 to 128 hexadecimal digits";
    if (user.empty() && !password.empty())
        return "a password needs a user: put USER@ before the broker's host";
    return "";
}

std::string QD_Broker_Url::text() const
{
    const auto* entry = std::find_if(std::begin(SCHEME_TABLE), std::end(SCHEME_TABLE),
        [&](const auto& s) { return s.scheme == scheme; });
    std::string secret;
    constexpr char DIGITS[] = "0123456789ABCDEF";
    for (const char c : password) {
        if (is_word({&c, 1}) && c != '@')
            secret += c;
        else
            (secret += {'%', DIGITS[static_cast<uint8_t>(c) >> 4]}) += DIGITS[c & 15];
    }
    return std::string(entry->name) + "://" + user + (secret.empty() ? "" : ":" + secret)
        + (user.empty() ? "" : "@") + place() + "/" + conference;
}

void qd_hide_password(char* url)
{
    char* begin = strstr(url, "://");
    if (begin == nullptr)
        return;
    begin += 3;
    char* const end = begin + strcspn(begin, "/");
    char* const at = static_cast<char*>(memrchr(begin, '@', static_cast<size_t>(end - begin)));
    if (at == nullptr)
        return;
    char* const colon = static_cast<char*>(memchr(begin, ':', static_cast<size_t>(at - begin)));
    if (colon != nullptr)
        std::fill(colon + 1, at, '*');
}

// A client without windows that keeps to its link, or breaks one rule of it,
// by which its current directory is called: `fake_client AID SID AT PORT`. What it
// receives goes, one payload a line, in hexadecimal digits, to the file "payloads".

#include "platform/base/bytes.h"

#include <arpa/inet.h>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

namespace {

using Bytes = std::vector<uint8_t>;

void write_all(int fd, const std::string& rule, const Bytes& bytes)
{
    const size_t step = rule == "single-bytes" ? 1 : bytes.size();
    for (size_t at = 0; at < bytes.size(); at += step)
        ::send(fd, &bytes[at], step, MSG_NOSIGNAL);
}

/// Ends the program at the end of the stream.
Bytes read_all(int fd, size_t size)
{
    Bytes bytes(size);
    if (::recv(fd, bytes.data(), size, MSG_WAITALL) != static_cast<ssize_t>(size))
        exit(1);
    return bytes;
}

[[noreturn]] void obey(int fd, const std::string& rule)
{
    FILE* payloads = fopen("payloads", "w");
    for (;;) {
        Bytes head = read_all(fd, 8);
        const Bytes payload = read_all(fd, qd_get_u32(&head[4]));
        if (qd_get_u32(&head[0]) == 51) {
            head.insert(head.end(), payload.begin(), payload.end());
            head.back() ^= rule == "changed-echo" ? 1 : 0;
            head[4] = rule == "impossible-length" ? 1 : 0;
            if (rule != "no-echo")
                write_all(fd, rule, head);
            continue;
        }
        for (uint8_t byte : payload)
            fprintf(payloads, "%02x", byte);
        fputs("\n", payloads);
        fflush(payloads);
        if (payload[0] == '>' && rule != "stubborn")
            exit(0);
    }
}

}

int main(int argc, char** argv)
{
    char** const arguments = argv + argc - 4;
    const std::string rule = std::filesystem::current_path().filename();
    if (rule == "stubborn")
        ::signal(SIGTERM, SIG_IGN);
    if (rule == "exits-at-once")
        return 5;
    if (rule == "no-registration")
        ::pause();
    const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in framework {};
    framework.sin_family = AF_INET;
    framework.sin_port = htons(static_cast<uint16_t>(atoi(arguments[3])));
    ::connect(fd, reinterpret_cast<sockaddr*>(&framework), sizeof framework);
    Bytes numbers(12);
    for (size_t i = 0; i < 3; ++i)
        qd_put_u32(&numbers[i * 4], static_cast<uint32_t>(atoi(arguments[i])));
    if (rule == "wrong-numbers")
        numbers[11] ^= 1;
    write_all(fd, rule, numbers);
    if (rule == "leaves" || rule == "crashes" || rule == "closes-and-stays")
        read_all(fd, 8 + 10); // wait to be announced, so that the others know it
    if (rule == "leaves")
        return 0;
    if (rule == "crashes")
        ::abort();
    if (rule == "closes-and-stays") {
        ::close(fd);
        ::pause();
    }
    obey(fd, rule);
}

// A client without windows that keeps to its link, or breaks one rule of it:
// `fake_client [RULE] AID SID AT PORT`. What it receives goes, one payload a
// line, in hexadecimal digits, to the file "payloads" in its current directory.

#include "platform/net/bytes.h"

#include <algorithm>
#include <arpa/inet.h>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <netinet/in.h>
#include <string>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

using Bytes = std::vector<uint8_t>;

int connect_to(int port)
{
    const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in framework {};
    framework.sin_family = AF_INET;
    framework.sin_port = htons(static_cast<uint16_t>(port));
    if (::connect(fd, reinterpret_cast<sockaddr*>(&framework), sizeof framework) < 0) {
        perror("connect");
        exit(3);
    }
    return fd;
}

void write_all(int fd, const Bytes& bytes)
{
    if (::send(fd, bytes.data(), bytes.size(), MSG_NOSIGNAL) < 0)
        exit(4);
}

/// False at the end of the stream.
bool read_all(int fd, Bytes& bytes)
{
    return ::recv(fd, bytes.data(), bytes.size(), MSG_WAITALL)
        == static_cast<ssize_t>(bytes.size());
}

/// Connects before its parent does; leaves whether it was shut out as its status.
void be_a_stranger(int port)
{
    if (::fork() != 0) {
        int status = 0;
        ::wait(&status);
        printf("stranger %s\n", status == 0 ? "shut out" : "let in");
        fflush(stdout);
        return;
    }
    const int fd = connect_to(port);
    Bytes byte(1);
    _exit(read_all(fd, byte) ? 1 : 0); // the end of the stream: shut out
}

void enroll(int fd, const std::string& rule, char** arguments)
{
    Bytes numbers(12);
    for (int i = 0; i < 3; ++i)
        qd_put_u32(&numbers[static_cast<size_t>(i) * 4], static_cast<uint32_t>(atoi(arguments[i])));
    if (rule == "wrong-numbers")
        numbers[11] ^= 1;
    if (rule == "half-a-registration")
        numbers.resize(11);
    const size_t step = rule == "single-bytes" ? 1 : numbers.size();
    for (size_t at = 0; at < numbers.size(); at += step)
        write_all(fd, Bytes(&numbers[at], &numbers[at] + step));
}

void echo(int fd, const std::string& rule, Bytes head, Bytes payload)
{
    if (rule == "no-echo")
        return;
    if (rule == "changed-echo")
        payload.back() ^= 1;
    if (rule == "impossible-length")
        qd_put_u32(&head[4], 65537);
    head.insert(head.end(), payload.begin(), payload.end());
    write_all(fd, head);
}

void obey(int fd, const std::string& rule)
{
    FILE* payloads = fopen("payloads", "w");
    Bytes head(8);
    while (read_all(fd, head)) {
        Bytes payload(qd_get_u32(&head[4]));
        if (!read_all(fd, payload))
            exit(1);
        if (qd_get_u32(&head[0]) == 51) {
            echo(fd, rule, head, payload);
            continue;
        }
        for (uint8_t byte : payload)
            fprintf(payloads, "%02x", byte);
        fputs("\n", payloads);
        fflush(payloads);
        if (payload[0] == '>' && rule != "deaf" && rule != "stubborn")
            exit(rule == "ends-badly" ? 9 : 0);
    }
    exit(1);
}

}

int main(int argc, char** argv)
{
    const std::string rule = argc > 5 ? argv[1] : "";
    char** arguments = argv + argc - 4;
    const int port = atoi(arguments[3]);
    if (rule == "stubborn")
        ::signal(SIGTERM, SIG_IGN);
    if (rule == "exits-at-once")
        return 5;
    if (rule == "no-registration")
        ::pause();
    if (rule == "stranger")
        be_a_stranger(port);
    const int fd = connect_to(port);
    enroll(fd, rule, arguments);
    Bytes record(8 + 10);
    if (rule == "leaves" || rule == "crashes" || rule == "closes-and-stays")
        read_all(fd, record); // wait to be announced, so that the others know it
    if (rule == "crashes")
        ::abort();
    if (rule == "leaves")
        return 0;
    if (rule == "closes-and-stays")
        ::close(fd);
    if (rule == "closes-and-stays" || rule == "does-not-read" || rule == "half-a-registration")
        ::pause();
    obey(fd, rule);
}

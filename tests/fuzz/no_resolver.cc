// In place of the system's: what a fuzzer calls a host must not be asked for on the network.
#include <netdb.h>

extern "C" int getnameinfo(const sockaddr*, socklen_t, char*, socklen_t, char*, socklen_t, int)
{
    return EAI_NONAME;
}

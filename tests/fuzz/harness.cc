// Where libFuzzer and the replay come in.
#include "tests/fuzz/fuzz.h"

#include <netdb.h>

// In place of the system's: what a fuzzer calls a host must not be asked for on the network.
extern "C" int getnameinfo(const sockaddr*, socklen_t, char*, socklen_t, char*, socklen_t, int)
{
    return EAI_NONAME;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    [[maybe_unused]] static const bool prepared = [] {
        unsetenv("HOME");
        setenv("QD_LOCAL_ADDRESS", "127.0.0.1", 1);
        setenv("QD_MIC", "silence", 1);
        setenv("QD_SPEAKER", "null", 1);
        setenv("QD_CAMERA", "testcard", 1);
        return true;
    }();
    qd_fuzz({data, size});
    return 0;
}

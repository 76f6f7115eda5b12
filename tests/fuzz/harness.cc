// Where libFuzzer and the replay come in.
#include "tests/fuzz/fuzz.h"

#include <netdb.h>

// In place of the system's: what a fuzzer calls a host must not be asked for on the network.
extern "C" int getnameinfo(const sockaddr*, socklen_t, char*, socklen_t, char*, socklen_t, int)
{
    return EAI_NONAME;
}

extern "C" int llvm_fuzzer_test_one_input(const uint8_t* data, size_t size)
{
    [[maybe_unused]] static const int prepared = [] {
        for (const char* variable : {"QD_LOCAL_ADDRESS=127.0.0.1", "QD_MIC=silence",
                 "QD_SPEAKER=null", "QD_CAMERA=testcard"})
            putenv(const_cast<char*>(variable));
        return unsetenv("HOME");
    }();
    qd_fuzz(QD_Fuzz_Input({reinterpret_cast<const char*>(data), size}));
    return 0;
}

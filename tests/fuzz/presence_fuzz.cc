#include "conference/presence.h"
#include "tests/fuzz/fuzz.h"

// One record, as it lies on the broker.
int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string line(data, data + size);
    QD_Presence presence;
    if (presence.decode(line).empty())
        qd_require(presence.encode() == line);
    return 0;
}

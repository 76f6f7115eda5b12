#include "conference/broker/presence.h"
#include "tests/fuzz/fuzz.h"

// One record, as it lies on the broker.
void qd_fuzz(QD_Fuzz_Input input)
{
    const std::string line = input.rest();
    QD_Presence presence;
    if (presence.decode(line).empty())
        qd_require(presence.encode() == line);
}

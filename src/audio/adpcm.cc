#include "audio/adpcm.h"

#include <algorithm>
#include <array>

namespace {

constexpr int LAST_INDEX = 88;

constexpr int indexTable[16] = {-1, -1, -1, -1, 2, 4, 6, 8, -1, -1, -1, -1, 2, 4, 6, 8};

constexpr int stepsizeTable[LAST_INDEX + 1] = {7, 8, 9, 10, 11, 12, 13, 14, 16, 17, 19, 21, 23, 25,
    28, 31, 34, 37, 41, 45, 50, 55, 60, 66, 73, 80, 88, 97, 107, 118, 130, 143, 157, 173, 190, 209,
    230, 253, 279, 307, 337, 371, 408, 449, 494, 544, 598, 658, 724, 796, 876, 963, 1060, 1166,
    1282, 1411, 1552, 1707, 1878, 2066, 2272, 2499, 2749, 3024, 3327, 3660, 4026, 4428, 4871, 5358,
    5894, 6484, 7132, 7845, 8630, 9493, 10442, 11487, 12635, 13899, 15289, 16818, 18500, 20350,
    22385, 24623, 27086, 29794, 32767};

// Each sample waits for the one before it, so what counts is how long one step
// takes from end to end. One look-up therefore gives all that follows a code:
// by index and the three magnitude bits, the next index and its step size.
struct Next {
    uint16_t step;
    uint8_t index;
};

constexpr auto NEXT_OF = [] {
    std::array<std::array<Next, 8>, LAST_INDEX + 1> table {};
    for (int index = 0; index <= LAST_INDEX; ++index) {
        for (int code = 0; code < 8; ++code) {
            const int next = std::clamp(index + indexTable[code], 0, LAST_INDEX);
            table[static_cast<size_t>(index)][static_cast<size_t>(code)]
                = {static_cast<uint16_t>(stepsizeTable[next]), static_cast<uint8_t>(next)};
        }
    }
    return table;
}();

/// The predictor unpacked for a run of samples.
struct Run {
    explicit Run(const adpcm_state& state) :
        valpred(state.valprev),
        index(std::min<unsigned>(state.index, LAST_INDEX)),
        step(stepsizeTable[index])
    {
    }

    void store(adpcm_state& state) const
    {
        state.valprev = static_cast<int16_t>(valpred);
        state.index = static_cast<uint8_t>(index);
    }

    void follow(int vpdiff, bool negative, unsigned magnitude)
    {
        valpred = std::clamp(valpred + (negative ? -vpdiff : vpdiff), -32768, 32767);
        const Next next = NEXT_OF[index][magnitude];
        index = next.index;
        step = next.step;
    }

    /// The code for one sample. Without branches: its bits are as good as random.
    unsigned code(int sample)
    {
        const int signed_diff = sample - valpred;
        const int sign = signed_diff >> 31;
        const int diff = (signed_diff ^ sign) - sign;
        int rest = diff;
        unsigned magnitude = 0;
        for (int shift = 0; shift < 3; ++shift) {
            const int less = rest - (step >> shift);
            magnitude |= static_cast<unsigned>(less >= 0) << (2 - shift);
            rest = less >= 0 ? less : rest;
        }
        follow((step >> 3) + diff - rest, sign != 0, magnitude);
        return magnitude | (static_cast<unsigned>(sign) & 8);
    }

    /// The sample for one code.
    int16_t sample(unsigned delta)
    {
        int vpdiff = step >> 3;
        for (int shift = 0; shift < 3; ++shift)
            vpdiff += (delta & (4U >> shift)) != 0 ? step >> shift : 0;
        follow(vpdiff, (delta & 8) != 0, delta & 7);
        return static_cast<int16_t>(valpred);
    }

    int valpred;
    unsigned index;
    int step;
};

}

void adpcm_coder(const int16_t* indata, uint8_t* outdata, int len, adpcm_state* state)
{
    if (len <= 0)
        return;
    Run run(*state);
    for (; len >= 2; len -= 2, indata += 2) {
        const unsigned high = run.code(indata[0]) << 4;
        *outdata++ = static_cast<uint8_t>(high | run.code(indata[1]));
    }
    if (len == 1)
        *outdata = static_cast<uint8_t>(run.code(*indata) << 4);
    run.store(*state);
}

void adpcm_decoder(const uint8_t* indata, int16_t* outdata, int len, adpcm_state* state)
{
    if (len <= 0)
        return;
    Run run(*state);
    for (; len >= 2; len -= 2, ++indata) {
        *outdata++ = run.sample(*indata >> 4);
        *outdata++ = run.sample(*indata & 15U);
    }
    if (len == 1)
        *outdata = run.sample(*indata >> 4);
    run.store(*state);
}

// IMA ADPCM: 16-bit samples as 4-bit codes (IMA Digital Audio Focus and
// Technical Working Groups, Recommended Practices, revision 3.00).
#pragma once

#include <cstdint>

/// The predictor, the same in coder and decoder. Zero-filled is the start.
struct adpcm_state {
    int16_t valprev = 0; // the last sample as the decoder has it
    uint8_t index = 0;   // into the table of step sizes, 0..88; more counts as 88
};

// Two codes to a byte, the earlier one in the high nibble; after an odd number
// of samples the last low nibble is zero. Both work on `len` samples and
// (len + 1) / 2 bytes, starting from and updating `state`; with `len` <= 0
// nothing happens. Any thread, no state but `state`.

void adpcm_coder(const int16_t* indata, uint8_t* outdata, int len, adpcm_state* state);
void adpcm_decoder(const uint8_t* indata, int16_t* outdata, int len, adpcm_state* state);

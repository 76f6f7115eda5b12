#include "audio/adpcm.h"
#include "platform/base/bytes.h"
#include "tests/support/temp_dir.h"

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <vector>

namespace {

// Samples there are little-endian, as they are here.
template <class VALUE> std::vector<VALUE> load(const std::string& name)
{
    const std::string bytes = qd_read_file(QD_SOURCE_DIR "/tests/audio/data/" + name);
    std::vector<VALUE> values(bytes.size() / sizeof(VALUE));
    memcpy(values.data(), bytes.data(), bytes.size());
    return values;
}

}

// The files come from another coder: tools/make-adpcm-vectors.py.
TEST(Adpcm, AgreesWithAnIndependentCoderOverBlocksWithCarriedState)
{
    const auto pcm = load<int16_t>("adpcm.pcm");
    const auto out = load<int16_t>("adpcm.out");
    const auto ima = load<uint8_t>("adpcm.ima");
    ASSERT_EQ(ima.size(), 3 + 400 + 3 + 401 + 3 + 400 + 3u);
    adpcm_state coder;
    size_t sample = 0;
    size_t byte = 0;
    for (int length : {800, 801, 800}) {
        adpcm_state decoder {static_cast<int16_t>(qd_get_u16(&ima[byte])), ima[byte + 2]};
        std::vector<uint8_t> codes(static_cast<size_t>(length + 1) / 2);
        adpcm_coder(&pcm[sample], codes.data(), length, &coder);
        EXPECT_TRUE(std::equal(codes.begin(), codes.end(), &ima[byte + 3]));

        std::vector<int16_t> decoded(static_cast<size_t>(length));
        adpcm_decoder(codes.data(), decoded.data(), length, &decoder);
        EXPECT_TRUE(std::equal(decoded.begin(), decoded.end(), &out[sample]));
        sample += decoded.size();
        byte += 3 + codes.size();
    }
}

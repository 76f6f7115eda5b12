#include "audio/adpcm.h"
#include "platform/net/bytes.h"
#include "tests/support/temp_dir.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

std::vector<uint8_t> load(const std::string& name)
{
    const std::string bytes = qd_read_file(QD_SOURCE_DIR "/tests/audio/data/" + name);
    return {bytes.begin(), bytes.end()};
}

std::vector<int16_t> load_samples(const std::string& name)
{
    const auto bytes = load(name);
    std::vector<int16_t> samples;
    for (size_t i = 0; i + 1 < bytes.size(); i += 2)
        samples.push_back(static_cast<int16_t>(bytes[i] | bytes[i + 1] << 8));
    return samples;
}

}

// The files come from another coder: tools/make-adpcm-vectors.py.
TEST(Adpcm, AgreesWithAnIndependentCoderOverBlocksWithCarriedState)
{
    const auto pcm = load_samples("adpcm.pcm");
    const auto out = load_samples("adpcm.out");
    const auto ima = load("adpcm.ima");
    ASSERT_EQ(pcm.size(), 2401u);
    ASSERT_EQ(ima.size(), 3 + 400 + 3 + 401 + 3 + 400 + 3u);

    adpcm_state coder;
    size_t sample = 0;
    size_t byte = 0;
    const auto expect_state = [&](const adpcm_state& state) {
        EXPECT_EQ(state.valprev, static_cast<int16_t>(qd_get_u16(&ima[byte])));
        EXPECT_EQ(state.index, ima[byte + 2]);
    };
    for (int length : {800, 801, 800}) {
        SCOPED_TRACE(length);
        const size_t bytes = static_cast<size_t>(length + 1) / 2;
        expect_state(coder);
        adpcm_state decoder = coder;
        byte += 3;

        std::vector<uint8_t> codes(bytes + 1, 0xee);
        adpcm_coder(&pcm[sample], codes.data(), length, &coder);
        EXPECT_TRUE(std::equal(codes.begin(), codes.end() - 1, &ima[byte]));
        EXPECT_EQ(codes.back(), 0xee) << "wrote beyond its bytes";

        std::vector<int16_t> decoded(static_cast<size_t>(length) + 1, 0x7eee);
        adpcm_decoder(&ima[byte], decoded.data(), length, &decoder);
        EXPECT_TRUE(std::equal(decoded.begin(), decoded.end() - 1, &out[sample]));
        EXPECT_EQ(decoded.back(), 0x7eee) << "wrote beyond its samples";
        EXPECT_EQ(decoder.valprev, coder.valprev);
        EXPECT_EQ(decoder.index, coder.index);

        sample += static_cast<size_t>(length);
        byte += bytes;
    }
    expect_state(coder);
}

TEST(Adpcm, IndexAndValueStayInRangeWhateverTheCodes)
{
    struct {
        int codes;
        int start; // 255 as in a hostile packet: it counts as the last index
        int index;
        int valprev;
    } const cases[] = {
        {0x77, 0, 88, 32767}, {0xff, 0, 88, -32768}, {0x00, 255, 0, 32767}, {0x88, 255, 0, -32768}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.codes);
        const std::vector<uint8_t> codes(200, static_cast<uint8_t>(c.codes));
        std::vector<int16_t> out(400);
        adpcm_state state {0, static_cast<uint8_t>(c.start)};
        adpcm_decoder(codes.data(), out.data(), 400, &state);
        EXPECT_EQ(state.index, c.index);
        EXPECT_EQ(state.valprev, c.valprev);
        EXPECT_TRUE(std::is_sorted(out.begin(), out.end(), [&](int a, int b) {
            return c.valprev > 0 ? a < b : a > b; // no wrap: it only goes one way
        }));
    }
}

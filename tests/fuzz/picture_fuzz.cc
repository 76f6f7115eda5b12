#include "platform/vl/codec.h"
#include "tests/fuzz/fuzz.h"

// A byte that chooses the codec, then one chunk a picture.
void qd_fuzz(QD_Fuzz_Input input)
{
    QD_Picture_Decoder decoder(input.byte() % 2 == 0 ? QD_Codec::H263 : QD_Codec::H261);
    const auto picture = std::make_unique<char[]>(QD_PICTURE_SIZE);
    while (!input.empty()) {
        const std::string bits = input.chunk();
        decoder.decode(bits.data(), static_cast<int>(bits.size()), picture.get());
    }
    decoder.get_last(picture.get());
}

#include "platform/vl/link_coder.h"

#include <algorithm>

int QD_Link_Coder::open(double kbps, int fps)
{
    quantiser_ = QD_Quantiser(kbps, fps);
    last_.clear();
    return encoder_.open(fps, quantiser_.get_intra_room());
}

// Remembers the picture. Returns the mean square of what has changed in it.
double QD_Link_Coder::change_to(const char* picture)
{
    const bool is_first = last_.empty();
    last_.resize(QD_LUMA_SIZE);
    char* const last = last_.data();
    int sum = 0;
    for (int i = 0; i < QD_LUMA_SIZE; ++i) {
        const int d = static_cast<uint8_t>(picture[i]) - static_cast<uint8_t>(last[i]);
        sum += d * d;
    }
    std::copy_n(picture, QD_LUMA_SIZE, last);
    return is_first ? 0 : static_cast<double>(sum) / QD_LUMA_SIZE;
}

int QD_Link_Coder::encode(const char* picture, bool intra, double now, char* out)
{
    const double change = change_to(picture);
    const QD_Quantiser::Room next = quantiser_.get_next_room(now, intra);
    encoder_.set_next_room(next.bytes, next.is_shared);
    const int size = encoder_.encode(picture, intra, quantiser_.get(intra), out);
    if (size > 0)
        quantiser_.coded(
            {now, size, intra, encoder_.get_quantiser(), encoder_.get_error(), change});
    return size;
}

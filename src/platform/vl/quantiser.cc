#include "platform/vl/quantiser.h"

#include "platform/vl/picture.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace {

constexpr double BYTES_PER_KBIT = 125;
constexpr double FILL = 0.9; // the middle of the band that the pacing aims at
constexpr double LARGEST_TARGET = 6000;
constexpr double CAP_SECONDS = 0.4;
constexpr double SMALLEST_CAP = 1400;
constexpr double LINK_OF_START = 30; // a typical scene fits START at so many bytes times q
constexpr double REACTION = 0.2;
constexpr double FASTEST_DOWN = 0.9;
constexpr double FASTEST_UP = 1.12;

}

QD_Quantiser::QD_Quantiser(double kbps, int fps) :
    target_(std::min(FILL * kbps * BYTES_PER_KBIT / fps, LARGEST_TARGET)),
    cap_(static_cast<int>(
        std::clamp<double>(kbps * BYTES_PER_KBIT * CAP_SECONDS, SMALLEST_CAP, QD_CODED_SIZE)))
{
    q_ = std::clamp(LINK_OF_START * 100 / target_, 4.0, 20.0);
}

void QD_Quantiser::coded(int size)
{
    sizes_[count_++ % PERIOD] = size;
    const size_t known = std::min(count_, PERIOD);
    const double mean = std::accumulate(sizes_.begin(), sizes_.end(), 0.0) / double(known);
    q_ *= std::clamp(std::pow(mean / target_, REACTION), FASTEST_DOWN, FASTEST_UP);
    q_ = std::clamp(q_, FINEST, COARSEST);
}

#include "platform/vl/vl.h"

#include <cstring>

namespace {

// Each point becomes a square of four.
void enlarge(const char* src, char* out, int width, int height)
{
    for (int y = 0; y < height; ++y) {
        char* row = out + 2 * y * 2 * width;
        for (int x = 0; x < width; ++x)
            row[2 * x] = row[2 * x + 1] = src[y * width + x];
        memcpy(row + 2 * width, row, static_cast<size_t>(2 * width));
    }
}

}

void YVU9toYUV411(const char* src, char* y, char* u, char* v, int width, int height)
{
    const int luma = width * height;
    const int chroma = luma / 16;
    memcpy(y, src, static_cast<size_t>(luma));
    enlarge(src + luma, v, width / 4, height / 4);
    enlarge(src + luma + chroma, u, width / 4, height / 4);
}

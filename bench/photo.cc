#include "bench/photo.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <fstream>
#include <iterator>

namespace {

uint32_t hash(uint32_t x, uint32_t y)
{
    uint32_t h = x * 0x9e3779b1U ^ y * 0x85ebca77U;
    h = (h ^ h >> 15) * 0x2c1b3c6dU;
    h = (h ^ h >> 12) * 0x297a2d39U;
    return h ^ h >> 15;
}

// About normal, standard deviation 1: four bytes of chance added up.
double grain(int at, int number)
{
    const uint32_t h = hash(static_cast<uint32_t>(at), static_cast<uint32_t>(number));
    const auto sum = static_cast<int>((h & 255) + (h >> 8 & 255) + (h >> 16 & 255) + (h >> 24));
    return (sum - 510) / 147.8;
}

struct Plane {
    const unsigned char* bytes;
    int width;
    int height;

    double at(double x, double y) const
    {
        x = std::clamp(x, 0.0, width - 1.001);
        y = std::clamp(y, 0.0, height - 1.001);
        const int ix = static_cast<int>(x);
        const int iy = static_cast<int>(y);
        const unsigned char* p = bytes + iy * width + ix;
        const double top = std::lerp<double>(p[0], p[1], x - ix);
        const double bottom = std::lerp<double>(p[width], p[width + 1], x - ix);
        return std::lerp(top, bottom, y - iy);
    }
};

// Where in the photograph the pixel of the view comes from.
std::pair<double, double> source_of(const QD_View& view, double x, double y)
{
    double u = view.x + (x - QD_PICTURE_WIDTH / 2.0) / view.zoom;
    double v = view.y + (y - QD_PICTURE_HEIGHT / 2.0) / view.zoom;
    double du = 0;
    double dv = 0;
    for (const QD_Shift& shift : view.shifts) {
        const double a = (u - shift.x) / shift.rx;
        const double b = (v - shift.y) / shift.ry;
        const double inside = std::max(1 - a * a - b * b, 0.0);
        const double share = inside * (2 - inside); // flat in the middle
        du += share * shift.dx;
        dv += share * shift.dy;
    }
    return {u - du, v - dv};
}

unsigned char byte(double value)
{
    return static_cast<unsigned char>(std::clamp(std::lround(value), 16L, 240L));
}

}

QD_Photo qd_read_photo(const std::string& path, int width, int height)
{
    std::ifstream in(path, std::ios::binary);
    QD_Photo photo {width, height, {std::istreambuf_iterator<char>(in), {}}};
    if (photo.bytes.size() != static_cast<size_t>(width * height * 3 / 2))
        photo.bytes.clear();
    return photo;
}

QD_Bench_Picture qd_take_picture(const QD_Photo& photo, const QD_View& view, int number)
{
    QD_Bench_Picture out(QD_PICTURE_SIZE);
    const unsigned char* p = photo.bytes.data();
    const int area = photo.width * photo.height;
    const Plane luma {p, photo.width, photo.height};
    const Plane u_plane {p + area, photo.width / 2, photo.height / 2};
    const Plane v_plane {p + area * 5 / 4, photo.width / 2, photo.height / 2};
    for (int y = 0; y < QD_PICTURE_HEIGHT; ++y) {
        for (int x = 0; x < QD_PICTURE_WIDTH; ++x) {
            const auto [u, v] = source_of(view, x, y);
            const int at = y * QD_PICTURE_WIDTH + x;
            out[static_cast<size_t>(at)]
                = byte(luma.at(u, v) * view.light + view.noise * grain(at, number));
            if (x % 2 != 0 || y % 2 != 0)
                continue;
            const auto colour = static_cast<size_t>(y / 2 * QD_CHROMA_WIDTH + x / 2);
            const double noise = view.noise / 2;
            out[QD_U_OFFSET + colour]
                = byte(u_plane.at(u / 2, v / 2) + noise * grain(at + QD_LUMA_SIZE, number));
            out[QD_V_OFFSET + colour]
                = byte(v_plane.at(u / 2, v / 2) + noise * grain(at + QD_LUMA_SIZE + 1, number));
        }
    }
    return out;
}

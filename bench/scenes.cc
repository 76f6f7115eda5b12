#include "bench/scenes.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>

namespace {

constexpr double TURN = 2 * std::numbers::pi;

struct Colour {
    double y, u, v;
};

uint32_t hash(uint32_t x, uint32_t y, uint32_t z)
{
    uint32_t h = x * 0x9e3779b1U ^ y * 0x85ebca77U ^ z * 0xc2b2ae3dU;
    h = (h ^ h >> 15) * 0x2c1b3c6dU;
    h = (h ^ h >> 12) * 0x297a2d39U;
    return h ^ h >> 15;
}

// -1..1, the same for the same cell.
double noise(int x, int y, int z)
{
    return hash(static_cast<uint32_t>(x), static_cast<uint32_t>(y), static_cast<uint32_t>(z))
        / 2147483648.0
        - 1;
}

// Noise between the cells, smoothly.
double smooth_noise(double x, double y, int seed)
{
    const int ix = static_cast<int>(std::floor(x));
    const int iy = static_cast<int>(std::floor(y));
    const double fx = x - ix;
    const double fy = y - iy;
    const double wx = fx * fx * (3 - 2 * fx);
    const double wy = fy * fy * (3 - 2 * fy);
    const double top = std::lerp(noise(ix, iy, seed), noise(ix + 1, iy, seed), wx);
    const double bottom = std::lerp(noise(ix, iy + 1, seed), noise(ix + 1, iy + 1, seed), wx);
    return std::lerp(top, bottom, wy);
}

double texture(double x, double y, int seed)
{
    double sum = 0;
    double weight = 1;
    for (double scale : {48.0, 20.0, 9.0, 4.0}) {
        sum += weight * smooth_noise(x / scale, y / scale, seed++);
        weight *= 0.6;
    }
    return sum;
}

template <class Paint> QD_Bench_Picture paint(Paint colour_at)
{
    QD_Bench_Picture out(QD_PICTURE_SIZE);
    const auto byte = [](double value) {
        return static_cast<unsigned char>(std::clamp(std::lround(value), 16L, 240L));
    };
    for (int y = 0; y < QD_PICTURE_HEIGHT; ++y) {
        for (int x = 0; x < QD_PICTURE_WIDTH; ++x) {
            const Colour c = colour_at(x, y);
            out[static_cast<size_t>(y * QD_PICTURE_WIDTH + x)] = byte(c.y);
            if (x % 2 != 0 || y % 2 != 0)
                continue;
            const auto at = static_cast<size_t>(y / 2 * QD_CHROMA_WIDTH + x / 2);
            out[QD_U_OFFSET + at] = byte(c.u);
            out[QD_V_OFFSET + at] = byte(c.v);
        }
    }
    return out;
}

double grain(int x, int y, double t, double strength)
{
    return strength * noise(x, y, static_cast<int>(std::lround(t * 30)) + 1000);
}

// 0 outside an ellipse, 1 inside, soft between.
double ellipse(double x, double y, double cx, double cy, double rx, double ry)
{
    const double d = std::hypot((x - cx) / rx, (y - cy) / ry);
    return std::clamp((1.05 - d) * 12, 0.0, 1.0);
}

Colour over(Colour below, Colour above, double share)
{
    return {std::lerp(below.y, above.y, share), std::lerp(below.u, above.u, share),
        std::lerp(below.v, above.v, share)};
}

// Someone speaking before a shelf: sways, nods, blinks, moves the lips; sensor noise.
QD_Bench_Picture talking_head(double t)
{
    const double sway = 7 * std::sin(t * 0.9) + 3 * std::sin(t * 2.3);
    const double nod = 3 * std::sin(t * 1.7) + 1.5 * std::sin(t * 4.1);
    const double mouth = 2.5 + 2.5 * std::sin(t * 11) * std::sin(t * 1.3);
    const double lid = std::fmod(t, 3.1) < 0.15 ? 0.6 : 2.6;
    return paint([=](int x, int y) {
        Colour c {95 + 28 * texture(x, y, 5) + (x / 22 % 2 != 0 ? 14 : 0), 122, 132};
        const double cx = 88 + sway;
        const double cy = 62 + nod;
        const double cloth = 70 + 16 * std::sin((x - sway * 0.7) * 0.9 + y * 0.4);
        c = over(c, {cloth, 140, 112}, ellipse(x, y, 88 + sway * 0.7, 150, 62, 52));
        c = over(c, {48 + 10 * texture(x - sway, y - nod, 9), 126, 132},
            ellipse(x, y, cx, cy - 8, 31, 38));
        const double skin = 165 + 14 * texture(x - sway, y - nod, 3) - (x - cx) * 0.5;
        c = over(c, {skin, 112, 152}, ellipse(x, y, cx, cy + 2, 26, 33));
        for (double side : {-10.0, 10.0})
            c = over(c, {45, 128, 128}, ellipse(x, y, cx + side, cy - 4, 4, lid));
        c = over(c, {80, 116, 165}, ellipse(x, y, cx, cy + 19, 9, std::abs(mouth) + 0.6));
        c.y += grain(x, y, t, 3);
        return c;
    });
}

// A slow pan over a detailed wall.
QD_Bench_Picture pan(double t)
{
    const double dx = 60 * std::sin(t * 0.35);
    const double dy = 25 * std::sin(t * 0.22);
    return paint([=](int x, int y) {
        const double u = x + dx;
        const double v = y + dy;
        return Colour {120 + 55 * texture(u, v, 21), 128 + 18 * smooth_noise(u / 30, v / 30, 31),
            128 + 18 * smooth_noise(u / 26, v / 26, 32)};
    });
}

// A chart that turns and comes nearer.
QD_Bench_Picture zoom(double t)
{
    const double turn = 0.35 * std::sin(t * 0.5);
    const double scale = 1 + 0.25 * std::sin(t * 0.4);
    return paint([=](int x, int y) {
        const double rx = (x - 88) * scale;
        const double ry = (y - 72) * scale;
        const double u = rx * std::cos(turn) - ry * std::sin(turn);
        const double v = rx * std::sin(turn) + ry * std::cos(turn);
        const double rings = std::sin(std::hypot(u, v) * 0.35);
        const double spokes = std::sin(std::atan2(v, u) * 8);
        return Colour {126 + 60 * rings + 20 * spokes, 128 + 30 * std::sin(u / 25),
            128 + 30 * std::sin(v / 25)};
    });
}

// Lines of writing that scroll now and then.
QD_Bench_Picture text(double t)
{
    const double eased = std::fmod(t, 2.0) < 0.6 ? std::fmod(t, 2.0) / 0.6 : 1.0;
    const int scroll = static_cast<int>(36 * (std::floor(t / 2) + eased));
    return paint([=](int x, int y) {
        const int row = (y + scroll) / 12;
        const int line = (y + scroll) % 12;
        const int column = x / 6;
        const bool within = line >= 2 && line < 10 && column < 8 + std::abs(row * 7 % 20);
        const bool blank = noise(column, row, 77) < -0.6;
        const bool stroke = noise(x, (row * 12 + line) / 2, 78) > 0.1 && x % 6 != 0;
        return Colour {within && !blank && stroke ? 40.0 : 215.0, 128, 128};
    });
}

// Two people pass each other before a still room; the light changes slowly.
QD_Bench_Picture passing(double t)
{
    return paint([=](int x, int y) {
        Colour c {105 + 38 * texture(x, y, 41) + 8 * std::sin(t * 0.6), 120, 130};
        const double left = std::fmod(t * 22, 260) - 42;
        const double right = 218 - std::fmod(t * 17, 260);
        c = over(
            c, {70 + 30 * texture(x - left, y, 51), 145, 110}, ellipse(x, y, left, 95, 24, 62));
        c = over(
            c, {160 + 25 * texture(x - right, y, 61), 108, 150}, ellipse(x, y, right, 100, 20, 58));
        c.y += grain(x, y, t, 2);
        return c;
    });
}

// A hand-held camera: all of it trembles, and one thing turns in the middle.
QD_Bench_Picture handheld(double t)
{
    const double dx = 2.5 * std::sin(t * TURN * 1.1) + 1.2 * std::sin(t * TURN * 2.7);
    const double dy = 2 * std::sin(t * TURN * 0.8 + 1);
    return paint([=](int x, int y) {
        const double u = x + dx;
        const double v = y + dy;
        Colour c {115 + 45 * texture(u, v, 71), 124, 126};
        const double angle = std::atan2(v - 72, u - 88) + t * 1.5;
        c = over(
            c, {std::sin(angle * 6) > 0 ? 190.0 : 60.0, 100, 160}, ellipse(u, v, 88, 72, 30, 30));
        c.y += grain(x, y, t, 3);
        return c;
    });
}

constexpr QD_Scene SCENES[] = {
    {"talking head", talking_head},
    {"pan", pan},
    {"zoom", zoom},
    {"text", text},
    {"passing", passing},
    {"hand-held", handheld},
};

}

std::span<const QD_Scene> qd_scenes() { return SCENES; }

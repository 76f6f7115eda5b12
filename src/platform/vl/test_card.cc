#include "platform/vl/test_card.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <ctime>
#include <numbers>
#include <thread>

namespace {

constexpr int HOUR_MS = 3'600'000;
constexpr int BARS_HEIGHT = 80;
constexpr int CLOCK_TOP = 112;
constexpr int BLOCK = 24; // wanders above the clock
constexpr int DOT = 4;    // the side of a dot of the clock's digits
constexpr auto INTERVAL = std::chrono::milliseconds(33);

struct Colour {
    uint8_t y, u, v;
};

constexpr Colour BARS[] = {
    {180, 128, 128}, // grey
    {162, 44, 142},  // yellow
    {131, 156, 44},  // cyan
    {112, 72, 58},   // green
    {84, 184, 198},  // magenta
    {65, 100, 212},  // red
    {35, 212, 114},  // blue
    {16, 128, 128},  // black
};
constexpr Colour WHITE {235, 128, 128};

// Three by five dots a digit, top row in the highest three bits; then the colon.
constexpr uint16_t DIGITS[] = {0b111'101'101'101'111, 0b010'110'010'010'111, 0b111'001'111'100'111,
    0b111'001'111'001'111, 0b101'101'111'001'001, 0b111'100'111'001'111, 0b111'100'111'101'111,
    0b111'001'010'010'010, 0b111'101'111'101'111, 0b111'101'111'001'111, 0b000'010'000'010'000};
constexpr size_t COLON = 10;

// `x`, `y` and sides are even, so that colour points are filled whole.
void fill(char* out, int left, int top, int width, int height, Colour colour)
{
    const auto n = static_cast<size_t>(width);
    for (int y = top; y < top + height; ++y)
        memset(out + y * QD_PICTURE_WIDTH + left, colour.y, n);
    for (int y = top / 2; y < (top + height) / 2; ++y) {
        const int at = y * QD_CHROMA_WIDTH + left / 2;
        memset(out + QD_U_OFFSET + at, colour.u, n / 2);
        memset(out + QD_V_OFFSET + at, colour.v, n / 2);
    }
}

void draw_digit(char* out, int left, int top, size_t digit)
{
    for (int dot = 0; dot < 15; ++dot)
        if ((DIGITS[digit] >> (14 - dot) & 1) != 0)
            fill(out, left + dot % 3 * DOT, top + dot / 3 * DOT, DOT, DOT, WHITE);
}

// Hours, minutes, seconds and tenths.
void draw_clock(char* out, long milliseconds)
{
    const long tenths = milliseconds / 100;
    const long parts[] = {tenths / 36000 % 24, tenths / 600 % 60, tenths / 10 % 60};
    int left = 12;
    const auto draw = [&](size_t digit) {
        draw_digit(out, left, CLOCK_TOP, digit);
        left += 4 * DOT;
    };
    for (long part : parts) {
        draw(static_cast<size_t>(part / 10));
        draw(static_cast<size_t>(part % 10));
        draw(COLON);
    }
    draw(static_cast<size_t>(tenths % 10));
}

Colour tint(int hue, double y, double strength)
{
    const double angle = hue * std::numbers::pi / 180;
    return {static_cast<uint8_t>(y), static_cast<uint8_t>(128 + strength * std::cos(angle)),
        static_cast<uint8_t>(128 + strength * std::sin(angle))};
}

// There and back again.
int bounce(long at, int range)
{
    const auto place = static_cast<int>(at % (2 * range));
    return std::min(place, 2 * range - place);
}

class QD_Test_Card_Camera : public QD_Camera {
public:
    explicit QD_Test_Card_Camera(int hue) : card_(hue) {}
    int open() override { return 0; }
    int read(char* out) override
    {
        std::this_thread::sleep_for(INTERVAL);
        card_.paint_now(out);
        return 1;
    }
    void close() override {}

private:
    QD_Test_Card card_;
};

}

QD_Test_Card::QD_Test_Card(int hue) : hue_((hue % 360 + 360) % 360) {}

void QD_Test_Card::paint(long milliseconds, char* out) const
{
    constexpr int BAR = QD_PICTURE_WIDTH / static_cast<int>(std::size(BARS));
    for (int i = 0; i < QD_PICTURE_WIDTH / BAR; ++i)
        fill(out, i * BAR, 0, BAR, BARS_HEIGHT, BARS[(i + hue_ / 45) % 8]);
    fill(
        out, 0, BARS_HEIGHT, QD_PICTURE_WIDTH, QD_PICTURE_HEIGHT - BARS_HEIGHT, tint(hue_, 80, 50));
    draw_clock(out, milliseconds);
    const long steps = milliseconds / 10 + 37L * hue_;
    const int x = bounce(steps, QD_PICTURE_WIDTH - BLOCK) & ~1;
    const int y = bounce(steps * 2 / 3, CLOCK_TOP - 4 - BLOCK) & ~1;
    fill(out, x, y, BLOCK, BLOCK, WHITE);
    fill(out, x + 4, y + 4, BLOCK - 8, BLOCK - 8, tint(hue_ + 180, 120, 90));
}

void QD_Test_Card::paint_now(char* out) const
{
    using namespace std::chrono;
    const auto now = system_clock::now();
    const time_t seconds = system_clock::to_time_t(now);
    tm local {};
    localtime_r(&seconds, &local);
    const auto within = duration_cast<milliseconds>(now.time_since_epoch()).count() % 1000;
    paint(local.tm_hour * long {HOUR_MS} + local.tm_min * 60'000L + local.tm_sec * 1000L + within,
        out);
}

std::unique_ptr<QD_Camera> qd_make_test_card_camera(const std::string& argument, std::string& why)
{
    int hue = 0;
    const char* end = argument.data() + argument.size();
    const auto [stopped, error] = std::from_chars(argument.data(), end, hue);
    if (!argument.empty() && (error != std::errc() || stopped != end)) {
        why = "a hue is a whole number of degrees";
        return nullptr;
    }
    return std::make_unique<QD_Test_Card_Camera>(hue);
}

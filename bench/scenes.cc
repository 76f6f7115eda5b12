#include "bench/scenes.h"

#include "bench/photo.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <numbers>
#include <string>

namespace {

constexpr double TURN = 2 * std::numbers::pi;

std::string path_of(const char* dir, const char* name)
{
    return std::string(dir) + "/" + name + ".yuv";
}

// A clip of `hz` pictures a second; at its end it runs backwards.
std::vector<QD_Bench_Picture> play(const std::string& path, double hz, int seconds)
{
    std::ifstream in(path, std::ios::binary);
    const std::vector<unsigned char> bytes {std::istreambuf_iterator<char>(in), {}};
    const auto count = static_cast<long>(bytes.size() / QD_PICTURE_SIZE);
    std::vector<QD_Bench_Picture> film;
    for (int i = 0; count > 1 && i < seconds * QD_SCENE_HZ; ++i) {
        const long at = static_cast<long>(i * hz / QD_SCENE_HZ) % (2 * count - 2);
        const auto first = bytes.begin() + std::min(at, 2 * count - 2 - at) * QD_PICTURE_SIZE;
        film.emplace_back(first, first + QD_PICTURE_SIZE);
    }
    return film;
}

template <class View_At>
std::vector<QD_Bench_Picture> shoot(const QD_Photo& photo, int seconds, View_At view_at)
{
    std::vector<QD_Bench_Picture> film;
    for (int i = 0; !photo.bytes.empty() && i < seconds * QD_SCENE_HZ; ++i)
        film.push_back(qd_take_picture(photo, view_at(i / double(QD_SCENE_HZ)), i));
    return film;
}

// -1..1, never the same again for long.
double drift(double t, double hz, double phase)
{
    return 0.6 * std::sin(TURN * hz * t + phase) + 0.4 * std::sin(TURN * hz * 2.37 * t + 2 * phase);
}

// 0..1: how far the jaw is open of someone who speaks and pauses.
double jaw(double t)
{
    const double speaks = std::clamp(1.5 * (std::sin(t * 0.7) + std::sin(t * 0.31 + 1)), 0.0, 1.0);
    return speaks * std::abs(std::sin(t * 13) * std::sin(t * 5.3 + 1));
}

double blink(double t) { return std::fmod(t, 3.1) < 0.14 ? 1 : 0; }

// Goes from one whole number to the next within `move` of `rest + move` seconds.
double steps(double t, double rest, double move)
{
    const double n = t / (rest + move);
    const double part = std::clamp((n - std::floor(n)) * (rest + move) / move, 0.0, 1.0);
    return std::floor(n) + part * part * (3 - 2 * part);
}

// There and back between 0 and `width`.
double there_and_back(double x, double width)
{
    const double at = std::fmod(x, 2 * width);
    return at < width ? at : 2 * width - at;
}

// Static camera: pedestrians, far away.
std::vector<QD_Bench_Picture> street(const char* dir, int seconds)
{
    return play(path_of(dir, "street"), 10, seconds);
}

// A film: two people talk at a table, with cuts.
std::vector<QD_Bench_Picture> dialogue(const char* dir, int seconds)
{
    return play(path_of(dir, "dialogue"), 23.976, seconds);
}

// A recorded screen: windows open, the pointer moves.
std::vector<QD_Bench_Picture> desktop(const char* dir, int seconds)
{
    return play(path_of(dir, "desktop"), 15, seconds);
}

// Someone who speaks, nods and sways before the camera.
std::vector<QD_Bench_Picture> speaker(const char* dir, int seconds)
{
    const QD_Photo photo = qd_read_photo(path_of(dir, "portrait"), 198, 162);
    return shoot(photo, seconds, [](double t) {
        QD_View view {99, 80, 1, 1, 1.5, {}};
        const double sway = 5 * drift(t, 0.19, 0);
        const double nod = 3 * drift(t, 0.45, 1) * (jaw(t) > 0 ? 1 : 0.4);
        view.shifts = {{98, 62, 60, 75, sway, nod}, {98, 160, 95, 70, sway / 2, 0},
            {98, 70, 16, 12, 0, 3.5 * jaw(t)}, {98, 46, 16, 5, 0, 2.5 * blink(t)}};
        return view;
    });
}

// Someone turns the camera round, hand-held, resting now and then.
std::vector<QD_Bench_Picture> look_round(const char* dir, int seconds)
{
    const QD_Photo photo = qd_read_photo(path_of(dir, "lane"), 376, 282);
    return shoot(photo, seconds, [](double t) {
        return QD_View {95 + 60 * there_and_back(steps(t, 2.5, 2.5), 3) + 1.5 * drift(t, 1.3, 0),
            141 + 40 * drift(t, 0.05, 2) + 1.2 * drift(t, 1.7, 1), 1, 1, 2, {}};
    });
}

// A workshop by a hand-held camera that never quite rests.
std::vector<QD_Bench_Picture> workshop(const char* dir, int seconds)
{
    const QD_Photo photo = qd_read_photo(path_of(dir, "workshop"), 264, 178);
    return shoot(photo, seconds, [](double t) {
        return QD_View {132 + 12 * drift(t, 0.11, 0) + 2 * drift(t, 1.1, 1),
            89 + 4 * drift(t, 0.13, 1) + 1.5 * drift(t, 1.4, 2), 1.15 + 0.12 * drift(t, 0.08, 3), 1,
            2.5, {}};
    });
}

// Two people stand in a room and gesture; the lamp flickers a little.
std::vector<QD_Bench_Picture> meeting(const char* dir, int seconds)
{
    const QD_Photo photo = qd_read_photo(path_of(dir, "room"), 208, 156);
    return shoot(photo, seconds, [](double t) {
        QD_View view {104, 76, 1.08, 1 + 0.01 * drift(t, 3.1, 0), 2, {}};
        const double left = t - 12 * std::floor(t / 12) < 6 ? 1 : 0.15;
        const double right = 1.15 - left;
        view.shifts = {{30, 78, 34, 90, 6 * left * drift(t, 0.3, 0), 2 * left * drift(t, 0.5, 1)},
            {42, 40, 18, 22, 5 * left * drift(t, 1.1, 2), 6 * left * drift(t, 0.9, 3)},
            {176, 86, 42, 95, 7 * right * drift(t, 0.25, 4), 2 * right * drift(t, 0.6, 5)},
            {150, 70, 22, 26, 6 * right * drift(t, 1.0, 6), 6 * right * drift(t, 1.2, 0)}};
        return view;
    });
}

// The same pedestrians later, from nearer.
std::vector<QD_Bench_Picture> crossing(const char* dir, int seconds)
{
    return play(path_of(dir, "crossing"), 10, seconds);
}

// A film: one face fills the picture.
std::vector<QD_Bench_Picture> close_up(const char* dir, int seconds)
{
    return play(path_of(dir, "close-up"), 23.976, seconds);
}

// Someone walks up to a house and back.
std::vector<QD_Bench_Picture> walk(const char* dir, int seconds)
{
    const QD_Photo photo = qd_read_photo(path_of(dir, "hotel"), 376, 260);
    return shoot(photo, seconds, [](double t) {
        return QD_View {190 + 25 * drift(t, 0.07, 1) + 2 * drift(t, 0.9, 0),
            125 + 12 * drift(t, 0.09, 0) + 2.5 * drift(t, 1.8, 2), 1.1 - 0.3 * std::cos(t * 0.3), 1,
            2, {}};
    });
}

// Someone shows a board to a cheap camera; a lamp is switched now and then.
std::vector<QD_Bench_Picture> office(const char* dir, int seconds)
{
    const QD_Photo photo = qd_read_photo(path_of(dir, "office"), 208, 156);
    return shoot(photo, seconds, [](double t) {
        QD_View view {104, 76, 1.06, std::fmod(t, 14) < 8 ? 1 : 0.8, 3.5, {}};
        const double shows = std::fmod(t, 9) < 4 ? 1 : 0.1;
        view.shifts = {{122, 60, 80, 75, 8 * shows * drift(t, 0.35, 0), 5 * drift(t, 0.3, 1)},
            {122, 130, 60, 45, 3 * drift(t, 0.2, 2), 0}};
        return view;
    });
}

// A calm face.
std::vector<QD_Bench_Picture> listener(const char* dir, int seconds)
{
    const QD_Photo photo = qd_read_photo(path_of(dir, "cat"), 264, 176);
    return shoot(photo, seconds, [](double t) {
        QD_View view {118, 84, 1, 1, 1, {}};
        const double nod = std::fmod(t, 8) < 1.2 ? 2.5 * std::sin(t * 9) : 0;
        view.shifts = {{112, 84, 105, 90, 2 * drift(t, 0.1, 0), nod},
            {67, 43, 22, 6, 0, 3 * blink(t)}, {145, 50, 22, 6, 0, 3 * blink(t)}};
        return view;
    });
}

// A page is shared and moved on every few seconds.
std::vector<QD_Bench_Picture> page(const char* dir, int seconds)
{
    const QD_Photo photo = qd_read_photo(path_of(dir, "page"), 384, 190);
    return shoot(photo, seconds, [](double t) {
        return QD_View {90 + std::round(50 * there_and_back(steps(t, 3.4, 0.6), 4)),
            80 + std::round(30 * there_and_back(steps(t + 2, 7.2, 0.8), 1)), 1, 1, 0, {}};
    });
}

constexpr QD_Scene SCENES[] = {
    {"street", false, street},
    {"dialogue", false, dialogue},
    {"workshop", false, workshop},
    {"desktop", false, desktop},
    {"speaker", false, speaker},
    {"look round", false, look_round},
    {"meeting", false, meeting},
    {"crossing", true, crossing},
    {"close-up", true, close_up},
    {"walk", true, walk},
    {"office", true, office},
    {"listener", true, listener},
    {"page", true, page},
};

}

std::span<const QD_Scene> qd_scenes() { return SCENES; }

// What the video benchmark films: real clips, and photographs brought to life.
#pragma once

#include "platform/vl/picture.h"

#include <span>
#include <vector>

/// QD_PICTURE_SIZE bytes.
using QD_Bench_Picture = std::vector<unsigned char>;

constexpr int QD_SCENE_HZ = 30;

struct QD_Scene {
    const char* name;
    bool is_held_back; // not looked at while the quantiser's policy was made
    std::vector<QD_Bench_Picture> (*film)(const char* dir, int seconds);
};

/// Every scene there is. film() gives the pictures of so many seconds,
/// QD_SCENE_HZ a second, out of what tools/bench-clips.sh left in `dir`; none
/// if that is missing.
std::span<const QD_Scene> qd_scenes();

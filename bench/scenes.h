// Moving scenes for measuring picture quality, each a function of time alone.
#pragma once

#include "platform/vl/picture.h"

#include <span>
#include <vector>

/// QD_PICTURE_SIZE bytes.
using QD_Bench_Picture = std::vector<unsigned char>;

struct QD_Scene {
    const char* name;
    QD_Bench_Picture (*at)(double seconds);
};

/// Every scene there is.
std::span<const QD_Scene> qd_scenes();

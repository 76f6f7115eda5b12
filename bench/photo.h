// A photograph seen by a moving, noisy camera, with parts of it that move.
#pragma once

#include "bench/scenes.h"

#include <string>

struct QD_Photo {
    int width = 0;
    int height = 0;
    std::vector<unsigned char> bytes; // three planes, colour at half size
};

/// A soft ellipse of the photograph that is shifted, in pixels.
struct QD_Shift {
    double x, y;   // the middle
    double rx, ry; // nothing moves beyond
    double dx, dy;
};

/// What the camera sees at one moment.
struct QD_View {
    double x, y;      // the middle, in pixels of the photograph
    double zoom = 1;  // pixels of the view for one of the photograph
    double light = 1; // on the luminance
    double noise = 0; // of the sensor, standard deviation
    std::vector<QD_Shift> shifts {};
};

/// Reads a raw photograph of that size; empty if there is none.
QD_Photo qd_read_photo(const std::string& path, int width, int height);

/// Paints the view; `number` chooses the noise.
QD_Bench_Picture qd_take_picture(const QD_Photo& photo, const QD_View& view, int number);

// A moving picture that needs no camera.
#pragma once

#include "platform/vl/camera.h"

#include <string>

/// Colour bars, a clock that runs, a block that wanders. `hue` (degrees, any)
/// tints the ground and sets the block's path, so that several members can be
/// told apart. Plain painting: the same instant gives the same picture.
class QD_Test_Card {
public:
    explicit QD_Test_Card(int hue = 0);

    /// Paints the picture of an instant, in milliseconds since midnight, into
    /// `out` (QD_PICTURE_SIZE bytes).
    void paint(long milliseconds, char* out) const;

    /// The same for this very moment of local time.
    void paint_now(char* out) const;

private:
    const int hue_;
};

/// The test card as a camera of 30 pictures a second; the argument is the hue, none for 0.
std::unique_ptr<QD_Camera> qd_make_test_card_camera(const std::string& argument, std::string& why);

// Cameras: what pictures may come from, and the table to choose from.
#pragma once

#include "platform/vl/picture.h"

#include <memory>
#include <span>
#include <string>

/// Where moving pictures come from. One thread uses it after it is made.
class QD_Camera {
public:
    virtual ~QD_Camera() = default;

    /// Claims the device. Returns 0, or -1 if it is missing or refuses; nothing
    /// is held then, and it may be tried again later.
    virtual int open() = 0;

    /// Waits for the next picture, but not for long (about 50 ms). Returns 1
    /// with `out` filled (QD_PICTURE_SIZE bytes); 0 if there is none yet; -1 if
    /// the device has gone or failed, and is to be closed.
    virtual int read(char* out) = 0;

    /// Lets go of the device; nothing if it is not open.
    virtual void close() = 0;
};

/// A row of the table of cameras.
struct QD_Camera_Choice {
    const char* name;
    const char* usage; // how it is written in QD_CAMERA

    /// Makes the camera, not open, from what stands behind the colon, empty if
    /// nothing does. Returns null and says in `why` what is wrong with it.
    std::unique_ptr<QD_Camera> (*make)(const std::string& argument, std::string& why);
};

/// The cameras there are; the first is what is used unless told otherwise.
std::span<const QD_Camera_Choice> qd_camera_choices();

/// Makes the camera that the text of QD_CAMERA asks for ("NAME" or
/// "NAME:ARGUMENT"); null and empty stand for the default. A text that names
/// none is told in one line on standard error, and gives the default.
std::unique_ptr<QD_Camera> qd_make_camera(const char* text);

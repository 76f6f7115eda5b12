// Cameras: what pictures may come from, and the choice of one.
#pragma once

#include "platform/vl/picture.h"

#include <memory>

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

/// Makes the camera, not open, that the text of QD_CAMERA asks for; see
/// qd_choose(). The default is the first Video4Linux device that opens. Never null.
std::unique_ptr<QD_Camera> qd_make_camera(const char* text);

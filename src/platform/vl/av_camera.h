// Cameras, clips and the screen, by libavdevice and libavformat.
#pragma once

#include "platform/vl/camera.h"

#include <string>

/// A Video4Linux device; without an argument the first that opens.
std::unique_ptr<QD_Camera> qd_make_v4l2_camera(const std::string& device, std::string& why);

/// A regular file, over and over, at the speed it was recorded at.
std::unique_ptr<QD_Camera> qd_make_clip_camera(const std::string& path, std::string& why);

/// All of an X display; without an argument that of the environment.
std::unique_ptr<QD_Camera> qd_make_screen_camera(const std::string& display, std::string& why);

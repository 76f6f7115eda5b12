// What a real client shows of a member.
#pragma once

#include "tests/support/client_under_test.h"
#include "tests/support/screen.h"

/// The viewer's window whose title begins so; no good shot if there is none in time.
inline QD_Shot qd_shoot(const QD_Client_Under_Test& viewer, const std::string& title)
{
    QD_Person person(viewer);
    if (!person.look_at(title))
        return QD_Shot("");
    const std::string file = viewer.file("shot.ppm");
    qd_run({"import", "-window", person.window(), "-depth", "8", file});
    return QD_Shot(file);
}

/// Whether that window shows the test card of that hue before long.
inline bool qd_shows(const QD_Client_Under_Test& viewer, const std::string& title, int hue)
{
    return qd_wait_for(
        [&] {
            const QD_Shot shot = qd_shoot(viewer, title);
            return shot.good() && qd_shows_card(shot, hue);
        },
        std::chrono::seconds(20));
}

/// What brings the camera on and the windows into a row of their own, number `row` from the top.
inline std::vector<std::string> qd_seeing_options(int row)
{
    const std::string y = std::to_string(400 * row);
    return {"-xrm", "*toggle.set: True", "-xrm", "*videoX: 300", "-xrm", "*videoY: " + y,
        "-geometry", "+0+" + y};
}

// What a real client shows of a member.
#pragma once

#include "tests/support/client_under_test.h"
#include "tests/support/screen.h"

/// A shot of the viewer's window whose title begins so; "" if there is none in time.
inline std::string qd_shoot(const QD_Client_Under_Test& viewer, const std::string& title)
{
    QD_Person person(viewer);
    return person.look_at(title) ? qd_output("import -window " + person.window() + QD_SHOT "-")
                                 : "";
}

/// Whether that window shows the test card of that hue before long.
inline bool qd_shows(const QD_Client_Under_Test& viewer, const std::string& title, int hue)
{
    return qd_wait_for(
        [&] { return qd_shows_card(qd_shoot(viewer, title), hue); }, std::chrono::seconds(20));
}

/// What brings the camera on and the windows into a row of their own, number `row` from the top.
inline std::vector<std::string> qd_seeing_options(int row)
{
    const std::string y = std::to_string(400 * row);
    return {"-xrm", "*toggle.set: True", "-xrm", "*videoX: 300", "-xrm", "*videoY: " + y,
        "-geometry", "+0+" + y};
}

// A user who holds a button somewhere while the conference goes on, or ends.
#include "tests/support/video_window.h"
#include "tests/support/x_server.h"

#include <gtest/gtest.h>

namespace {

constexpr int ME = 2;

struct Place {
    const char* what;
    const char* window;
    int button;
    int x;
    int y;
};

constexpr Place TEXT {"the name below the picture", "m2@", 2, 60, 195};
constexpr Place SCALE {"the scale", "Quendal", 1, 20, 300};
constexpr Place PLACES[]
    = {TEXT, SCALE, {"a label", "Quendal", 2, 27, 40}, {"the status line", "Quendal", 2, 100, 40},
        {"a line of the list", "Quendal", 2, 40, 68}, {"a button", "Quendal", 2, 40, 152},
        {"the scale's slider", "Quendal", 2, 30, 300}, {"a menu", "Quendal", 1, 20, 12}};

class Held {
public:
    explicit Held(bool managed)
    {
        if (managed)
            server_.manage();
        client_.emplace(ME,
            QD_Client_Under_Test::Set_Up {
                .toolkit_options = {"-xrm", "*toggle.set: True", "-xrm", "*videoX: 400", "-xrm",
                    "*videoY: 100", "-geometry", "+20+40"}});
        EXPECT_TRUE(client_->meets({ME, 3}));
        EXPECT_TRUE(qd_shows(*client_, "m2@", 0));
    }

    void hold(const Place& place)
    {
        QD_Person person(*client_);
        EXPECT_TRUE(person.look_at(place.window));
        EXPECT_EQ(person.hold(place.button, place.x, place.y), 0);
    }

    // How long the client takes to answer the framework, in milliseconds.
    int answers_within()
    {
        const auto begin = std::chrono::steady_clock::now();
        EXPECT_TRUE(client_->framework().settle());
        return static_cast<int>(
            (std::chrono::steady_clock::now() - begin) / std::chrono::milliseconds(1));
    }

    // Whether the own picture changes within half a second.
    bool shows_pictures() const
    {
        QD_Person person(*client_);
        person.look_at("m2@");
        const auto shot
            = [&] { return qd_output("import -window " + person.window() + QD_SHOT "-"); };
        const std::string before = shot();
        return qd_wait_for([&] { return shot() != before; }, std::chrono::milliseconds(500));
    }

    QD_Client_Under_Test& client() { return *client_; }

private:
    QD_X_Server server_;
    std::optional<QD_Client_Under_Test> client_;
};

}

TEST(HeldButtons, StarveNeitherTheLinkNorThePictures)
{
    Held held(true);
    for (const Place& place : PLACES) {
        held.hold(place);
        for (int i = 0; i < 3; ++i)
            EXPECT_LE(held.answers_within(), 300) << place.what;
        EXPECT_TRUE(held.shows_pictures()) << place.what;
        QD_Person::let_go(place.button);
        QD_Person::type({"Escape"});
        EXPECT_TRUE(held.shows_pictures()) << "after " << place.what;
    }
    EXPECT_EQ(held.client().end(), 0);
}

TEST(HeldButtons, OutliveNoWindow)
{
    for (const bool managed : {true, false}) {
        Held held(managed);
        held.hold(TEXT);
        held.client().framework().remove(ME, ME);
        EXPECT_TRUE(QD_Person(held.client()).loses("m2@"));
        QD_Person::type({"Tab", "space"});
        QD_Person::let_go(TEXT.button);
        EXPECT_LE(held.answers_within(), 300);

        held.hold(SCALE);
        EXPECT_LE(held.answers_within(), 300);
        EXPECT_EQ(held.client().end(), 0) << held.client().log();
    }
}

// Every way in which a real client ends.
#include "tests/support/client_under_test.h"
#include "tests/support/x_server.h"

#include <gtest/gtest.h>

TEST(Shutdown, EveryWayOutEndsCleanly)
{
    QD_X_Server x_server;
    x_server.manage();
    using Client = QD_Client_Under_Test;
    const auto press = [](const Client& client, const char* keys) {
        QD_Person person(client);
        ASSERT_TRUE(person.look_at("Quendal"));
        person.press(keys);
    };
    const auto send = [](Client& client, const std::string& bytes) {
        client.framework().send(std::string("\0\0\0\1", 4) + bytes);
    };
    struct {
        const char* why;
        std::function<void(Client&)> way;
        int status;
    } const ways[] = {
        {"the menu's key", [&](Client& client) { press(client, "ctrl+q"); }, 0},
        {"the window manager's key", [&](Client& client) { press(client, "alt+F4"); }, 0},
        {"the framework", [](Client& client) { client.framework().end_session(); }, 0},
        {"a signal", [](Client& client) { kill(client.pid(), SIGTERM); }, 0},
        {"a link that closes", [](Client& client) { client.framework().close_link(); }, 1},
        {"one that breaks", [&](Client& client) { send(client, "\xff\xff\xff\xff"); }, 1},
        {"one that stalls in an event", [&](Client& client) { send(client, "\1\1"); }, 1},
    };
    for (const auto& c : ways) {
        SCOPED_TRACE(c.why);
        Client client(2, {});
        ASSERT_TRUE(client.meets({2}));
        c.way(client);
        EXPECT_EQ(client.wait(), c.status);
        EXPECT_EQ(qd_read_file(client.file(".qd.cfg")).size(), 280u);
        EXPECT_EQ(client.log().find("Sanitizer"), std::string::npos) << client.log();
        EXPECT_EQ(client.log().find("QD_AudioApp: sent ") != std::string::npos, c.status == 0);
    }
    // Without a framework it does not even begin, and says why.
    const std::string said = qd_output("HOME=/nowhere " QD_BUILD_DIR "/quendal 2>&1; echo $?");
    EXPECT_TRUE(said.starts_with("invalid arguments: ") && said.ends_with("\n0\n")) << said;
}

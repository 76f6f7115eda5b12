// A whole session by the keyboard alone, on different kinds of screens.
#include "tests/support/client_under_test.h"
#include "tests/support/x_server.h"

#include <gtest/gtest.h>

namespace {

QD_Client_Under_Test::Set_Up at_the_keyboard(const QD_Temp_Dir& dir)
{
    std::filesystem::create_directory(dir / "bin");
    const std::string panel = dir / "bin/apanel"; // nobody waits for its end
    qd_write_file(panel, "#!/bin/sh\ntouch " + dir / "apanel" + "\nexec sleep 60 >&- 2>&-\n");
    std::filesystem::permissions(panel, std::filesystem::perms::owner_all);
    return {.toolkit_options
        = {"-xrm", "*mainForm*translations: #override Ctrl<Key>R: reset()", "-geometry", "+0+0"},
        .environment = {{"PATH", dir / "bin:" + getenv("PATH")}}};
}

void use_everything()
{
    QD_Temp_Dir dir;
    QD_Client_Under_Test client(2, at_the_keyboard(dir));
    ASSERT_TRUE(client.meets({2}));
    QD_Person main(client);
    ASSERT_TRUE(main.look_at("Quendal"));

    // From the list by the buttons to Camera. The window it brings leaves the keyboard where it is.
    main.focus();
    main.type({"Tab", "Tab", "Tab", "Tab", "space"});
    QD_Person other(client);
    EXPECT_TRUE(other.look_at("m2@"));
    main.type({"Tab", "Tab", "Tab", "Right", "Right", "Right"}); // to the cut-off's scale
    main.type({"shift+Tab", "shift+Tab", "shift+Tab", "space"});
    EXPECT_TRUE(other.loses("m2@"));

    for (const std::vector<std::string>& close :
        {std::vector<std::string> {"space", "Escape"}, {"Tab", "Return"}}) {
        main.focus();
        main.type({"ctrl+s"});
        ASSERT_TRUE(other.look_at("Statistics"));
        other.focus();
        other.type(close);
        EXPECT_TRUE(other.loses("Statistics"));
    }

    main.focus();
    main.type({"alt+v", "p"});
    EXPECT_TRUE(qd_wait_for([&] { return std::filesystem::exists(dir / "apanel"); }));
    main.type({"ctrl+o"});
    ASSERT_TRUE(other.look_at("Options"));
    other.focus();
    other.type({"Right", "Right", "Escape"});
    EXPECT_TRUE(other.loses("Options"));
    main.focus();
    main.type({"F10", "Right", "Right", "Down", "s"}); // menus by arrows, an entry by its letter
    EXPECT_TRUE(other.look_at("Statistics"));

    main.focus();
    main.type({"ctrl+r"});
    main.type({"alt+f", "x"});
    EXPECT_EQ(client.wait(), 0);
    EXPECT_EQ(qd_read_file(client.file(".qd.cfg")).substr(276), std::string("\0\0\0\3", 4));
    EXPECT_EQ(client.log().find("m2@"), std::string::npos) << "forgotten by the reset";
    EXPECT_EQ(client.log().find("Sanitizer"), std::string::npos) << client.log();
}

}

TEST(Keyboard, ServesAllWithAWindowManagerAndWithout)
{
    {
        QD_X_Server server;
        server.manage();
        use_everything();
    }
    const QD_X_Server without_shared_memory("800x600x16", "-extension MIT-SHM");
    use_everything();
}

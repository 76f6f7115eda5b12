#include "tests/platform/vk/vk_test.h"

#include "platform/vk/window.h"

#include <Xm/Form.h>

namespace {

struct Menus : VkWindow {
    static constexpr VkResource DEFAULTS[] = {
        {"*testPane.labelString", "Test"},
        {"*testPane.mnemonic", "T"},
        {"*doButton.labelString", "Do"},
        {"*doButton.mnemonic", "D"},
        {"*doButton.accelerator", "Ctrl<Key>D"},
        {"*doButton.acceleratorText", "Ctrl+D"},
    };
    Menus() :
        VkWindow("menus", DEFAULTS),
        view_("view", mainWindowWidget(), xmFormWidgetClass, 200, 100)
    {
        addView(&view_);
        pane_ = addMenuPane("testPane");
        action_ = pane_->addAction("doButton", &Menus::done, this);
        pane_->addSeparator();
        show();
        qd_pump();
    }
    static void done(Widget, XtPointer self, XtPointer) { ++static_cast<Menus*>(self)->count_; }

    VkTestView view_;
    VkMenuPane* pane_;
    Widget action_;
    int count_ = 0;
};

}

TEST(VkWindow, MenuEntriesTakeTheirTextsFromResourcesAndCallBack)
{
    vk_app();
    Menus window;
    EXPECT_EQ(qd_label(window.pane_->title()), "Test");
    EXPECT_EQ(qd_label(window.action_), "Do");
    EXPECT_EQ(vk_get<KeySym>(window.pane_->title(), XmNmnemonic), KeySym {'T'});
    EXPECT_EQ(vk_get<KeySym>(window.action_, XmNmnemonic), KeySym {'D'});

    XtCallActionProc(window.action_, "ArmAndActivate", nullptr, nullptr, 0);
    EXPECT_EQ(window.count_, 1);
    qd_focus(window.baseWidget());
    QD_X_Server& server = vk_app().server();
    ASSERT_EQ(server.press("d", "ctrl"), 0);
    EXPECT_TRUE(qd_pump_until([&] { return window.count_ == 2; })) << "the accelerator";
    ASSERT_EQ(server.press("t", "alt"), 0);
    EXPECT_TRUE(qd_pump_until([&] { return qd_on_screen(window.action_); })) << "the menu";
    ASSERT_EQ(server.press("d"), 0);
    EXPECT_TRUE(qd_pump_until([&] { return window.count_ == 3; })) << "the mnemonics";
}

TEST(VkWindow, TheViewKeepsItsSizeBelowTheMenuBar)
{
    vk_app();
    Menus window;
    EXPECT_EQ(vk_get<Dimension>(window.view_.baseWidget(), XtNwidth), 200);
    EXPECT_EQ(vk_get<Dimension>(window.view_.baseWidget(), XtNheight), 100);
    const int bar = vk_get<Dimension>(XtParent(window.pane_->title()), XtNheight);
    EXPECT_GE(bar, 15);
    EXPECT_EQ(vk_get<Position>(window.view_.baseWidget(), XtNy), bar);
}

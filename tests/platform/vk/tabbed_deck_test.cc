#include "tests/platform/vk/vk_test.h"

#include "platform/vk/option_menu.h"
#include "platform/vk/tabbed_deck.h"

#include <Xm/Form.h>

namespace {

struct Decked : VkTestWindow {
    Decked() :
        VkTestWindow("decked"),
        deck_("deck", mainWindowWidget()),
        first_("first", deck_.pageParent(), xmFormWidgetClass, 120, 80),
        second_("second", deck_.pageParent(), xmFormWidgetClass, 120, 80)
    {
        deck_.registerChild(&first_, "first");
        deck_.registerChild(&second_, "second");
        XtVaSetValues(deck_.baseWidget(), XtNwidth, 200, XtNheight, 150, nullptr);
        addView(&deck_);
        setFirstFocus(deck_.tabs().selectedTab());
        show();
        qd_focus(baseWidget());
    }

    /// The tab that is selected and the page that is seen.
    bool shows(int tab)
    {
        return qd_pump_until([&] {
            return deck_.tabs().selected() == tab && XtIsManaged(first_.baseWidget()) == (tab == 0)
                && XtIsManaged(second_.baseWidget()) == (tab == 1);
        });
    }

    VkTabbedDeck deck_;
    VkTestView first_;
    VkTestView second_;
};

void count_up(Widget, XtPointer count, XtPointer) { ++*static_cast<int*>(count); }

}

TEST(VkTabbedDeck, ShowsThePageOfTheSelectedTab)
{
    Decked window;
    EXPECT_TRUE(window.shows(0));
    for (const auto& [key, tab] : {std::pair("Right", 1), std::pair("Right", 1),
             std::pair("Left", 0), std::pair("Down", 1), std::pair("Up", 0)}) {
        ASSERT_EQ(vk_app().server().press(key), 0);
        EXPECT_TRUE(window.shows(tab)) << key;
    }
    for (int i = 0; i < 2; ++i) { // pressing the selected one leaves it selected
        qd_click(qd_find(window.baseWidget(), "secondTab"));
        EXPECT_TRUE(window.shows(1));
    }
    window.deck_.tabs().select(2);
    EXPECT_TRUE(window.shows(1));
}

TEST(VkOptionMenu, HoldsOneChoice)
{
    VkTestWindow window("menus");
    VkOptionMenu menu("choice", window.mainWindowWidget());
    EXPECT_EQ(menu.getIndex(), -1);
    int chosen = 0;
    for (const char* name : {"red", "green", "blue"})
        menu.addAction(name, count_up, &chosen);
    EXPECT_EQ(menu.getIndex(), 0);
    for (const auto& [set, index] : {std::pair(2, 2), std::pair(3, 2), std::pair(-1, 2)}) {
        menu.set(set);
        EXPECT_EQ(menu.getIndex(), index);
    }
    EXPECT_EQ(chosen, 0);
    window.addView(&menu);
    window.show();
    qd_focus(window.baseWidget());
    ASSERT_EQ(vk_app().server().press("space"), 0);
    Widget items = XtParent(qd_find(window.baseWidget(), "blue"));
    ASSERT_TRUE(qd_pump_until([&] { return XtIsManaged(items) && qd_on_screen(items); }));
    ASSERT_EQ(qd_run({"xdotool", "key", "Up", "Return"}), 0);
    EXPECT_TRUE(qd_pump_until([&] { return menu.getIndex() == 1 && chosen == 1; }));
}

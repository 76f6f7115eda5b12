#include "tests/ui/ui_test.h"

#include "platform/vk/text.h"
#include "ui/text_list.h"

#include <Xm/List.h>

TEST(TextList, LinesThatLookAlikeStayApart)
{
    ui_app();
    char name[] = "list";
    Widget widget = XmCreateList(theApplication->base_widget(), name, nullptr, 0);
    const auto place
        = [&](const char* line) { return XmListItemPos(widget, VkString(line).get()); };
    QD_Text_List list;
    list.attach(widget);
    for (const char* line : {"a\xfe", "b", "a\xff", "c"})
        list.append(line);
    EXPECT_EQ(list.remove("nobody"), -1);
    EXPECT_EQ(list.remove("a\xff"), 0);
    EXPECT_EQ(
        (std::array {place("a\xef\xbf\xbd"), place("b"), place("c")}), (std::array {1, 2, 3}));
    XmListSelectPos(widget, 3, False);
    EXPECT_EQ(list.remove("a\xfe"), 0);
    EXPECT_EQ(*list.selected(), "c");
    list.clear();
    EXPECT_EQ(list.remove("c"), -1);
    EXPECT_EQ(ui_get<int>(widget, XmNitemCount), 0);
    EXPECT_EQ(list.selected(), nullptr);
    XtDestroyWidget(widget);
}

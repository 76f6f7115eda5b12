#include "tests/platform/vk/vk_test.h"

#include "platform/vk/component.h"

#include <Xm/Label.h>
#include <memory>

TEST(VkComponent, EndsWellBeforeItsWidgetsAndAfterThem)
{
    VkTestWindow window;
    auto view = std::make_unique<VkTestView>(
        "view", window.mainWindowWidget(), xmLabelWidgetClass, 10, 10);
    bool gone = false;
    XtAddCallback(
        view->baseWidget(), XtNdestroyCallback,
        [](Widget, XtPointer flag, XtPointer) { *static_cast<bool*>(flag) = true; }, &gone);
    view.reset();
    EXPECT_TRUE(gone) << "a component takes its widgets along";

    VkTestView orphan("orphan", window.mainWindowWidget(), xmLabelWidgetClass, 10, 10);
    XtDestroyWidget(orphan.baseWidget());
    EXPECT_EQ(orphan.baseWidget(), nullptr);
    orphan.show();
    orphan.hide();
}

TEST(VkComponent, ShowsAndHides)
{
    VkTestWindow window;
    VkTestView view("view", window.mainWindowWidget(), xmLabelWidgetClass, 10, 10);
    EXPECT_FALSE(XtIsManaged(view.baseWidget()));
    view.show();
    EXPECT_TRUE(XtIsManaged(view.baseWidget()));
    view.hide();
    EXPECT_FALSE(XtIsManaged(view.baseWidget()));
}

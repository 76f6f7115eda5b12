#include "tests/platform/vk/vk_test.h"

#include "platform/vk/component.h"

#include <Xm/Label.h>
#include <memory>

TEST(VkComponent, EndsWellBeforeItsWidgetsAndAfterThem)
{
    VkTestWindow window;
    auto view = std::make_unique<VkTestView>(
        "view", window.mainWindowWidget(), xmLabelWidgetClass, 10, 10);
    view.reset();
    EXPECT_EQ(qd_find(window.baseWidget(), "view"), nullptr) << "it takes its widgets along";

    VkTestView orphan("orphan", window.mainWindowWidget(), xmLabelWidgetClass, 10, 10);
    XtDestroyWidget(orphan.baseWidget());
    EXPECT_EQ(orphan.baseWidget(), nullptr);
    orphan.show();
    orphan.hide();
}

#include "tests/platform/vk/vk_test.h"

#include "platform/vk/notice.h"

#include <Xm/MessageB.h>

TEST(VkUnimplemented, SaysSoOnStandardErrorAndInOneDialog)
{
    VkTestWindow window;
    window.show();
    qd_pump();
    testing::internal::CaptureStderr();
    VkUnimplemented(window.baseWidget(), "MainForm::conf");
    VkUnimplemented(window.baseWidget(), "MainForm::users");
    VkUnimplemented(nullptr, "Nobody::nothing");
    qd_pump();
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
        "MainForm::conf: not implemented\nMainForm::users: not implemented\n"
        "Nobody::nothing: not implemented\n");

    Widget notice = qd_find(window.baseWidget(), "notImplemented");
    ASSERT_NE(notice, nullptr);
    EXPECT_EQ(vk_get<unsigned char>(notice, XmNdialogStyle), XmDIALOG_MODELESS);
    qd_click(XmMessageBoxGetChild(notice, XmDIALOG_OK_BUTTON));
    EXPECT_EQ(qd_find(window.baseWidget(), "notImplemented"), nullptr);
}

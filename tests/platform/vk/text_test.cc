#include "tests/platform/vk/vk_test.h"

#include "platform/vk/text.h"

#include <Xm/TextF.h>

#define FFFD "\xef\xbf\xbd"

TEST(VkText, PrintableTextStaysAndTheRestIsReplacedByteByByte)
{
    struct {
        const char* why;
        std::string_view in;
        const char* out;
    } const cases[] = {
        {"plain", "anna@orion", "anna@orion"},
        {"two, three, four bytes", "\xc3\xa4\xe4\xbc\x9a\xf0\x9f\x93\xb7",
            "\xc3\xa4\xe4\xbc\x9a\xf0\x9f\x93\xb7"},
        {"a byte of no sequence", "a\xff z", "a" FFFD " z"},
        {"a sequence cut short", "a\xe4\xbc", "a" FFFD FFFD},
        {"a stray continuation", "\x80", FFFD},
        {"overlong forms", "\xc0\xaf\xe0\x80\xaf", FFFD FFFD FFFD FFFD FFFD},
        {"a surrogate", "\xed\xa0\x80", FFFD FFFD FFFD},
        {"beyond the last character", "\xf4\x90\x80\x80", FFFD FFFD FFFD FFFD},
        {"control characters", std::string_view("a\n\x1b\x7f\0b", 6), "a" FFFD FFFD FFFD FFFD "b"},
        {"a C1 control", "\xc2\x85.", FFFD FFFD "."},
    };
    for (const auto& c : cases)
        EXPECT_EQ(VkPrintable(c.in), c.out) << c.why;
}

TEST(VkText, AReadOnlyFieldIsReadableAndTakesNoKeys)
{
    VkTestWindow window;
    Widget field = XtVaCreateManagedWidget(
        "field", xmTextFieldWidgetClass, window.mainWindowWidget(), nullptr);
    VkMakeReadOnly(field);
    VkSetText(field, "caf\xc3\xa9 \xff");
    char* text = XmTextFieldGetString(field);
    EXPECT_STREQ(text, "caf\xc3\xa9 " FFFD);
    XtFree(text);
    EXPECT_FALSE(vk_get<Boolean>(field, XmNeditable));
    EXPECT_EQ(vk_get<Pixel>(field, XmNbackground), 0xf0f0f0u) << "the user's choice";
    EXPECT_EQ(vk_get<Pixel>(field, XmNforeground), BlackPixel(theApplication->display(), 0));
}

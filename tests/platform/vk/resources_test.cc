#include "tests/platform/vk/vk_test.h"

#include "platform/vk/resources.h"

#include <Xm/Form.h>
#include <Xm/Label.h>

namespace {

/// The label that a widget `name` gets below a form `form`.
std::string label_in(Widget parent, const char* form, const char* name)
{
    Widget top = XtVaCreateWidget(form, xmFormWidgetClass, parent, nullptr);
    std::string text = qd_label(XtVaCreateWidget(name, xmLabelWidgetClass, top, nullptr));
    XtDestroyWidget(top);
    return text;
}

}

TEST(VkResources, DefaultsReachWhomTheirNamesSayAndYieldToTheUser)
{
    VkTestWindow window("a window. With dots");
    const VkResource defaults[] = {
        {"*everywhere.labelString", "anywhere"},
        {"*chosen.labelString", "the program's"},
        {"within.labelString", "caf\xc3\xa9"},
        {".labelString", "itself"},
    };
    VkAddDefaults(window.baseWidget(), "some form.1", defaults);

    struct {
        const char* form;
        const char* label;
        const char* text;
    } const cases[] = {
        {"other", "everywhere", "anywhere"},
        {"other", "chosen", "the user's"},
        {"some form.1", "within", "caf\xc3\xa9"},
        {"other", "within", "within"}, // a widget's own name, for want of a resource
        {"other", "some form.1", "itself"},
        {"some form.1", "child", "child"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(label_in(window.mainWindowWidget(), c.form, c.label), c.text) << c.form;
}

#include "tests/ui/ui_test.h"

#include <Xm/Label.h>
#include <Xm/List.h>

namespace {

struct Box {
    int left, top, right, bottom;
};

Box box_of(Widget widget)
{
    const int x = ui_get<Position>(widget, XmNx);
    const int y = ui_get<Position>(widget, XmNy);
    return {
        x, y, x + ui_get<Dimension>(widget, XmNwidth), y + ui_get<Dimension>(widget, XmNheight)};
}

bool overlap(const Box& a, const Box& b)
{
    return a.left < b.right && b.left < a.right && a.top < b.bottom && b.top < a.bottom;
}

bool too_small(Widget widget, const Box& box)
{
    XtWidgetGeometry wanted {};
    if (!XmIsLabel(widget) && !XmIsTextField(widget))
        return false;
    XtQueryGeometry(widget, nullptr, &wanted);
    return (XmIsLabel(widget) && wanted.width > box.right - box.left)
        || wanted.height > box.bottom - box.top;
}

void add_misfits(Widget parent, std::string& misfits)
{
    if (!XtIsComposite(parent))
        return;
    const Box around = box_of(parent);
    auto* const all = ui_get<WidgetList>(parent, XmNchildren);
    std::vector<Widget> before;
    for (Cardinal i = 0; i < ui_get<Cardinal>(parent, XmNnumChildren); ++i) {
        if (!XtIsManaged(all[i]))
            continue;
        const Box box = box_of(all[i]);
        const auto report = [&](const std::string& what) {
            misfits += std::string(XtName(all[i])) + " " + what + "\n";
        };
        if (too_small(all[i], box))
            report("is too small");
        if (box.left < 0 || box.top < 0 || box.right > around.right - around.left
            || box.bottom > around.bottom - around.top)
            report("lies outside");
        for (Widget other : before)
            if (overlap(box, box_of(other)))
                report(std::string("covers ") + XtName(other));
        before.push_back(all[i]);
        add_misfits(all[i], misfits);
    }
}

}

std::string ui_misfits(Widget top)
{
    std::string misfits;
    add_misfits(top, misfits);
    return misfits;
}

std::vector<std::string> ui_lines(Widget top, const char* name)
{
    const Widget list = qd_find(top, name);
    auto* const items = ui_get<XmStringTable>(list, XmNitems);
    std::vector<std::string> lines;
    for (int i = 0; i < ui_get<int>(list, XmNitemCount); ++i) {
        auto* text = static_cast<char*>(XmStringUnparse(
            items[i], nullptr, XmCHARSET_TEXT, XmMULTIBYTE_TEXT, nullptr, 0, XmOUTPUT_ALL));
        lines.emplace_back(text);
        XtFree(text);
    }
    return lines;
}

TEST(Layout, EveryTextFitsAtTheSizesOfTheWindows)
{
    UI_Main window;
    // Long lines must not push anything about.
    for (int i = 0; i < 30; ++i)
        window.form_.addUserToList("someone.with.a.long.name@some.host.far.away.example.org");
    window.form_.getStatWnd()->show();
    qd_pump();

    XtWidgetGeometry status {};
    XtQueryGeometry(qd_find(window.baseWidget(), "label1"), nullptr, &status);
    EXPECT_NEAR(status.height, 20, 6) << "neither tiny nor huge";

    EXPECT_EQ(ui_size(window.form_.baseWidget()), "234x298");
    EXPECT_EQ(ui_misfits(window.form_.baseWidget()), "");

    Widget stat = window.form_.getStatWnd()->getStatForm()->baseWidget();
    EXPECT_EQ(ui_size(stat), "583x310");
    EXPECT_EQ(ui_misfits(stat), "");
    const Box place = box_of(window.form_.getStatWnd()->baseWidget());
    EXPECT_EQ(place.left, 300) << "the user's geometry";
    EXPECT_EQ(place.top, 7);
}

// The windows have sizes of their own in pixels, so the fonts must keep theirs.
TEST(LayoutElsewhere, HoldsWhateverResolutionTheUserHasSet)
{
    for (const char* resolution : {"72", "96", "192"}) {
        QD_Surroundings other;
        other.environment["QD_TEST_RESOURCES"] = std::string("Xft.dpi: ") + resolution + "\n";
        EXPECT_EQ(qd_run({std::filesystem::read_symlink("/proc/self/exe"), "--gtest_filter=Layout.*:*.AtItsSize*:*EveryTextFits*",
                             "--gtest_brief=1"},
                      other),
            0)
            << resolution;
    }
}

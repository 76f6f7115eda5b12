#include "tests/ui/ui_test.h"

#include "signalling/session_control.h"
#include "ui/call_window.h"
#include "ui/display_window.h"
#include "ui/options_window.h"

#include <X11/Xutil.h>
#include <Xm/Label.h>

namespace {

/// Each managed widget below `parent` has the room that it wants, in its parent
/// and beside its siblings.
void expect_room(Widget parent)
{
    const int width = ui_get<Dimension>(parent, XmNwidth);
    const int height = ui_get<Dimension>(parent, XmNheight);
    auto* const children = ui_get<WidgetList>(parent, XmNchildren);
    Region taken = XCreateRegion();
    for (Cardinal i = 0; i < ui_get<Cardinal>(parent, XmNnumChildren); ++i) {
        Widget child = children[i];
        if (!XtIsManaged(child))
            continue;
        SCOPED_TRACE(XtName(child));
        XRectangle box {};
        XtVaGetValues(child, XmNx, &box.x, XmNy, &box.y, XmNwidth, &box.width, XmNheight,
            &box.height, nullptr);
        EXPECT_TRUE(box.x >= 0 && box.x + box.width <= width);
        EXPECT_TRUE(box.y >= 0 && box.y + box.height <= height);
        EXPECT_EQ(XRectInRegion(taken, box.x, box.y, box.width, box.height), RectangleOut);
        XUnionRectWithRegion(&box, taken, taken);
        XtWidgetGeometry wanted {};
        XtQueryGeometry(child, nullptr, &wanted);
        EXPECT_TRUE(!XmIsLabel(child) || wanted.width <= box.width);
        EXPECT_TRUE(!(XmIsLabel(child) || XmIsTextField(child)) || wanted.height <= box.height);
        if (XtIsComposite(child))
            expect_room(child);
    }
    XDestroyRegion(taken);
}

void expect_fit(const VkSimpleWindow& window, int width, int height)
{
    qd_pump();
    EXPECT_EQ(ui_get<Dimension>(window.base_widget(), XmNwidth), width) << window.title();
    EXPECT_EQ(ui_get<Dimension>(window.base_widget(), XmNheight), height) << window.title();
    expect_room(window.main_window_widget());
}

}

// The windows have sizes of their own in pixels, so the fonts must keep theirs, whatever the
// resolution.
TEST(Layout, EveryTextFitsAtTheSizesOfTheWindows)
{
    const char* const longest = "someone.with.a.long.name@some.host.far.away.example.org";
    UI_Main main;
    for (int i = 0; i < 30; ++i)
        main.form.addUserToList(longest);
    expect_fit(main, 234, 298);
    main.form.getStatWnd()->show();
    expect_fit(*main.form.getStatWnd(), 583, 310);
    EXPECT_EQ(ui_get<Position>(main.form.getStatWnd()->base_widget(), XmNx), 300) << "the user's";

    DisplayWindowMainWindow display(longest);
    display.setStatistics("1500 kbps", "30.0 fps");
    display.show();
    expect_fit(display, 176, 215);
    EXPECT_EQ(ui_get<Dimension>(qd_find(display.base_widget(), "picture"), XmNheight), 144);

    const QD_Session_Ref session;
    OptionsWindowMainWindow options("optionsWindow");
    options.show();
    for (const char* tab :
        {"generalOptionsFormTab", "audioOptionsFormTab", "videoOptionsFormTab"}) {
        qd_click(qd_find(options.base_widget(), tab));
        expect_fit(options, 314, 380);
    }
    CallWindowMainWindow* call = new CallWindowMainWindow(&call);
    call->show();
    expect_fit(*call, 320, 88);
    delete call;
}

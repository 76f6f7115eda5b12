#include "platform/vk/simple_window.h"

#include "platform/vk/app.h"
#include "platform/vk/drawn_text.h"

#include <X11/Xatom.h>
#include <Xm/Form.h>
#include <Xm/MwmUtil.h>
#include <Xm/Protocols.h>
#include <Xm/Xm.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

/// What the user asked for the application as a whole (-geometry, -iconic,
/// -title); it goes to the first window, the base shell being never seen.
struct First_Window {
    String geometry;
    String title;
    Boolean iconic;
};

First_Window first_window(Widget base)
{
    static XtResource resources[] = {
        VkEntry(XmNgeometry, XmCGeometry, XmRString, sizeof(String),
            offsetof(First_Window, geometry), nullptr),
        VkEntry(
            XmNtitle, XmCTitle, XmRString, sizeof(String), offsetof(First_Window, title), nullptr),
        VkEntry(XmNiconic, XmCIconic, XmRBoolean, sizeof(Boolean), offsetof(First_Window, iconic),
            "False"),
    };
    First_Window first {};
    XtGetApplicationResources(base, &first, resources, XtNumber(resources), nullptr, 0);
    return first;
}

}

VkSimpleWindow::VkSimpleWindow(
    const char* name, VkResources defaults, ArgList args, Cardinal count) :
    VkComponent(name)
{
    set_default_resources(theApplication->base_widget(), defaults);
    make_shell(args, count);
    main_ = XtVaCreateManagedWidget(
        "mainWindow", xmFormWidgetClass, base_widget(), XmNshadowThickness, 0, nullptr);
    Atom wm_delete = XInternAtom(XtDisplay(main_), "WM_DELETE_WINDOW", False);
    XmAddWMProtocolCallback(base_widget(), wm_delete, &VkSimpleWindow::delete_message, this);
}

VkSimpleWindow::~VkSimpleWindow()
{
    theApplication->strike(this);
    destroy_widgets();
}

// A shell's end dispatches an event of its own, which must not meet widgets that went before it.
// So nothing in a window is destroyed by itself: components find their widgets gone or, while the
// toolkit waits for the end of an event, about to go.
void VkSimpleWindow::destroy_widgets()
{
    if (base_widget() != nullptr) {
        hide();
        destroy_base();
    }
    view_.reset();
}

void VkSimpleWindow::make_shell(ArgList args, Cardinal count)
{
    std::vector<Arg> all(args, args + count);
    auto add = [&all](const char* name, XtArgVal value) {
        all.push_back({const_cast<String>(name), value});
    };
    add(XmNdeleteResponse, XmDO_NOTHING);
    add(XmNtitleEncoding, None); // the toolkit converts from the locale, that is, from UTF-8
    add(XmNiconNameEncoding, None);
    Widget base = theApplication->base_widget();
    if (theApplication->enlist(this)) {
        First_Window first = first_window(base);
        if (first.geometry != nullptr)
            add(XmNgeometry, reinterpret_cast<XtArgVal>(first.geometry));
        if (first.title != nullptr)
            add(XmNtitle, reinterpret_cast<XtArgVal>(first.title));
        if (first.iconic)
            add(XmNinitialState, IconicState);
    }
    set_base_widget(XtCreatePopupShell(const_cast<String>(name()), topLevelShellWidgetClass, base,
        all.data(), static_cast<Cardinal>(all.size())));
    XtVaSetValues(base_widget(), XmNiconName, title().c_str(), nullptr);
    XtAddCallback(
        base_widget(), XmNdestroyCallback,
        [](Widget shell, XtPointer, XtPointer) { VkForgetDrawnText(shell); }, nullptr);
}

void VkSimpleWindow::add_view(VkComponent* view)
{
    XtVaSetValues(view->base_widget(), XmNtopAttachment, XmATTACH_FORM, XmNbottomAttachment,
        XmATTACH_FORM, XmNleftAttachment, XmATTACH_FORM, XmNrightAttachment, XmATTACH_FORM,
        nullptr);
    view->show();
}

void VkSimpleWindow::add_view(std::unique_ptr<VkComponent> view)
{
    view_ = std::move(view);
    add_view(view_.get());
}

void VkSimpleWindow::realize()
{
    Widget shell = base_widget();
    XtRealizeWidget(shell);
    publish_title();
    publish_process();

    int functions = 0;
    Dimension width = 0;
    Dimension height = 0;
    XtVaGetValues(
        shell, XmNmwmFunctions, &functions, XmNwidth, &width, XmNheight, &height, nullptr);
    const bool fixed = functions != -1 && ((functions & (MWM_FUNC_RESIZE | MWM_FUNC_ALL)) == 0);
    XtVaSetValues(shell, XmNminWidth, width, XmNminHeight, height, nullptr);
    if (fixed)
        XtVaSetValues(shell, XmNmaxWidth, width, XmNmaxHeight, height, nullptr);
}

void VkSimpleWindow::show()
{
    Widget shell = base_widget();
    if (shell == nullptr)
        return;
    if (!XtIsRealized(shell))
        realize();
    if (shown_)
        XMapRaised(XtDisplay(shell), XtWindow(shell));
    else
        XtPopup(shell, XtGrabNone);
    if (first_focus_ != nullptr)
        XmProcessTraversal(std::exchange(first_focus_, nullptr), XmTRAVERSE_CURRENT);
    shown_ = true;
}

void VkSimpleWindow::hide()
{
    if (shown_)
        XtPopdown(base_widget());
    shown_ = false;
}

void VkSimpleWindow::iconify()
{
    Widget shell = base_widget();
    if (shell == nullptr)
        return;
    if (shown_) {
        XIconifyWindow(XtDisplay(shell), XtWindow(shell), XScreenNumberOfScreen(XtScreen(shell)));
        return;
    }
    XtVaSetValues(shell, XmNinitialState, IconicState, nullptr);
    show();
}

void VkSimpleWindow::set_title(const char* title)
{
    if (base_widget() == nullptr)
        return;
    XtVaSetValues(base_widget(), XmNtitle, title, XmNiconName, title, nullptr);
    if (XtIsRealized(base_widget()))
        publish_title();
}

std::string VkSimpleWindow::title() const
{
    char* title = nullptr;
    if (base_widget() != nullptr)
        XtVaGetValues(base_widget(), XmNtitle, &title, nullptr);
    return title != nullptr ? title : "";
}

void VkSimpleWindow::publish_title()
{
    // Today's window managers read this one, which is UTF-8 without conversion.
    Display* display = XtDisplay(base_widget());
    std::string text = title();
    XChangeProperty(display, XtWindow(base_widget()), XInternAtom(display, "_NET_WM_NAME", False),
        XInternAtom(display, "UTF8_STRING", False), 8, PropModeReplace,
        reinterpret_cast<const unsigned char*>(text.data()), static_cast<int>(text.size()));
}

// So that a window manager can end a process that hangs, and tools tell the
// windows of several apart.
void VkSimpleWindow::publish_process()
{
    Display* display = XtDisplay(base_widget());
    const long pid = getpid();
    XChangeProperty(display, XtWindow(base_widget()), XInternAtom(display, "_NET_WM_PID", False),
        XA_CARDINAL, 32, PropModeReplace, reinterpret_cast<const unsigned char*>(&pid), 1);
}

void VkSimpleWindow::handleWmDeleteMessage()
{
    if (okToQuit())
        delete this;
}

void VkSimpleWindow::widget_destroyed()
{
    main_ = first_focus_ = nullptr;
    shown_ = false;
}

void VkSimpleWindow::delete_message(Widget, XtPointer self, XtPointer)
{
    static_cast<VkSimpleWindow*>(self)->handleWmDeleteMessage();
}

#include "platform/vk/drawn_text.h"

#include <X11/IntrinsicP.h>
#include <X11/Xft/Xft.h>
#include <Xm/Xm.h>
#include <algorithm>

// Motif makes one of these for each window it draws text on, finds it again by
// the window, and forgets to destroy it with the window: 130 bytes each, forever.
// It has what it takes, which no header of it names.
extern "C" {
[[gnu::weak]] XftDraw* _XmXftDrawCreate(Display*, Window);
[[gnu::weak]] void _XmXftDrawDestroy(Display*, Window, XftDraw*);
}

namespace {

bool has_gadget(const CompositePart& composite)
{
    return std::any_of(composite.children, composite.children + composite.num_children,
        [](Widget child) { return XmIsGadget(child); });
}

// Gadgets draw on the window of the widget around them.
bool may_have_text(Widget widget)
{
    return XmIsPrimitive(widget)
        || (XtIsComposite(widget)
            && has_gadget(reinterpret_cast<CompositeWidget>(widget)->composite));
}

}

void VkForgetDrawnText(Widget top)
{
    if (_XmXftDrawCreate == nullptr || _XmXftDrawDestroy == nullptr || !XtIsWidget(top))
        return;
    if (XtIsRealized(top) && may_have_text(top)) {
        Display* display = XtDisplay(top);
        _XmXftDrawDestroy(display, XtWindow(top), _XmXftDrawCreate(display, XtWindow(top)));
    }
    std::for_each(
        top->core.popup_list, top->core.popup_list + top->core.num_popups, &VkForgetDrawnText);
    if (!XtIsComposite(top))
        return;
    const CompositePart& composite = reinterpret_cast<CompositeWidget>(top)->composite;
    std::for_each(
        composite.children, composite.children + composite.num_children, &VkForgetDrawnText);
}

#include "platform/vk/pixmap.h"

#include <X11/xpm.h>
#include <Xm/Xm.h>

VkPixmap::VkPixmap(Widget widget, const char* const* xpm, Pixel background)
{
    static_assert(NO_PIXMAP == XmUNSPECIFIED_PIXMAP);
    Display* display = XtDisplay(widget);
    Cardinal depth = 0;
    XtVaGetValues(widget, XmNdepth, &depth, nullptr);
    char symbol[] = "background";
    XpmColorSymbol symbols[] = {{symbol, nullptr, background}};
    XpmAttributes attributes {};
    attributes.valuemask = XpmColorSymbols | XpmDepth | XpmCloseness;
    attributes.colorsymbols = symbols;
    attributes.numsymbols = 1;
    attributes.depth = depth;
    attributes.closeness = 65535; // any colour near it is better than no picture

    Pixmap pixmap = 0;
    Pixmap mask = 0;
    const int result = XpmCreatePixmapFromData(display, RootWindowOfScreen(XtScreen(widget)),
        const_cast<char**>(xpm), &pixmap, &mask, &attributes);
    XpmFreeAttributes(&attributes);
    if (mask)
        XFreePixmap(display, mask);
    if (result < XpmSuccess || !pixmap)
        return;
    display_ = display;
    pixmap_ = pixmap;
}

VkPixmap::~VkPixmap()
{
    if (display_ != nullptr)
        XFreePixmap(display_, pixmap_);
}

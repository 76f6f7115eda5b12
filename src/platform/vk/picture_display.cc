#include "platform/vk/picture_display.h"

#include "platform/vk/app.h"

#include <X11/Xutil.h>
#include <Xm/DrawingA.h>
#include <Xm/Xm.h>
#include <algorithm>
#include <libyuv.h>
#include <map>

namespace {

constexpr VkResource DEFAULTS[] = {{".background", "Black"}};
constexpr size_t LUMINANCE = size_t {VkPictureDisplay::WIDTH} * VkPictureDisplay::HEIGHT;
constexpr int MAX_GREYS = 64;
constexpr int BAND = 32 * 1024; // bytes that are given to the server at once
constexpr unsigned long AGAIN_MS = 20;

/// As many even steps of grey as there are cells to be had.
std::vector<unsigned long> grey_ramp(Display* display, const Visual& visual, Colormap colours)
{
    for (int count = std::min(MAX_GREYS, visual.map_entries); count >= 2; count /= 2) {
        std::vector<unsigned long> ramp;
        for (int i = 0; i < count; ++i) {
            const auto level = static_cast<unsigned short>(65535 * i / (count - 1));
            XColor grey {0, level, level, level, DoRed | DoGreen | DoBlue, 0};
            if (!XAllocColor(display, colours, &grey))
                break;
            ramp.push_back(grey.pixel);
        }
        if (ramp.size() == static_cast<size_t>(count))
            return ramp;
        XFreeColors(display, colours, ramp.data(), static_cast<int>(ramp.size()), 0);
    }
    const int screen = DefaultScreen(display);
    return {BlackPixel(display, screen), WhitePixel(display, screen)};
}

/// The formats are made once for each map of colours, that is, nearly always once.
const VkPixelFormat& format_of(const Visual& visual, Colormap colours)
{
    static std::map<Colormap, VkPixelFormat> formats;
    const auto known = formats.find(colours);
    if (known != formats.end())
        return known->second;
    VkPixelFormat& format = formats[colours];
    if (visual.c_class == TrueColor)
        format = {visual.red_mask, visual.green_mask, visual.blue_mask, {}};
    else
        format.ramp = grey_ramp(theApplication->display(), visual, colours);
    return format;
}

VkPlanes planes_at(const uint8_t* start, int width, int height)
{
    VkPlanes planes {start, nullptr, nullptr, width, height};
    planes.u = planes.y + ptrdiff_t {width} * height;
    planes.v = planes.u + ptrdiff_t {planes.chroma_width()} * planes.chroma_height();
    return planes;
}

uint8_t* writable(const uint8_t* plane) { return const_cast<uint8_t*>(plane); }

XRectangle common(const XRectangle& a, const XRectangle& b)
{
    const int left = std::max(a.x, b.x);
    const int top = std::max(a.y, b.y);
    const int right = std::min(a.x + a.width, b.x + b.width);
    const int bottom = std::min(a.y + a.height, b.y + b.height);
    return {static_cast<short>(left), static_cast<short>(top),
        static_cast<unsigned short>(std::max(right - left, 0)),
        static_cast<unsigned short>(std::max(bottom - top, 0))};
}

}

void init_global_dpy()
{
    Display* display = theApplication->display();
    const int screen = DefaultScreen(display);
    format_of(*DefaultVisual(display, screen), DefaultColormap(display, screen));
}

void VkPictureDisplay::Free_Image::operator()(XImage* image) const
{
    image->data = nullptr; // ours
    XDestroyImage(image);
}

VkPictureDisplay::VkPictureDisplay(const char* name, Widget parent) : VkComponent(name)
{
    static_assert(SIZE == LUMINANCE * 3 / 2);
    set_default_resources(parent, DEFAULTS);
    set_base_widget(XtVaCreateWidget(name, xmDrawingAreaWidgetClass, parent, XmNwidth, WIDTH,
        XmNheight, HEIGHT, XmNmarginWidth, 0, XmNmarginHeight, 0, XmNtraversalOn, False, nullptr));
    XtAddCallback(base_widget(), XmNexposeCallback, &VkPictureDisplay::exposed, this);
    XtAddCallback(base_widget(), XmNresizeCallback, &VkPictureDisplay::resized, this);
}

VkPictureDisplay::~VkPictureDisplay()
{
    release();
    if (base_widget() == nullptr)
        return;
    XtRemoveCallback(base_widget(), XmNexposeCallback, &VkPictureDisplay::exposed, this);
    XtRemoveCallback(base_widget(), XmNresizeCallback, &VkPictureDisplay::resized, this);
}

void VkPictureDisplay::init_display2()
{
    if ((gc_ != nullptr) || (base_widget() == nullptr) || !XtIsRealized(base_widget()))
        return;
    Display* display = XtDisplay(base_widget());
    XWindowAttributes window {};
    if (!XGetWindowAttributes(display, XtWindow(base_widget()), &window))
        return;
    visual_ = window.visual;
    depth_ = window.depth;
    format_ = &format_of(*window.visual, window.colormap);
    XGCValues values {};
    values.graphics_exposures = False;
    gc_ = XCreateGC(display, XtWindow(base_widget()), GCGraphicsExposures, &values);
}

void VkPictureDisplay::displayYUV411(const unsigned char* picture)
{
    picture_.assign(picture, picture + SIZE);
    init_display2();
    if (gc_ == nullptr)
        return;
    fit();
    render();
    rows_left_ = image_->height;
    put_rest();
}

XRectangle VkPictureDisplay::place() const
{
    if (base_widget() == nullptr)
        return {};
    Dimension width = 0;
    Dimension height = 0;
    XtVaGetValues(base_widget(), XmNwidth, &width, XmNheight, &height, nullptr);
    Screen* screen = XtScreen(base_widget());
    const int room_x = std::clamp<int>(width, 1, WidthOfScreen(screen));
    const int room_y = std::clamp<int>(height, 1, HeightOfScreen(screen));
    const int shown_x = std::clamp(room_y * WIDTH / HEIGHT, 1, room_x);
    const int shown_y = std::clamp(room_x * HEIGHT / WIDTH, 1, room_y);
    return {static_cast<short>((width - shown_x) / 2), static_cast<short>((height - shown_y) / 2),
        static_cast<unsigned short>(shown_x), static_cast<unsigned short>(shown_y)};
}

/// Makes the image as large as its place. Returns whether that changed it.
bool VkPictureDisplay::fit()
{
    const XRectangle room = place();
    if (image_ && image_->width == room.width && image_->height == room.height)
        return false;
    image_.reset(XCreateImage(XtDisplay(base_widget()), visual_, static_cast<unsigned>(depth_),
        ZPixmap, 0, nullptr, room.width, room.height, 32, 0));
    image_->byte_order = image_->bitmap_bit_order = LSBFirst; // the library swaps where it must
    XInitImage(image_.get());
    pixels_.resize(static_cast<size_t>(image_->bytes_per_line) * room.height);
    image_->data = pixels_.data();
    next_row_ = 0;
    return true;
}

void VkPictureDisplay::render()
{
    VkPackPicture(scaled(image_->width, image_->height), *format_, *image_);
}

VkPlanes VkPictureDisplay::scaled(int width, int height)
{
    const VkPlanes from = planes_at(picture_.data(), WIDTH, HEIGHT);
    if (width == WIDTH && height == HEIGHT)
        return from;
    const size_t chroma
        = static_cast<size_t>((width + 1) / 2) * static_cast<size_t>((height + 1) / 2);
    scaled_.resize(static_cast<size_t>(width) * static_cast<size_t>(height) + 2 * chroma);
    const VkPlanes to = planes_at(scaled_.data(), width, height);
    libyuv::I420Scale(from.y, WIDTH, from.u, from.chroma_width(), from.v, from.chroma_width(),
        WIDTH, HEIGHT, writable(to.y), width, writable(to.u), to.chroma_width(), writable(to.v),
        to.chroma_width(), width, height, libyuv::kFilterBox);
    return to;
}

/// Puts what of the image lies in `part` of the widget.
void VkPictureDisplay::put(const XRectangle& part) const
{
    const XRectangle all = place();
    const XRectangle seen = common(all, part);
    if (seen.width == 0 || seen.height == 0)
        return;
    XPutImage(XtDisplay(base_widget()), XtWindow(base_widget()), gc_, image_.get(), seen.x - all.x,
        seen.y - all.y, seen.x, seen.y, seen.width, seen.height);
}

/// Goes on where it stopped, if with a newer picture by now, so that a slow server comes round too.
void VkPictureDisplay::put_rest()
{
    const XRectangle all = place();
    const int band = std::max(BAND / image_->bytes_per_line, 1);
    while (rows_left_ > 0 && theApplication->takes_more()) {
        const int rows = std::min({band, rows_left_, image_->height - next_row_});
        put({all.x, static_cast<short>(all.y + next_row_), all.width,
            static_cast<unsigned short>(rows)});
        next_row_ = (next_row_ + rows) % image_->height;
        rows_left_ -= rows;
    }
    if (rows_left_ > 0 && again_ == 0)
        again_ = XtAppAddTimeOut(
            theApplication->app_context(), AGAIN_MS, &VkPictureDisplay::again, this);
}

void VkPictureDisplay::again(XtPointer self, XtIntervalId*)
{
    auto* display = static_cast<VkPictureDisplay*>(self);
    display->again_ = 0;
    display->put_rest();
}

/// The picture itself is left alone, lest it flicker.
void VkPictureDisplay::clear_around() const
{
    const XRectangle all = place();
    const int right = all.x + all.width;
    const int bottom = all.y + all.height;
    Display* display = XtDisplay(base_widget());
    const Window window = XtWindow(base_widget());
    // A size of 0 means up to the edge of the window; so each area is cleared only if there is one.
    if (all.x > 0)
        XClearArea(display, window, 0, 0, static_cast<unsigned>(all.x), 0, False);
    if (all.y > 0)
        XClearArea(display, window, 0, 0, 0, static_cast<unsigned>(all.y), False);
    XClearArea(display, window, right, 0, 0, 0, False);
    XClearArea(display, window, 0, bottom, 0, 0, False);
}

void VkPictureDisplay::exposed(Widget, XtPointer self, XtPointer call)
{
    auto* display = static_cast<VkPictureDisplay*>(self);
    const XEvent* event = static_cast<XmDrawingAreaCallbackStruct*>(call)->event;
    display->init_display2();
    if ((display->gc_ == nullptr) || display->picture_.empty() || (event == nullptr)
        || event->type != Expose)
        return;
    if (display->fit())
        display->render();
    const XExposeEvent& area = event->xexpose;
    display->put({static_cast<short>(area.x), static_cast<short>(area.y),
        static_cast<unsigned short>(area.width), static_cast<unsigned short>(area.height)});
}

void VkPictureDisplay::resized(Widget, XtPointer self, XtPointer)
{
    auto* display = static_cast<VkPictureDisplay*>(self);
    if ((display->gc_ == nullptr) || display->picture_.empty())
        return;
    if (display->fit())
        display->render();
    display->clear_around();
    display->rows_left_ = display->image_->height;
    display->put_rest();
}

void VkPictureDisplay::widget_destroyed() { release(); }

void VkPictureDisplay::release()
{
    // All windows share the application's display, which outlives the widget.
    if (gc_ != nullptr)
        XFreeGC(theApplication->display(), gc_);
    gc_ = nullptr;
    image_.reset();
    rows_left_ = 0;
    if (again_ != 0)
        XtRemoveTimeOut(again_);
    again_ = 0;
}

// A place where pictures are shown: scaled, coloured for the screen, and kept.
#pragma once

#include "platform/vk/component.h"
#include "platform/vk/picture_packer.h"

#include <cstdint>
#include <memory>
#include <vector>

/// Prepares what all displays share: what the screen's pixels mean and, on a
/// screen without direct colours, the cells of a ramp of greys, kept until the
/// process ends. After VkApp is made; called by the first display if by nobody else.
void init_global_dpy();

/// The picture fills the widget as far as its proportions allow, in the middle
/// of a black ground; no larger than the screen. The last one comes back
/// whenever the widget is uncovered or gets another size. A server that does not
/// take it in never holds the program up: what is missing follows later.
/// User-interface thread only.
class VkPictureDisplay : public VkComponent {
public:
    static constexpr int WIDTH = 176; // of the pictures
    static constexpr int HEIGHT = 144;
    static constexpr size_t SIZE = 38016; // bytes: planes Y, U and V, chroma 88 x 72

    /// A widget of the pictures' size.
    VkPictureDisplay(const char* name, Widget parent);
    ~VkPictureDisplay() override;

    /// Prepares the widget's window for drawing; without a window, or a second
    /// time, nothing happens.
    void init_display2();

    /// Shows the SIZE bytes at `picture` and keeps a copy. A display that was
    /// not prepared prepares itself; one without a window shows the picture
    /// once it has one.
    void displayYUV411(const unsigned char* picture);

    /// Where the picture lies in the widget.
    XRectangle place() const;

    const char* className() override { return "VkPictureDisplay"; }

protected:
    void widget_destroyed() override;

private:
    struct Free_Image {
        void operator()(XImage* image) const;
    };

    static void exposed(Widget, XtPointer self, XtPointer call);
    static void resized(Widget, XtPointer self, XtPointer);
    static void again(XtPointer self, XtIntervalId*);
    bool fit();
    void render();
    VkPlanes scaled(int width, int height);
    void put(const XRectangle& part) const;
    void put_rest();
    void clear_around() const;
    void release();

    std::vector<uint8_t> picture_; // the last one; empty before the first
    std::vector<uint8_t> scaled_;  // the same in the size of image_, if that is another

    // Of the window; none before init_display2().
    GC gc_ = nullptr;
    Visual* visual_ = nullptr;
    int depth_ = 0;
    const VkPixelFormat* format_ = nullptr;

    std::vector<char> pixels_; // image_'s
    std::unique_ptr<XImage, Free_Image> image_;

    // What of image_ the server has still to be given: so many rows, cyclically.
    int next_row_ = 0;
    int rows_left_ = 0;
    XtIntervalId again_ = 0; // 0: none
};

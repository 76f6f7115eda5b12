// Small pictures for buttons.
#pragma once

#include <X11/Intrinsic.h>
#include <utility>

/// A pixmap made from XPM data; freed with it. The widgets that show it must go first
/// or at the same time.
class VkPixmap {
public:
    VkPixmap() = default;

    /// Makes the picture for the screen and depth of `widget`; the XPM colour with
    /// the symbolic name "background" becomes `background`. Without colours to
    /// be had it stays empty: get() is then XmUNSPECIFIED_PIXMAP.
    VkPixmap(Widget widget, const char* const* xpm, Pixel background);
    ~VkPixmap();
    VkPixmap(VkPixmap&& other) noexcept { swap(other); }
    VkPixmap& operator=(VkPixmap&& other) noexcept
    {
        swap(other);
        return *this;
    }

    Pixmap get() const { return pixmap_; }

private:
    static constexpr Pixmap NO_PIXMAP = 2; // XmUNSPECIFIED_PIXMAP

    void swap(VkPixmap& other) noexcept
    {
        std::swap(display_, other.display_);
        std::swap(pixmap_, other.pixmap_);
    }

    Display* display_ = nullptr;
    Pixmap pixmap_ = NO_PIXMAP;
};

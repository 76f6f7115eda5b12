// Texts on their way into widgets.
#pragma once

#include <Xm/Xm.h>
#include <string_view>

/// Owns the toolkit's form of a printable text.
class VkString {
public:
    explicit VkString(std::string_view text);
    ~VkString() { XmStringFree(string_); }
    VkString(const VkString&) = delete;
    VkString& operator=(const VkString&) = delete;
    XmString get() const { return string_; }

private:
    XmString string_;
};

/// Replaces the text of an XmTextField.
void VkSetText(Widget field, std::string_view text);

/// Makes an XmTextField one that only shows: not editable, not a stop for the
/// keyboard, its background from the resource "readOnlyBackground" (class
/// "ReadOnlyBackground", default "Black"), its foreground readable on that.
void VkMakeReadOnly(Widget field);

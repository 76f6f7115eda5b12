// The lines of a list widget as they were given.
#pragma once

#include <X11/Intrinsic.h>
#include <string>
#include <string_view>
#include <vector>

/// Keeps an XmList and the texts behind it in step. A line is shown in a
/// printable form; lines are compared and read back byte by byte as given, so
/// that texts which look alike stay apart. User-interface thread only.
class QD_Text_List {
public:
    /// To be called once, before anything else, with an empty XmList.
    void attach(Widget list) { list_ = list; }

    void append(std::string_view text);

    /// Removes the first line equal to `text`. Returns 0, -1 if there is none.
    int remove(std::string_view text);
    void clear();

    /// The first selected line; null if none is. Valid until the list changes.
    const std::string* selected() const;

private:
    Widget list_ = nullptr;
    std::vector<std::string> lines_;
};

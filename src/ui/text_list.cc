#include "ui/text_list.h"

#include "platform/vk/text.h"

#include <Xm/List.h>
#include <algorithm>

void QD_Text_List::append(std::string_view text)
{
    XmListAddItemUnselected(list_, VkString(text).get(), 0);
    // The widget leaves the focus frame of an empty list standing, and does not know of it later.
    if (lines_.empty() && XtIsRealized(list_))
        XClearArea(XtDisplay(list_), XtWindow(list_), 0, 0, 0, 0, True);
    lines_.emplace_back(text);
}

int QD_Text_List::remove(std::string_view text)
{
    auto line = std::find(lines_.begin(), lines_.end(), text);
    if (line == lines_.end())
        return -1;
    XmListDeletePos(list_, static_cast<int>(line - lines_.begin()) + 1);
    lines_.erase(line);
    return 0;
}

void QD_Text_List::clear()
{
    XmListDeleteAllItems(list_);
    lines_.clear();
}

const std::string* QD_Text_List::selected() const
{
    int count = 0;
    unsigned* positions = nullptr; // the widget's own, from 1
    XtVaGetValues(
        list_, XmNselectedPositionCount, &count, XmNselectedPositions, &positions, nullptr);
    if (count < 1 || positions[0] < 1 || positions[0] > lines_.size())
        return nullptr;
    return &lines_[positions[0] - 1];
}

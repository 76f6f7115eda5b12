#include "conference/base/line_reader.h"

std::string_view QD_Line_Reader::trimmed(std::string_view text)
{
    constexpr std::string_view BLANKS = " \t\r";
    const size_t begin = text.find_first_not_of(BLANKS);
    if (begin == std::string_view::npos)
        return "";
    return text.substr(begin, text.find_last_not_of(BLANKS) - begin + 1);
}

void QD_Line_Reader::take(std::string_view typed)
{
    for (char c : typed) {
        if (c != '\n') {
            if (line_.size() < MAX_LINE)
                line_ += c;
            else
                too_long_ = true;
            continue;
        }
        if (too_long_)
            out_ << "a line is longer than " << MAX_LINE << " bytes" << std::endl;
        else if (!trimmed(line_).empty())
            execute_(trimmed(line_));
        line_.clear();
        too_long_ = false;
    }
}

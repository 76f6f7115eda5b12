// Lines from what is typed, in whatever pieces it comes.
#pragma once

#include <functional>
#include <ostream>
#include <string>
#include <string_view>

/// One thread.
class QD_Line_Reader {
public:
    /// A longer line is refused as a whole, with a line on `out`.
    static constexpr size_t MAX_LINE = 256;

    /// Called for each line that is not empty, without the blanks around it.
    using Execute = std::function<void(std::string_view line)>;

    /// `out` outlives this object.
    QD_Line_Reader(std::ostream& out, Execute execute) : out_(out), execute_(std::move(execute)) {}

    /// Takes the next bytes; a line is carried out once its end has come.
    void take(std::string_view typed);

    /// `text` without blanks at its ends.
    static std::string_view trimmed(std::string_view text);

private:
    std::ostream& out_;
    const Execute execute_;
    std::string line_;
    bool too_long_ = false;
};

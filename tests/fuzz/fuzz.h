// What the fuzzers share. Each is one function from an input to whatever it makes the code under
// test do; the sanitizers, and qd_require(), say whether that was right.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <string>
#include <utility>

class QD_Fuzz_Input;

/// What a fuzzer does with an input. Nothing is read from or written to a home meanwhile, and this
/// machine is 127.0.0.1.
void qd_fuzz(QD_Fuzz_Input input);

/// What must hold whatever the input is.
inline void qd_require(bool holds)
{
    if (!holds)
        abort();
}

/// An input, read from the front; zeros once it is used up.
class QD_Fuzz_Input {
public:
    QD_Fuzz_Input(const uint8_t* data, size_t size) : rest_(data, size) {}

    bool empty() const { return rest_.empty(); }

    uint8_t byte()
    {
        if (rest_.empty())
            return 0;
        const uint8_t first = rest_[0];
        rest_ = rest_.subspan(1);
        return first;
    }

    /// A length, 16 bits big-endian, and so many bytes or what is left of them.
    std::string chunk()
    {
        const size_t high = byte();
        const size_t low = byte();
        const size_t length = std::min(high << 8 | low, rest_.size());
        const std::string taken(rest_.begin(), rest_.begin() + static_cast<ptrdiff_t>(length));
        rest_ = rest_.subspan(length);
        return taken;
    }

    /// All that is left.
    std::string rest()
    {
        const auto left = std::exchange(rest_, {});
        return {left.begin(), left.end()};
    }

private:
    std::span<const uint8_t> rest_;
};

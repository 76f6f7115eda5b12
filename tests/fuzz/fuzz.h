// What the fuzzers share. Each is one function from an input to whatever it makes the code under
// test do; the sanitizers, and qd_require(), say whether that was right.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

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
    explicit QD_Fuzz_Input(std::string_view input) : rest_(input) {}

    bool empty() const { return rest_.empty(); }

    uint8_t byte() { return empty() ? 0 : static_cast<uint8_t>(take(1)[0]); }

    /// A length, 16 bits big-endian, and so many bytes or what is left of them.
    std::string chunk()
    {
        const size_t high = byte();
        return take(high << 8 | byte());
    }

    /// All that is left.
    std::string rest() { return take(rest_.size()); }

private:
    std::string take(size_t length)
    {
        const std::string taken(rest_.substr(0, length));
        rest_.remove_prefix(taken.size());
        return taken;
    }

    std::string_view rest_;
};

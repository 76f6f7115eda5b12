#include "platform/base/utf8.h"

#include <gtest/gtest.h>

#define FFFD "\xef\xbf\xbd"

TEST(Utf8, PrintableTextStaysAndTheRestIsReplacedByteByByte)
{
    for (const auto& [in, out] : std::initializer_list<std::pair<std::string_view, const char*>> {
             {"a\xc3\xa4\xe4\xbc\x9a\xf0\x9f\x93\xb7", "a\xc3\xa4\xe4\xbc\x9a\xf0\x9f\x93\xb7"},
             {"a\xe4\xbc", "a" FFFD FFFD},                       // cut short
             {"\xc0\xaf\xe0\x80\xaf", FFFD FFFD FFFD FFFD FFFD}, // overlong forms
             {"\xed\xa0\x80", FFFD FFFD FFFD},                   // a surrogate
             {"\xf4\x90\x80\x80", FFFD FFFD FFFD FFFD},          // beyond the last character
             {{"a\n\0\xc2\x85", 5}, "a" FFFD FFFD FFFD FFFD}})   // control characters
        EXPECT_EQ(qd_printable(in), out);
}

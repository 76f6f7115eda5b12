// A choice among a few kinds of device, made by the text of an environment variable.
#pragma once

#include <cstddef>
#include <cstdio>
#include <string>

/// One kind of device. `Made` is an owning pointer.
template <class Made> struct QD_Choice {
    const char* name;
    const char* usage; // how it is written in the variable

    /// Makes the device from what stands behind the colon, empty if nothing does.
    /// Returns null and says in `why` what is wrong with it.
    Made (*make)(const std::string& argument, std::string& why);
};

/// Makes what `text` ("NAME" or "NAME:ARGUMENT"), the value of `variable`, asks
/// for; null and empty stand for the first choice. A text that names none is told
/// in one line on standard error, and gives the first choice. Any thread.
template <class Made, size_t N>
Made qd_choose(const QD_Choice<Made> (&choices)[N], const char* variable, const char* text)
{
    const std::string value = text != nullptr ? text : "";
    std::string why;
    if (!value.empty()) {
        const size_t colon = value.find(':');
        const std::string name = value.substr(0, colon);
        const std::string argument = colon == std::string::npos ? "" : value.substr(colon + 1);
        for (const QD_Choice<Made>& choice : choices) {
            if (name != choice.name)
                continue;
            if (Made made = choice.make(argument, why))
                return made;
        }
        if (why.empty()) {
            why = "not one of";
            for (const QD_Choice<Made>& choice : choices)
                why += std::string(" ") + choice.usage;
        }
        fprintf(stderr, "%s=%s: %s\n", variable, value.c_str(), why.c_str());
    }
    return choices[0].make("", why);
}

// Application data as messages carry it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

/// A view of application data; the bytes are someone else's.
struct QD_App_Record {
    static constexpr int32_t TEXT_CHAT = 6666;

    int32_t app = 0;
    int16_t kind = 0; // the sending application's own
    std::span<const uint8_t> data;

    /// The data and 15 bytes more: eight zero bytes, app, kind, the data, one zero byte.
    size_t image_size() const { return data.size() + 15; }

    /// `out` is image_size() bytes long.
    void encode(std::span<uint8_t> out) const;

    /// A view of `in`, or nothing if that is shorter than a record without data.
    static std::optional<QD_App_Record> decode(std::span<const uint8_t> in);
};

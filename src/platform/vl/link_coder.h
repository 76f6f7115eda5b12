// Codes one stream for a link: each picture as finely as the link has room for.
#pragma once

#include "platform/vl/codec.h"
#include "platform/vl/quantiser.h"

#include <vector>

/// One thread at a time.
class QD_Link_Coder {
public:
    explicit QD_Link_Coder(QD_Codec codec) : encoder_(codec) {}

    /// Starts afresh for a link of `kbps` kbit/s in `fps` pictures a second.
    /// Returns 0, or -1 if the library refuses; nothing can be coded then.
    int open(double kbps, int fps);

    /// Forgets what open() set up.
    void close() { encoder_.close(); }

    /// Codes a picture captured at `now` (seconds, on any clock) into `out`,
    /// which has room for QD_CODED_SIZE. Returns the byte count or -1.
    int encode(const char* picture, bool intra, double now, char* out);

    /// The quantiser for the next picture.
    const QD_Quantiser& get_quantiser() const { return quantiser_; }

private:
    double change_to(const char* picture);

    QD_Picture_Encoder encoder_;
    QD_Quantiser quantiser_;
    std::vector<char> last_; // the luminance of the picture before; empty at first
};

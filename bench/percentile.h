// Figures of many measurements.
#pragma once

#include <algorithm>
#include <vector>

/// The value that a share (0..1) of the values does not exceed; there is one at least.
inline double qd_percentile(std::vector<double> values, double share)
{
    std::sort(values.begin(), values.end());
    return values[static_cast<size_t>(share * static_cast<double>(values.size() - 1))];
}

inline double qd_median(const std::vector<double>& values) { return qd_percentile(values, 0.5); }

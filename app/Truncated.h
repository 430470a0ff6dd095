#pragma once

#include <cmath>
#include <limits>

/// Drops the fraction of a number of any size.
/// @return the integer part; what no int can hold becomes the nearest int, and what is no number becomes 0.
///         Progress needs both: an empty total divides by zero, and a file that grows while it is read
///         passes 100 %.
inline int truncated(float value)
{
    if (std::isnan(value)) {
        return 0;
    }
    if (value >= 2147483648.0F) {
        return std::numeric_limits<int>::max();
    }
    return value <= -2147483648.0F ? std::numeric_limits<int>::min() : static_cast<int>(value);
}

// Look-ups in long ordered tables of times, at the price of a few cache lines.
//
// Cue times are spread about evenly over a file, so a proportional guess lands near the place that is looked
// for; doubling steps from there bound it, and halving finishes. Where the guess is bad the doubling makes it
// at most twice the steps of a plain binary search.
#pragma once

#include <stddef.h>

#include <algorithm>

namespace MatroskaExtReader {

// How many of the `count` items have a key that is not greater than `wanted`. `keyOf(i)` is the key of item
// i, a number; the keys never descend.
template <typename Key, typename KeyOf>
size_t CountUpTo(Key wanted, size_t count, KeyOf keyOf) {
    if (count == 0 || keyOf(0) > wanted) return 0;
    const Key first = keyOf(0), last = keyOf(count - 1);
    if (last <= wanted) return count;
    size_t low = 0, high = count - 1;  // throughout: keyOf(low) <= wanted < keyOf(high)
    const double share = (static_cast<double>(wanted) - static_cast<double>(first)) /
                         (static_cast<double>(last) - static_cast<double>(first));
    const size_t guess = std::min(static_cast<size_t>(share * static_cast<double>(high)), high - 1);
    size_t step = 1;
    if (keyOf(guess) <= wanted) {
        for (low = guess; high - low > step && keyOf(low + step) <= wanted; step *= 2) low += step;
        high = std::min(high, low + step);
    } else {
        for (high = guess; high - low > step && keyOf(high - step) > wanted; step *= 2) high -= step;
        low = high - low > step ? high - step : low;
    }
    while (high - low > 1) {
        const size_t middle = low + (high - low) / 2;
        (keyOf(middle) <= wanted ? low : high) = middle;
    }
    return high;
}

}  // namespace MatroskaExtReader

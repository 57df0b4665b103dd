#ifndef TESSEL_UTIL_SIZEPRODUCT_H
#define TESSEL_UTIL_SIZEPRODUCT_H

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <new>

/// @file
/// Products of sizes without overflow, and arrays of such sizes. Any thread may call these.

/// The product of sizes, such as a width, a height and the bytes of a pixel. Throws
/// `std::bad_alloc` when no array can be so large, and when a factor is negative.
template <typename... Factors>
std::size_t SizeProduct(Factors... factors)
{
    constexpr std::uint64_t kMost = PTRDIFF_MAX;
    std::uint64_t product = 1;
    for (const std::uint64_t factor : {static_cast<std::uint64_t>(factors)...}) {
        // The conversion turns a negative factor into one above the limit.
        if (factor > kMost || (factor != 0 && product > kMost / factor))
            throw std::bad_alloc();
        product *= factor;
    }
    return static_cast<std::size_t>(product);
}

/// A new array. The number of its elements is the product of the factors; their values aren't set.
template <typename T, typename... Factors>
std::unique_ptr<T[]> NewArray(Factors... factors)
{
    return std::unique_ptr<T[]>(new T[SizeProduct(factors...)]);
}

#endif

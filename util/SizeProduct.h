#ifndef TESSEL_UTIL_SIZEPRODUCT_H
#define TESSEL_UTIL_SIZEPRODUCT_H

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <new>

/// @file
/// Sizes multiplied safely.

/// The product of sizes, such as of a width, a height and the bytes of a pixel: what an array is
/// allocated with. Throws `std::bad_alloc` where no array can be so large, and for a negative
/// factor, on machines of any width. No state, for any thread.
template <typename... Factors>
std::size_t SizeProduct(Factors... factors)
{
    constexpr std::uint64_t kMost = PTRDIFF_MAX;
    std::uint64_t product = 1;
    for (const std::uint64_t factor : {static_cast<std::uint64_t>(factors)...}) {
        // A negative factor becomes one that is larger than any limit.
        if (factor != 0 && product > kMost / factor)
            throw std::bad_alloc();
        product *= factor;
    }
    return static_cast<std::size_t>(product);
}

/// A new array of as many elements as the product of the factors, whose values aren't set.
template <typename T, typename... Factors>
std::unique_ptr<T[]> NewArray(Factors... factors)
{
    return std::unique_ptr<T[]>(new T[SizeProduct(factors...)]);
}

#endif

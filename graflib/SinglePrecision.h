#ifndef TESSEL_GRAFLIB_SINGLEPRECISION_H
#define TESSEL_GRAFLIB_SINGLEPRECISION_H

#include <cfloat>

/// The result of one operation, rounded to the precision of F. The x87 unit of old PCs keeps more
/// digits until a number is stored in memory. Other machines keep none, and there this function
/// does nothing. Single precision has fewer than half the digits of the x87 unit, so rounding twice
/// gives the same as rounding once. The library's own sources alone include this header.
template <typename F>
F Rounded(F value)
{
#if FLT_EVAL_METHOD == 0
    return value;
#else
    const volatile F stored = value;
    return stored;
#endif
}

/// The quotient of two whole numbers, all three rounded to single precision.
inline float Quotient(int a, int b)
{
    return Rounded(Rounded(static_cast<float>(a)) / Rounded(static_cast<float>(b)));
}

#endif

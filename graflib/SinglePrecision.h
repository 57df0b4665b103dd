#ifndef TESSEL_GRAFLIB_SINGLEPRECISION_H
#define TESSEL_GRAFLIB_SINGLEPRECISION_H

#include <cfloat>

/// A result of one operation with all its digits beyond the type's removed. The x87 unit of old PCs
/// keeps more of them until a number is stored in memory; everywhere else there are none, and this
/// costs nothing. As single precision has fewer than half the unit's digits, the second rounding
/// gives what rounding once would have given. For the library's own sources.
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

/// The quotient of two whole numbers in single precision.
inline float Quotient(int a, int b)
{
    return Rounded(Rounded(static_cast<float>(a)) / Rounded(static_cast<float>(b)));
}

#endif

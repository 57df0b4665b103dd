#ifndef TESSEL_BENCH_OPERATIONS_H
#define TESSEL_BENCH_OPERATIONS_H

#include <span>

#include "bench/PictureSet.h"

/// An operation that is timed over the whole picture set.
struct SOperation
{
    const char* mName;
    int mBits;        ///< of the pictures it works on
    int mSecondBits;  ///< of the second pictures it reads; 0: none
    /// Works on one picture. `buffer` holds more than any result and is mapped.
    void (*mRun)(SWork& work, unsigned char* buffer);
};

/// The library's operations except the scaler.
std::span<const SOperation> Operations();
/// The scaler and what it is compared with.
std::span<const SOperation> ScalerOperations();

/// Scales a picture into `dest` by OpenCV's INTER_AREA on one thread. Exists where OpenCV is
/// installed.
void ScaleByOpenCv(CGraflib& source, int width, int height, unsigned char* dest);

/// Copies the pictures an operation reads.
void CopySources(SWork& work, unsigned char* buffer);

/// Whether the scaler and its definition agree on a picture at all sizes that are timed.
bool ScalersAgree(const CPictureSet& pictures, unsigned char* buffer);

#endif

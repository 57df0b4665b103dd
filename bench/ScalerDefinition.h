#ifndef TESSEL_BENCH_SCALERDEFINITION_H
#define TESSEL_BENCH_SCALERDEFINITION_H

#include "graflib/CDataRect.h"

/// The scaler as it is defined, written down directly: for every destination pixel of a 24-bit
/// picture its rows, its columns, their weights, in sums of 32 bits. Gives the bytes that
/// CGraflib::DownScaleFix2 gives. `dest` takes width * height * 3 bytes.
void ScaleByDefinition(const CDataRect& source, int width, int height, unsigned char* dest);

/// The same size by OpenCV's INTER_AREA on one thread. Exists where OpenCV is installed.
void ScaleByOpenCv(const CDataRect& source, int width, int height, unsigned char* dest);

#endif

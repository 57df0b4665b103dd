#include <opencv2/imgproc.hpp>

#include "bench/Operations.h"

void ScaleByOpenCv(CGraflib& source, int width, int height, unsigned char* dest)
{
    cv::setNumThreads(1);
    const cv::Mat from(source.mHeight, source.mWidth, CV_8UC3, source.mData);
    cv::Mat to(height, width, CV_8UC3, dest);
    cv::resize(from, to, to.size(), 0, 0, cv::INTER_AREA);
}

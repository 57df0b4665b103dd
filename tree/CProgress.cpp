#include "tree/CProgress.h"

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iostream>

namespace {

constexpr std::chrono::milliseconds kInterval(200);
constexpr const char* kClearLine = "\r\033[K";

/// A time such as 1:02:03 or 2:03.
std::string TimeText(long seconds)
{
    char text[32];
    const long minutes = seconds / 60;
    if (minutes < 60)
        std::snprintf(text, sizeof text, "%ld:%02ld", minutes, seconds % 60);
    else
        std::snprintf(text, sizeof text, "%ld:%02ld:%02ld", minutes / 60, minutes % 60,
                      seconds % 60);
    return text;
}

}  // namespace

std::string ProgressText(long done, long total, double seconds)
{
    std::string text =
        std::to_string(done) + " of " + std::to_string(std::max(done, total)) + " pictures";
    if (done == 0 || seconds <= 0)
        return text;
    const double rate = static_cast<double>(done) / seconds;
    const double left = static_cast<double>(std::max(0L, total - done)) / rate;
    return text + ", " + std::to_string(std::lround(rate)) + " a second, " +
           TimeText(std::lround(left)) + " left";
}

CProgress::CProgress() : mIsShown(isatty(STDERR_FILENO) == 1) {}

void CProgress::Show(long done)
{
    const Clock::time_point now = Clock::now();
    if (!mIsShown || now < mNext)
        return;
    mNext = now + kInterval;
    const std::chrono::duration<double> passed = now - mStart;
    std::cerr << kClearLine << ProgressText(done, mTotal, passed.count()) << std::flush;
    mIsThere = true;
}

void CProgress::Clear()
{
    if (mIsThere)
        std::cerr << kClearLine << std::flush;
    mIsThere = false;
}

#ifndef TESSEL_TREE_CPROGRESS_H
#define TESSEL_TREE_CPROGRESS_H

#include <chrono>
#include <string>

/// The line on a terminal that says how far a run is. Elsewhere nothing is said. Used by one
/// thread.
class CProgress
{
public:
    /// For standard error.
    CProgress();
    ~CProgress() { Clear(); }
    CProgress(const CProgress&) = delete;
    CProgress& operator=(const CProgress&) = delete;

    /// True when the line is shown, so that the number of all pictures is worth finding out.
    bool IsShown() const { return mIsShown; }
    void SetTotal(long pictures) { mTotal = pictures; }
    /// Shows that so many of all pictures are done, but not more than a few times a second.
    void Show(long done);
    /// Removes the line, before something else is said.
    void Clear();

private:
    using Clock = std::chrono::steady_clock;

    bool mIsShown;
    bool mIsThere = false;
    long mTotal = 0;
    Clock::time_point mStart = Clock::now();
    Clock::time_point mNext = mStart;
};

/// The words of the line: pictures done of all, those done in a second, the time left. `seconds` is
/// the time since the run began.
std::string ProgressText(long done, long total, double seconds);

#endif

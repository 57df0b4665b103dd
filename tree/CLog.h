#ifndef TESSEL_TREE_CLOG_H
#define TESSEL_TREE_CLOG_H

#include <cstdio>
#include <string>

/// The file that keeps what the making of pictures prints. It is appended to: each run begins with
/// a line of its own, and the lines of a picture stand together. Used by one thread.
class CLog
{
public:
    /// No log.
    CLog() = default;
    CLog(const CLog&) = delete;
    CLog& operator=(const CLog&) = delete;
    ~CLog();

    /// Opens the file and writes the line that begins a run. False when that can't be.
    bool Open(const std::string& path);
    /// Adds what was printed of one picture.
    void Add(const std::string& printed);
    /// Ends the log; false when some of it could not be written.
    bool Close();

private:
    std::FILE* mStream = nullptr;
};

#endif

#ifndef TESSEL_APP_DATABASE_H
#define TESSEL_APP_DATABASE_H

#include <fcntl.h>

#include <set>
#include <string>

/// @file
/// The thumbnail database: the records of a gallery's pictures, the file that keeps them from run
/// to run, and what follows from them: which pictures are new or changed. Functions without state,
/// for any thread.
///
/// The file holds one line per picture, in ascending order of names: the name, a TAB, the time in
/// decimal, a line feed. Carriage returns are dropped when it is read, and what follows a second
/// TAB is ignored.

/// What the database knows of a picture. Records are ordered by name alone.
struct SFileInfo
{
    std::string mName;  ///< without the folder
    /// Last modification, seconds since 1970-01-01 00:00 UTC. Has no part in the order.
    mutable long mTime = 0;

    bool operator<(const SFileInfo& other) const { return mName < other.mName; }
};

/// What a picture is, beside its record.
struct SPictureState
{
    bool mMustMake = false;  ///< it needs a thumbnail: it is new or later than its record
    bool mHasTime = false;   ///< false when it can't be opened: a later run tries again
    long mTime = 0;          ///< its last modification
};

/// A database file of more bytes counts as one that can't be read. That is enough for a quarter of
/// a million pictures with names as long as names can be. The worst that a hostile file can ask for
/// is 13 million records of short names in no order: 1.3 GB of memory, and a minute.
constexpr long kMostDatabaseBytes = 1L << 26;

/// Adds the file's records to `records`, which win over records of the same name. A line without a
/// TAB is skipped, a time that holds no number counts as 0, and a last line without a line feed is
/// not read.
///
/// False where a file stands that could not be read whole, for an error of the system or lack of
/// memory, or because it is too large: no record is added then, and the file must not be
/// overwritten. True when it was read, and where there is nothing that could hold records. The
/// file's contents are then left in `text`, unless that is null.
bool ReadDatabase(const char* path, std::set<SFileInfo>* records, std::string* text = nullptr,
                  int folder = AT_FDCWD);

/// The contents of a file of all records. A name that the format can't hold is left out.
std::string DatabaseText(const std::set<SFileInfo>& records);

/// Puts a file of all records in the place of the old one (see ReplaceFile). False when that can't
/// be; the old file is then what it was.
bool WriteDatabase(const char* path, const std::set<SFileInfo>& records);

/// The modification time of a file; false when it can't be opened. Never waits for a writer. A
/// relative path begins at the open folder, or at the current one.
bool GetFileTime(const char* path, long* time, int folder = AT_FDCWD);

/// True for a picture that is not later than its record. It is not opened: one that can't be would
/// not get another thumbnail anyway. The path is that of GetFileTime.
bool IsUpToDate(const char* path, const SFileInfo& record, int folder = AT_FDCWD);

/// Asks for the picture's time. `record` is null for a picture without one. The path is that of
/// GetFileTime.
SPictureState TestPicture(const char* path, const SFileInfo* record, int folder = AT_FDCWD);

#endif

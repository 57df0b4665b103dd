#ifndef TESSEL_UTIL_CFILEIO_H
#define TESSEL_UTIL_CFILEIO_H

#include <fstream>
#include <string>
#include <vector>

/// One open file, and the services around file names and folders.
///
/// An object holds at most one file: open it, read, write or move about, close it. Opening another
/// file closes the one held before; so does destroying the object. Failures are reported by
/// results alone, never by a message or an exception (but `std::bad_alloc`).
///
/// The static functions need no object and may be called from any thread, `Fill0` without a buffer
/// excepted. One object is used by one thread at a time. Every `char*` or `char**` that is handed
/// out is a new array and belongs to the caller, `Fill0`'s again excepted.
class CFileIO
{
public:
    /// Bits of the `mode` arguments; each open adds those it needs itself.
    static constexpr int kAppend = 1;     ///< write at the end, wherever the position is
    static constexpr int kAtEnd = 2;      ///< start at the end
    static constexpr int kBinary = 4;     ///< no translation of line ends
    static constexpr int kRead = 8;       ///< allow reading
    static constexpr int kWrite = 16;     ///< allow writing
    static constexpr int kTruncate = 32;  ///< empty the file

    CFileIO() = default;
    CFileIO(const CFileIO&) = delete;
    CFileIO& operator=(const CFileIO&) = delete;
    ~CFileIO() { delete mStream; }

    // The state, to be looked at and not to be changed.
    std::fstream* mStream = nullptr;  ///< owned; null while closed, failed after a failed open
    bool mWriteOk = false;            ///< the last open for writing worked
    bool mReadOk = false;             ///< the last open for reading worked

    // --- Opening and closing -------------------------------------------------------------------

    /// Opens an existing file for reading; true when that worked.
    bool OpenFileRead(const char* name, int mode);
    /// Creates the file, or empties an existing one, for writing; true when that worked.
    bool OpenFileWrite(const char* name, int mode);
    /// Opens the file for writing behind what it holds, creating it where it is missing.
    bool OpenFileAppend(const char* name, int mode);
    /// Opens an existing file for changes in place and moves to the byte `position`. The object
    /// then counts as open for writing; false when the file is missing.
    bool OpenFileChange(const char* name, int position);
    /// Closes the file. Harmless where none is open.
    void CloseFile();

    // --- Reading -------------------------------------------------------------------------------

    /// Reads up to `count` bytes. True when the file is open for reading, also after a short read,
    /// which `IsEof` then shows.
    bool ReadBytes(void* buffer, int count);
    /// The same into a new array of `count` bytes, without a terminating zero. Null when the file
    /// isn't open for reading or `count` is negative.
    char* ReadBytes(int count);
    /// The next byte; 0 at the end of the file, which `IsEof` then shows.
    unsigned char GetChar();
    /// True when a read has met the end of the file, and when no file is open.
    bool IsEof() const;
    /// Forgets the end of the file and earlier failures, so that reading can go on after a seek.
    void Clear();
    /// Moves the read position by `count` bytes, which may be negative.
    void SkipBytes(int count);
    /// Reads one line, without its line feed and without any carriage return. True only when a
    /// line feed ended it: the rest of a file behind its last line feed is left in `line`, with
    /// the result false. An unreadable file ends like an empty one.
    bool ReadLine(std::string* line);
    /// The same into an array of characters, without a terminating zero.
    bool ReadLine(std::vector<char>* line);
    /// Reads a whole file into a new array with a zero byte behind it and sets `*size` to the
    /// file's length. Null, with `*size` -1, when it can't be opened or is larger than an int
    /// counts. A file that was open on the object is closed.
    char* ReadFile(const char* name, int* size);

    // --- Writing -------------------------------------------------------------------------------

    /// Writes `count` bytes. True when the file is open for writing.
    bool WriteBytes(const void* buffer, int count);
    /// Writes the characters of `text`, without its terminating zero.
    bool WriteString(const char* text);
    /// Writes a whole file, replacing what was there. False when it can't be opened, and for a
    /// `count` below 1, which creates no file.
    bool WriteFile(const char* name, const void* buffer, int count);

    // --- Positions, in bytes from the start of the file ----------------------------------------

    /// True when the read position is then `position`.
    bool SetReadPos(int position);
    /// Moves the read position by `offset` from the start (direction 0), from where it is (1) or
    /// from the end (2). True when the new position, counted from the start, equals `offset`.
    bool SetReadPos2(int offset, unsigned char direction);
    /// The read position; -1 when no file is open or its stream has failed.
    int GetReadPos();
    /// The write position; -1 as above.
    int GetWritePos();
    /// Moves the write position.
    void SetWritePos(unsigned int position);
    /// Moves the write position to the end of the file.
    void SetWritePosEnd();

    // --- Folders and files, by name ------------------------------------------------------------

    /// Lists a folder's entries whose names end in `pattern`, letter case aside. A '*' in front of
    /// the pattern is dropped; no other character is special. `list` is emptied, then holds the
    /// bare names in the order in which the system delivers them. Only names are looked at: folders
    /// are listed too. False, with `list` empty, when the folder can't be opened or read to its
    /// end. `folder` and `pattern` may stand in the list.
    static bool ResolveWildCard(const char* folder, const char* pattern,
                                std::vector<std::string>* list);
    /// The same as an array of strings with a null pointer behind the last, to be released with
    /// `DeleteStringList`; null when nothing matches. `*count` is set to the number of names.
    /// Writes a line with folder and pattern to standard output.
    static char** ResolveWildCard(const char* folder, const char* pattern, int* count);
    /// Releases a list made by `ResolveWildCard`. Null is ignored.
    static void DeleteStringList(char** list);
    /// Creates a folder with the permissions 0775. Always true, as an existing folder is no error:
    /// whoever must know tests for the folder itself.
    static bool CreateDir(const char* path);
    /// True when the file can be opened for reading.
    static bool FileExists(const char* path);
    /// A file's length in bytes; -1 when it can't be opened or an int can't hold its length.
    static int GetFileSize(const char* path);
    /// Always 1: attributes aren't looked at.
    static int FileAttribut(const char* path);

    // --- Names and small texts -----------------------------------------------------------------

    /// True when both strings are equal apart from letter case; false when one is null.
    static bool Strcmpx(const char* a, const char* b);
    /// What follows the last slash or, in a path without slashes, the last backslash.
    static char* ExtractFilename(const char* path);
    /// The path up to and including its last backslash or, in a path without backslashes, its last
    /// slash. A path without either is returned whole.
    static char* ExtractPath(const char* path);
    /// The name with everything from its last dot on replaced by `extension`, which brings its own
    /// dot; a name without a dot gets it appended.
    static char* ReplaceApp(const char* name, const char* extension);
    /// The format that a name's extension promises: 1 .jpg, 2 .tif, 3 .png, 4 .tga, 5 .raw,
    /// 6 .gif in any letter case; 0 for everything else and for names below five characters.
    static int GuessFileFormat(const char* name);
    /// Writes `value` in decimal, with zeros in front (of a sign, too) up to `width` characters;
    /// longer numbers stay whole. Returns `buffer`, which must hold `width` + 1 characters and at
    /// least 12.
    static char* Fill0(char* buffer, int value, int width);
    /// The same in a buffer that all callers share: the next call overwrites it. A `width` above
    /// 15 counts as 15.
    static char* Fill0(int value, int width);
    /// The decimal number at the start of the text, behind white space; 0 where there is none, or
    /// one too large, and for null.
    static int GetInt(const char* text);
    /// A copy of the text.
    static char* NewString(const char* text);

private:
    void Release();
    bool Open(const char* name, int mode);
};

#endif

#ifndef TESSEL_UTIL_CFILEIO_H
#define TESSEL_UTIL_CFILEIO_H

#include <fstream>
#include <string>
#include <vector>

/// One open file, and the services around file names and folders.
///
/// An object holds at most one file. Opening another file closes the one before, and so does
/// destroying the object. Failures show in results alone: only `std::bad_alloc` is thrown, and
/// nothing is printed.
///
/// The static functions need no object and may be called from any thread; only `Fill0` without a
/// buffer may not. One object is used by one thread at a time. Every `char*` or `char**` that is
/// returned is a new array and belongs to the caller, except for those of `Fill0`.
class CFileIO
{
public:
    /// Bits of the `mode` arguments. Each function that opens a file adds the bits it needs.
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

    // The state. Programs may read it and must not change it.
    std::fstream* mStream = nullptr;  ///< owned; null while closed, failed after a failed open
    bool mWriteOk = false;            ///< the last open for writing worked; false once closed
    bool mReadOk = false;             ///< the last open for reading worked; false once closed

    // --- Opening and closing -------------------------------------------------------------------

    // mReadOk and mWriteOk are independent: opening a file for writing leaves mReadOk as it was,
    // and opening one for reading leaves mWriteOk as it was. CloseFile clears both.

    /// Opens an existing file for reading; true when that worked.
    bool OpenFileRead(const char* name, int mode);
    /// Opens a file for writing: creates it, or empties an existing one. With `kRead` alone in
    /// `mode`, the file must exist and keeps its contents. True when that worked.
    bool OpenFileWrite(const char* name, int mode);
    /// Opens a file for writing at its end, and creates a missing one. True when that worked.
    bool OpenFileAppend(const char* name, int mode);
    /// Opens an existing file to change it in place, and moves to the byte `position`. The object
    /// is then open for writing. False when the file is missing; `position` isn't checked.
    bool OpenFileChange(const char* name, int position);
    /// Closes the file. Does nothing when no file is open.
    void CloseFile();

    // --- Reading -------------------------------------------------------------------------------

    /// Reads up to `count` bytes. Returns mReadOk, whatever was read: `IsEof` tells of fewer bytes.
    bool ReadBytes(void* buffer, int count);
    /// The same into a new array of `count` bytes, without a terminating zero. Null when mReadOk is
    /// false or `count` is negative.
    char* ReadBytes(int count);
    /// The next byte; 0 when there is none. `IsEof` tells a byte 0 from the end of the file.
    unsigned char GetChar();
    /// True when a read has met the end of the file, and while mStream is null.
    bool IsEof() const;
    /// Forgets the end of the file and earlier failures. A seek and further reads then work again.
    void Clear();
    /// Moves the read position by `count` bytes, which may be negative.
    void SkipBytes(int count);
    /// Reads one line into `line`, without its line feed and without any carriage return. Returns
    /// false when no line feed ends the line: `line` then has what the file holds after its last
    /// line feed. A file that can't be read looks like an empty one.
    bool ReadLine(std::string* line);
    /// The same into an array of characters, without a terminating zero.
    bool ReadLine(std::vector<char>* line);
    /// Reads a whole file into a new array, adds a zero byte, and sets `*size` to the file's
    /// length. Null, with `*size` -1, when the file can't be opened or an int can't hold its
    /// length. The object holds no file afterwards.
    char* ReadFile(const char* name, int* size);

    // --- Writing -------------------------------------------------------------------------------

    /// Writes `count` bytes. Returns mWriteOk, even when the bytes can't be written: the state of
    /// mStream tells that.
    bool WriteBytes(const void* buffer, int count);
    /// Writes the characters of `text`, without its terminating zero. The result is the same.
    bool WriteString(const char* text);
    /// Writes a whole file and replaces an old one. False when it can't be opened, and for a
    /// `count` below 1, which creates no file. A write that fails later isn't reported.
    bool WriteFile(const char* name, const void* buffer, int count);

    // --- Positions, in bytes from the start of the file ----------------------------------------

    /// Moves the read position. True when it is then `position`.
    bool SetReadPos(int position);
    /// Moves the read position by `offset` from the start (direction 0), from where it is (1) or
    /// from the end (2). True when the new position, counted from the start, equals `offset`. False
    /// for another direction, which moves nothing.
    bool SetReadPos2(int offset, unsigned char direction);
    /// The read position; -1 when no file is open or its stream has failed.
    int GetReadPos();
    /// The write position; -1 in the same cases.
    int GetWritePos();
    /// Moves the write position.
    void SetWritePos(unsigned int position);
    /// Moves the write position to the end of the file.
    void SetWritePosEnd();

    // --- Folders and files, by name ------------------------------------------------------------

    /// Lists the entries of a folder whose names end in `pattern`, in any letter case. One '*' at
    /// the start of the pattern is dropped; no other character is special. `list` is emptied and
    /// then filled with the bare names, in the order in which the system delivers them. Folders are
    /// listed, too. False, with `list` empty, when the folder can't be opened or can't be read to
    /// its end. `folder` and `pattern` may be elements of `list`.
    static bool ResolveWildCard(const char* folder, const char* pattern,
                                std::vector<std::string>* list);
    /// The same as an array of strings that ends in a null pointer; `DeleteStringList` releases it.
    /// Null when nothing matches. `*count` is set to the number of names. Writes a line with folder
    /// and pattern to standard output.
    static char** ResolveWildCard(const char* folder, const char* pattern, int* count);
    /// Releases a list made by `ResolveWildCard`. Null is ignored.
    static void DeleteStringList(char** list);
    /// Creates a folder with the permissions 0775, less those that the process's umask takes away.
    /// Always true, also when the folder exists or can't be made: a caller that must know looks for
    /// the folder itself.
    static bool CreateDir(const char* path);
    /// True when the file can be opened for reading. Folders can, too.
    static bool FileExists(const char* path);
    /// A file's length in bytes; -1 when it can't be opened or an int can't hold its length.
    static int GetFileSize(const char* path);
    /// Always 1, whatever the file is.
    static int FileAttribut(const char* path);

    // --- Names and small texts -----------------------------------------------------------------

    /// True when both strings are equal apart from letter case; false when one is null.
    static bool Strcmpx(const char* a, const char* b);
    /// The part of a path after its last slash, or, in a path without slashes, after its last
    /// backslash. A path without either is returned whole.
    static char* ExtractFilename(const char* path);
    /// The path up to and including its last backslash or, in a path without backslashes, its last
    /// slash. A path without either is returned whole.
    static char* ExtractPath(const char* path);
    /// The name with `extension` in place of everything from its last dot on. `extension` has a dot
    /// of its own. It is appended to a name without a dot.
    static char* ReplaceApp(const char* name, const char* extension);
    /// The file format by a name's extension, in any letter case: 1 .jpg, 2 .tif, 3 .png, 4 .tga,
    /// 5 .raw, 6 .gif. 0 for other names and for names below five characters.
    static int GuessFileFormat(const char* name);
    /// Writes `value` in decimal and fills up to `width` characters with zeros at the start, before
    /// a sign, too. Longer numbers stay whole. Returns `buffer`, which must hold `width` + 1
    /// characters and at least 12.
    static char* Fill0(char* buffer, int value, int width);
    /// The same in a buffer that all callers share: the next call overwrites it. A `width` above
    /// 15 counts as 15.
    static char* Fill0(int value, int width);
    /// The decimal number at the start of the text, after white space. 0 when there is none, when
    /// an int can't hold it, and for null.
    static int GetInt(const char* text);
    /// A copy of the text.
    static char* NewString(const char* text);

private:
    void Release();
    bool Open(const char* name, int mode);
};

#endif

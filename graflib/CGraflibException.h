#ifndef TESSEL_GRAFLIB_CGRAFLIBEXCEPTION_H
#define TESSEL_GRAFLIB_CGRAFLIBEXCEPTION_H

#include <exception>
#include <string>

/// @file
/// What the image library throws.

/// The codes of CGraflibException.
enum EGraflibError : int {
    GLIB_ERR_READ = 1,      ///< a file can't be read; mInfo is its name
    GLIB_ERR_WRITE = 2,     ///< a file can't be written; mInfo is its name
    GLIB_ERR_SIZE = 4,      ///< two pictures differ in size; mInfo is the operation's name
    GLIB_ERR_NOT32BIT = 5,  ///< the other picture must have 32 bits; mInfo as above
    GLIB_ERR_NOT24BIT = 6,  ///< this picture must have 24 bits; mInfo as above
};

/// What the image library throws, by value. It owns its texts. CGraflib::ShowGlibError prints other
/// texts, for the codes 4 to 6 alone.
class CGraflibException : public std::exception
{
public:
    /// `code` is one of EGraflibError; `info` is the name of a file or of an operation.
    CGraflibException(int code, const std::string& info)
        : mCode(code), mInfo(info), mText(info + ": " + Reason(code))
    {
    }

    /// mInfo and what is wrong, such as "photo.jpg: can't be read". The text doesn't follow later
    /// changes of the fields.
    const char* what() const noexcept override { return mText.c_str(); }

    int mCode;          ///< one of EGraflibError
    std::string mInfo;  ///< the file's name, or the operation's

private:
    static const char* Reason(int code)
    {
        switch (code) {
            case GLIB_ERR_READ:
                return "can't be read";
            case GLIB_ERR_WRITE:
                return "can't be written";
            case GLIB_ERR_SIZE:
                return "the pictures differ in size";
            case GLIB_ERR_NOT32BIT:
                return "the other picture must have 32 bits";
            case GLIB_ERR_NOT24BIT:
                return "this picture must have 24 bits";
            default:
                return "failed";
        }
    }

    std::string mText;
};

#endif

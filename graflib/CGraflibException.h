#ifndef TESSEL_GRAFLIB_CGRAFLIBEXCEPTION_H
#define TESSEL_GRAFLIB_CGRAFLIBEXCEPTION_H

#include <exception>
#include <string>

/// The codes of CGraflibException.
enum EGraflibError : int {
    GLIB_ERR_READ = 1,      ///< a file can't be read; mInfo is its name
    GLIB_ERR_WRITE = 2,     ///< a file can't be written; mInfo is its name
    GLIB_ERR_SIZE = 4,      ///< two pictures differ in size; mInfo is the operation's name
    GLIB_ERR_NOT32BIT = 5,  ///< the other picture must have 32 bits; mInfo as above
    GLIB_ERR_NOT24BIT = 6,  ///< this picture must have 24 bits; mInfo as above
};

/// What the image library throws, by value. CGraflib::ShowGlibError prints the texts of the codes
/// from 4 on.
class CGraflibException : public std::exception
{
public:
    CGraflibException(int code, const std::string& info) : mCode(code), mInfo(info) {}

    const char* what() const noexcept override { return mInfo.c_str(); }

    int mCode;
    std::string mInfo;
};

#endif

#ifndef TESSEL_TREE_NATURALORDER_H
#define TESSEL_TREE_NATURALORDER_H

#include <string_view>

/// True if one name or path comes before another in the order in which people look for them:
/// numbers count, of any length (IMG_9 before IMG_10), upper and lower case of ASCII letters are
/// equal, as in file managers, and a folder is followed by those in it. Names that this makes
/// equal, such as A1 and a01, are ordered by their bytes, so that only the same name is equal to
/// itself. Depends on no locale. For any thread.
bool IsBefore(std::string_view left, std::string_view right);

#endif

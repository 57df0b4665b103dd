#ifndef TESSEL_APP_REPLACEFILE_H
#define TESSEL_APP_REPLACEFILE_H

#include <fcntl.h>

#include <string>
#include <string_view>

/// @file
/// Whole files that take the place of older ones without a moment in which there is neither.
/// Functions without state, for any thread.

/// Puts a file with the contents `text` in the place of `path`, where MayReplace allows it. False
/// where that can't be; the old file is then what it was.
///
/// Where a file stands, the new one is written as a draft in DraftFolderOf(path), and the drafts of
/// killed runs are removed there. Where a draft is forbidden, such as in a folder that can't be
/// changed, the file is overwritten in place, once there is room for all of it.
bool ReplaceFile(const std::string& path, std::string_view text);

/// Whether the regular file at `path` has just these contents; the caller knows that there is one,
/// or none at all. A relative path begins at the open folder, or at the current one.
bool HasContents(const std::string& path, std::string_view text, int folder = AT_FDCWD);

/// Ends the name of a folder of drafts.
constexpr const char* kDraftSuffix = ".new";

/// The folder in which ReplaceFile writes drafts of the file at `path`.
std::string DraftFolderOf(const std::string& path);

/// Removes a folder of drafts, where killed runs have left one.
void RemoveLeftDrafts(const std::string& folder);

#endif

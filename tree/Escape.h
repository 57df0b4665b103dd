#ifndef TESSEL_TREE_ESCAPE_H
#define TESSEL_TREE_ESCAPE_H

#include <string>
#include <string_view>

/// @file
/// How names get into pages and onto terminals. A name is any row of bytes: it may hold markup,
/// control characters, or bytes that are no UTF-8. Functions without state, for any thread.

/// Text for HTML, also between quotes in an attribute: & < > " ' become references, a control
/// character becomes `?`, and a byte that has no place in UTF-8 becomes U+FFFD.
std::string EscapeText(std::string_view text);

/// A relative path as a link. Letters, digits and - . _ ~ / stay, every other byte is percent
/// encoded, so that the link leads to exactly this path and needs no more care in an attribute.
std::string EscapeLink(std::string_view path);

/// A line for a terminal: a control character becomes `?`, so that no name can clear the screen or
/// begin a line of its own. Other bytes stay as they are, those that are no UTF-8 among them.
std::string Printable(std::string_view text);

#endif

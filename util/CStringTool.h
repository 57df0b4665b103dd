#ifndef TESSEL_UTIL_CSTRINGTOOL_H
#define TESSEL_UTIL_CSTRINGTOOL_H

#include <charconv>
#include <concepts>
#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

/// Small operations on text: splitting into fields, unquoting, reading numbers.
///
/// The class holds nothing. Its functions may be called with or without an object, from any thread.
class CStringTool
{
public:
    /// Splits `text` at every `separator` and appends the fields to `fields`, which keeps what it
    /// holds. A text with n separators gives n + 1 fields, which may be empty; an empty text gives
    /// one empty field. Returns the number of elements that `fields` then has.
    static int SplitString(std::string text, std::vector<std::string>* fields, char separator);

    /// Removes one pair of double quotes around the text; any other text stays as it is. A text
    /// that is a single double quote becomes empty.
    static void TrimString(std::string* text);

    /// Reads the value at the start of the text as a stream's `>>` does: it skips white space first
    /// and ignores everything after the value. Gives T() for a text without a value, and for a
    /// value that T cannot hold.
    template <typename T>
    static T StringTo(const std::string& text);

private:
    static const char* SkipToNumber(const std::string& text);
};

template <typename T>
T CStringTool::StringTo(const std::string& text)
{
    // The same as a stream reads, but making a stream takes much longer.
    if constexpr (std::same_as<T, int> || std::same_as<T, long> || std::same_as<T, std::int64_t>) {
        T value = 0;
        std::from_chars(SkipToNumber(text), text.data() + text.size(), value);
        return value;
    }
    std::stringstream stream(text);
    T value{};
    return stream >> value ? value : T{};
}

#endif

#include "util/CStringTool.h"

#include <algorithm>
#include <cctype>

// The text is passed by value because it may be an element of `fields`, which moves as it grows.
int CStringTool::SplitString(std::string text,  // NOLINT(performance-unnecessary-value-param)
                             std::vector<std::string>* fields, char separator)
{
    std::string::size_type start = 0;
    for (auto end = text.find(separator); end != std::string::npos;
         end = text.find(separator, start)) {
        fields->emplace_back(text, start, end - start);
        start = end + 1;
    }
    fields->emplace_back(text, start);
    return static_cast<int>(fields->size());
}

void CStringTool::TrimString(std::string* text)
{
    if (text->empty() || text->front() != '"' || text->back() != '"')
        return;
    text->pop_back();
    if (!text->empty())
        text->erase(0, 1);
}

/// The place where std::from_chars finds the number: after white space and one plus sign.
const char* CStringTool::SkipToNumber(const std::string& text)
{
    const char* const end = text.data() + text.size();
    const char* start = std::find_if_not(
        text.data(), end, [](unsigned char character) { return std::isspace(character) != 0; });
    const bool plus = end - start >= 2 && start[0] == '+' && start[1] != '-';
    return plus ? start + 1 : start;
}

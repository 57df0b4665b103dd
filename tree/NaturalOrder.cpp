#include "tree/NaturalOrder.h"

#include <algorithm>
#include <cstddef>

namespace {

constexpr std::string_view kDigits = "0123456789";

bool BeginsWithDigit(std::string_view text)
{
    return kDigits.find(text.front()) != std::string_view::npos;
}

/// Where a text first has another character than those.
std::size_t FindOther(std::string_view text, std::string_view characters)
{
    return std::min(text.find_first_not_of(characters), text.size());
}

/// Takes the digits that a text begins with from it. Gives them without leading zeros, so that the
/// longer one of two numbers is the larger one, and none of them is too large.
std::string_view TakeNumber(std::string_view& text)
{
    text.remove_prefix(FindOther(text, "0"));
    const std::string_view number = text.substr(0, FindOther(text, kDigits));
    text.remove_prefix(number.size());
    return number;
}

int CompareNumbers(std::string_view left, std::string_view right)
{
    if (left.size() != right.size())
        return left.size() < right.size() ? -1 : 1;
    return left.compare(right);
}

/// Takes a character from a text. Gives its place in the order, in which nothing stands between a
/// folder and what is in it.
int TakePlace(std::string_view& text)
{
    const auto character = static_cast<unsigned char>(text.front());
    text.remove_prefix(1);
    if (character == '/')
        return 0;
    return character >= 'A' && character <= 'Z' ? character - 'A' + 'a' : character;
}

/// Below, at or above 0, as the left text comes before the right one, is equal, or comes behind.
int Compare(std::string_view left, std::string_view right)
{
    while (!left.empty() && !right.empty()) {
        int order = 0;
        if (BeginsWithDigit(left) && BeginsWithDigit(right))
            order = CompareNumbers(TakeNumber(left), TakeNumber(right));
        else
            order = TakePlace(left) - TakePlace(right);
        if (order != 0)
            return order;
    }
    return static_cast<int>(!left.empty()) - static_cast<int>(!right.empty());
}

}  // namespace

bool IsBefore(std::string_view left, std::string_view right)
{
    const int order = Compare(left, right);
    return order != 0 ? order < 0 : left < right;
}

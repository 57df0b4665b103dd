#include "tree/Escape.h"

#include <cstddef>

namespace {

constexpr char32_t kReplacement = 0xfffd;  // stands for what is no character
constexpr const char* kReplacementText = "\xef\xbf\xbd";
constexpr const char* kControlText = "?";

struct SCharacter
{
    char32_t mCode = kReplacement;
    std::string_view mBytes;
};

/// How many bytes a character in UTF-8 has that begins with this one; 0 if none does.
std::size_t BytesOfCharacter(unsigned char first)
{
    if (first < 0x80)
        return 1;
    if (first < 0xc0)
        return 0;
    if (first < 0xe0)
        return 2;
    if (first < 0xf0)
        return 3;
    return first < 0xf8 ? 4 : 0;
}

/// True unless a code has a shorter form than one of so many bytes, or is none of Unicode's.
bool IsCodeOfLength(char32_t code, std::size_t length)
{
    constexpr char32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool isSurrogate = code >= 0xd800 && code <= 0xdfff;
    return code >= kSmallest[length] && code <= 0x10ffff && !isSurrogate;
}

/// The character that a text begins with, or its first byte as a replacement.
SCharacter FirstCharacter(std::string_view text)
{
    const SCharacter none = {kReplacement, text.substr(0, 1)};
    const auto first = static_cast<unsigned char>(text.front());
    const std::size_t length = BytesOfCharacter(first);
    if (length == 0 || length > text.size())
        return none;
    if (length == 1)
        return {first, text.substr(0, 1)};
    char32_t code = first & (0x7fU >> length);
    for (std::size_t i = 1; i < length; ++i) {
        const auto next = static_cast<unsigned char>(text[i]);
        if ((next & 0xc0) != 0x80)
            return none;
        code = (code << 6) | (next & 0x3fU);
    }
    return IsCodeOfLength(code, length) ? SCharacter{code, text.substr(0, length)} : none;
}

/// Takes the character that a text begins with from it.
SCharacter TakeCharacter(std::string_view& text)
{
    const SCharacter character = FirstCharacter(text);
    text.remove_prefix(character.mBytes.size());
    return character;
}

/// Of both sets, C0 with DEL and C1, which terminals obey also in UTF-8.
bool IsControl(char32_t code)
{
    return code < 0x20 || (code >= 0x7f && code <= 0x9f);
}

std::string_view EscapeCharacter(const SCharacter& character)
{
    switch (character.mCode) {
        case '&':
            return "&amp;";
        case '<':
            return "&lt;";
        case '>':
            return "&gt;";
        case '"':
            return "&quot;";
        case '\'':
            return "&#39;";
        case kReplacement:
            return kReplacementText;
        default:
            return IsControl(character.mCode) ? kControlText : character.mBytes;
    }
}

}  // namespace

std::string EscapeText(std::string_view text)
{
    std::string escaped;
    while (!text.empty())
        escaped += EscapeCharacter(TakeCharacter(text));
    return escaped;
}

std::string EscapeLink(std::string_view path)
{
    constexpr std::string_view kPlain =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~/";
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string link;
    for (const char character : path) {
        const auto byte = static_cast<unsigned char>(character);
        if (kPlain.find(character) != std::string_view::npos)
            link += character;
        else
            link += {'%', kDigits[byte >> 4], kDigits[byte & 0xf]};
    }
    return link;
}

std::string Printable(std::string_view text)
{
    std::string printable;
    while (!text.empty()) {
        const SCharacter character = TakeCharacter(text);
        printable += IsControl(character.mCode) ? kControlText : character.mBytes;
    }
    return printable;
}

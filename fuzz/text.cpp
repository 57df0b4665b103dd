// Strings, names and lines.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/Fuzz.h"
#include "util/CFileIO.h"
#include "util/CStringTool.h"

namespace {

std::string Own(char* text)
{
    const std::unique_ptr<char[]> owner(text);
    return text;
}

void CheckSplit(const std::string& text, char separator)
{
    std::vector<std::string> fields;
    CStringTool::SplitString(text, &fields, separator);
    std::string joined = fields[0];
    for (std::size_t i = 1; i < fields.size(); ++i)
        joined += separator + fields[i];
    Require(joined == text, "split fields join to the text");
}

void CheckNames(const std::string& text)
{
    const char* name = text.c_str();
    const std::string bare = Own(CFileIO::ExtractFilename(name));
    const std::string folder = Own(CFileIO::ExtractPath(name));
    Require(std::string(name).ends_with(bare), "a file's name ends its path");
    Require(std::string(name).starts_with(folder), "a folder begins a path");
    Require(Own(CFileIO::ReplaceApp(name, ".x")).ends_with(".x"), "extensions are replaced");
    Require(CFileIO::Strcmpx(name, name), "a name equals itself");
    const int format = CFileIO::GuessFileFormat(name);
    Require(format >= 0 && format <= 6, "there are six formats");
    char buffer[32];
    const int number = CFileIO::GetInt(name);
    Require(CFileIO::GetInt(CFileIO::Fill0(buffer, number, 12)) == number || number < 0,
            "a filled number keeps its value");
    Require(CStringTool::StringTo<int>(text) == number || text.size() != std::strlen(name),
            "both ways of reading a number agree");
}

void CheckLines(const std::string& text)
{
    const ScratchFile content(text);
    CFileIO file;
    Require(file.OpenFileRead(content.Path().c_str(), CFileIO::kBinary), "the file opens");
    std::string all;
    std::string line;
    while (file.ReadLine(&line))
        all += line + '\n';
    std::string expected = text;
    std::erase(expected, '\r');
    Require(all + line == expected, "lines join to the file");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string text(AsText(data, size));
    CheckSplit(text, text.empty() ? ',' : text[0]);
    CheckNames(text);
    CheckLines(text);
    std::string trimmed = text;
    CStringTool::TrimString(&trimmed);
    Require(trimmed.size() + 2 >= text.size(), "two quotes are removed at most");
    return 0;
}

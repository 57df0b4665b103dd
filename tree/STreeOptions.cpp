// To add an option: give STreeOptions a field; add a row to kFlags, or to Values() if the option
// takes a value, and its lines to UsageText. If it changes what is made in a folder, say so in the
// row of kFlags, or hand it on in ArgumentsForMachine. Then describe it in docs/tessel-tree.1 and
// complete it in app/tessel.bash-completion.
#include "tree/STreeOptions.h"

#include <strings.h>

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstring>
#include <iterator>
#include <optional>
#include <string_view>
#include <system_error>

#include "tree/Escape.h"
#include "util/CStringTool.h"

namespace {

constexpr const char* kSizeOption = "-tsize";
constexpr const char* kJobsOption = "-j";
constexpr const char* kExcludeOption = "--exclude";
constexpr int kLargestNumber = 32767;  // what a thumbnail's side can be, and a system's processes

struct SFlag
{
    std::string_view mName;
    bool STreeOptions::*mField;
    bool mIsForMachines;  // changes what is made in a folder
};

constexpr SFlag kFlags[] = {
    {"--upright", &STreeOptions::mUpright, true}, {"--profile", &STreeOptions::mProfile, true},
    {"--fast", &STreeOptions::mFast, true},       {"--repair", &STreeOptions::mRepair, true},
    {"--remake", &STreeOptions::mRemake, true},   {"--only", &STreeOptions::mOnly, true},
    {"--page", &STreeOptions::mPage, false},      {"--prune", &STreeOptions::mPrune, false},
    {"--help", &STreeOptions::mHelp, false},      {"--version", &STreeOptions::mVersion, false}};

struct SValue
{
    std::string_view mName;
    std::string mWanted;                                    // what the value must be
    bool (*mTake)(STreeOptions&, const std::string& text);  // false if it isn't
};

bool TakeNumber(int& number, const std::string& text)
{
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && stop == end && number >= 1 && number <= kLargestNumber;
}

bool TakeSize(STreeOptions& options, const std::string& text)
{
    return TakeNumber(options.mThumbSize, text);
}

bool TakeJobs(STreeOptions& options, const std::string& text)
{
    return TakeNumber(options.mJobs, text);
}

bool TakeExcluded(STreeOptions& options, const std::string& text)
{
    options.mExcluded.push_back(text);
    return !text.empty() && text.find('/') == std::string::npos;
}

/// A name that begins with a minus sign would be an option to the program that logs in there.
bool TakeMachines(STreeOptions& options, const std::string& text)
{
    std::vector<std::string> machines;
    CStringTool::SplitString(text, &machines, ',');
    options.mMachines.insert(options.mMachines.end(), machines.begin(), machines.end());
    return std::none_of(machines.begin(), machines.end(), [](const std::string& machine) {
        return machine.empty() || machine.front() == '-';
    });
}

/// A name that tessel would list.
bool IsPicture(const std::string& name)
{
    const std::string ending = kPicturePattern + 1;  // but the star
    return name.size() >= ending.size() &&
           strcasecmp(name.c_str() + name.size() - ending.size(), ending.c_str()) == 0;
}

/// A log takes the place of what stands there, which must not be one of the originals.
bool TakeLog(STreeOptions& options, const std::string& text)
{
    options.mLog = text;
    return !text.empty() && !IsPicture(text);
}

bool TakeOrder(STreeOptions& options, const std::string& text)
{
    options.mByTime = text == "time";
    return options.mByTime || text == "name";
}

const std::vector<SValue>& Values()
{
    static const std::string number = "a number from 1 to " + std::to_string(kLargestNumber);
    static const std::vector<SValue> values = {
        {kSizeOption, number, TakeSize},
        {"--tsize", number, TakeSize},
        {kJobsOption, number, TakeJobs},
        {kExcludeOption, "the name of a folder, without a slash", TakeExcluded},
        {"-S", "names of machines, with commas between them", TakeMachines},
        {"--log", "the name of a file that is no picture", TakeLog},
        {"--sort", "time or name", TakeOrder}};
    return values;
}

template <typename Rows>
auto FindRow(const Rows& rows, const std::string& name)
{
    const auto hasName = [&name](const auto& row) { return row.mName == name; };
    const auto row = std::find_if(std::begin(rows), std::end(rows), hasName);
    return row == std::end(rows) ? nullptr : &*row;
}

/// An argument that is an option, and the value in it.
struct SOption
{
    std::string mName;
    std::optional<std::string> mValue;
};

/// A minus sign alone is the name of a file.
bool IsOption(const std::string& argument)
{
    return argument.size() > 1 && argument[0] == '-';
}

bool IsJobsWithNumber(const std::string& argument)
{
    const std::size_t length = std::strlen(kJobsOption);
    return argument.compare(0, length, kJobsOption) == 0 && argument.size() > length &&
           argument[length] >= '0' && argument[length] <= '9';
}

SOption TakeApart(const std::string& argument)
{
    if (IsJobsWithNumber(argument))
        return {kJobsOption, argument.substr(std::strlen(kJobsOption))};
    const std::size_t equals = argument.find('=');
    if (equals == std::string::npos)
        return {argument, std::nullopt};
    return {argument.substr(0, equals), argument.substr(equals + 1)};
}

using Argument = std::vector<std::string>::const_iterator;

/// Takes in the option at `argument`, and its value, which may be the next argument unless that is
/// an option: where a value was forgotten, the next option shall not be lost as well. Returns the
/// last argument that belongs to it.
Argument TakeOption(STreeOptions& options, Argument argument, Argument end)
{
    auto [name, text] = TakeApart(*argument);
    if (const SFlag* const flag = FindRow(kFlags, name)) {
        if (text)
            throw CUsageError(name + " takes no value");
        options.*flag->mField = true;
        return argument;
    }
    const SValue* const value = FindRow(Values(), name);
    if (!value)
        throw CUsageError("unknown option: " + Printable(name));
    if (!text && argument + 1 != end && !IsOption(argument[1]))
        text = *++argument;
    if (!text || !value->mTake(options, *text))
        throw CUsageError(name + " wants " + value->mWanted);
    return argument;
}

bool IsSamePath(std::string left, std::string right)
{
    for (std::string* const path : {&left, &right})
        path->erase(path->find_last_not_of('/') + 1);
    return left == right;
}

void CheckFolders(const STreeOptions& options)
{
    if (options.mFolders.empty() && !options.mHelp && !options.mVersion)
        throw CUsageError("which folders?");
    for (const std::string& folder : options.mFolders) {
        if (folder.empty())
            throw CUsageError("a folder has no name");
        if (!options.mLog.empty() && IsSamePath(folder, options.mLog))
            throw CUsageError("--log wants a file, not one of the folders");
    }
}

}  // namespace

STreeOptions ParseOptions(const std::vector<std::string>& arguments)
{
    STreeOptions options;
    bool isBehindOptions = false;
    for (auto argument = arguments.begin(); argument != arguments.end(); ++argument) {
        if (isBehindOptions || !IsOption(*argument))
            options.mFolders.push_back(*argument);
        else if (*argument == "--")
            isBehindOptions = true;
        else
            argument = TakeOption(options, argument, arguments.end());
    }
    CheckFolders(options);
    return options;
}

std::vector<std::string> ArgumentsForMachine(const STreeOptions& options)
{
    std::vector<std::string> arguments = {kSizeOption, std::to_string(options.mThumbSize)};
    if (options.mJobs > 0)
        arguments.insert(arguments.end(), {kJobsOption, std::to_string(options.mJobs)});
    for (const std::string& name : options.mExcluded)
        arguments.push_back(std::string(kExcludeOption) + "=" + name);
    for (const SFlag& flag : kFlags) {
        if (flag.mIsForMachines && options.*flag.mField)
            arguments.emplace_back(flag.mName);
    }
    return arguments;
}

const char* UsageText()
{
    return R"(Usage: tessel-tree [OPTION]... FOLDER...

Makes the gallery of every folder at or below each FOLDER that holds a *.jpg,
or held one, on all cores.

Which folders:
  --exclude NAME    enter no folders of this name; may be repeated
  --only            the FOLDERs themselves, not those below them
Thumbnails:
  -tsize PIXELS     the longer side, instead of 192
  --upright         turn them as the camera was held
  --profile         keep the pictures' colour profiles
  --fast            let the decoder shrink pictures first: faster, less exact
  --repair          make again those that are missing, or wrong in size or time
  --remake          make all again
  --prune           remove those of pictures that are gone
Pages for today's browsers:
  --page            write a gallery.html beside each index.html, and for each
                    FOLDER a galleries.html that leads to them
  --sort=ORDER      of pictures on them: name, or time with the oldest first
How it runs:
  -j JOBS           so many at a time on each machine, instead of one a core
  -S MACHINES       run on these, with commas between them; : is this one
  --log FILE        keep what tessel prints
  --help, --version say this, or which version this is

Options may stand anywhere; what follows -- are folders.
)";
}

#include "tree/STreeOptions.h"

#include <gmock/gmock.h>

#include "tests/support/TestSupport.h"
#include "util/CStringTool.h"

using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Le;
using testing::SizeIs;

namespace {

struct SFlagRow
{
    const char* mName;
    bool STreeOptions::*mField;
};

const SFlagRow kFlags[] = {
    {"--upright", &STreeOptions::mUpright}, {"--profile", &STreeOptions::mProfile},
    {"--fast", &STreeOptions::mFast},       {"--repair", &STreeOptions::mRepair},
    {"--remake", &STreeOptions::mRemake},   {"--only", &STreeOptions::mOnly},
    {"--page", &STreeOptions::mPage},       {"--prune", &STreeOptions::mPrune},
    {"--help", &STreeOptions::mHelp},       {"--version", &STreeOptions::mVersion}};

std::string ErrorOf(const Names& arguments)
{
    try {
        ParseOptions(arguments);
    } catch (const CUsageError& error) {
        return error.what();
    }
    return "none";
}

}  // namespace

TEST(STreeOptions, EachFlagSetsItsOwnFieldAlone)
{
    for (const SFlagRow& given : kFlags) {
        const STreeOptions options = ParseOptions({given.mName, "photos"});
        for (const SFlagRow& field : kFlags)
            EXPECT_EQ(options.*field.mField, &field == &given) << given.mName << field.mName;
    }
}

TEST(STreeOptions, ValuesFollowInTheNextArgumentOrBehindAnEqualsSign)
{
    for (const Names& arguments :
         {Names{"-tsize", "32767", "a"}, {"-tsize=32767", "a"}, {"--tsize", "32767", "a"}})
        EXPECT_EQ(ParseOptions(arguments).mThumbSize, 32767) << testing::PrintToString(arguments);
    for (const Names& arguments : {Names{"-j", "4", "a"}, {"-j=4", "a"}, {"-j4", "a"}})
        EXPECT_EQ(ParseOptions(arguments).mJobs, 4) << testing::PrintToString(arguments);
    EXPECT_EQ(ParseOptions({"--log", "-", "a"}).mLog, "-");
    EXPECT_EQ(ParseOptions({"--log=--a=b", "a"}).mLog, "--a=b");
    EXPECT_TRUE(ParseOptions({"--sort=time", "a"}).mByTime);
    EXPECT_FALSE(ParseOptions({"--sort", "time", "--sort", "name", "a"}).mByTime);
}

TEST(STreeOptions, ExcludedNamesAndMachinesAddUp)
{
    const STreeOptions options = ParseOptions(
        {"--exclude", "old", "--exclude=new", "-S", ":,ann@north", "-S=south", "photos"});
    EXPECT_THAT(options.mExcluded, ElementsAre("old", "new"));
    EXPECT_THAT(options.mMachines, ElementsAre(":", "ann@north", "south"));
}

TEST(STreeOptions, OptionsStandAnywhereBeforeTwoDashes)
{
    const STreeOptions options = ParseOptions({"a", "--page", "-", "--", "--prune", "--", "b"});
    EXPECT_THAT(options.mFolders, ElementsAre("a", "-", "--prune", "--", "b"));
    EXPECT_TRUE(options.mPage);
    EXPECT_FALSE(options.mPrune);
}

TEST(STreeOptions, FoldersMayBeMissingBesideHelpAndVersion)
{
    EXPECT_EQ(ErrorOf({"--help"}), "none");
    EXPECT_EQ(ErrorOf({"--version"}), "none");
}

TEST(STreeOptions, WhatIsWrongIsRefusedInALineThatNamesTheOptionAlone)
{
    const std::string size = "-tsize wants a number from 1 to 32767";
    const std::string jobs = "-j wants a number from 1 to 32767";
    const std::string log = "--log wants the name of a file that is no picture";
    const std::string logIsFolder = "--log wants a file, not one of the folders";
    const std::string exclude = "--exclude wants the name of a folder, without a slash";
    const std::string machines = "-S wants names of machines, with commas between them";
    const std::pair<Names, std::string> rows[] = {
        {{}, "which folders?"},
        {{"--page", ""}, "a folder has no name"},
        {{"--prune=no", "a"}, "--prune takes no value"},
        {{"--pr", "a"}, "unknown option: --pr"},
        {{"-prune", "a"}, "unknown option: -prune"},
        {{"a", "--wrong=\033[2J", "b"}, "unknown option: --wrong"},
        {{"--a\nb", "a"}, "unknown option: --a?b"},
        {{"-jobs", "a"}, "unknown option: -jobs"},
        {{"-tsize", "12abc", "a"}, size},
        {{"-tsize", "+12", "a"}, size},
        {{"-tsize", "0", "a"}, size},
        {{"-tsize", "32768", "a"}, size},
        {{"-tsize", "4294967297", "a"}, size},
        {{"a", "-tsize"}, size},
        {{"-j", "0", "a"}, jobs},
        {{"-j4x", "a"}, jobs},
        {{"--log", "--prune", "a"}, log},
        {{"--log", "a/b.JpG", "a"}, log},
        {{"--log=.jpg", "a"}, log},
        {{"--log=a/", "b", "a"}, logIsFolder},
        {{"--log=a", "b", "a//"}, logIsFolder},
        {{"--exclude=", "a"}, exclude},
        {{"--exclude", "a/b", "a"}, exclude},
        {{"-S", ":,", "a"}, machines},
        {{"-S=:,-oProxyCommand=x", "a"}, machines},
        {{"--sort=size", "a"}, "--sort wants time or name"},
    };
    for (const auto& [arguments, error] : rows)
        EXPECT_EQ(ErrorOf(arguments), error) << testing::PrintToString(arguments);
}

TEST(STreeOptions, AnotherMachineIsToldWhatChangesAGallery)
{
    STreeOptions options = ParseOptions(
        {"--exclude=old", "-j4", "-tsize=80", "--log=l", "-S=north", "--sort=time", "a"});
    for (const SFlagRow& flag : kFlags)
        options.*flag.mField = true;
    EXPECT_THAT(ArgumentsForMachine(options),
                ElementsAre("-tsize", "80", "-j", "4", "--exclude=old", "--upright", "--profile",
                            "--fast", "--repair", "--remake", "--only"));
    EXPECT_THAT(ArgumentsForMachine(ParseOptions({"a"})), ElementsAre("-tsize", "192"));
}

TEST(STreeOptions, UsageNamesEveryOptionInLinesThatFitATerminal)
{
    const std::string usage = UsageText();
    for (const SFlagRow& flag : kFlags)
        EXPECT_THAT(usage, HasSubstr(flag.mName));
    for (const char* const name : {"-tsize ", "-j ", "-S ", "--exclude ", "--log ", "--sort="})
        EXPECT_THAT(usage, HasSubstr(name));
    Names lines;
    CStringTool::SplitString(usage, &lines, '\n');
    EXPECT_THAT(lines, Each(SizeIs(Le(80U))));
    EXPECT_EQ(lines.back(), "");
}

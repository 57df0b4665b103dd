#include "tree/STreeOptions.h"

#include "tests/support/TestSupport.h"

using testing::ElementsAre;

namespace {

const std::pair<const char*, bool STreeOptions::*> kFlags[] = {
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
    for (const auto& [given, itsField] : kFlags) {
        const STreeOptions options = ParseOptions({given, "photos"});
        for (const auto& [name, field] : kFlags)
            EXPECT_EQ(options.*field, field == itsField) << given << ": " << name;
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
        {{"--a\nb", "a"}, "unknown option: --a?b"},
        {{"-jobs", "a"}, "unknown option: -jobs"},
        {{"-tsize", "12abc", "a"}, size},
        {{"-tsize", "0", "a"}, size},
        {{"-tsize", "32768", "a"}, size},
        {{"a", "-tsize"}, size},
        {{"-j", "0", "a"}, jobs},
        {{"--log", "--prune", "a"}, log},
        {{"--log", "a/b.JpG", "a"}, log},
        {{"--log=.jpg", "a"}, log},
        {{"--log=a/", "b", "a"}, logIsFolder},
        {{"--log=a", "b", "a//"}, logIsFolder},
        {{"--exclude=", "a"}, exclude},
        {{"--exclude", "a/b", "a"}, exclude},
        {{"-S", ":,", "a"}, machines},
        {{"-S=:,-oProxyCommand=x", "a"}, machines},
        {{"--sort=size", "a"}, "--sort wants time or name"}};
    for (const auto& [arguments, error] : rows)
        EXPECT_EQ(ErrorOf(arguments), error) << testing::PrintToString(arguments);
}

TEST(STreeOptions, AnotherMachineIsToldWhatChangesAGallery)
{
    STreeOptions options = ParseOptions(
        {"--exclude=old", "-j4", "-tsize=80", "--log=l", "-S=north", "--sort=time", "a"});
    for (const auto& [name, field] : kFlags)
        options.*field = true;
    EXPECT_THAT(ArgumentsForMachine(options),
                ElementsAre("-tsize", "80", "-j", "4", "--exclude=old", "--upright", "--profile",
                            "--fast", "--repair", "--remake", "--only"));
    EXPECT_THAT(ArgumentsForMachine(ParseOptions({"a"})), ElementsAre("-tsize", "192"));
}

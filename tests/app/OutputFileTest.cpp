#include "app/OutputFile.h"

#include <sys/stat.h>

#include <functional>

#include "tests/support/TestSupport.h"

using OutputFile = FolderTest;

TEST_F(OutputFile, OpensFilesAloneAndNeverThroughALink)
{
    const std::string other = mFolder / "other";
    const struct
    {
        const char* name;
        std::function<void()> make;  // what stands at mFile
        bool isOpened;
        std::string left;  // in `other`
    } rows[] = {
        {"nothing", [] {}, true, "other"},
        {"a file", [&] { WriteAll(mFile, "old and long"); }, true, "other"},
        {"a link", [&] { fs::create_symlink(other, mFile); }, true, "other"},
        {"a link to nothing", [&] { fs::create_symlink("none", mFile); }, true, "other"},
        {"a hard link", [&] { fs::create_hard_link(other, mFile); }, true, "other"},
        {"a FIFO", [&] { mkfifo(mPath, 0600); }, true, "other"},
        {"a folder", [&] { fs::create_directory(mFile); }, false, "other"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        fs::remove(mFile);
        WriteAll(other, "other");
        row.make();
        std::FILE* const stream = OpenOutput(mPath);
        EXPECT_EQ(stream != nullptr, row.isOpened);
        if (stream) {
            std::fputs("new", stream);
            EXPECT_TRUE(CloseOutput(stream));
            EXPECT_EQ(ReadAll(mFile), "new");
            EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(mFile)));
        }
        EXPECT_EQ(ReadAll(other), row.left);
    }
}

TEST_F(OutputFile, AnOrdinaryFileKeepsItsModeAndItsPlace)
{
    WriteAll(mFile, "old");
    chmod(mPath, 0640);
    struct stat before = {};
    stat(mPath, &before);
    CloseOutput(OpenOutput(mPath));
    struct stat after = {};
    stat(mPath, &after);
    EXPECT_EQ(after.st_mode, before.st_mode);
    EXPECT_EQ(after.st_ino, before.st_ino);
}

TEST_F(OutputFile, WhatIsLostShowsWhenTheFileIsClosed)
{
    std::FILE* const stream = std::fopen("/dev/full", "w");
    if (!stream)
        GTEST_SKIP() << "this system has no /dev/full";
    std::fputs("lost", stream);
    EXPECT_FALSE(CloseOutput(stream));
}

TEST_F(OutputFile, ALinkInThePlaceOfTheThumbnailFolderIsFollowedToThumbnailsAlone)
{
    const fs::path target = mFolder / "target";
    const std::string link = mFolder / "tessel";
    const struct
    {
        const char* name;
        const char* file;  // in the folder that the link leads to
        bool isFollowed;
    } rows[] = {
        {"an empty folder", nullptr, true},
        {"a folder with a database", "tesselbase.txt", true},
        {"a folder of something else", "photo.jpg", false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        fs::remove_all(target);
        fs::remove(link);
        fs::create_directory(target);
        fs::create_symlink(target, link);
        if (row.file)
            WriteAll(target / row.file, "");
        EXPECT_EQ(MakeThumbFolder(link, link + "/tesselbase.txt"), row.isFollowed);
        EXPECT_EQ(fs::exists(target / "tesselbase.txt"), row.isFollowed);
    }
}

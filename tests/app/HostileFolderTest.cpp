// Folders that people have filled: every run ends normally, every good picture gets its thumbnail,
// and nothing but page, thumbnails and database changes.
#include <sys/stat.h>

#include <map>

#include "tests/TestSupport.h"

struct HostileFolder : FolderTest
{
    const fs::path mOutside = mFolder / "outside", mGallery = mFolder / "gallery";
    const fs::path mThumbs = mGallery / "tessel";
    const std::string mJpeg = SampleJpeg(300, 200);

    HostileFolder()
    {
        fs::create_directories(mThumbs);
        WriteAll(mOutside, "outside");
    }
    /// Runs a shell's words in the gallery, with a bound on time: "failed" is then in the output.
    std::string Try(const std::string& words = TESSEL_PROGRAM " .") const
    {
        return Run("timeout -s KILL 60 sh -c 'cd gallery; " + words + "'");
    }
    bool HasThumb(const std::string& name) const
    {
        TestImage thumb;
        return thumb.GetSize((mThumbs / name).c_str(), 0, 0) && thumb.mWidth == 192;
    }
    std::map<std::string, std::string> Files() const
    {
        std::map<std::string, std::string> files;
        for (const auto& entry : fs::recursive_directory_iterator(mGallery))
            if (entry.is_regular_file())
                files[entry.path().string()] = ReadAll(entry.path().string());
        return files;
    }
};

TEST_F(HostileFolder, EntriesOfAnyKindAndNameHoldNothingUp)
{
    const Names names{
        "a b.jpg",      "\"'.jpg",      "\t.jpg",   "\n.jpg",    "\r.jpg",
        "\x01\x7f.jpg", "%41.jpg",      "#?.jpg",   "<b>.jpg",   "-tsize.jpg",
        ".jpg",         "\xff\xfe.jpg", "&amp.jpg", "\\n$x.jpg", std::string(251, 'n') + ".jpg"};
    for (const std::string& name : names)
        WriteAll(mGallery / name, mJpeg);
    mkfifo((mGallery / "fifo.jpg").c_str(), 0600);
    fs::create_directory(mGallery / "folder.jpg");
    fs::create_symlink("circle.jpg", mGallery / "circle.jpg");
    fs::create_symlink("/dev/zero", mGallery / "endless.jpg");
    WriteAll(mGallery / "empty.jpg", "");
    EXPECT_EQ(Try().find("failed"), std::string::npos);
    for (const std::string& name : names)
        EXPECT_TRUE(HasThumb(name)) << name;
    EXPECT_EQ(std::distance(fs::directory_iterator(mThumbs), {}),
              static_cast<std::ptrdiff_t>(names.size()) + 1);
}

TEST_F(HostileFolder, NothingButTheGallerysFilesIsWritten)
{
    for (const char* name : {"linked.jpg", "hard.jpg", "fifo.jpg"})
        WriteAll(mGallery / name, mJpeg);
    fs::create_symlink("../linked.jpg", mThumbs / "linked.jpg");
    fs::create_hard_link(mGallery / "hard.jpg", mThumbs / "hard.jpg");
    mkfifo((mThumbs / "fifo.jpg").c_str(), 0600);
    fs::create_symlink(mOutside, mGallery / "index.html");
    fs::create_symlink("/dev/zero", mThumbs / "tesselbase.txt");
    EXPECT_EQ(Try().find("failed"), std::string::npos);
    for (const char* name : {"linked.jpg", "hard.jpg", "fifo.jpg"})
        EXPECT_TRUE(HasThumb(name) && ReadAll(mGallery / name) == mJpeg) << name;
    EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(mGallery / "index.html")));
    EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(mThumbs / "tesselbase.txt")));

    fs::remove_all(mThumbs);
    fs::create_directory(mFolder / "elsewhere");
    fs::create_symlink("../elsewhere", mThumbs);
    Try();
    EXPECT_TRUE(HasThumb("hard.jpg") && fs::is_empty(mFolder / "elsewhere"));
    EXPECT_EQ(ReadAll(mOutside), "outside");
}

TEST_F(HostileFolder, KilledAndDoubledRunsEndLikeOne)
{
    for (int i = 0; i < 20; ++i)
        WriteAll(mGallery / (std::to_string(i) + ".jpg"), mJpeg);
    const std::string base = mThumbs / "tesselbase.txt", gone = "gone.jpg\t7\n";
    WriteAll(base, gone);
    Try();
    const auto expected = Files();
    for (int i = 0; i < 40; ++i) {
        fs::remove_all(mThumbs);
        fs::create_directory(mThumbs);
        WriteAll(base, gone);
        const std::string delay = "0." + std::to_string(1000 + i * 13).substr(1);
        Try(i % 4 == 0 ? TESSEL_PROGRAM " . & " TESSEL_PROGRAM " .; wait"
                       : "timeout -s KILL " + delay + " " TESSEL_PROGRAM " .");
        Try();
        ASSERT_TRUE(Files() == expected) << delay;
    }
}

TEST_F(HostileFolder, RunsWithinSmallLimits)
{
    for (int i = 0; i < 50; ++i)
        WriteAll(mGallery / (std::to_string(i) + ".jpg"), mJpeg);
    EXPECT_EQ(Try("ulimit -n 32; exec " TESSEL_PROGRAM " .").find("failed"), std::string::npos);
    EXPECT_TRUE(HasThumb("0.jpg") && HasThumb("49.jpg"));
    const auto expected = Files();
    fs::remove_all(mThumbs);
    EXPECT_EQ(Try("exec " TESSEL_PROGRAM " . <&- >&- 2>&-"), "");
    EXPECT_TRUE(Files() == expected);
#ifndef __SANITIZE_ADDRESS__  // which needs more address space than there is
    WriteAll(mGallery / "large.jpg", EncodeJpeg(9000, 9000, 1, Bytes(81000000, 7)));
    const std::string output = Try("ulimit -v 60000; exec " TESSEL_PROGRAM " .");
    EXPECT_NE(output.find("Reading ./large.jpg\n"), std::string::npos);
    EXPECT_EQ(output.find("failed"), std::string::npos);
    EXPECT_FALSE(HasThumb("large.jpg"));
#endif
}

#include "foundation/file.h"
#include "foundation/finished_file.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include <unistd.h>

namespace {

namespace fs = std::filesystem;

class FileTest : public testing::Test {
protected:
    FileTest() : folder(fs::temp_directory_path() / ("mox_file_test_" + std::to_string(::getpid())))
    {
        fs::create_directory(folder);
    }
    ~FileTest() override { fs::remove_all(folder); }

    KN::String path(std::string const &name) const { return KN::String((folder / name).string()); }
    std::string contents(std::string const &name) const
    {
        std::ifstream in(folder / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }

    fs::path folder;
};

TEST_F(FileTest, OnlyRegularFilesOpenAndShortReadsAreSeen)
{
    std::ofstream(folder / "five") << "12345";
    KN::FileIn file;
    EXPECT_TRUE(file.open(path("five"), false));
    EXPECT_EQ(file.size(), 5u);
    char bytes[8];
    file.seek(-2);
    EXPECT_EQ(file.read(bytes, 2), 2u);
    EXPECT_EQ(std::string_view(bytes, 2), "45");
    EXPECT_EQ(file.status(), 0);
    EXPECT_EQ(file.read(bytes, 1), 0u);
    EXPECT_NE(file.status(), 0);

    EXPECT_FALSE(file.open(KN::String(folder.string()), false));
    EXPECT_FALSE(file.open(path("absent"), false));
    EXPECT_FALSE(file.open(path(std::string("five\0tail", 9)), false));

    KN::MemFileIn memory;
    EXPECT_TRUE(memory.open(path("five"), false));
    memory.seek(-2);
    EXPECT_EQ(memory.tell(), 3u);
    EXPECT_EQ(memory.read(bytes, 4), 2u);
    EXPECT_NE(memory.status(), 0);
}

// A path may reach us widened byte by byte, as true UTF-16, or as one joined to the other.
TEST_F(FileTest, EveryFormOfAPathFindsItsFile)
{
    EXPECT_TRUE(KN::make_directories(path("h\xc3\xbctte\\deep")));
    std::ofstream(folder / "h\xc3\xbctte" / "deep" / "\xe2\x82\xac\xc3\xa4.vx2") << "x";
    KN::UniString const base = KN::must_fix_string_widen(path("h\xc3\xbctte"));
    for (KN::UniString const &form :
         {KN::UniString(base + u"/deep/\u20ac\u00e4.vx2"), KN::UniString(base + u"\\deep\\\u20ac\u00e4.vx2"),
          KN::must_fix_string_widen(path("h\xc3\xbctte/deep/\xe2\x82\xac\xc3\xa4.vx2"))}) {
        KN::FileIn file;
        EXPECT_TRUE(file.open(form, false)) << KN::to_utf8(form);
    }
}

TEST_F(FileTest, PatchingAWrittenFileInPlace)
{
    KN::FileOut file;
    ASSERT_TRUE(file.open(path("out"), false, true));
    EXPECT_EQ(file.write("0000tail", 8), 8u);
    EXPECT_EQ(file.tell(), 8u);
    file.seek(0);
    EXPECT_EQ(file.write("HEAD", 4), 4u);
    file.seek(-4);
    EXPECT_EQ(file.write("T", 1), 1u);
    EXPECT_TRUE(file.close());
    EXPECT_EQ(contents("out"), "HEADTail");
    EXPECT_FALSE(file.open(path("no such folder/out"), false, true));
}

TEST_F(FileTest, AFinishedFileAppearsWholeOrNotAtAll)
{
    std::ofstream(folder / "product") << "old";
    {
        KN::FinishedFile file(path("product"));
        EXPECT_TRUE(file.write("half"));
        EXPECT_EQ(contents("product"), "old");
        EXPECT_TRUE(KN::FinishedFile::is_unfinished(fs::path(std::string(file.unfinished_path())).filename().string()));
    }
    EXPECT_EQ(contents("product"), "old");
    KN::String error;
    EXPECT_TRUE(KN::write_finished_file(path("product"), "new", error));
    EXPECT_EQ(contents("product"), "new");
    EXPECT_EQ(std::distance(fs::directory_iterator(folder), fs::directory_iterator()), 1);

    EXPECT_FALSE(KN::write_finished_file(path("absent/product"), "new", error));
    EXPECT_TRUE(error.starts_with(path("absent/product") + ": cannot be created")) << error;
    // A folder in the way: the rename fails, and nothing is left behind.
    fs::create_directories(folder / "taken" / "inside");
    EXPECT_FALSE(KN::write_finished_file(path("taken"), "new", error));
    EXPECT_EQ(std::distance(fs::directory_iterator(folder), fs::directory_iterator()), 2);
    for (char const *name : {"a.unfinished", ".1-2.unfinished", "hut.vx2", "hut.1-x.unfinished"})
        EXPECT_FALSE(KN::FinishedFile::is_unfinished(name)) << name;
}

TEST_F(FileTest, AThreadsWatchHearsOfEveryFileLookedForAlsoInVain)
{
    struct WATCH final : KN::FileWatch {
        void looked_for(KN::String const &name, bool found) override { heard.emplace_back(name, found); }
        void written(KN::String const &name) override { heard.emplace_back("written " + name, true); }
        std::vector<std::pair<std::string, bool>> heard;
    } watch;
    std::ofstream(folder / "here") << "1";
    KN::FileWatch *const before = KN::set_thread_file_watch(&watch);
    KN::FileIn().open(path("here"), false);
    KN::MemFileIn().open(path("gone"), false);
    KN::exists(path("sub\\gone"));  // a backslash separates on every system
    KN::String error;
    KN::write_finished_file(path("made"), "1", error);
    KN::FileOut().open(path("open"), false, true);
    EXPECT_EQ(KN::set_thread_file_watch(before), &watch);
    KN::exists(path("here"));
    std::vector<std::pair<std::string, bool>> const expected = {{path("here"), true},
                                                                {path("gone"), false},
                                                                {path("sub/gone"), false},
                                                                {"written " + path("made"), true},
                                                                {"written " + path("open"), true}};
    EXPECT_EQ(watch.heard, expected);
}

}  // namespace

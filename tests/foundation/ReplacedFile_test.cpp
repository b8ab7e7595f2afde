#include "foundation/ReplacedFile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <thread>

#include "ErrorText.h"
#include "TempFolder.h"
#include "foundation/Interruption.h"

namespace {

namespace fs = std::filesystem;

std::size_t FilesIn(const std::string& folder) {
    return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder), {}));
}

unsigned ModeOf(const std::string& path) {
    struct stat status = {};
    stat(path.c_str(), &status);
    return status.st_mode & 07777U;
}

TEST(ReplacedFile, AppearsWholeOrNotAtAll) {
    const TempFolder folder;
    const std::string path = folder.Write("image.png", "former");
    std::string temporary;
    {
        ReplacedFile file(path);
        file.Write([&](const std::string& name) { temporary = name; });
        file.WriteText("new");
        EXPECT_EQ(folder.Read("image.png"), "former");
    }
    EXPECT_EQ(folder.Read("image.png"), "former");
    WriteWholeFile(path, "new");
    EXPECT_EQ(folder.Read("image.png"), "new");
    EXPECT_EQ(FilesIn(folder.Path("")), 1U);

    const std::string name = fs::path(temporary).filename().string();
    EXPECT_EQ(fs::path(temporary).parent_path(), fs::path(path).parent_path());
    EXPECT_TRUE(IsTemporaryOf(name, "image.png"));
    EXPECT_FALSE(IsTemporaryOf(name, "image"));
    EXPECT_FALSE(IsTemporaryOf(".image.png.2024", "image.png"));
    EXPECT_FALSE(IsTemporaryOf("image.png", "image.png"));
}

TEST(ReplacedFile, KeepsLinksAndModes) {
    const TempFolder folder;
    const mode_t former = umask(022);
    fs::create_directory(folder.Path("deep"));
    const std::string kept = folder.Write("deep/kept", "former");
    chmod(kept.c_str(), 0620);
    fs::create_symlink("second", folder.Path("first"));
    fs::create_symlink("deep/kept", folder.Path("second"));
    WriteWholeFile(folder.Path("first"), "new");
    EXPECT_EQ(fs::read_symlink(folder.Path("second")), "deep/kept");
    EXPECT_EQ(folder.Read("deep/kept"), "new");
    EXPECT_EQ(ModeOf(kept), 0620U);

    fs::create_symlink("deep/made", folder.Path("dangling"));
    WriteWholeFile(folder.Path("dangling"), "made");
    EXPECT_TRUE(fs::is_symlink(folder.Path("dangling")));
    EXPECT_EQ(folder.Read("deep/made"), "made");
    EXPECT_EQ(ModeOf(folder.Path("deep/made")), 0644U);
    umask(former);
}

TEST(ReplacedFile, WritesIntoPipesAndDevices) {
    const TempFolder folder;
    const std::string pipe = folder.Path("pipe.csv");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const std::string large(200000, 'x');
    std::string received;
    std::thread reader([&] { received = folder.Read("pipe.csv"); });
    WriteWholeFile(pipe, large);
    reader.join();
    EXPECT_EQ(received, large);
    EXPECT_TRUE(fs::is_fifo(pipe));
    WriteWholeFile("/dev/null", large);
    EXPECT_EQ(ErrorText([&] { WriteWholeFile("/dev/full", large); }),
              "Cannot write /dev/full: the disk is full");
    EXPECT_TRUE(fs::is_character_file("/dev/full"));
}

TEST(ReplacedFile, TakesTheLongestNames) {
    const TempFolder folder;
    for (const std::string& letter : {std::string("n"), std::string("\xE2\x82\xAC")}) {
        std::string name = "a.";
        while (name.size() + letter.size() <= 255) name += letter;
        WriteWholeFile(folder.Path(name), letter);
        EXPECT_EQ(folder.Read(name), letter);
    }
}

TEST(ReplacedFile, FailuresNameTheFileAndTheReason) {
    const TempFolder folder;
    fs::create_symlink("b", folder.Path("a"));
    fs::create_symlink("a", folder.Path("b"));
    chmod(folder.Write("protected", "former").c_str(), 0444);
    const std::pair<std::string, std::string> cases[] = {
        {folder.Path("a"), "its links lead in a circle"},
        {folder.Path("a/file"), "its links lead in a circle"},
        {folder.Path("protected"), "it is write-protected"},
        {folder.Path(""), "it is a folder"},
        {folder.Path("none/"), "there is no such folder"},
        {folder.Path("none/file"), "there is no folder " + folder.Path("none")},
        {folder.Path("protected/file"), "Not a directory"},
        {folder.Path(std::string(256, 'n')), "File name too long"},
        {"", "its name is empty"}};
    for (const auto& [path, reason] : cases)
        EXPECT_EQ(ErrorText([p = path] { WriteWholeFile(p, "new"); }),
                  "Cannot write " + path + ": " + reason);
    EXPECT_EQ(folder.Read("protected"), "former");

    const std::string path = folder.Path("new");
    ReplacedFile file(path);
    EXPECT_EQ(ErrorText([&] {
                  file.Write([](const std::string& name) { throw ZfError(name + ": the writer broke"); });
              }),
              "Cannot write " + path + ": " + path + ": the writer broke");
    EXPECT_EQ(ErrorText([&] { file.Write([](const std::string&) { throw "a bare text"; }); }),
              "Cannot write " + path + ": a bare text");
    EXPECT_THROW(file.Write([](const std::string&) { throw Interruption(2); }), Interruption);
}

}  // namespace

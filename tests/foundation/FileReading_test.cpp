#include "foundation/FileReading.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <new>
#include <stdexcept>
#include <thread>

#include "ErrorText.h"
#include "TempFolder.h"

namespace {

TEST(FileReading, TakesEveryByteAndEveryKindOfMark) {
    const TempFolder folder;
    const std::string bytes(
        "\xEF\xBB\xBF"
        "a\0\r\n\xFF",
        8);
    EXPECT_EQ(ReadWholeFile(folder.Write("bytes", bytes)), bytes);
    EXPECT_EQ(ErrorText([&] { ReadTextFile(folder.Path("bytes")); }),
              folder.Path("bytes") + ": it is no text");
    EXPECT_EQ(ReadTextFile(folder.Write("marked",
                                        "\xEF\xBB\xBF"
                                        "a\r\n\xFF")),
              "a\r\n\xFF");
    const std::string utf16(
        "\xFF\xFE"
        "a\0\xE9\0\n\0",
        8);
    EXPECT_EQ(ReadTextFile(folder.Write("utf16", utf16)), "a\xC3\xA9\n");
    const std::string pipe = folder.Path("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const std::string large(300000, 'x');
    std::thread writer([&] { folder.Write("pipe", large); });
    EXPECT_EQ(ReadWholeFile(pipe), large);
    writer.join();
}

TEST(FileReading, FailuresNameTheFile) {
    const TempFolder folder;
    const std::string none = folder.Path("none");
    const std::string loop = folder.Path("loop");
    std::filesystem::create_symlink("loop", loop);
    for (const auto& read : {+[](const std::string& path) { ReadWholeFile(path); }, RequireFile}) {
        EXPECT_EQ(ErrorText([&] { read(none); }), none + ": there is no such file");
        EXPECT_EQ(ErrorText([&] { read(folder.Path("")); }), folder.Path("") + ": it is a folder");
        EXPECT_EQ(ErrorText([&] { read(loop); }), loop + ": its links lead in a circle");
    }
    const auto named = [](auto failure) { return ErrorText([&] { Naming("f", [&] { throw failure; }); }); };
    EXPECT_EQ(named("a bare text"), "f: a bare text");
    EXPECT_EQ(named(ZfError("f: known")), "f: known");
    EXPECT_EQ(named(ZfError("unknown")), "f: unknown");
    EXPECT_EQ(named(std::bad_alloc()), "f: there is not enough memory for it");
    EXPECT_EQ(named(std::out_of_range("at")), "f: it is damaged (at)");
}

}  // namespace

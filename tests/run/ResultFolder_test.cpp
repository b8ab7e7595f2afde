#include <gtest/gtest.h>

#include <filesystem>

#include "ErrorText.h"
#include "TempFolder.h"
#include "foundation/ReplacedFile.h"
#include "run/ResultFolder.h"

TEST(ResultFolder, AStepIsDoneWhileItsKeyAndItsFilesStay) {
    const TempFolder temp;
    const RunStep step{"cluster", "key", {"cluster.xyz"}, {}};
    {
        ResultFolder folder(temp.Path("results"));
        EXPECT_FALSE(folder.IsDone(step));
        temp.Write("results/cluster.xyz", "1\n");
        folder.Remember(step);
    }
    ResultFolder folder(temp.Path("results"));
    EXPECT_TRUE(folder.IsDone(step));
    EXPECT_FALSE(folder.IsDone({"cluster", "other key", {"cluster.xyz"}, {}}));
    temp.Write("results/cluster.xyz", "edited\n");
    EXPECT_FALSE(folder.IsDone(step));
    std::filesystem::remove(folder.Path("cluster.xyz"));
    EXPECT_FALSE(folder.IsDone(step));
}

TEST(ResultFolder, OneRunWorksInItAndClearsWhatAKilledOneLeft) {
    const TempFolder temp;
    std::string left;
    {
        ReplacedFile interrupted(temp.Path("pattern.xml_img"));
        interrupted.Write([&](const std::filesystem::path& path) { left = path.filename().string(); });
    }
    std::filesystem::create_directories(temp.Path("results/.cache.1.d"));
    for (const std::string& name : {left, std::string(".notes.2024.txt"), std::string("pattern.xml_img")})
        temp.Write("results/" + name, "text");
    const ResultFolder folder(temp.Path("results"));
    folder.RemoveTemporaries({"pattern.xml_img", "cache.d"});
    EXPECT_FALSE(std::filesystem::exists(folder.Path(left)));
    for (const char* name : {".notes.2024.txt", ".cache.1.d", "pattern.xml_img"})
        EXPECT_TRUE(std::filesystem::exists(folder.Path(name))) << name;
    EXPECT_NE(ErrorText([&] { const ResultFolder second(temp.Path("results")); }).find("Another run works"),
              std::string::npos);
}

TEST(ResultFolder, WhatNoLongerBelongsIsToldOnce) {
    using Names = std::vector<std::string>;
    const TempFolder temp;
    {
        ResultFolder folder(temp.Path("results"));
        for (const char* name : {"a.png", "b.png", "c.png"}) temp.Write("results/" + std::string(name), name);
        folder.Remember({"picture", "1", {"a.png", "b.png"}, {}});
        folder.Remember({"picture", "2", {"c.png"}, {}});
        temp.Write("results/c.png", "of the user by now");
        EXPECT_EQ(folder.NewlyStale({"a.png", "b.png", "c.png"}), Names());
        EXPECT_EQ(folder.NewlyStale({"a.png"}), Names{"b.png"});
    }
    ResultFolder folder(temp.Path("results"));
    EXPECT_EQ(folder.NewlyStale({"a.png"}), Names());
    EXPECT_TRUE(folder.IsDone({"picture", "1", {"a.png", "b.png"}, {}}));
    EXPECT_EQ(folder.NewlyStale({"a.png", "b.png"}), Names());
    EXPECT_EQ(folder.NewlyStale({}), (Names{"a.png", "b.png"}));
}

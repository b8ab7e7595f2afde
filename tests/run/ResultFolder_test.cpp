#include <gtest/gtest.h>

#include <filesystem>

#include "ErrorText.h"
#include "TempFolder.h"
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
    std::filesystem::create_directory(temp.Path("results"));
    temp.Write("results/.pattern.4711.xml_img", "half a file");
    temp.Write("results/notes.2024.txt", "of the user");
    const ResultFolder folder(temp.Path("results"));
    EXPECT_FALSE(std::filesystem::exists(folder.Path(".pattern.4711.xml_img")));
    EXPECT_TRUE(std::filesystem::exists(folder.Path("notes.2024.txt")));
    EXPECT_NE(ErrorText([&] { const ResultFolder second(temp.Path("results")); }).find("Another run works"),
              std::string::npos);
}

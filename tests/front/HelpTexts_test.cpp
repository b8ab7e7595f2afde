#include <gtest/gtest.h>

#include <CLI/CLI.hpp>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>

#include "front/Program.h"

namespace {

const std::filesystem::path kHelpFolder = QVRE_HELP_TEXTS;

std::string HelpOf(const std::string& command) {
    const char* arguments[] = {"qvre", command.c_str(), "--help"};
    testing::internal::CaptureStdout();
    const int status = RunProgram(3, arguments);
    const std::string text = testing::internal::GetCapturedStdout();
    EXPECT_EQ(status, 0);
    return text;
}

std::set<std::string> DocumentedCommands() {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(kHelpFolder))
        names.insert(entry.path().stem().string());
    return names;
}

std::set<std::string> Commands() {
    CLI::App program;
    AddCommands(program);
    std::set<std::string> names;
    for (const CLI::App* command : program.get_subcommands({})) names.insert(command->get_name());
    return names;
}

}  // namespace

// scripts/update-help writes the texts anew.
TEST(HelpTexts, TheDocumentedTextsAreThoseOfTheProgram) {
    EXPECT_EQ(DocumentedCommands(), Commands());
    for (const std::string& command : DocumentedCommands()) {
        std::ostringstream documented;
        documented << std::ifstream(kHelpFolder / (command + ".txt")).rdbuf();
        EXPECT_EQ(HelpOf(command), documented.str()) << command;
    }
}

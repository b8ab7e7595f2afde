#include <gtest/gtest.h>

#include <CLI/CLI.hpp>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>

#include "RunQvre.h"
#include "front/Commands.h"

namespace {

const std::filesystem::path kHelpFolder = QVRE_HELP_TEXTS;

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
        EXPECT_EQ(RunQvre({command, "--help"}).output, documented.str()) << command;
    }
}

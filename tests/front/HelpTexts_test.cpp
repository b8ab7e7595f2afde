#include <gtest/gtest.h>

#include <CLI/CLI.hpp>
#include <filesystem>
#include <set>
#include <string>

#include "RunQvre.h"
#include "TempFolder.h"
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
        const QvreResult help = RunQvre(command + " --help");
        EXPECT_EQ(help.output, FileText(kHelpFolder / (command + ".txt"))) << command;
        EXPECT_EQ(help.status, 0) << command;
    }
}

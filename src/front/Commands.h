#pragma once

namespace CLI {
class App;
}

namespace qvre {

/// Ends the program with a status of its own, when all has been said.
struct CommandStatus {
    int status;
};

// Each adds one subcommand with its options to the program. The subcommand runs at the end of the parsing and
// throws ZfError when it fails.
void AddClusterCommand(CLI::App& program);
void AddCompareCommand(CLI::App& program);
void AddEmitCommand(CLI::App& program);
void AddExportCommand(CLI::App& program);
void AddFitCommand(CLI::App& program);
void AddInfoCommand(CLI::App& program);
void AddPhasesCommand(CLI::App& program);
void AddPlotCommand(CLI::App& program);
void AddRunCommand(CLI::App& program);
void AddScatterCommand(CLI::App& program);
void AddSumCommand(CLI::App& program);
void AddThermalCommand(CLI::App& program);

void AddCommands(CLI::App& program);  ///< all of them, of which one has to be called

}  // namespace qvre

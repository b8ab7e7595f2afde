#include "front/Program.h"

#include <CLI/CLI.hpp>
#include <cerrno>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <memory>
#include <new>
#include <string>

#include "foundation/Console.h"
#include "foundation/ReplacedFile.h"
#include "foundation/ZfError.h"
#include "front/Commands.h"
#include "front/HelpFormatter.h"
#include "run/RunProgress.h"

namespace qvre {

namespace {

constexpr int kDone = 0;
constexpr int kFailed = 1;
constexpr int kBadUsage = 2;
constexpr int kSignalled = 128;  // plus the number of the signal

/// "qvre cluster" once a subcommand is known.
std::string CalledAs(const CLI::App& program) {
    const auto called = program.get_subcommands();
    return called.empty() ? "qvre" : "qvre " + called.front()->get_name();
}

int Fail(const CLI::App& program, const std::string& message, int status) {
    std::fflush(stdout);
    std::fprintf(stderr, "%s: %s\n", CalledAs(program).c_str(), message.c_str());
    if (status == kBadUsage) std::fprintf(stderr, "See %s --help\n", CalledAs(program).c_str());
    return status;
}

}  // namespace

void AddCommands(CLI::App& program) {
    program.require_subcommand(1);
    AddClusterCommand(program);
    AddCompareCommand(program);
    AddEmitCommand(program);
    AddExportCommand(program);
    AddFitCommand(program);
    AddInfoCommand(program);
    AddPhasesCommand(program);
    AddPlotCommand(program);
    AddRunCommand(program);
    AddScatterCommand(program);
    AddSumCommand(program);
    AddThermalCommand(program);
}

namespace {

int Parse(CLI::App& program, int argumentCount, const char* const* arguments) {
    try {
        program.parse(argumentCount, arguments);
        return kDone;
    } catch (const CLI::Success& asked) {  // help, version
        return program.exit(asked);
    } catch (const CLI::ParseError& error) {
        if (program.get_subcommands().empty() && program.remaining_size() > 0)
            return Fail(program, "\"" + program.remaining().front() + "\" is no subcommand", kBadUsage);
        return Fail(program, error.what(), kBadUsage);
    } catch (const CommandStatus& ended) {
        return ended.status;
    } catch (const Interruption& interruption) {
        return Fail(program, interruption.message, kSignalled + interruption.signal);
    } catch (const ZfError& error) {
        return Fail(program, error.message, kFailed);
    } catch (const std::bad_alloc&) {
        return Fail(program, "there is not enough memory", kFailed);
    } catch (const std::filesystem::filesystem_error& error) {
        return Fail(program, error.path1().string() + ": " + error.code().message(), kFailed);
    } catch (const std::exception& error) {
        return Fail(program, error.what(), kFailed);
    } catch (const char* text) {
        return Fail(program, text, kFailed);
    }
}

/// What was printed has to arrive: a full disk behind standard output is a failure too.
int CheckOutput(const CLI::App& program, int status) {
    errno = 0;
    if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) return status;
    const std::string reason = errno == 0 ? "the disk may be full" : WriteFailureText(errno);
    return Fail(program, "Cannot write to standard output: " + reason, kFailed);
}

}  // namespace

int RunProgram(int argumentCount, const char* const* arguments) {
    const ConsoleRedirection quiet(nullptr);
    std::clearerr(stdout);
    CLI::App program("Makes the inputs of photoelectron diffraction calculations and shows their results");
    program.name("qvre");
    program.set_version_flag("--version", "qvre " QVRE_VERSION);
    program.formatter(std::make_shared<HelpFormatter>());
    AddCommands(program);
    return CheckOutput(program, Parse(program, argumentCount, arguments));
}

}  // namespace qvre

#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace qvre {

/// The library's help texts, but with the options that an option needs or excludes in alphabetical order. The
/// library lists them by their addresses, which change from run to run.
class HelpFormatter final : public CLI::Formatter {
public:
    std::string make_option_opts(const CLI::Option* option) const override;
};

}  // namespace qvre

#include "front/HelpFormatter.h"

#include <algorithm>
#include <set>

namespace qvre {

namespace {

std::string Listed(const std::string& label, const std::set<CLI::Option*>& options) {
    std::set<std::string> names;
    for (const CLI::Option* option : options) names.insert(option->get_name());
    std::string text;
    for (const std::string& name : names) text += " " + name;
    return text.empty() ? text : " " + label + ":" + text;
}

}  // namespace

std::string HelpFormatter::make_option_opts(const CLI::Option* option) const {
    std::string text = CLI::Formatter::make_option_opts(option);
    for (const char* unordered : {" Needs:", " Excludes:"})
        text.resize(std::min(text.size(), text.find(unordered)));
    return text + Listed("Needs", option->get_needs()) + Listed("Excludes", option->get_excludes());
}

}  // namespace qvre

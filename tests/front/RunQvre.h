#pragma once

#include <gtest/gtest.h>

#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "front/Program.h"

using namespace qvre;

struct QvreResult {
    int status = 0;
    std::string output;
    std::string errors;
};

/// Runs the program in this process.
inline QvreResult RunQvre(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "qvre");
    std::vector<const char*> pointers;
    for (const std::string& argument : arguments) pointers.push_back(argument.c_str());
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    QvreResult result;
    result.status = RunProgram(static_cast<int>(pointers.size()), pointers.data());
    std::fflush(stdout);
    result.output = testing::internal::GetCapturedStdout();
    result.errors = testing::internal::GetCapturedStderr();
    return result;
}

/// The same with words between blanks.
inline QvreResult RunQvre(const std::string& words) {
    std::istringstream stream(words);
    return RunQvre(std::vector<std::string>{std::istream_iterator<std::string>(stream), {}});
}

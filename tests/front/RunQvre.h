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

/// Runs the program in this process, with words between blanks.
inline QvreResult RunQvre(const std::string& words) {
    std::istringstream stream("qvre " + words);
    const std::vector<std::string> arguments{std::istream_iterator<std::string>(stream), {}};
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

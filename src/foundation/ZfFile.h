#pragma once

#include <string>
#include <vector>

/// A plain text file, read or written as UTF-8 byte strings. Failures after opening are not reported: a
/// failed read yields an empty string, and AtEnd ends the loops.
class ZfFile {
public:
    virtual void ReadLine(std::string& line) = 0;  ///< without its line end
    virtual bool AtEnd() = 0;
    virtual void ReadAll(std::string& text) = 0;  ///< all that is left
    /// Appends lines; the line with which the end is reached is never stored.
    virtual void ReadLines(std::vector<std::string>& lines) = 0;
    virtual void Write(const std::string& text) = 0;  ///< up to the first zero byte
    virtual void WriteLines(const std::vector<std::string>& lines) = 0;

protected:
    ~ZfFile() = default;
};

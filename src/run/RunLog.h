#pragma once

#include <cstdio>
#include <memory>
#include <string>

namespace qvre {

/// What a run tells: to the console, and with the time of day to a file that keeps the story of all runs in a
/// folder.
class RunLog {
public:
    explicit RunLog(const std::string& path);  ///< goes on with an existing file; throws ZfError

    void Line(const std::string& text);       ///< both
    void Indented(const std::string& lines);  ///< both; nothing for an empty text
    void Note(const std::string& text);       ///< the file alone; throws ZfError when it cannot be written
    void IndentedNote(const std::string& lines);  ///< the same

private:
    struct Closer {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };

    std::string path_;
    std::unique_ptr<std::FILE, Closer> file_;
};

}  // namespace qvre

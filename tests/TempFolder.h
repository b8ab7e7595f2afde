#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

inline std::string FileText(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

/// A folder of its own for one test, removed with it.
class TempFolder {
public:
    TempFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "qvre-test-XXXXXX").string();
        path_ = mkdtemp(pattern.data());
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;
    ~TempFolder() { std::filesystem::remove_all(path_); }

    std::string Path(const std::string& name) const { return path_ + "/" + name; }

    std::string Write(const std::string& name, const std::string& text) const {
        std::ofstream(Path(name), std::ios::binary) << text;
        return Path(name);
    }

    std::string Read(const std::string& name) const { return FileText(Path(name)); }

private:
    std::string path_;
};

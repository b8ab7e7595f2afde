#pragma once

#include <cstdio>
#include <memory>
#include <string>

#include "xml/ZfBarnXml.h"

/// A document on a C stdio file. Mode "r" loads and parses at once. Mode "w" creates the file at once, so
/// that a path that cannot be written fails early.
class ZfBarnFile final : public ZfBarnXml {
public:
    ZfBarnFile(std::string path, const std::string& mode);
    ZfBarnFile(const ZfBarnFile&) = delete;
    ZfBarnFile& operator=(const ZfBarnFile&) = delete;
    /// Writes what has been built, also when an exception passes; a failure to write is not reported.
    ~ZfBarnFile() override;

    /// Writes the document and closes the file. Throws ZfError when the text cannot be written whole.
    void Save();

private:
    struct Closer {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };
    using File = std::unique_ptr<std::FILE, Closer>;

    std::string ReadText();

    std::string path_;
    File file_;  // open only while there is something to write
};

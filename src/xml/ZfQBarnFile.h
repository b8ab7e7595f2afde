#pragma once

#include <QString>

#include "xml/ZfBarnXml.h"

/// A document whose mode comes as a QString.
class ZfQBarnXml : public ZfBarnXml {
public:
    explicit ZfQBarnXml(const QString& mode) : ZfBarnXml(mode.toStdString()) {}
};

/// A document on a QFile, coded UTF-8. Mode "r" loads and parses at once, without the line ends of the file.
/// Mode "w" touches no file until it is saved.
class ZfQBarnFile final : public ZfQBarnXml {
public:
    /// The path is taken by its bytes, a QString in the encoding of file names. Throws ZfError.
    ZfQBarnFile(std::string path, const QString& mode);
    ZfQBarnFile(const QString& path, const QString& mode);
    ZfQBarnFile(const char* path, const QString& mode) : ZfQBarnFile(std::string(path), mode) {}
    ZfQBarnFile(const ZfQBarnFile&) = delete;
    ZfQBarnFile& operator=(const ZfQBarnFile&) = delete;
    /// Saves unless that was done; a failure is not reported.
    ~ZfQBarnFile() override;

    /// Throws ZfError when the file cannot be written.
    void Save();

private:
    std::string ReadText();

    std::string path_;
    bool written_ = false;
};

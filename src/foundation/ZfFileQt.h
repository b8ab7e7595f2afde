#pragma once

#include <QFile>
#include <QTextStream>

#include "foundation/ZfFile.h"

/// A text file over QFile, open from construction to destruction.
class ZfFileQt final : public ZfFile {
public:
    /// Mode "r" or "w". The name is taken by its bytes, a QString in the encoding of file names. Throws
    /// ZfError if the mode is another or the file cannot be opened.
    ZfFileQt(const std::string& name, const std::string& mode);
    ZfFileQt(const QString& name, const std::string& mode);
    ZfFileQt(const char* name, const std::string& mode) : ZfFileQt(std::string(name), mode) {}

    void ReadLine(std::string& line) override;
    bool AtEnd() override;
    void ReadAll(std::string& text) override;
    void ReadLines(std::vector<std::string>& lines) override;
    void Write(const std::string& text) override;
    void WriteLines(const std::vector<std::string>& lines) override;

private:
    QFile file_;
    QTextStream stream_;  // behind the file: flushed before the file is closed
};

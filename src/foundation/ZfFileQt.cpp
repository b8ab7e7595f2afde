#include "foundation/ZfFileQt.h"

#include <QByteArray>

#include "foundation/FileBytes.h"
#include "foundation/ZfError.h"

using namespace qvre;

ZfFileQt::ZfFileQt(const std::string& name, const std::string& mode) {
    if (mode != "r" && mode != "w") throw ZfError("ZfFileQt::Undefined mode");
    if (!OpenFile(file_, name, mode == "w" ? QIODevice::WriteOnly : QIODevice::ReadOnly))
        throw ZfError("FILE CANNOT OPEN:" + name);
    stream_.setDevice(&file_);
    stream_.setCodec("UTF-8");
}

ZfFileQt::ZfFileQt(const QString& name, const std::string& mode)
    : ZfFileQt(QFile::encodeName(name).toStdString(), mode) {}

void ZfFileQt::ReadLine(std::string& line) {
    line = stream_.readLine().toStdString();
}

bool ZfFileQt::AtEnd() {
    return stream_.atEnd();
}

void ZfFileQt::ReadAll(std::string& text) {
    text = stream_.readAll().toStdString();
}

void ZfFileQt::ReadLines(std::vector<std::string>& lines) {
    std::string line;
    for (ReadLine(line); !AtEnd(); ReadLine(line)) lines.push_back(line);
}

void ZfFileQt::Write(const std::string& text) {
    stream_ << QString::fromUtf8(text.c_str());
}

void ZfFileQt::WriteLines(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) text += line + '\n';
    Write(text);
}

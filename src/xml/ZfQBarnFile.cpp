#include "xml/ZfQBarnFile.h"

#include <QFile>
#include <QTextStream>
#include <utility>

#include "foundation/FileBytes.h"
#include "foundation/ZfError.h"

using namespace qvre;

ZfQBarnFile::ZfQBarnFile(std::string path, const QString& mode) : ZfQBarnXml(mode), path_(std::move(path)) {
    if (IsWriting()) return;
    statusText = "Loading....";
    status = kLoading;
    std::string text = ReadText();
    statusText = "Analyzing...";
    status = kAnalyzing;
    Parse(std::move(text));
    status = kReady;
}

ZfQBarnFile::ZfQBarnFile(const QString& path, const QString& mode)
    : ZfQBarnFile(QFile::encodeName(path).toStdString(), mode) {}

ZfQBarnFile::~ZfQBarnFile() {
    if (!IsWriting() || written_) return;
    try {
        Save();
    } catch (...) {  // NOLINT(bugprone-empty-catch): a destructor has nobody to tell
    }
}

std::string ZfQBarnFile::ReadText() {
    QFile file;
    if (!OpenFile(file, path_, QIODevice::ReadOnly)) throw ZfError("Cannot open:" + path_);
    QTextStream stream(&file);
    stream.setCodec("UTF-8");
    std::string text;
    text.reserve(static_cast<std::size_t>(file.size()) + 256);
    while (!stream.atEnd()) text += stream.readLine().toStdString();
    return text;
}

void ZfQBarnFile::Save() {
    written_ = true;
    QFile file;
    if (!OpenFile(file, path_, QIODevice::WriteOnly)) throw ZfError("FILE CANNOT WRITE:" + path_);
    QTextStream stream(&file);
    stream.setCodec("UTF-8");
    stream << QString::fromStdString(Document());
    stream.flush();
    if (stream.status() != QTextStream::Ok || !file.flush()) throw ZfError("FILE CANNOT WRITE:" + path_);
}

#include "run/Fingerprint.h"

#include <QCryptographicHash>
#include <QFile>

#include "foundation/ZfError.h"

namespace qvre {

std::string FingerprintOf(const std::string& text) {
    const QByteArray bytes = QByteArray::fromStdString(text);
    return QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex().toStdString();
}

std::string FingerprintOfFile(const std::string& path) {
    QFile file(QFile::decodeName(path.c_str()));
    QCryptographicHash hash(QCryptographicHash::Sha256);
    if (!file.open(QIODevice::ReadOnly) || !hash.addData(&file))
        throw ZfError("Cannot read the file " + path);
    return hash.result().toHex().toStdString();
}

}  // namespace qvre

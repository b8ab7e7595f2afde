#pragma once

#include <QFile>
#include <string>

namespace qvre {

/// Opens a file by the bytes of its name, whatever the locale makes of them: a QString would replace those
/// that are no UTF-8, and name another file. False if it cannot be opened or is a folder.
bool OpenFile(QFile& file, const std::string& name, QIODevice::OpenModeFlag mode);

}  // namespace qvre

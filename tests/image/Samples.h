#pragma once

#include <fstream>
#include <sstream>
#include <string>

#include "XmlText.h"
#include "image/ZfDocData.h"

constexpr int kSampleVersions[] = {0, 2, 3, 4, 5, 6};

inline std::string SamplePath(int version, const std::string& kind = "") {
    return std::string(ZF_IMAGE_SAMPLES) + "/version" + std::to_string(version) + kind + ".xml_img";
}

inline std::string SampleText(int version, const std::string& kind = "") {
    std::ostringstream text;
    text << std::ifstream(SamplePath(version, kind), std::ios::binary).rdbuf();
    return text.str();
}

inline bool LoadText(ZfDocData& data, const std::string& text) {
    XmlReader xml(text);
    return data.SaveLoad(xml);
}

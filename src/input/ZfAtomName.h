#pragma once

#include <cstdint>
#include <string>

/// Element symbol and atomic number, 0 (the empty name) to 103. Element 97 is "Bj" in the files of this
/// system.
class ZfAtomName {
public:
    ZfAtomName() = default;
    ZfAtomName(const ZfAtomName&) = default;
    ZfAtomName& operator=(const ZfAtomName&) = default;
    virtual ~ZfAtomName() = default;

    virtual void SetAtomicNumber(std::int32_t number);  ///< out-of-range failure beyond 0 to 103
    void SetName(const std::string& text);              ///< case counts; throws ZfError
    std::int32_t GetAtomicNumber() const { return atomicNumber; }

    std::int32_t atomicNumber = 0;
    std::string name;
};

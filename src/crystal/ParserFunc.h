#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "foundation/ZfError.h"

/// A function of the expression parser: it is given its arguments one by one and then calculates.
class ZfParserFuncBase {
public:
    ZfParserFuncBase() = default;
    ZfParserFuncBase(const ZfParserFuncBase&) = delete;
    ZfParserFuncBase& operator=(const ZfParserFuncBase&) = delete;
    virtual ~ZfParserFuncBase() = default;

    virtual std::string Name() const = 0;
    virtual std::string Usage() const = 0;  ///< one line of help
    virtual std::int32_t ParameterCount() const = 0;
    virtual void SetParameter(std::int32_t index, double value) = 0;  ///< throws ZfError past the count
    virtual double Calculate() = 0;                                   ///< may throw ZfError
};

namespace qvre {

/// A function of `Count` arguments.
template <std::int32_t Count>
class ParserFunc : public ZfParserFuncBase {
public:
    std::int32_t ParameterCount() const final { return Count; }

    void SetParameter(std::int32_t index, double value) final {
        if (index < 0 || static_cast<std::size_t>(index) >= parameters.size())
            throw ZfError("error: Parameter is too many.");
        parameters.at(static_cast<std::size_t>(index)) = value;
    }

    std::array<double, Count> parameters = {};
};

}  // namespace qvre

using ZfParserFunc0 = qvre::ParserFunc<0>;
using ZfParserFunc1 = qvre::ParserFunc<1>;
using ZfParserFunc2 = qvre::ParserFunc<2>;

namespace qvre {

using ParserFuncTable = std::map<std::string, std::unique_ptr<ZfParserFuncBase>>;

/// Every function of the expression language, by its name.
ParserFuncTable MakeParserFuncTable();

}  // namespace qvre

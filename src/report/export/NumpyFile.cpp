#include "report/export/NumpyFile.h"

#include <fmt/format.h>

#include <bit>
#include <cstdint>
#include <functional>
#include <numeric>

#include "foundation/ReplacedFile.h"
#include "foundation/ZfError.h"

namespace qvre {

static_assert(std::endian::native == std::endian::little, "values are written as they lie in memory");

namespace {

/// A tuple as Python prints it: "(5, 181, 181)", and "(7, )" for one number.
std::string Tuple(const std::vector<std::size_t>& shape) {
    return fmt::format("({}{})", fmt::join(shape, ", "), shape.size() == 1 ? ", " : "");
}

/// Magic, version, length, and the description, filled with blanks so that the data starts at a multiple
/// of 64.
std::string Header(const std::vector<std::size_t>& shape) {
    constexpr std::size_t kPreamble = 10;
    constexpr std::size_t kAlignment = 64;
    std::string description =
        fmt::format("{{'descr': '<f8', 'fortran_order': False, 'shape': {}, }}", Tuple(shape));
    while ((kPreamble + description.size() + 1) % kAlignment != 0) description += ' ';
    description += '\n';
    const std::size_t length = description.size();
    std::string header("\x93NUMPY\x01\x00", 8);
    header += static_cast<char>(length & 0xFFU);
    header += static_cast<char>(length >> 8U);
    return header + description;
}

}  // namespace

void WriteNumpyFile(const std::string& path, const std::vector<std::size_t>& shape,
                    const std::vector<double>& values) {
    const std::size_t count =
        std::accumulate(shape.begin(), shape.end(), std::size_t{1}, std::multiplies<>());
    if (count != values.size()) throw ZfError("The array to be written does not fill its shape");
    std::string text = Header(shape);
    text.append(reinterpret_cast<const char*>(values.data()), values.size() * sizeof(double));
    WriteWholeFile(path, text);
}

}  // namespace qvre

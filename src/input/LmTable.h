#pragma once

#include <complex>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "foundation/ZfError.h"

class ZfBarnXml;

namespace qvre {

/// Index failures; kept out of line so that no text is built on a good path.
[[noreturn]] void ThrowIllegalL();
[[noreturn]] void ThrowIllegalM();

/// A square table over (l, m): l from 0 to L - 1, m from -l to l, in the order (0,0) (1,-1) (1,0) (1,1)
/// (2,-2) ..., so the place of an element does not depend on L. New elements are zero.
///
/// A table that SetZero has made holds no block until an element is written: a size alone takes no memory.
///
/// A table with `transferable` set is a temporary whose block the one who assigns from it takes over; the
/// flag itself does not travel.
template <class Element>
class LmTable {
public:
    LmTable() = default;
    explicit LmTable(std::int32_t size) { SetSize(size); }
    LmTable(const LmTable& source) { *this = source; }
    LmTable(LmTable&& source) noexcept { TakeOver(source); }
    ~LmTable() = default;

    LmTable& operator=(LmTable&& source) noexcept {
        if (this != &source) TakeOver(source);
        return *this;
    }

    LmTable& operator=(const LmTable& source) {
        if (this == &source) return *this;
        if (source.transferable) {
            TakeOver(source);
        } else {
            block = source.block;
            L = source.L;
        }
        return *this;
    }

    /// Contents stay when the size does. Throws ZfError for a negative size or one that no memory can hold.
    void SetSize(std::int32_t size) {
        if (size == L) return;
        SetZero(size);
        Fill();
    }

    /// As SetSize, but all elements are zero, and no memory is taken.
    void SetZero(std::int32_t size) {
        if (size < 0) throw ZfError("Error");
        if (size > kLargestSize) throw ZfError("Cannot allocate memory");
        std::vector<Element>().swap(block);
        L = size;
    }

    /// Gives a table without a block one of zeros.
    void Fill() {
        if (block.empty()) block.resize(Count());
    }

    std::size_t Count() const { return static_cast<std::size_t>(L) * static_cast<std::size_t>(L); }

    void Zero() { block.assign(block.size(), Element{}); }

    /// Throws ZfError for an l or m outside the table.
    std::int32_t lmIndex(std::int32_t l, std::int32_t m) const {
        if (l < 0 || l >= L) ThrowIllegalL();
        if (m < -l || m > l) ThrowIllegalM();
        return (l + 1) * l + m;
    }

    Element& At(std::int32_t l, std::int32_t m) {
        const auto index = static_cast<std::size_t>(lmIndex(l, m));
        Fill();
        return block[index];
    }
    const Element& At(std::int32_t l, std::int32_t m) const {
        const auto index = static_cast<std::size_t>(lmIndex(l, m));
        return block.empty() ? kZero : block[index];
    }

    mutable std::vector<Element> block;
    bool transferable = false;
    mutable std::int32_t L = 0;  ///< the "Size_l" of files

private:
    inline static const Element kZero{};

    /// Far beyond any wave (l size is about k times the radius of an atom); a larger size comes from a bad
    /// file.
    static constexpr std::int32_t kLargestSize = 4096;

    void TakeOver(const LmTable& source) noexcept {
        block = std::move(source.block);
        L = source.L;
        source.block.clear();
        source.L = 0;
    }
};

}  // namespace qvre

using ZfLmComplexTable = qvre::LmTable<std::complex<double>>;
using ZfLmDoubleTable = qvre::LmTable<double>;
using ZfLmLongTable = qvre::LmTable<std::int32_t>;

namespace qvre {

/// Coefficients of a wave under their tag: format "t" as text of 6 significant digits, "b" with all bits.
/// Reading takes both. False when the tag is absent, or when binary data has the wrong length: the table then
/// has size 1, and the tag's rack is left open, so that the closing of the enclosing item throws.
bool ExchangeCoefficients(ZfBarnXml& xml, const std::string& tag, ZfLmComplexTable& table,
                          const std::string& format);

/// The text of format "b".
std::string CoefficientText(ZfLmComplexTable& table);

/// What ExchangeCoefficients writes in format "b", of a table whose text is made.
void PutCoefficients(ZfBarnXml& xml, const std::string& tag, std::int32_t size, std::string text);

}  // namespace qvre

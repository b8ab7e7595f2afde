#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace qvre {

/// An arithmetic expression of named quantities, such as "sqrt(a^2 + b^2)/2".
///
/// + - * / and parentheses as usual; ^ and ** are powers, to the right, and bind tighter than a sign in
/// front. Functions: abs, sqrt, exp, log (natural), sin, cos, tan, asin, acos, atan, atan2, min, max,
/// degrees, radians; angles are radians. pi is a number.
class Expression {
public:
    /// Throws ZfError that quotes the text and tells what was expected where.
    explicit Expression(std::string expression);

    /// `values` by the order of `names`. Throws ZfError when the result is not finite.
    double Evaluate(const std::vector<double>& values) const;

    std::string text;
    std::vector<std::string> names;  ///< of the quantities, in the order of their first use

    /// One step of the expression in reverse Polish notation.
    struct Step {
        enum class Kind { kNumber, kQuantity, kUnary, kBinary };
        Kind kind = Kind::kNumber;
        double number = 0.0;
        std::size_t quantity = 0;  ///< index in `names`
        double (*unary)(double) = nullptr;
        double (*binary)(double, double) = nullptr;
    };

private:
    std::vector<Step> steps_;
};

/// Whether a text can name a quantity: letters, digits and _, a letter first, and neither a function nor pi.
bool IsQuantityName(const std::string& text);

}  // namespace qvre

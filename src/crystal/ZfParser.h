#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "crystal/ParserFunc.h"
#include "crystal/ZfParserLexer.h"

/// Evaluates one arithmetic expression in 64-bit floats, such as "3/4" or "2*cos(radian(30))".
///
/// * / % bind tighter than + -, all to the left; a sign binds tighter than these. % works on the operands cut
/// to 32-bit integers. A name without '(' is one of the constants or, without such a one,
/// the parameter of its first letter. Evaluation ends at a ','
/// or ')' that closes nothing; what stands behind is not looked at. The algorithm is operator precedence
/// parsing over two stacks (Aho, Sethi and Ullman, Compilers, section 4.6), without a syntax tree.
///
/// Bad expressions throw ZfError, or the bare text of the lexer; the parser stays usable.
class ZfParser {
public:
    ZfParser();  ///< seeds the C library's random numbers from the time

    double Calculate(const std::string& text);

    ZfParserLexer lexer;
    std::int32_t tokenIndex = 0;
    qvre::ParserFuncTable functions;
    std::vector<double> parameters = std::vector<double>(26, 0.0);  ///< "a" to "z"
    std::map<std::string, double> constants;                        ///< by whole name, before the letters

private:
    double Evaluate(std::int32_t depth);
    double CallFunction(std::int32_t depth);
    double ParameterValue(const std::string& name) const;
};

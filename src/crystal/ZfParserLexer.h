#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace qvre {

/// What a token is; also the index of its name in ZfParserLexer::names.
enum ParserCode : std::int32_t {
    kTokenFunction = 0,  ///< a name with '(' right behind it
    kTokenConstant = 1,
    kTokenParameter = 2,  ///< any other name
    kTokenLeftBracket = 4,
    kTokenRightBracket = 5,
    kTokenTimes = 6,
    kTokenDivide = 7,
    kTokenRemainder = 8,
    kTokenPlus = 9,
    kTokenMinus = 10,
    kTokenComma = 11,
    kTokenDummy = 12,  ///< bottom of an operator stack
    kTokenUnaryPlus = 13,
    kTokenUnaryMinus = 14,
    kTokenNone = 16  ///< what stands behind the last token
};

struct ParserToken {
    std::int32_t code = kTokenNone;
    double value = 0.0;  ///< of a constant
    std::string text;
};

}  // namespace qvre

/// Cuts an expression into tokens: names, decimal numbers such as "2", ".5" or "1.5e-3", the operators
/// ( ) * / % + - and the comma. A + or - is binary behind a number, a parameter or ')', otherwise unary.
/// Blanks and tabs separate tokens.
class ZfParserLexer {
public:
    /// Fills `tokens`. A character that starts no token throws a bare text (const char*, in Shift-JIS); a
    /// text longer than 4 MiB throws ZfError.
    void Lex(const std::string& expression);

    /// The token at `index`, or one of code kTokenNone past the end.
    const qvre::ParserToken& Token(std::int32_t index) const;

    std::vector<qvre::ParserToken> tokens;
    std::string text;
    std::int32_t position = 0;
    std::array<std::string, 17> names = {
        "identifer",      "constant", "Parameter", "OPERATOR_BEGIN", "(",   ")", "*", "/", "%", "+", "-", ",",
        "dummy operator", "unary +",  "unary -",   "OPERATOR_END",   "NONE"};

private:
    char Current(std::size_t offset = 0) const { return text[static_cast<std::size_t>(position) + offset]; }
    bool NumberStarts() const;
    std::string TextFrom(std::int32_t begin) const;
    void LexName();
    void LexNumber();
    void LexOperator();
};

#include "crystal/ZfParserLexer.h"

#include <cmath>

#include "foundation/ZfError.h"

using namespace qvre;

namespace {

// Tokens take some 50 bytes a character: this keeps a hostile text below a few hundred megabytes.
constexpr std::size_t kMaxTextSize = std::size_t{4} << 20;

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}
bool IsNameStart(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}
bool IsBlank(char c) {
    return c == ' ' || c == '\t';
}

}  // namespace

// A std::string ends in a zero byte, so looking one character ahead of the last is safe.
void ZfParserLexer::Lex(const std::string& expression) {
    if (expression.size() > kMaxTextSize) throw ZfError("error: The expression is too long.");
    tokens.clear();
    text = expression;
    position = 0;
    const auto end = static_cast<std::int32_t>(text.size());
    while (position < end) {
        const std::int32_t begin = position;
        if (IsNameStart(Current())) {
            LexName();
        } else if (NumberStarts()) {
            LexNumber();
        } else {
            LexOperator();
        }
        while (IsBlank(Current())) ++position;
        // "Lexical analysis error." in Japanese, Shift-JIS.
        if (position == begin) throw "\x8e\x9a\x8b\xe5\x89\xf0\x90\xcd\x83\x47\x83\x89\x81\x5b\x81\x42";
    }
}

const ParserToken& ZfParserLexer::Token(std::int32_t index) const {
    static const ParserToken none;
    return static_cast<std::size_t>(index) < tokens.size() ? tokens[static_cast<std::size_t>(index)] : none;
}

bool ZfParserLexer::NumberStarts() const {
    return IsDigit(Current()) || (Current() == '.' && IsDigit(Current(1)));
}

std::string ZfParserLexer::TextFrom(std::int32_t begin) const {
    return text.substr(static_cast<std::size_t>(begin), static_cast<std::size_t>(position - begin));
}

void ZfParserLexer::LexName() {
    const std::int32_t begin = position;
    while (IsNameStart(Current()) || IsDigit(Current())) ++position;
    tokens.push_back({Current() == '(' ? kTokenFunction : kTokenParameter, 0.0, TextFrom(begin)});
}

void ZfParserLexer::LexNumber() {
    const std::int32_t begin = position;
    double value = 0.0;
    for (; IsDigit(Current()); ++position) value = value * 10.0 + (Current() - '0');
    if (Current() == '.') {
        ++position;
        for (double factor = 0.1; IsDigit(Current()); ++position, factor /= 10.0)
            value += (Current() - '0') * factor;
    }
    if (Current() == 'E' || Current() == 'e') {
        ++position;
        if (Current() == '+') ++position;
        const bool negative = Current() == '-';
        if (negative) ++position;
        double exponent = 0.0;  // a float, so that no count of digits overflows it
        for (; IsDigit(Current()); ++position) exponent = exponent * 10.0 + (Current() - '0');
        value *= std::pow(10.0, negative ? -exponent : exponent);
    }
    tokens.push_back({kTokenConstant, value, TextFrom(begin)});
}

void ZfParserLexer::LexOperator() {
    for (std::int32_t code = kTokenLeftBracket; code <= kTokenComma; ++code) {
        const std::string& name = CheckedAt(names, code);
        if (name.empty()) throw ZfError("Err");
        if (text.compare(static_cast<std::size_t>(position), name.size(), name) != 0) continue;
        position += static_cast<std::int32_t>(name.size());
        const std::int32_t before = tokens.empty() ? kTokenNone : tokens.back().code;
        const bool behindOperand =
            before == kTokenConstant || before == kTokenParameter || before == kTokenRightBracket;
        if (!behindOperand && code == kTokenPlus) code = kTokenUnaryPlus;
        if (!behindOperand && code == kTokenMinus) code = kTokenUnaryMinus;
        tokens.push_back({code, 0.0, CheckedAt(names, code)});
        return;
    }
}

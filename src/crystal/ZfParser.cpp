#include "crystal/ZfParser.h"

#include <cmath>
#include <cstdlib>
#include <ctime>
#include <limits>

#include "foundation/ZfError.h"

using namespace qvre;

namespace {

// Only a function call recurses; some hundred bytes of stack a level.
constexpr std::int32_t kMaxCallDepth = 1000;

struct OperatorRule {
    std::int32_t leftPriority = 0;   ///< of an operator that lies on the stack
    std::int32_t rightPriority = 0;  ///< of one that arrives
    std::size_t operands = 0;
};

constexpr OperatorRule RuleOf(std::int32_t code) {
    switch (code) {
        case kTokenLeftBracket:
            return {0, 8, 0};
        case kTokenRightBracket:
            return {7, 0, 0};
        case kTokenTimes:
        case kTokenDivide:
        case kTokenRemainder:
            return {4, 3, 2};
        case kTokenPlus:
        case kTokenMinus:
            return {2, 1, 2};
        case kTokenUnaryPlus:
        case kTokenUnaryMinus:
            return {7, 6, 1};
        default:
            return {};
    }
}

std::int64_t TruncateToInt(double value) {
    const double whole = std::trunc(value);
    if (!(whole >= std::numeric_limits<std::int32_t>::min() &&
          whole <= std::numeric_limits<std::int32_t>::max()))
        throw ZfError("error: An operand of % is out of the integer range.");
    return static_cast<std::int64_t>(whole);
}

double Divide(double left, double right) {
    if (right == 0.0) throw ZfError("error: Divide by 0.");
    return left / right;
}

double Remainder(double left, double right) {
    if (right == 0.0) throw ZfError("error: Divide by 0.");
    const std::int64_t divisor = TruncateToInt(right);
    if (divisor == 0) throw ZfError("error: The right operand of % is cut to 0.");
    return static_cast<double>(TruncateToInt(left) % divisor);
}

double ApplyBinary(std::int32_t code, double left, double right) {
    switch (code) {
        case kTokenTimes:
            return left * right;
        case kTokenDivide:
            return Divide(left, right);
        case kTokenRemainder:
            return Remainder(left, right);
        case kTokenPlus:
            return left + right;
        default:
            return left - right;
    }
}

/// Replaces the operands on top of the stack by the result.
void Apply(const ParserToken& token, std::vector<double>& operands) {
    const std::size_t count = RuleOf(token.code).operands;
    if (operands.size() < count) throw ZfError("error:a parameter for the oeprand:" + token.text);
    const double last = operands.back();
    if (count == 1) {
        if (token.code == kTokenUnaryMinus) operands.back() = -last;
        return;
    }
    operands.pop_back();
    operands.back() = ApplyBinary(token.code, operands.back(), last);
}

}  // namespace

ZfParser::ZfParser() : functions(MakeParserFuncTable()) {
    std::srand(static_cast<unsigned>(std::time(nullptr)));
}

double ZfParser::Calculate(const std::string& text) {
    lexer.Lex(text);
    tokenIndex = 0;
    return Evaluate(0);
}

// The recursion with CallFunction ends at kMaxCallDepth.
// NOLINTNEXTLINE(misc-no-recursion)
double ZfParser::Evaluate(std::int32_t depth) {
    std::vector<ParserToken> operators = {{kTokenDummy, 0.0, "DUMMY"}};
    std::vector<double> operands;
    while (true) {
        const ParserToken& token = lexer.Token(tokenIndex++);
        if (token.code == kTokenFunction) {
            --tokenIndex;
            operands.push_back(CallFunction(depth));
            continue;
        }
        if (token.code == kTokenConstant) {
            operands.push_back(token.value);
            continue;
        }
        if (token.code == kTokenParameter) {
            operands.push_back(ParameterValue(token.text));
            continue;
        }

        const std::int32_t priority = RuleOf(token.code).rightPriority;
        while (RuleOf(operators.back().code).leftPriority > priority) {
            Apply(operators.back(), operands);
            operators.pop_back();
        }
        if (RuleOf(operators.back().code).leftPriority < priority) {
            operators.push_back(token);
        } else if (operators.back().code == kTokenLeftBracket) {
            if (token.code != kTokenRightBracket) throw ZfError("error: right bracker ')' is required.");
            operators.pop_back();
        } else {
            break;  // equal priorities are 0, and only the bottom of the stack is left with that
        }
    }
    // The token that ended the expression is left to the caller: it also ends a function's argument.
    --tokenIndex;
    if (operands.empty()) throw ZfError("error: An expression has no value.");
    return operands.back();
}

// NOLINTNEXTLINE(misc-no-recursion): as above
double ZfParser::CallFunction(std::int32_t depth) {
    const std::string name = lexer.Token(tokenIndex).text;
    if (depth >= kMaxCallDepth) throw ZfError("error: Function calls are nested too deep:" + name);
    tokenIndex += 2;  // the name, and the '(' that made the lexer take it for a function
    const auto found = functions.find(name);
    if (found == functions.end()) throw ZfError("error:unknown function:" + name);
    ZfParserFuncBase& function = *found->second;

    // All arguments first: an argument may call the same function object.
    std::vector<double> arguments;
    for (std::int32_t i = 0; i < function.ParameterCount(); ++i) {
        if (i > 0 && lexer.Token(tokenIndex++).code != kTokenComma)
            throw ZfError("error: More parameter is required.");
        arguments.push_back(Evaluate(depth + 1));
    }
    for (std::int32_t i = 0; i < function.ParameterCount(); ++i)
        function.SetParameter(i, arguments[static_cast<std::size_t>(i)]);
    const double result = function.Calculate();
    if (lexer.Token(tokenIndex++).code != kTokenRightBracket)
        throw ZfError("error: bad function parameter:" + name);
    return result;
}

double ZfParser::ParameterValue(const std::string& name) const {
    const auto constant = constants.find(name);
    if (constant != constants.end()) return constant->second;
    const std::int32_t letter = name.front() - 'a';
    if (letter < 0 || static_cast<std::size_t>(letter) >= parameters.size())
        throw ZfError("undefined parameter");
    return parameters[static_cast<std::size_t>(letter)];
}

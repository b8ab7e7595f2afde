#include "foundation/Expression.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <map>
#include <numbers>
#include <string_view>
#include <utility>

#include "foundation/ZfError.h"

namespace qvre {

namespace {

using Step = Expression::Step;

constexpr int kMostNested = 200;  // some hundred bytes of stack each

double Add(double a, double b) {
    return a + b;
}
double Subtract(double a, double b) {
    return a - b;
}
double Multiply(double a, double b) {
    return a * b;
}
double Divide(double a, double b) {
    return a / b;
}
double Negate(double a) {
    return -a;
}
double Degrees(double a) {
    return a * 180.0 / std::numbers::pi;
}
double Radians(double a) {
    return a / 180.0 * std::numbers::pi;
}

const std::map<std::string, double (*)(double)>& UnaryFunctions() {
    static const std::map<std::string, double (*)(double)> functions = {
        {"abs", std::fabs},  {"sqrt", std::sqrt}, {"exp", std::exp},    {"log", std::log},
        {"sin", std::sin},   {"cos", std::cos},   {"tan", std::tan},    {"asin", std::asin},
        {"acos", std::acos}, {"atan", std::atan}, {"degrees", Degrees}, {"radians", Radians}};
    return functions;
}

const std::map<std::string, double (*)(double, double)>& BinaryFunctions() {
    static const std::map<std::string, double (*)(double, double)> functions = {
        {"atan2", std::atan2}, {"min", std::fmin}, {"max", std::fmax}};
    return functions;
}

constexpr bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

constexpr bool IsNameStart(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
}

/// By recursive descent: a sum of terms, a term of factors, a factor a sign or a power.
class ExpressionParser {
public:
    ExpressionParser(std::string_view text, std::vector<std::string>& names, std::vector<Step>& steps)
        : text_(text), names_(names), steps_(steps) {}

    void Parse() {
        Sum();
        if (at_ != text_.size()) Expect("an operator");
    }

private:
    [[noreturn]] void Expect(const std::string& what) const {
        const std::string where =
            at_ == text_.size() ? "at its end" : fmt::format("at \"{}\"", text_.substr(at_));
        throw ZfError(fmt::format("expression \"{}\": expected {} {}", text_, what, where));
    }

    void SkipBlanks() { at_ = std::min(text_.find_first_not_of(" \t", at_), text_.size()); }

    bool Take(std::string_view sign) {
        SkipBlanks();
        if (!text_.substr(at_).starts_with(sign)) return false;
        at_ += sign.size();
        SkipBlanks();
        return true;
    }

    void Emit(double (*function)(double, double)) {
        steps_.push_back({.kind = Step::Kind::kBinary, .binary = function});
    }
    void Emit(double (*function)(double)) {
        steps_.push_back({.kind = Step::Kind::kUnary, .unary = function});
    }

    // NOLINTBEGIN(misc-no-recursion): expressions nest, no deeper than kMostNested
    void Sum() {
        if (++nested_ > kMostNested)
            throw ZfError(fmt::format("expression \"{}...\": it is nested too deeply", text_.substr(0, 40)));
        Term();
        for (;;) {
            if (Take("+")) {
                Term();
                Emit(Add);
            } else if (Take("-")) {
                Term();
                Emit(Subtract);
            } else {
                break;
            }
        }
        --nested_;
    }

    void Term() {
        Factor();
        for (;;) {
            if (Take("*")) {
                Factor();
                Emit(Multiply);
            } else if (Take("/")) {
                Factor();
                Emit(Divide);
            } else {
                break;
            }
        }
    }

    void Factor() {
        bool isNegative = false;
        for (;;) {
            if (Take("-"))
                isNegative = !isNegative;
            else if (!Take("+"))
                break;
        }
        Primary();
        if (Take("^") || Take("**")) {
            if (++nested_ > kMostNested) Expect("fewer powers of powers");
            Factor();
            --nested_;
            Emit([](double a, double b) { return std::pow(a, b); });
        }
        if (isNegative) Emit(Negate);
    }

    void Primary() {
        SkipBlanks();
        if (Take("(")) {
            Sum();
            Close();
        } else if (at_ < text_.size() && IsNameStart(text_[at_])) {
            Name();
        } else {
            Number();
        }
    }

    void Close() {
        if (!Take(")")) Expect("\")\"");
    }

    void Number() {
        double number = 0.0;
        const auto [end, failure] = std::from_chars(text_.data() + at_, text_.data() + text_.size(), number);
        if (failure != std::errc()) Expect("a number or a name");
        at_ = static_cast<std::size_t>(end - text_.data());
        steps_.push_back({.kind = Step::Kind::kNumber, .number = number});
        SkipBlanks();
    }

    void Name() {
        const std::size_t begin = at_;
        while (at_ < text_.size() && (IsNameStart(text_[at_]) || IsDigit(text_[at_]))) ++at_;
        const std::string name(text_.substr(begin, at_ - begin));
        SkipBlanks();
        const auto unary = UnaryFunctions().find(name);
        const auto binary = BinaryFunctions().find(name);
        if (unary != UnaryFunctions().end()) {
            Open();
            Sum();
            Close();
            Emit(unary->second);
        } else if (binary != BinaryFunctions().end()) {
            Open();
            Sum();
            if (!Take(",")) Expect("\",\"");
            Sum();
            Close();
            Emit(binary->second);
        } else if (name == "pi") {
            steps_.push_back({.kind = Step::Kind::kNumber, .number = std::numbers::pi});
        } else {
            Quantity(name);
        }
    }

    // NOLINTEND(misc-no-recursion)

    void Open() {
        if (!Take("(")) Expect("\"(\"");
    }

    void Quantity(const std::string& name) {
        if (at_ < text_.size() && text_[at_] == '(')
            throw ZfError(fmt::format("expression \"{}\": there is no function {}", text_, name));
        const auto found = std::find(names_.begin(), names_.end(), name);
        const auto index = static_cast<std::size_t>(found - names_.begin());
        if (found == names_.end()) names_.push_back(name);
        steps_.push_back({.kind = Step::Kind::kQuantity, .quantity = index});
    }

    std::string_view text_;
    std::vector<std::string>& names_;
    std::vector<Step>& steps_;
    std::size_t at_ = 0;
    int nested_ = 0;
};

}  // namespace

Expression::Expression(std::string expression) : text(std::move(expression)) {
    ExpressionParser(text, names, steps_).Parse();
}

double Expression::Evaluate(const std::vector<double>& values) const {
    std::vector<double> stack;
    for (const Step& step : steps_) {
        switch (step.kind) {
            case Step::Kind::kNumber:
                stack.push_back(step.number);
                break;
            case Step::Kind::kQuantity:
                stack.push_back(values[step.quantity]);
                break;
            case Step::Kind::kUnary:
                stack.back() = step.unary(stack.back());
                break;
            case Step::Kind::kBinary: {
                const double right = stack.back();
                stack.pop_back();
                stack.back() = step.binary(stack.back(), right);
                break;
            }
        }
    }
    if (!std::isfinite(stack.back()))
        throw ZfError(fmt::format("expression \"{}\": its value is not finite", text));
    return stack.back();
}

bool IsQuantityName(const std::string& text) {
    return !text.empty() && IsNameStart(text.front()) &&
           std::all_of(text.begin(), text.end(), [](char c) { return IsNameStart(c) || IsDigit(c); }) &&
           text != "pi" && !UnaryFunctions().contains(text) && !BinaryFunctions().contains(text);
}

}  // namespace qvre

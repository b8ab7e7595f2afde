#include "foundation/Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <system_error>

using namespace qvre;

namespace {

constexpr std::string_view kBlanks = " \t\n\v\f\r";

template <class Number>
std::string RealToText(Number value) {
    std::array<char, 32> buffer;
    const auto end =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::general, 6);
    return {buffer.data(), end.ptr};
}

std::string_view SkipBlanks(std::string_view text) {
    const std::size_t begin = text.find_first_not_of(kBlanks);
    return begin == std::string_view::npos ? std::string_view() : text.substr(begin);
}

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

bool IsSign(char c) {
    return c == '+' || c == '-';
}

std::size_t SkipDigits(std::string_view text, std::size_t position) {
    while (position < text.size() && IsDigit(text[position])) ++position;
    return position;
}

/// The leading characters that can belong to a decimal number: sign, digits, one point, one exponent.
std::string_view LeadingNumber(std::string_view text) {
    std::size_t end = 0;
    if (end < text.size() && IsSign(text[end])) ++end;
    const std::size_t mantissa = end;
    end = SkipDigits(text, end);
    std::size_t digits = end - mantissa;
    if (end < text.size() && text[end] == '.') {
        const std::size_t fraction = end + 1;
        end = SkipDigits(text, fraction);
        digits += end - fraction;
    }
    if (digits == 0) return {};
    if (end < text.size() && (text[end] == 'e' || text[end] == 'E')) {
        ++end;
        if (end < text.size() && IsSign(text[end])) ++end;
        const std::size_t exponent = end;
        end = SkipDigits(text, end);
        if (end == exponent) return {};  // an exponent without digits spoils the number
    }
    return text.substr(0, end);
}

/// std::from_chars knows no "+".
std::string_view DropPlus(std::string_view text) {
    const bool plus = text.size() > 1 && text[0] == '+' && !IsSign(text[1]);
    return plus ? text.substr(1) : text;
}

template <class Number>
Number ParseReal(std::string_view text) {
    Number value = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    return result.ec == std::errc() ? value : Number(0);
}

template <class Number>
Number TextToReal(std::string_view text) {
    return ParseReal<Number>(DropPlus(LeadingNumber(SkipBlanks(text))));
}

std::vector<std::string> Split(std::string_view text, std::string_view separators) {
    std::vector<std::string> parts;
    std::size_t begin = text.find_first_not_of(separators);
    while (begin != std::string_view::npos) {
        const std::size_t end = text.find_first_of(separators, begin);
        parts.emplace_back(text.substr(begin, end - begin));
        begin = end == std::string_view::npos ? end : text.find_first_not_of(separators, end);
    }
    return parts;
}

}  // namespace

namespace qvre {

std::string IntToText(std::int64_t value) {
    return std::to_string(value);
}

std::string FloatToText(float value) {
    return RealToText(value);
}

std::string DoubleToText(double value) {
    return RealToText(value);
}

int DecimalsOfError(double error) {
    constexpr double kMost = 15.0;
    if (!(error > 0.0 && std::isfinite(error))) return 0;
    const double power = std::floor(std::log10(error));
    const bool beginsWithOne = error < 1.95 * std::pow(10.0, power);
    return static_cast<int>(std::clamp(beginsWithOne ? 1.0 - power : -power, 0.0, kMost));
}

std::string WithError(double value, double error) {
    const int decimals = DecimalsOfError(error);
    return fmt::format("{:.{}f} +- {:.{}f}", value, decimals, error, decimals);
}

std::int32_t TextToInt(std::string_view text) {
    const std::string_view number = DropPlus(SkipBlanks(text));
    std::int32_t value = 0;
    const auto result = std::from_chars(number.data(), number.data() + number.size(), value);
    return result.ec == std::errc() ? value : 0;
}

std::uint32_t TextToUnsigned(std::string_view text) {
    const std::string_view number = DropPlus(SkipBlanks(text));
    std::uint32_t value = 0;
    const auto result = std::from_chars(number.data(), number.data() + number.size(), value);
    return result.ec == std::errc() ? value : 0;
}

float TextToFloat(std::string_view text) {
    return TextToReal<float>(text);
}

double TextToDouble(std::string_view text) {
    return TextToReal<double>(text);
}

double ScanDouble(std::string_view text) {
    return ParseReal<double>(DropPlus(SkipBlanks(text)));
}

bool NumberSplit(std::string_view text, double& value, std::string& rest) {
    value = 0.0;
    rest.clear();
    const std::size_t first = text.find_first_of("+-0123456789.");
    if (first == std::string_view::npos) return false;
    const std::size_t last = text.find_last_of("0123456789.");
    const std::size_t end = last == std::string_view::npos ? 0 : last + 1;
    rest = text.substr(end);
    // `end` is used as a length: counted from `first` it may reach into the rest, where the number has ended.
    value = TextToDouble(text.substr(first, end));
    return true;
}

std::vector<std::string> TokenSplit(std::string_view line) {
    return Split(line, "\t\n\r ,");
}

std::vector<std::string> LineSplit(std::string_view text) {
    return Split(text, "\n\r");
}

}  // namespace qvre

std::complex<double> IPower(int n) {
    switch ((n % 4 + 4) % 4) {
        case 0:
            return {1.0, 0.0};
        case 1:
            return {-0.0, -1.0};
        case 2:
            return {-1.0, 0.0};
        default:
            return {0.0, 1.0};
    }
}
